// Services of the whole SDR subsystem: record lists, the record factory, the tag test, progress, console
// output that goes to the output file as well, and the paging prompt.
#pragma once

#include <cstdint>
#include <string_view>

#include "app/services/callbacks.h"
#include "app/services/format.h"
#include "sdr/data_set.h"

namespace varnok::SdrUtility {

/// Replaces the lists by eleven empty ones. kOutOfMemory, with no lists and a last-error text, without
/// memory.
Status InitializeSdrList(PoolPtr<SdrTypeList>& lists);
void DeInitializeSdrList(PoolPtr<SdrTypeList>& lists);
Status InitializeSdrProperties();

/// 0 when the set's selected tags select the record.
Status SDRTagsCheck(const CSdr& record, const SdrDataSet& set);

/// kTypeNotSupported for a type code outside the eleven, kOutOfMemory; `object` is null then.
Status CreateSDRTypeObject(std::uint8_t type, PoolPtr<CSdr>& object);
/// The position of a type code in kSdrTypeOrder; its size when the code is not there.
std::size_t PositionOfType(std::uint32_t type);

/// Hexadecimal digits up to the first other character; the low 32 bits of a longer number, 0 without digits.
std::uint32_t AHextoUINT32(std::string_view text);

/// Reports to the current set's progress callback.
void DisplayProgress(ProgressStyle style, const char* text, std::uint32_t current = 0,
                     std::uint32_t total = 0);
/// Dumps bytes through the current set's callback: on the console, or into `file`.
void DisplayHex(std::span<const std::uint8_t> bytes, File* file);

/// Shows text on the console and appends it to the open output file.
void PrintText(std::u16string_view text);
void PrintText(const char* text);
/// Appends text to the open output file alone.
void WriteOutput(std::u16string_view text);
void WriteOutput(const char* text);

template <class... Arguments>
void Print(const char* format, const Arguments&... arguments) {
  PrintText(FormatWide(format, arguments...));
}

/// Asks whether to go on; false to stop. Non-stop ends the paging.
bool PagingPrompt();

}  // namespace varnok::SdrUtility
