// ipmi.efi: finds the board's KCS interface and installs the IPMI transport protocol over it. The image stays
// loaded while the protocol is installed; it unloads itself when there is no BMC, or when the protocol is
// there already.
#include <cstring>

#include "driver/hardware_port.h"
#include "driver/ipmi_service.h"
#include "driver/kcs_location.h"
#include "firmware/uefi/platform.h"

extern "C" [[noreturn]] void __cxa_pure_virtual() {
  for (;;) {
  }
}

namespace varnok {
namespace {

using uefi::ToEfi;

constinit HardwarePort port;
constinit IpmiService service(port);
constinit EFI_HANDLE serviceHandle = nullptr;
constinit EFI_BOOT_SERVICES* bootServices = nullptr;

constexpr Guid kSmbios3Guid = {0xF2FD1544, 0x9794, 0x4A2C, {0x99, 0x2E, 0xE5, 0xBB, 0xCF, 0x20, 0xE3, 0x94}};
constexpr std::size_t kEntryPointRoom = 0x20;

/// Looks for the interface in the structures behind one entry point.
bool FindByTable(const EFI_SYSTEM_TABLE& system, const Guid& guid, KcsLocation& location) {
  for (UINTN i = 0; i < system.NumberOfTableEntries; ++i) {
    const EFI_CONFIGURATION_TABLE& table = system.ConfigurationTable[i];
    if (std::memcmp(&table.VendorGuid, &guid, sizeof(guid)) != 0) continue;
    auto structures =
        ReadSmbiosEntryPoint({static_cast<const std::uint8_t*>(table.VendorTable), kEntryPointRoom});
    if (!structures) continue;
    auto found = FindKcs({reinterpret_cast<const std::uint8_t*>(structures->address), structures->length});
    if (!found) continue;
    location = *found;
    return true;
  }
  return false;
}

EFI_STATUS EFIAPI Unload(EFI_HANDLE) {
  return bootServices->UninstallProtocolInterface(serviceHandle, ToEfi(kIpmiProtocolGuid),
                                                  static_cast<IpmiProtocol*>(&service));
}

Status Start(EFI_HANDLE image, const EFI_SYSTEM_TABLE& system) {
  bootServices = system.BootServices;
  void* installed = nullptr;
  if (bootServices->LocateProtocol(ToEfi(kIpmiProtocolGuid), nullptr, &installed) == EFI_SUCCESS)
    return uefi_status::kAlreadyStarted;
  KcsLocation location = kUsualKcs;
  if (!FindByTable(system, kSmbios3Guid, location)) (void)FindByTable(system, kSmbiosTableGuid, location);
  port.Connect(location, *bootServices);
  if (!service.FindBmc()) return uefi_status::kNotFound;
  void* loadedImage = nullptr;
  if (bootServices->HandleProtocol(image, ToEfi(uefi::kLoadedImageGuid), &loadedImage) == EFI_SUCCESS)
    static_cast<EFI_LOADED_IMAGE*>(loadedImage)->Unload = Unload;
  return bootServices->InstallProtocolInterface(&serviceHandle, ToEfi(kIpmiProtocolGuid),
                                                EFI_NATIVE_INTERFACE, static_cast<IpmiProtocol*>(&service));
}

}  // namespace
}  // namespace varnok

extern "C" EFI_STATUS EFIAPI efi_main(EFI_HANDLE image, EFI_SYSTEM_TABLE* system) {
  return varnok::Start(image, *system).value;
}
