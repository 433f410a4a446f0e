// Images for FRU tests, built apart from the code under test: areas from field lists, headers and records
// with their checksums.
#pragma once

#include <cstdint>
#include <numeric>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "app/services/text.h"
#include "fru/fru_session.h"
#include "tests/support/test_firmware.h"

namespace varnok::testing {

using Bytes = std::vector<std::uint8_t>;

inline std::uint8_t Complement(const Bytes& bytes) {
  return static_cast<std::uint8_t>(-std::accumulate(bytes.begin(), bytes.end(), 0));
}

inline Bytes Join(std::initializer_list<Bytes> parts) {
  Bytes joined;
  for (const Bytes& part : parts)
    for (std::uint8_t byte : part) joined.push_back(byte);
  return joined;
}

/// A text field; `type` is the type code in bits 7-6.
inline Bytes Field(std::string_view text, std::uint8_t type = 0xC0) {
  Bytes field{static_cast<std::uint8_t>(type | text.size())};
  for (char character : text) field.push_back(static_cast<std::uint8_t>(character));
  return field;
}

inline Bytes Seal(Bytes area, std::uint8_t units) {
  area[1] = units;
  area.resize(units * 8u - 1);
  area.push_back(Complement(area));
  return area;
}

/// Version, length, the fixed bytes and fields, the end marker: what a file may give of an area.
inline Bytes OpenArea(std::uint8_t units, const Bytes& content) {
  return Join({{1, units}, content, {0xC1}});
}
/// The whole area.
inline Bytes Area(std::uint8_t units, const Bytes& content) {
  return Seal(OpenArea(units, content), units);
}

inline Bytes ChassisContent() {
  return Join({{0x17}, Field("PN-1"), Field("SN-1"), Field("one"), Field("two"), Field("three")});
}
inline Bytes BoardContent() {
  return Join({{0x00, 0x03, 0x02, 0x01},
               Field("Maker"),
               Field("Board"),
               Field("SN-2"),
               Field("PN-2"),
               Field("b.fru"),
               Field("extra")});
}
inline Bytes ProductContent() {
  return Join({{0x19},
               Field("Maker"),
               Field("Server"),
               Field("PN-3"),
               Field("R1"),
               Field("SN-3"),
               Field(""),
               Field("p.fru")});
}

inline Bytes Header(Bytes offsets) {
  Bytes header = Join({{1}, offsets, {0}});
  header.push_back(Complement(header));
  return header;
}

inline Bytes Record(std::uint8_t type, const Bytes& data, bool isLast) {
  Bytes record{type, static_cast<std::uint8_t>(isLast ? 0x82 : 0x02), static_cast<std::uint8_t>(data.size()),
               Complement(data)};
  record.push_back(Complement(record));
  return Join({record, data});
}

/// All five areas, in the order in which the program writes them: internal use at 8 (8 bytes), chassis at 16
/// (40), board at 56 (48), product at 104 (48), records at 152 (8 + 9 bytes); erased behind them.
inline Bytes FullImage() {
  Bytes image = Join({Header({1, 2, 7, 13, 19}),
                      {0x01, 2, 3, 4, 5, 6, 7, 8},
                      Area(5, ChassisContent()),
                      Area(6, BoardContent()),
                      Area(6, ProductContent()),
                      Record(0xC0, {1, 2, 3}, false),
                      Record(0xC1, {4, 5, 6, 7}, true)});
  image.resize(256, 0xFF);
  return image;
}

/// The same image with one byte another.
inline Bytes Damaged(std::size_t offset, std::uint8_t value) {
  Bytes image = FullImage();
  image[offset] = value;
  return image;
}

/// The last error, narrowed; empty when there is none. Read past the manager, which leaves no trace lines.
inline std::string LastFruError() {
  return Narrow(TheFruSession().lastError.data());
}

inline std::span<const std::uint8_t> AsBytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}
inline std::string AsText(std::span<const std::uint8_t> bytes) {
  return std::string(bytes.begin(), bytes.end());
}

}  // namespace varnok::testing
