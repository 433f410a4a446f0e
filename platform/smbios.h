// SMBIOS: the firmware's table, found by its GUID, walked by type and handle; the display of the system,
// board and chassis records; the look-ups that script probes make.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "app/services/format.h"
#include "firmware/guid.h"
#include "firmware/status.h"
#include "platform/smbios_records.h"
#include "platform/smbios_status.h"

namespace varnok {

/// Any type or any handle, in SmbiosGetStructure; its cursor when nothing was found.
inline constexpr std::uint32_t kSmbiosAny = 65535;

/// Finds the table; uefi_status::kNotFound without one.
Status SmbiosInitialize();

/// Finds the next structure of `type` and `handle`, from byte offset `cursor` of the table on (from the start
/// when a handle is given); `cursor` is behind it then. smbios_status::kNotFound with `cursor` kSmbiosAny;
/// kNoMemory for the copy of a structure; kUnknownType, with the copy in `record`, when `type` names a type
/// that is not decoded.
Status SmbiosGetStructure(std::uint32_t type, std::uint32_t handle, SmbiosRecord& record, std::size_t& size,
                          std::uint32_t& cursor);

/// Shows types 1, 2 and 3. Stops at the first missing one with its status; kNoOutputFile.
Status SmbiosDisplay();

/// Names a file that the display appends to as well; an empty name ends that.
void SmbiosSetOutputFile(std::u16string_view name);

/// The text of the last failed display; null when there was none. Always kSuccess.
Status SmbiosGetLastErrorMessage(const char16_t*& text);

/// Shows text, and appends it to the output file while a display has one open.
void SmbiosPrintText(std::u16string_view text);

template <class... Arguments>
void SmbiosPrint(const char* format, const Arguments&... arguments) {
  SmbiosPrintText(FormatWide(format, arguments...));
}

/// Formats into `buffer`, cut to its size with the NUL that ends it; nothing is written to an empty one.
template <class... Arguments>
void SmbiosFormat(std::span<char16_t> buffer, const char* format, const Arguments&... arguments) {
  if (buffer.empty()) return;
  std::u16string_view text = FormatInto(buffer.first(buffer.size() - 1), format, arguments...);
  buffer[text.size()] = u'\0';
}

// Look-ups; uefi_status::kNotFound when a structure is missing. The result is unchanged then.

/// The version string of type 0.
Status SmbiosGetBiosVersion(std::string& text);
/// The product string of type 2.
Status SmbiosGetBoardProductName(std::string& text);
/// The largest size field of as many type 17 records as the first type 16 record counts: MiB, with bit 15
/// KiB.
Status SmbiosGetMemoryDeviceSize(std::uint32_t& size);
/// The first type 4 record in whose socket designation the first decimal number is `socket`; a designation
/// without digits counts as 65535.
Status SmbiosGetProcessorBySocket(std::uint32_t socket, SmbiosProcessor& processor);
/// The type 4 record at position `index`, from 0; `count` is how many there are, found or not.
Status SmbiosGetProcessorByIndex(std::uint32_t index, std::uint32_t& count, SmbiosProcessor& processor);

}  // namespace varnok
