// Every fault at every request of one road: what each does to the board, and whether there is a way back.
//
// One process runs the road and is never disturbed. Before each request it forks one process for each
// disturbance, which goes on from there, so that the common beginning runs once.
#pragma once

#include <functional>
#include <string>

#include "rehearsal/stage.h"

namespace varnok::rehearsal {

struct FaultChoice {
  unsigned cores = 1;
  /// Every so-manieth of all pairs of a request and a disturbance is tried; 1: all of them.
  std::size_t step = 1;
  /// Called now and then while the runs go on.
  std::function<void(std::size_t done)> progress = [](std::size_t) {};
};

/// Disturbs each road of the report that has its traffic, and adds what came of it. False, with `error` set,
/// when the system has no process or no memory for it.
bool DisturbRoads(Stage& stage, const FaultChoice& choice, Report& report, std::string& error);

}  // namespace varnok::rehearsal
