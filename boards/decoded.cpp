#include "boards/decoded.h"

#include <algorithm>

namespace varnok::boards {

const Section* Decoded::Find(const std::string& id) const {
  auto found = std::find_if(sections.begin(), sections.end(),
                            [&](const Section& section) { return section.id == id; });
  return found == sections.end() ? nullptr : &*found;
}

std::vector<Extent> UncoveredBytes(const Decoded& decoded) {
  std::vector<Extent> uncovered;
  std::size_t position = 0;
  auto close = [&](std::size_t end) {
    if (end > position) uncovered.push_back({position, end - position});
  };
  for (const Section& section : decoded.sections) {
    close(std::min(section.offset, decoded.bytes.size()));
    position = std::max(position, section.End());
  }
  close(decoded.bytes.size());
  return uncovered;
}

bool IsFill(ByteView bytes) {
  if (bytes.empty() || (bytes[0] != 0x00 && bytes[0] != 0xFF)) return false;
  return std::all_of(bytes.begin(), bytes.end(), [&](std::uint8_t byte) { return byte == bytes[0]; });
}

ByteView Part(ByteView bytes, std::size_t offset, std::size_t length) {
  if (offset >= bytes.size()) return {};
  return bytes.subspan(offset, std::min(length, bytes.size() - offset));
}

}  // namespace varnok::boards
