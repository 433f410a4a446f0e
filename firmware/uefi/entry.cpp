// The image entry: starts the runtime and runs the program.
#include "firmware/entry.h"
#include "firmware/uefi/runtime.h"

extern "C" EFI_STATUS efi_main(EFI_HANDLE image, EFI_SYSTEM_TABLE* table) {
  varnok::uefi::StartRuntime(image, table);
  char name[] = "VARNOK";
  char* arguments[] = {name, nullptr};
  return static_cast<EFI_STATUS>(varnok::Main(1, arguments));
}
