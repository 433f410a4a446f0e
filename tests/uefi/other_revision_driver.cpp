// A driver of another make: it installs the IPMI transport protocol with a revision that the program does not
// know.
#include "firmware/ipmi_protocol.h"
#include "firmware/uefi/platform.h"

namespace varnok {
namespace {

constinit IpmiProtocol protocol{kIpmiProtocolRevision + 1, nullptr, nullptr};
constinit EFI_HANDLE handle = nullptr;

}  // namespace
}  // namespace varnok

extern "C" EFI_STATUS EFIAPI efi_main(EFI_HANDLE, EFI_SYSTEM_TABLE* system) {
  using namespace varnok;
  return system->BootServices->InstallProtocolInterface(&handle, uefi::ToEfi(kIpmiProtocolGuid),
                                                        EFI_NATIVE_INTERFACE, &protocol);
}
