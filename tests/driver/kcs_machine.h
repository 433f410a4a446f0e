// The BMC's side of a KCS interface (IPMI v2.0, section 9), with faults. Time passes by stalls only.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <vector>

#include "driver/register_port.h"

namespace varnok::testing {

using Bytes = std::vector<std::uint8_t>;

class KcsMachine final : public RegisterPort {
 public:
  enum class State : std::uint8_t { Idle = 0, Read = 1, Write = 2, Error = 3 };

  // What the BMC is and does.
  std::function<Bytes(const Bytes&)> answer;  ///< to one whole request
  std::uint64_t answerMicroseconds = 0;       ///< from the request's end to the answer
  bool takesLastByteAtOnce = true;            ///< else the input stays full until the answer is there
  std::uint64_t byteMicroseconds = 0;         ///< that each byte takes
  bool isAbsent = false;                      ///< the bus reads FFh
  bool inputStuck = false;                    ///< IBF never clears
  bool answersNothing = false;                ///< takes requests and never answers
  int failAfterBytes = -1;                    ///< goes to the error state at that byte of a request, once
  int breakAnswerAt = -1;                     ///< goes to the error state at that byte of an answer, once
  int stuckOutputAt = -1;                     ///< never offers that byte of an answer, once
  int refusedAborts = 0;                      ///< aborts that end in the error state

  // What it saw.
  std::vector<Bytes> requests;
  int aborts = 0;
  bool hasViolation = false;  ///< a byte was written while the input was full, or out of the protocol
  std::uint64_t clock = 0;

  /// Leaves an answer behind, as a user of the interface before this one would.
  void LeaveAnswer(Bytes bytes);
  void SetState(State state) { state_ = state; }
  State CurrentState() const { return state_; }

  std::uint8_t ReadStatus() override;
  std::uint8_t ReadData() override;
  void WriteCommand(std::uint8_t value) override;
  void WriteData(std::uint8_t value) override;
  void Stall(std::uint32_t microseconds) override { clock += microseconds; }

 private:
  void Take();
  void Settle();
  void Offer(std::uint8_t byte);
  void OfferNext();
  void Fail();

  State state_ = State::Idle;
  Bytes request_;
  bool lastByteNext_ = false;
  bool inAbort_ = false;
  bool abortRead_ = false;
  Bytes answer_;
  std::size_t position_ = 0;
  bool answerDue_ = false;
  std::uint64_t answerAt_ = 0;
  std::uint64_t inputFullUntil_ = 0;
  bool outputFull_ = false;
  std::uint8_t output_ = 0;
};

}  // namespace varnok::testing
