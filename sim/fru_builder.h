// Builds FRU images from field lists (Platform Management FRU Information Storage Definition v1.0).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "sim/image.h"

namespace varnok::sim {

/// One field of an info area: 8-bit text, or bytes of another type code.
struct FruField {
  FruField(const char* content) : typeCode(3), data(content) {}  // NOLINT: field lists read as lists of texts
  FruField(std::string content) : typeCode(3), data(std::move(content)) {}  // NOLINT
  FruField(std::uint8_t type, std::string bytes) : typeCode(type), data(std::move(bytes)) {}

  std::uint8_t typeCode;  ///< 0 binary, 1 BCD plus, 2 packed 6-bit ASCII, 3 text
  std::string data;  ///< at most 63 bytes as they are stored; text of one character is padded with a blank
};

struct FruRecord {
  std::uint8_t type;
  Bytes data;
};

/// Areas that are empty are left out of the image.
struct FruLayout {
  Bytes internalUse;
  std::uint8_t chassisType = 0x17;  ///< SMBIOS chassis type
  std::vector<FruField> chassis;    ///< part number, serial number, custom fields
  std::uint32_t boardMinutes = 0;   ///< manufacturing time, in minutes since 1996-01-01
  std::vector<FruField>
      board;  ///< manufacturer, product name, serial, part number, FRU file ID, custom fields
  std::vector<FruField>
      product;  ///< manufacturer, name, part number, version, serial, asset tag, FRU file ID, custom
  std::vector<FruRecord> records;
};

/// An image of `size` bytes, erased (FFh) behind its last area. Throws BoardError when the areas do not fit.
Bytes BuildFruImage(const FruLayout& layout, std::size_t size);

}  // namespace varnok::sim
