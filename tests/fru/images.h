// Images for FRU tests, built apart from the code under test: areas from field lists, headers and records
// with their checksums.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <numeric>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/services/format.h"

namespace varnok::testing {

using Bytes = std::vector<std::uint8_t>;

inline std::uint8_t Complement(const Bytes& bytes) {
  return static_cast<std::uint8_t>(-std::accumulate(bytes.begin(), bytes.end(), 0));
}

inline Bytes Join(std::initializer_list<Bytes> parts) {
  Bytes joined;
  for (const Bytes& part : parts) joined.insert(joined.end(), part.begin(), part.end());
  return joined;
}

/// 8-bit text fields, one after the other.
inline Bytes Fields(std::initializer_list<std::string_view> texts) {
  Bytes fields;
  for (std::string_view text : texts) {
    fields.push_back(static_cast<std::uint8_t>(0xC0 | text.size()));
    fields.insert(fields.end(), text.begin(), text.end());
  }
  return fields;
}

/// Version, length, the fixed bytes and fields, the end marker: what a file may give of an area.
inline Bytes OpenArea(std::uint8_t units, const Bytes& content) {
  return Join({{1, units}, content, {0xC1}});
}
/// The whole area.
inline Bytes Area(std::uint8_t units, const Bytes& content) {
  Bytes area = OpenArea(units, content);
  area.resize(units * 8u - 1);
  area.push_back(Complement(area));
  return area;
}

inline const Bytes kChassisContent = Join({{0x17}, Fields({"PN-1", "SN-1", "one", "two", "three"})});
inline const Bytes kBoardContent =
    Join({{0x00, 0x03, 0x02, 0x01}, Fields({"Maker", "Board", "SN-2", "PN-2", "b.fru", "extra"})});
inline const Bytes kProductContent =
    Join({{0x19}, Fields({"Maker", "Server", "PN-3", "R1", "SN-3", "", "p.fru"})});

inline Bytes Header(const Bytes& offsets) {
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

/// All five areas, in the order in which the program writes them (or with other offsets in the header):
/// internal use at 8 (8 bytes), chassis at 16 (40), board at 56 (48), product at 104 (48), records at 152 (8
/// + 9 bytes); erased behind them.
inline Bytes FullImage(const Bytes& offsets = {1, 2, 7, 13, 19}) {
  Bytes image = Join({Header(offsets),
                      {0x01, 2, 3, 4, 5, 6, 7, 8},
                      Area(5, kChassisContent),
                      Area(6, kBoardContent),
                      Area(6, kProductContent),
                      Record(0xC0, {1, 2, 3}, false),
                      Record(0xC1, {4, 5, 6, 7}, true)});
  image.resize(256, 0xFF);
  return image;
}

/// The same bytes with some of them, by offset, another.
inline Bytes Changed(Bytes bytes, std::initializer_list<std::pair<std::size_t, int>> changes) {
  for (auto [offset, value] : changes) bytes.at(offset) = static_cast<std::uint8_t>(value);
  return bytes;
}

/// The blocks of a FRU file that holds FullImage(), or an image of the same areas.
inline std::string AreaBlocks(const Bytes& image) {
  constexpr std::pair<const char*, std::size_t> kBlockEnds[] = {
      {"COMMON", 8}, {"INTERNAL", 16}, {"CHASSIS", 56}, {"BOARD", 104}, {"PRODUCT", 152}, {"MULTIREC", 169}};
  std::string text;
  std::size_t offset = 0;
  for (auto [tag, end] : kBlockEnds) {
    text += Format("\n_SEE_%s\n", tag);
    for (; offset < end; ++offset) text += Format("%02X ", image[offset]);
  }
  return text + "\n)\n";
}

inline std::span<const std::uint8_t> AsBytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}
inline std::string AsText(std::span<const std::uint8_t> bytes) {
  return std::string(bytes.begin(), bytes.end());
}

}  // namespace varnok::testing
