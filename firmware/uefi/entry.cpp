// The image entry: starts the runtime, hands the shell's arguments to the program and its result to the
// shell.
#include "firmware/entry.h"

#include "firmware/argument_vector.h"
#include "firmware/uefi/files.h"
#include "firmware/uefi/pool_blocks.h"
#include "firmware/uefi/runtime.h"
#include "firmware/uefi/uefi_firmware.h"

namespace varnok::uefi {
namespace {

// The C library's error number for exhausted memory (ENOMEM).
constexpr int kOutOfMemoryNumber = 12;

int RunProgram() {
  UefiFirmware firmware;
  static constexpr const char16_t* kNoShellArguments[] = {u"VARNOK"};
  std::span<const char16_t* const> arguments = firmware.TheShell().Arguments();
  if (arguments.empty()) arguments = kNoShellArguments;
  ArgumentVector vector;
  if (!vector.Build(arguments)) {
    firmware.WriteErrorOutput(u"varnok: out of memory\n");
    return kOutOfMemoryNumber;
  }
  int status = Main(vector.Count(), vector.Pointers());
  EndRuntime();
  return status;
}

}  // namespace
}  // namespace varnok::uefi

extern "C" EFI_STATUS EFIAPI efi_main(EFI_HANDLE image, EFI_SYSTEM_TABLE* table) {
  varnok::uefi::StartRuntime(image, table);
  int status = varnok::uefi::RunProgram();
  // Module state is never destroyed, and the firmware keeps what an image does not return.
  varnok::uefi::CloseAllFiles();
  varnok::uefi::FreeAllPoolBlocks();
  return static_cast<EFI_STATUS>(status);
}
