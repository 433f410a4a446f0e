// A run that is asked to end (SIGINT, SIGTERM, SIGHUP) ends between two writes: the record or the write that
// is under way is finished first, then the program says what is written and how to go on. A second signal
// ends it at once.
#pragma once

#include <memory>

#include "firmware/host/machine_filter.h"
#include "firmware/host/write_account.h"

namespace varnok::host {

/// Stands in front of the board of a run; one at a time. Signals that the program was started to ignore stay
/// ignored.
class InterruptibleMachine : public MachineFilter {
 public:
  explicit InterruptibleMachine(std::unique_ptr<Machine> below);
  ~InterruptibleMachine() override;

  void Stall(std::uint64_t microseconds, StallKind kind) override;
  /// Ends the program if a signal asks for it and no write is under way.
  void EndIfAsked();

 protected:
  void Asking(const SentRequest& request) override;
  void Refused(Status) override { account_.Refused(); }
  void Answered(const ReceivedAnswer& answer) override { account_.Answered(answer); }

 private:
  [[noreturn]] void End();
  void SayThatItWaits();

  WriteAccount account_;
  bool isWaitTold_ = false;
  bool isEnding_ = false;
};

/// As the machine that stands does; nothing without one.
void EndIfAsked();
/// Waits for input, and ends there if asked.
void WaitForInput(int descriptor);

}  // namespace varnok::host
