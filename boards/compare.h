// What differs between two boards, in words: by device, area and field, by record and field, and the bytes
// that no field explains. Two boards without a difference hold the same bytes, but for record IDs and the
// records' order.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "boards/source.h"

namespace varnok::boards {

enum class Change { Added, Removed, Changed };

struct Difference {
  Change change = Change::Changed;
  std::string part;  ///< "FRU 0", "SDR", "SMBIOS", "BMC"
  std::string
      group{};  ///< the area, the record or the structure; empty when the part itself is added or removed
  std::string field{};  ///< empty when the whole group is added or removed
  std::string before{};
  std::string after{};
  bool isText = false;  ///< the values are text of a device, shown in quotes
};

struct Comparison {
  std::vector<Difference> differences;
  std::vector<std::string> remarks;  ///< what differs and does not count: the order of records
};

Comparison Compare(const Source& before, const Source& after);

}  // namespace varnok::boards
