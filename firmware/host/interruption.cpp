#include "firmware/host/interruption.h"

#include <poll.h>
#include <signal.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <utility>

#include "firmware/host/host_firmware.h"
#include "firmware/host/keyboard.h"
#include "firmware/host/reserve.h"

namespace varnok::host {
namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

volatile sig_atomic_t asked = 0;  ///< the signal that came; 0: none
InterruptibleMachine* standing = nullptr;
bool isAtQuestion = false;  ///< the console's line is not at its end

void HandleSignal(int number) {
  if (asked != 0) EndBySignal(number);
  asked = number;
}

std::string NameOf(int number) {
  return std::string("SIG") + sigabbrev_np(number);
}

void Watch(void (*handler)(int), bool isWatched) {
  for (int number : kSignals) {
    struct sigaction now;
    if (sigaction(number, nullptr, &now) != 0) continue;
    const bool isOurs = now.sa_handler == HandleSignal;
    if (isWatched ? now.sa_handler != SIG_DFL : !isOurs) continue;
    struct sigaction wanted {};
    wanted.sa_handler = handler;
    // Without SA_RESTART: what waits is woken. Another signal ends a handler that cannot write its last text.
    wanted.sa_flags = SA_NODEFER;
    sigaction(number, &wanted, nullptr);
  }
}

}  // namespace

InterruptibleMachine::InterruptibleMachine(std::unique_ptr<Machine> below) : MachineFilter(std::move(below)) {
  standing = this;
  Watch(HandleSignal, true);
}

InterruptibleMachine::~InterruptibleMachine() {
  // A signal that came behind the last write finds everything done.
  standing = nullptr;
  Watch(SIG_DFL, false);
  asked = 0;
}

void InterruptibleMachine::End() {
  isEnding_ = true;
  // What is written is told without memory, too.
  const MachineAtWork atWork;
  if (isAtQuestion) {
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, "\n", 1);
  }
  const std::vector<std::string> lines = account_.Lines();
  const std::string name = NameOf(asked);
  if (lines.empty()) {
    Complain("stopped by " + name + "; nothing was written to the board");
  } else {
    Complain("stopped by " + name + " between two writes. What this run has written:");
    for (const std::string& line : lines) Complain("  " + line);
    Complain("Nothing else was written, and nothing of it was compared: the board may be half written.");
    Complain("To go on, run the same command again; to go back, restore a snapshot (varnok-board restore).");
  }
  EndBySignal(asked);
}

void InterruptibleMachine::SayThatItWaits() {
  if (std::exchange(isWaitTold_, true)) return;
  const MachineAtWork atWork;
  Complain(NameOf(asked) + ": stops behind the write that is under way; a second signal ends at once");
}

void InterruptibleMachine::EndIfAsked() {
  if (asked == 0 || isEnding_) return;
  if (!account_.IsUnderWay()) End();
  SayThatItWaits();
}

void InterruptibleMachine::Asking(const SentRequest& request) {
  if (asked != 0) {
    if (!account_.IsContinuedBy(request)) End();
    SayThatItWaits();
  }
  account_.Asking(request);
}

void InterruptibleMachine::Stall(std::uint64_t microseconds, StallKind kind) {
  constexpr std::uint64_t kAtOnce = 100'000;
  do {
    EndIfAsked();
    const std::uint64_t part = std::min(microseconds, kAtOnce);
    MachineFilter::Stall(part, kind);
    microseconds -= part;
  } while (microseconds > 0);
}

void EndIfAsked() {
  if (standing != nullptr) standing->EndIfAsked();
}

void WaitForInput(int descriptor) {
  // Blocked but while it waits: a signal between the question and the waiting is not slept over.
  sigset_t watched;
  sigset_t usual;
  sigemptyset(&watched);
  for (int number : kSignals) sigaddset(&watched, number);
  sigprocmask(SIG_BLOCK, &watched, &usual);
  isAtQuestion = true;
  EndIfAsked();
  pollfd input{descriptor, POLLIN, 0};
  ppoll(&input, 1, nullptr, &usual);
  sigprocmask(SIG_SETMASK, &usual, nullptr);
  EndIfAsked();
  isAtQuestion = false;
}

}  // namespace varnok::host
