// Ways back from a board that a disturbed run left: the same package again, and restore.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "rehearsal/performance.h"

namespace varnok::rehearsal {

/// Boards, each different one kept once.
class DistinctImages {
 public:
  /// Its place among the different ones.
  std::size_t Add(Images images);
  const std::vector<Images>& Distinct() const { return images_; }

 private:
  std::vector<Images> images_;
  std::map<std::uint64_t, std::vector<std::size_t>> byHash_;
};

struct WayBack {
  bool canBeShown =
      true;  ///< the program shows each device and the SDRs, where it could before or should now
  bool rerunReaches = true;    ///< the road again, with its answers, leaves the wanted board
  bool restoreReaches = true;  ///< restore leaves the board that the rehearsal began with
};

/// For each of `boards`, what the road and restore make of it. False, with `error` set, when the system has
/// no process or no memory for it.
bool FindWaysBack(Stage& stage, const Outcome& undisturbed, const std::vector<Images>& boards, unsigned cores,
                  std::vector<WayBack>& ways, std::string& error);

}  // namespace varnok::rehearsal
