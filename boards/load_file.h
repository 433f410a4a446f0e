// Load files as the program reads them: FRU and SDR files go through its own readers, so that what the
// companion says of a file is what the program makes of it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "boards/board_data.h"

namespace varnok::boards {

/// The bytes that programming the FRU file `text` writes, from the first byte of the device on. Nothing, with
/// the program's message in `error`, for a file that it refuses.
std::optional<Bytes> ReadFruFile(const std::string& text, std::string& error);

/// The records of the SDR file `text` in the order in which they are written. False, with the program's
/// message in `error`, for a file that it refuses.
bool ReadSdrFile(const std::string& text, std::vector<Bytes>& records, std::string& error);

/// True when an SDR file can hold the record: its type and its length are ones that the program takes.
bool IsRecordForFile(std::span<const std::uint8_t> record);

/// The order of the record's type among those that are written; the number of types for one that is not.
std::size_t WritingOrder(std::uint8_t recordType);

}  // namespace varnok::boards
