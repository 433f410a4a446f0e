#include "firmware/uefi/driver_image.h"

#include <array>
#include <memory>
#include <vector>

#include "firmware/uefi/files.h"
#include "firmware/uefi/runtime.h"

namespace varnok::uefi {
namespace {

// Far above any driver, and far below what would exhaust a board.
constexpr std::size_t kLargestImage = 16 << 20;

Status ReadWhole(File& file, std::vector<std::uint8_t>& bytes) {
  std::array<std::uint8_t, 4096> part;
  for (;;) {
    std::size_t count = 0;
    Status status = file.Read(part, count);
    if (IsError(status)) return status;
    if (count == 0) return kSuccess;
    if (bytes.size() + count > kLargestImage) return uefi_status::kLoadError;
    bytes.insert(bytes.end(), part.begin(), part.begin() + count);
  }
}

}  // namespace

Status StartDriverImage(const Shell& shell, std::u16string_view path) {
  std::unique_ptr<File> file;
  Status status = OpenShellFile(shell, path, FileMode::Read, file);
  if (IsError(status)) return status;
  std::vector<std::uint8_t> bytes;
  status = ReadWhole(*file, bytes);
  if (IsError(status)) return status;

  // The path only tells the firmware where the image came from; the bytes are at hand.
  EFI_DEVICE_PATH* devicePath = shell.DevicePathOf(WithBackslashes(path));
  EFI_HANDLE image = nullptr;
  status = BootServices().LoadImage(FALSE, ImageHandle(), devicePath, bytes.data(), bytes.size(), &image);
  if (devicePath != nullptr) BootServices().FreePool(devicePath);
  if (IsError(status)) {
    // An image that the security policy refuses is loaded all the same.
    if (image != nullptr) BootServices().UnloadImage(image);
    return status;
  }
  UINTN exitSize = 0;
  CHAR16* exitText = nullptr;
  status = BootServices().StartImage(image, &exitSize, &exitText);
  if (exitText != nullptr) BootServices().FreePool(exitText);
  return status;
}

}  // namespace varnok::uefi
