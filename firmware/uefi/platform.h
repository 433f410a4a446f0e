// The public UEFI headers, as this build includes them, and their types beside the program's own.
#pragma once

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
extern "C" {
#include <efi.h>
#include <efishell.h>
#include <efishellintf.h>
}
#pragma GCC diagnostic pop

#include "firmware/guid.h"
#include "firmware/status.h"

namespace varnok::uefi {

static_assert(sizeof(EFI_GUID) == sizeof(Guid) && sizeof(CHAR16) == sizeof(char16_t));
static_assert(sizeof(EFI_STATUS) == sizeof(Status));

/// The image that a handle stands for (UEFI 2.10, section 9.1).
inline constexpr Guid kLoadedImageGuid{
    0x5B1B31A1, 0x9562, 0x11D2, {0x8E, 0x3F, 0x00, 0xA0, 0xC9, 0x69, 0x72, 0x3B}};

inline bool IsError(Status status) {
  return (status.value & uefi_status::kError.value) != 0;
}

/// The headers declare input GUIDs and texts without const; no service writes through them.
inline EFI_GUID* ToEfi(const Guid& guid) {
  return reinterpret_cast<EFI_GUID*>(const_cast<Guid*>(&guid));
}
inline CHAR16* ToEfi(const char16_t* text) {
  return reinterpret_cast<CHAR16*>(const_cast<char16_t*>(text));
}
inline const char16_t* FromEfi(const CHAR16* text) {
  return reinterpret_cast<const char16_t*>(text);
}

}  // namespace varnok::uefi
