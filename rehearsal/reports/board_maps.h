// A device's bytes as rows of runs: which area they belong to, and whether they changed.
#pragma once

#include <optional>
#include <vector>

#include "rehearsal/report.h"

namespace varnok::rehearsal {

std::size_t ChangedBytes(const DeviceImage& device);

/// Neighbouring bytes that are drawn alike.
struct MapRun {
  std::size_t offset = 0;
  std::size_t length = 0;
  std::optional<std::size_t> area{};  ///< index into the image's areas
  bool isChanged = false;             ///< the other image has other bytes here, or none

  bool operator==(const MapRun&) const = default;
};

/// Rows of `rowLength` bytes; equal rows in a row are one.
struct MapRow {
  std::size_t offset = 0;
  std::size_t length = 0;      ///< of all rows that it stands for
  std::vector<MapRun> runs{};  ///< of the first of them
};

/// A power of two from 32 on that makes of an image of `size` bytes at most 48 rows.
std::size_t MapRowLength(std::size_t size);
std::vector<MapRow> MapRows(const Bytes& bytes, const Bytes& other, const std::vector<Area>& areas,
                            std::size_t rowLength);

}  // namespace varnok::rehearsal
