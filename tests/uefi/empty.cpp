// What an application costs that does nothing.
#include "firmware/uefi/platform.h"

extern "C" EFI_STATUS EFIAPI efi_main(EFI_HANDLE, EFI_SYSTEM_TABLE*) {
  return EFI_SUCCESS;
}
