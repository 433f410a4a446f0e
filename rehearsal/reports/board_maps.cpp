#include "rehearsal/reports/board_maps.h"

#include <algorithm>

namespace varnok::rehearsal {
namespace {

bool IsChangedAt(const Bytes& bytes, const Bytes& other, std::size_t offset) {
  return offset >= other.size() || bytes[offset] != other[offset];
}

/// The area of each byte. A later area covers an earlier one; what leaves the image is cut.
std::vector<std::optional<std::size_t>> PaintAreas(std::size_t size, const std::vector<Area>& areas) {
  std::vector<std::optional<std::size_t>> painted(size);
  for (std::size_t i = 0; i < areas.size(); ++i) {
    if (areas[i].offset >= size) continue;
    const std::size_t length = std::min(areas[i].length, size - areas[i].offset);
    std::fill_n(painted.begin() + static_cast<std::ptrdiff_t>(areas[i].offset), length, i);
  }
  return painted;
}

/// Rows that look alike: one run over the whole width, of one area and one state.
bool IsMoreOf(const MapRow& row, const MapRow& next) {
  return row.runs.size() == 1 && next.runs.size() == 1 && row.runs[0].area == next.runs[0].area &&
         row.runs[0].isChanged == next.runs[0].isChanged && row.runs[0].length == next.runs[0].length;
}

}  // namespace

std::size_t ChangedBytes(const DeviceImage& device) {
  const Bytes& longer = device.before.size() > device.after.size() ? device.before : device.after;
  const Bytes& shorter = &longer == &device.before ? device.after : device.before;
  std::size_t changed = 0;
  for (std::size_t i = 0; i < longer.size(); ++i) changed += IsChangedAt(longer, shorter, i) ? 1 : 0;
  return changed;
}

std::size_t MapRowLength(std::size_t size) {
  std::size_t length = 32;
  while (size / length > 48) length *= 2;
  return length;
}

std::vector<MapRow> MapRows(const Bytes& bytes, const Bytes& other, const std::vector<Area>& areas,
                            std::size_t rowLength) {
  const auto painted = PaintAreas(bytes.size(), areas);
  // More columns than this nobody sees; of those that a column stands for one may have changed.
  const std::size_t unit = std::max<std::size_t>(rowLength / 128, 1);
  std::vector<MapRow> rows;
  for (std::size_t offset = 0; offset < bytes.size(); offset += rowLength) {
    MapRow row{offset, std::min(rowLength, bytes.size() - offset)};
    for (std::size_t i = offset; i < offset + row.length; i += unit) {
      const std::size_t length = std::min(unit, offset + row.length - i);
      bool isChanged = false;
      for (std::size_t at = i; at < i + length; ++at) isChanged |= IsChangedAt(bytes, other, at);
      if (!row.runs.empty() && row.runs.back().area == painted[i] && row.runs.back().isChanged == isChanged)
        row.runs.back().length += length;
      else
        row.runs.push_back({i, length, painted[i], isChanged});
    }
    if (!rows.empty() && IsMoreOf(rows.back(), row))
      rows.back().length += row.length;
    else
      rows.push_back(std::move(row));
  }
  return rows;
}

}  // namespace varnok::rehearsal
