// The image's own handles and the ways into and out of the freestanding runtime.
#pragma once

#include "firmware/uefi/platform.h"

namespace varnok::uefi {

EFI_SYSTEM_TABLE& SystemTable();
EFI_BOOT_SERVICES& BootServices();
EFI_HANDLE ImageHandle();

/// Called once at the image's entry, before anything else: keeps the handles and builds namespace-scope
/// objects.
void StartRuntime(EFI_HANDLE image, EFI_SYSTEM_TABLE* table);

/// Destroys namespace-scope and static objects, latest first. Called once, when the program has returned.
void EndRuntime();

/// Shows a message and leaves the image with `status`. No destructor runs: open files are closed and pool
/// memory is freed by their registers.
[[noreturn]] void EndProgram(const char16_t* message, Status status);

}  // namespace varnok::uefi
