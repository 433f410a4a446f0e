// The image's own handles and the ways into and out of the freestanding runtime.
#pragma once

#include "firmware/uefi/platform.h"

namespace varnok::uefi {

EFI_SYSTEM_TABLE& SystemTable();
EFI_HANDLE ImageHandle();

/// Called once at the image's entry, before anything else: keeps the handles and builds namespace-scope objects.
void StartRuntime(EFI_HANDLE image, EFI_SYSTEM_TABLE* table);

/// Shows a message and leaves the image with an out-of-resources status.
[[noreturn]] void EndProgram(const char16_t* message);

}  // namespace varnok::uefi
