// What a snapshot found, for people: the same lines on the desk and under UEFI.
#pragma once

#include <string>
#include <vector>

#include "boards/snapshot/snapshot.h"

namespace varnok::boards {

/// Who the board is, what of it was read, and what could not be.
std::vector<std::string> SnapshotLines(const Snapshot& snapshot);

}  // namespace varnok::boards
