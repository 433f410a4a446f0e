// Makes the firmware's long waits halt the processor. Where the machine's time leaps over a halt they take no
// time then; the firmware's own Stall reads a timer without a pause. Stays loaded.
#include "firmware/uefi/platform.h"

namespace varnok {
namespace {

constexpr UINTN kTick = 10'000;  // µs; shorter waits end before the next one

EFI_BOOT_SERVICES* services = nullptr;
EFI_EVENT waited = nullptr;
EFI_STATUS(EFIAPI* stall)(UINTN) = nullptr;

bool HasInterrupts() {
  return (__builtin_ia32_readeflags_u64() & 0x200) != 0;
}

EFI_STATUS EFIAPI HaltingStall(UINTN microseconds) {
  const bool isLong = microseconds >= kTick && HasInterrupts();
  if (!isLong || services->SetTimer(waited, TimerRelative, microseconds * 10) != EFI_SUCCESS)
    return stall(microseconds);
  while (services->CheckEvent(waited) == EFI_NOT_READY) asm volatile("hlt");
  return EFI_SUCCESS;
}

}  // namespace
}  // namespace varnok

extern "C" EFI_STATUS EFIAPI efi_main(EFI_HANDLE, EFI_SYSTEM_TABLE* system) {
  using namespace varnok;
  services = system->BootServices;
  const EFI_STATUS status = services->CreateEvent(EVT_TIMER, TPL_CALLBACK, nullptr, nullptr, &waited);
  if (status != EFI_SUCCESS) return status;
  stall = services->Stall;
  services->Stall = HaltingStall;
  return EFI_SUCCESS;
}
