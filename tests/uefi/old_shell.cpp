// OLDSHELL.EFI FOLDER IMAGE ARGUMENTS... runs an image as the EFI shell before UEFI Shell 2.0 did: with that
// shell's interface and environment, in FOLDER of the volume fs0, and without any of the newer protocols.
#include <array>
#include <cstring>
#include <vector>

#include "app/services/console.h"
#include "app/services/text.h"
#include "firmware/entry.h"
#include "firmware/firmware.h"
#include "firmware/uefi/runtime.h"
#include "firmware/uefi/shell.h"

namespace varnok {
namespace {

using uefi::BootServices;
using uefi::ToEfi;

EFI_GUID shellGuid = EFI_SHELL_PROTOCOL_GUID;
EFI_GUID interfaceGuid = SHELL_INTERFACE_PROTOCOL_GUID;
EFI_GUID environmentGuid = {0x47C7B221, 0xC42A, 0x11D2, {0x8E, 0x57, 0x00, 0xA0, 0xC9, 0x69, 0x72, 0x3B}};
EFI_GUID loadedImageGuid = EFI_LOADED_IMAGE_PROTOCOL_GUID;
EFI_GUID devicePathGuid = EFI_DEVICE_PATH_PROTOCOL_GUID;

std::u16string currentFolder;
void* volumePath = nullptr;

CHAR16* EFIAPI GetEnv(CHAR16* name) {
  return EqualsIgnoreCase(uefi::FromEfi(name), u"board") ? ToEfi(u"OLD-1") : nullptr;
}
void* EFIAPI GetMap(CHAR16* name) {
  return EqualsIgnoreCase(uefi::FromEfi(name), u"fs0") ? volumePath : nullptr;
}
CHAR16* EFIAPI CurDir(CHAR16*) {
  void* copy = nullptr;
  std::size_t bytes = (currentFolder.size() + 1) * sizeof(char16_t);
  if (BootServices().AllocatePool(EfiBootServicesData, bytes, &copy) != EFI_SUCCESS) return nullptr;
  std::memcpy(copy, currentFolder.c_str(), bytes);
  return static_cast<CHAR16*>(copy);
}

std::vector<std::uint8_t> ReadImage(std::u16string_view name) {
  std::vector<std::uint8_t> bytes;
  std::unique_ptr<File> file;
  if (TheFirmware().OpenFile(name, FileMode::Read, file) != kSuccess) return bytes;
  std::array<std::uint8_t, 4096> part;
  for (std::size_t count = 1; count > 0;) {
    if (file->Read(part, count) != kSuccess) break;
    bytes.insert(bytes.end(), part.begin(), part.begin() + count);
  }
  return bytes;
}

/// Starts a loaded image under the old interfaces, with the newer shell's protocol out of sight.
Status RunAsOldShell(EFI_HANDLE image, std::vector<CHAR16*>& arguments, EFI_HANDLE device) {
  EFI_SHELL_INTERFACE interface {};
  interface.Argv = arguments.data();
  interface.Argc = arguments.size();
  uefi::OldShellEnvironment environment{nullptr, GetEnv, GetMap, nullptr, nullptr, nullptr, CurDir};
  EFI_HANDLE environmentHandle = nullptr;
  EFI_HANDLE shell = nullptr;
  UINTN size = sizeof(shell);
  void* shellInterface = nullptr;
  EFI_BOOT_SERVICES& services = BootServices();
  if (services.HandleProtocol(device, &devicePathGuid, &volumePath) != EFI_SUCCESS) return 90;
  if (services.LocateHandle(ByProtocol, &shellGuid, nullptr, &size, &shell) != EFI_SUCCESS) return 91;
  services.HandleProtocol(shell, &shellGuid, &shellInterface);
  services.UninstallProtocolInterface(shell, &shellGuid, shellInterface);
  services.InstallProtocolInterface(&image, &interfaceGuid, EFI_NATIVE_INTERFACE, &interface);
  services.InstallProtocolInterface(&environmentHandle, &environmentGuid, EFI_NATIVE_INTERFACE, &environment);
  EFI_HANDLE child = image;
  Status status = services.StartImage(image, nullptr, nullptr);
  services.UninstallProtocolInterface(child, &interfaceGuid, &interface);
  services.UninstallProtocolInterface(environmentHandle, &environmentGuid, &environment);
  services.InstallProtocolInterface(&shell, &shellGuid, EFI_NATIVE_INTERFACE, shellInterface);
  return status;
}

}  // namespace

int Main(int argc, char* argv[]) {
  if (argc < 3) return 92;
  currentFolder = u"fs0:" + Widen(argv[1]);
  std::vector<std::u16string> texts;
  for (int i = 2; i < argc; ++i) texts.push_back(Widen(argv[i]));
  std::vector<CHAR16*> arguments;
  arguments.reserve(texts.size());
  for (const std::u16string& text : texts) arguments.push_back(ToEfi(text.c_str()));
  std::vector<std::uint8_t> bytes = ReadImage(texts[0]);
  void* own = nullptr;
  BootServices().HandleProtocol(uefi::ImageHandle(), &loadedImageGuid, &own);
  EFI_HANDLE device = static_cast<EFI_LOADED_IMAGE*>(own)->DeviceHandle;
  EFI_HANDLE image = nullptr;
  Status status =
      BootServices().LoadImage(FALSE, uefi::ImageHandle(), nullptr, bytes.data(), bytes.size(), &image);
  if (uefi::IsError(status)) return 93;
  return static_cast<int>((RunAsOldShell(image, arguments, device)).value);
}

}  // namespace varnok
