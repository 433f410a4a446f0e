#include "rehearsal/run_once.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>

#include "rehearsal/results.h"

namespace varnok::rehearsal {
namespace {

/// As a shell reports a process that a signal ended.
constexpr int kSignalStatus = 128;

}  // namespace

Outcome OutcomeOfDeath(Stage& stage, int waitStatus) {
  Outcome outcome;
  outcome.images = stage.Before();
  if (WIFSIGNALED(waitStatus)) {
    const int number = WTERMSIG(waitStatus);
    outcome.isEndless = number == SIGXCPU || number == SIGKILL;
    outcome.run.exitStatus = kSignalStatus + number;
    outcome.run.message = "SIG" + std::string(sigabbrev_np(number) == nullptr ? "?" : sigabbrev_np(number));
  } else {
    outcome.run.exitStatus = WEXITSTATUS(waitStatus);
    outcome.run.message = "the program ended without a word";
  }
  return outcome;
}

bool RunOnce(Stage& stage, Answerer& answerer, Outcome& outcome, std::string& error, bool isLive) {
  Results results;
  if (!results.Open(error)) return false;
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child < 0) {
    error = std::string("no process for the program: ") + std::strerror(errno);
    return false;
  }
  if (child == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    Performance run(stage, answerer, [&](Outcome& made) { results.Add(ToWire(made)); });
    run.isLive = isLive;
    run.Play();
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  bool isThere = false;
  results.Take([&](std::span<const std::uint8_t> record) { isThere = FromWire(record, outcome); });
  if (!isThere) outcome = OutcomeOfDeath(stage, status);
  return true;
}

}  // namespace varnok::rehearsal
