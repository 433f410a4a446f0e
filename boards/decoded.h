// What a FRU image, a sensor data record or an SMBIOS table says, read by the public standards: sections of
// labelled fields with the bytes that they stand in, and what is wrong with them. Whatever shows, compares or
// writes text works on this one shape.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "boards/board_data.h"

namespace varnok::boards {

using ByteView = std::span<const std::uint8_t>;

/// What a field is to a person.
enum class Role {
  Content,
  Layout,       ///< versions, lengths and places: compared, but seldom worth a line
  Consequence,  ///< checksums, padding and their like: of interest when nothing else differs
};

struct Field {
  std::string label;
  std::string value;       ///< UTF-8 without control characters
  std::string encoding;    ///< "text", "6-bit", "BCD plus", "Unicode", "binary"; empty for what has none
  std::size_t offset = 0;  ///< from the start of the decoded bytes
  std::size_t length = 0;
  std::optional<double> number;  ///< the value where it is a quantity, in `unit`
  std::string unit;
  Role role = Role::Content;
};

struct Problem {
  std::size_t offset = 0;
  std::string text;
};

/// An area of a FRU image or one of its multi-records.
struct Section {
  std::string id;     ///< "chassis", "multi-record 2": the same in two boards that are compared
  std::string title;  ///< for people
  std::size_t offset = 0;
  std::size_t length = 0;
  std::optional<std::size_t> freeBytes;
  std::optional<bool> isChecksumGood;
  std::vector<Field> fields;

  std::size_t End() const { return offset + length; }
};

struct Decoded {
  Bytes bytes;
  std::vector<Section> sections;  ///< by offset, not overlapping unless a problem says so
  std::vector<Problem> problems;  ///< by offset

  const Section* Find(const std::string& id) const;
};

/// A run of bytes.
struct Extent {
  std::size_t offset = 0;
  std::size_t length = 0;
};

/// What no section holds, by offset.
std::vector<Extent> UncoveredBytes(const Decoded& decoded);
/// True when all bytes are `bytes[0]` and that is 00h or FFh: erased, or never written.
bool IsFill(ByteView bytes);
/// `bytes[offset, offset + length)`, cut to what there is.
ByteView Part(ByteView bytes, std::size_t offset, std::size_t length);

}  // namespace varnok::boards
