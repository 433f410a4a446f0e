// Every fault at every request of one road: what each does to the board, and whether there is a way back.
//
// One process runs the road and is never disturbed. Before each request it forks one process for each
// disturbance, which goes on from there, so that the common beginning runs once.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "rehearsal/performance.h"

namespace varnok::rehearsal {

struct FaultChoice {
  unsigned cores = 1;
  /// Every so-manieth of all pairs of a request and a disturbance is tried; 1: all of them.
  std::size_t step = 1;
  /// Called now and then while the runs go on.
  std::function<void(std::size_t done)> progress{};
};

/// Disturbs the road that `undisturbed` is, and adds what each run came to. False, with `error` set, when the
/// system has no process or no memory for it.
bool DisturbRoad(Stage& stage, const Outcome& undisturbed, const FaultChoice& choice,
                 std::vector<FaultRun>& runs, std::string& error);

}  // namespace varnok::rehearsal
