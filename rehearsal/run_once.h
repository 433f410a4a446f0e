// One run of the program over the stage's board, as the process that calls it sees it.
#pragma once

#include "rehearsal/performance.h"

namespace varnok::rehearsal {

/// Forks a process that runs the program, and waits for it. A run that a signal ends has that signal's name
/// as its message. With `isLive` the console is this process's. False, with `error` set, when the system has
/// no process or no memory for it.
bool RunOnce(Stage& stage, Answerer& answerer, Outcome& outcome, std::string& error, bool isLive = false);

/// What a process that ended without handing its outcome over left: the signal that ended it.
Outcome OutcomeOfDeath(Stage& stage, int waitStatus);

}  // namespace varnok::rehearsal
