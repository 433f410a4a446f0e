// What the operator sees of the SDR subsystem: progress, texts that go to the output file as well, dumps, and the
// paging prompt.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "app/services/callbacks.h"
#include "app/services/format.h"
#include "firmware/firmware.h"

namespace varnok::SdrUtility {

/// Reports to the current set's progress callback.
void DisplayProgress(ProgressStyle style, std::u16string_view text, std::uint32_t current = 0, std::uint32_t total = 0);
/// Dumps bytes through the current set's callback: on the console, or into `file`.
void DisplayHex(std::span<const std::uint8_t> bytes, File* file);

/// Shows text on the console and appends it to the open output file.
void PrintText(std::u16string_view text);
/// Appends text to the open output file alone.
void WriteOutput(std::u16string_view text);

template <class... Arguments>
void Print(const char* format, const Arguments&... arguments) {
  PrintText(FormatWide(format, arguments...));
}

/// Asks whether to go on; false to stop. Non-stop ends the paging.
bool PagingPrompt();

}  // namespace varnok::SdrUtility
