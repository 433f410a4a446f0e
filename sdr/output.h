// What the operator sees of the SDR subsystem: progress, texts that go to the output file as well, dumps, and
// the paging prompt.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "app/services/callbacks.h"
#include "app/services/format.h"
#include "firmware/firmware.h"

namespace varnok::SdrUtility {

/// Reports to the current set's progress callback.
void DisplayProgress(ProgressStyle style, std::u16string_view text, std::uint32_t current = 0,
                     std::uint32_t total = 0);
/// Dumps bytes through the current set's callback: on the console, or into `file`.
void DisplayHex(std::span<const std::uint8_t> bytes, File* file);

/// Shows text on the console and appends it to the open output file.
void PrintText(std::u16string_view text);
/// Formats at most 256 characters and shows them so.
template <class... Arguments>
void Print(const char* format, const Arguments&... arguments) {
  std::array<char16_t, 256> room;
  PrintText(FormatInto(room, format, arguments...));
}
/// Appends text to the open output file alone.
void WriteOutput(std::u16string_view text);

/// Asks whether to go on; false to stop. Non-stop ends the paging.
bool PagingPrompt();

}  // namespace varnok::SdrUtility
