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

constexpr std::size_t kEntryPointRoom = 0x20;

/// What the structures behind one entry point name.
IpmiDevices FindByTable(const EFI_SYSTEM_TABLE& system, const Guid& guid) {
  IpmiDevices found;
  for (UINTN i = 0; i < system.NumberOfTableEntries && !found.kcs; ++i) {
    const EFI_CONFIGURATION_TABLE& table = system.ConfigurationTable[i];
    if (std::memcmp(&table.VendorGuid, &guid, sizeof(guid)) != 0) continue;
    auto structures =
        ReadSmbiosEntryPoint({static_cast<const std::uint8_t*>(table.VendorTable), kEntryPointRoom});
    if (!structures) continue;
    found = FindIpmiDevices({reinterpret_cast<const std::uint8_t*>(structures->address), structures->length});
  }
  return found;
}

/// Says which interface the board has instead of one that this driver speaks.
void TellOther(const EFI_SYSTEM_TABLE& system, const char16_t* name) {
  SIMPLE_TEXT_OUTPUT_INTERFACE* console = system.ConOut;
  for (const char16_t* part : {u"ipmi.efi: the BMC of this board is behind ", name,
                               u" (SMBIOS type 38); this driver reaches KCS alone.\r\n"})
    console->OutputString(console, ToEfi(part));
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
  IpmiDevices devices = FindByTable(system, kSmbios3TableGuid);
  if (!devices.kcs) devices = FindByTable(system, kSmbiosTableGuid);
  port.Connect(devices.kcs.value_or(kUsualKcs), *bootServices);
  if (!service.FindBmc()) {
    if (const char16_t* other = devices.OtherInterface(); other != nullptr) TellOther(system, other);
    return uefi_status::kNotFound;
  }
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
