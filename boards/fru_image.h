// A FRU image by the standard (IPMI Platform Management FRU Information Storage Definition v1.0): the areas
// that its common header names, their fields in every encoding, its multi-records, and whatever is wrong with
// them. Unlike the program's own display it keeps no quirk, and it reads on where an image is damaged.
#pragma once

#include <string_view>

#include "boards/decoded.h"

namespace varnok::boards {

inline constexpr std::size_t kFruUnit = 8;
inline constexpr std::size_t kFruHeaderLength = 8;
inline constexpr std::uint8_t kFruEndOfFields = 0xC1;

/// An area with a place in the common header, in the header's order.
struct FruAreaRow {
  const char* id;     ///< of its section
  const char* title;  ///< "Board Info Area"
};
inline constexpr FruAreaRow kFruAreas[] = {{"internal", "Internal Use Area"},
                                           {"chassis", "Chassis Info Area"},
                                           {"board", "Board Info Area"},
                                           {"product", "Product Info Area"},
                                           {"multi-record", "Multi-Record Area"}};
inline constexpr std::size_t kInternalUseRow = 0;
inline constexpr std::size_t kMultiRecordRow = 4;

/// Sections "header", "internal", "chassis", "board", "product", "multi-record 1", ... Field offsets count
/// from the start of the image; a field with an encoding begins with its type/length byte.
Decoded DecodeFru(ByteView image);

/// What the number of an enclosure type means (SMBIOS, table 17); "type 2Ah" for one without a name.
std::string ChassisTypeName(std::uint8_t type);

/// The data of one multi-record by its type (sections 18.1 to 18.7), appended to `section`. `offset` is that
/// of the data in the image.
void DecodeRecordData(std::uint8_t type, ByteView data, std::size_t offset, Section& section);
std::string RecordTypeName(std::uint8_t type);

}  // namespace varnok::boards
