// VARNOK.EFI, which tells at its end what it took: the processor's clock when it first wrote to the console
// and when it was done, and the most pool memory that it held. It does not rest between requests.
#include <utility>

#include "app/services/console.h"
#include "firmware/entry.h"
#include "firmware/uefi/pool_blocks.h"
#include "firmware/uefi/runtime.h"

// The image's entry calls what this file defines (CMakeLists.txt); the program's own is called from here.
#undef Main
namespace varnok {

int Main(int argc, char* argv[]);  // NOLINT(readability-redundant-declaration): entry.h declares MeteredMain

namespace {

// Microseconds. What waits for an interface's register waits for less, what waits for a BMC's work for more.
constexpr UINTN kShortestRest = 1000;
constexpr UINTN kLongestRest = 100'000;

decltype(SIMPLE_TEXT_OUTPUT_INTERFACE::OutputString) showText;
decltype(EFI_BOOT_SERVICES::Stall) stall;
std::uint64_t firstShown = 0;

EFI_STATUS EFIAPI ShowFirstText(SIMPLE_TEXT_OUTPUT_INTERFACE* console, CHAR16* text) {
  if (firstShown == 0) firstShown = __builtin_ia32_rdtsc();
  return showText(console, text);
}

EFI_STATUS EFIAPI StallUnlessResting(UINTN microseconds) {
  const bool isRest = microseconds >= kShortestRest && microseconds <= kLongestRest;
  return isRest ? EFI_SUCCESS : stall(microseconds);
}

}  // namespace

int MeteredMain(int argc, char* argv[]) {
  SIMPLE_TEXT_OUTPUT_INTERFACE& console = *uefi::SystemTable().ConOut;
  showText = std::exchange(console.OutputString, ShowFirstText);
  stall = std::exchange(uefi::BootServices().Stall, StallUnlessResting);
  const int status = Main(argc, argv);
  uefi::BootServices().Stall = stall;
  console.OutputString = showText;
  Print("\npool %d\nshown %d\ndone %d\n", uefi::MostPoolBytes(), firstShown, __builtin_ia32_rdtsc());
  return status;
}

}  // namespace varnok
