#include "programs/start/efi_station.h"

#include <memory>

#include "app/services/text.h"
#include "firmware/firmware.h"
#include "firmware/uefi/files.h"
#include "firmware/uefi/runtime.h"
#include "programs/start/device_path.h"

namespace varnok::start {
namespace {

using uefi::BootServices;
using uefi::SystemTable;
using uefi::ToEfi;

constexpr std::u16string_view kShellFile = u"SHELLX64.EFI";
// The shell's name in a firmware volume.
constexpr Guid kShellName{0x7C04A583, 0x9E3E, 0x4F1C, {0xAD, 0x65, 0xE0, 0x52, 0x68, 0xD0, 0xB4, 0xD1}};
// At once to its prompt: without its own count-down, and without a startup.nsh that starts all anew.
constexpr const char* kShellOptions = "SHELLX64.EFI -nostartup";

bool HasFile(std::u16string_view path) {
  std::unique_ptr<File> file;
  return TheFirmware().OpenFile(path, FileMode::Read, file) == kSuccess;
}

Ending StartImage(std::optional<ImagePath> path, std::string_view options) {
  if (!path) return {false, uefi_status::kNotFound};
  EFI_HANDLE image = nullptr;
  Status status = BootServices().LoadImage(FALSE, uefi::ImageHandle(), path->Get(), nullptr, 0, &image);
  void* loaded = nullptr;
  if (!uefi::IsError(status))
    status = BootServices().HandleProtocol(image, ToEfi(uefi::kLoadedImageGuid), &loaded);
  if (uefi::IsError(status)) {
    // An image that the security policy refuses is loaded all the same.
    if (image != nullptr) BootServices().UnloadImage(image);
    return {false, status};
  }
  std::u16string text = Widen(options);
  static_cast<EFI_LOADED_IMAGE*>(loaded)->LoadOptions = text.data();
  static_cast<EFI_LOADED_IMAGE*>(loaded)->LoadOptionsSize =
      static_cast<UINT32>((text.size() + 1) * sizeof(char16_t));
  UINTN exitSize = 0;
  CHAR16* exitText = nullptr;
  status = BootServices().StartImage(image, &exitSize, &exitText);
  if (exitText != nullptr) BootServices().FreePool(exitText);
  // A program may have set a watchdog of its own.
  BootServices().SetWatchdogTimer(0, 0, 0, nullptr);
  return {true, status};
}

}  // namespace

bool EfiStation::HasKey() {
  return BootServices().CheckEvent(SystemTable().ConIn->WaitForKey) == EFI_SUCCESS;
}

std::size_t EfiStation::Rows() {
  SIMPLE_TEXT_OUTPUT_INTERFACE* output = SystemTable().ConOut;
  UINTN columns = 0;
  UINTN rows = 0;
  const auto mode = static_cast<UINTN>(output->Mode->Mode);
  return uefi::IsError(output->QueryMode(output, mode, &columns, &rows)) ? 25 : rows;
}

std::vector<std::string> EfiStation::List(bool folders) {
  std::vector<std::u16string> found;
  Discard(uefi::ListShellFolder(shell_, shell_.IsThere() ? u"." : u"\\", found, folders));
  std::vector<std::string> names;
  names.reserve(found.size());
  for (const std::u16string& name : found) names.push_back(Narrow(name));
  return names;
}

std::vector<std::string> EfiStation::Snapshots() {
  std::vector<std::string> names = List(true);
  std::erase_if(names, [](const std::string& name) { return !HasFile(Widen(name + "\\board.json")); });
  return names;
}

Ending EfiStation::Run(const std::string& command) {
  const std::string_view word = std::string_view(command).substr(0, command.find_first_of(" \t"));
  std::u16string file = Widen(word);
  if (word.ends_with(ProgramName(command))) file += u".EFI";
  uefi::Place place;
  if (!HasFile(file) || !uefi::FindPlace(shell_, file, place)) return {false, uefi_status::kNotFound};
  return StartImage(ImagePath::OfFile(place), command);
}

bool EfiStation::HasShell() {
  return HasFile(kShellFile) || ImagePath::OfFirmwareFile(kShellName).has_value();
}

Ending EfiStation::RunShell() {
  uefi::Place place;
  const bool isOnStick = HasFile(kShellFile) && uefi::FindPlace(shell_, kShellFile, place);
  return StartImage(isOnStick ? ImagePath::OfFile(place) : ImagePath::OfFirmwareFile(kShellName),
                    kShellOptions);
}

void EfiStation::Restart() {
  SystemTable().RuntimeServices->ResetSystem(EfiResetCold, EFI_SUCCESS, 0, nullptr);
}

}  // namespace varnok::start
