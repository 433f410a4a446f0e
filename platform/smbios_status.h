// Statuses of the SMBIOS access (03) and of its display (0D). Look-ups for probes use uefi_status::kNotFound.
#pragma once

#include "firmware/status.h"

namespace varnok::smbios_status {

inline constexpr Status kNotFound = 0xC000000000030002;     ///< no such structure, or no valid entry point
inline constexpr Status kUnknownType = 0xC000000000030003;  ///< asked for a type that is not decoded
inline constexpr Status kNoMemory = uefi_status::kBufferTooSmall;  ///< no memory for the copy of a structure
inline constexpr Status kNoOutputFile = 0xC0000000000D0001;  ///< the display's output file cannot be opened

}  // namespace varnok::smbios_status
