// A sensor data record by the standard (IPMI v2.0, chapter 43): its fields with names for their codes,
// readings in real units, and what its sensor does not have left out. Unlike the program's own display it
// keeps no quirk.
#pragma once

#include <string>

#include "boards/decoded.h"

namespace varnok::boards {

/// Field offsets count from the start of the record. The one section has the id "record".
Decoded DecodeSdr(ByteView record);

/// What every record has, for lists and for comparing.
struct SdrHead {
  std::uint16_t id = 0;
  std::uint8_t type = 0;
  std::string typeName;  ///< "Full Sensor"
  std::string name;      ///< the ID string; for a record without one what it is about
  /// The type and the key bytes: records with the same key are the same thing.
  std::string key;
};

SdrHead HeadOf(ByteView record);

/// The record key bytes behind the header; 0 for a type without them.
std::size_t SdrKeyLength(std::uint8_t type);
inline constexpr std::size_t kSdrHeaderLength = 5;

}  // namespace varnok::boards
