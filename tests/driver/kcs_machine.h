// The BMC's side of a KCS interface (IPMI v2.0, section 9), with faults. Time passes by stalls only.
#pragma once

#include <cstdint>
#include <functional>
#include <utility>
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
  void LeaveAnswer(Bytes bytes) {
    answer_ = std::move(bytes);
    StartAnswer();
  }
  void SetState(State state) { state_ = state; }
  State CurrentState() const { return state_; }

  std::uint8_t ReadStatus() override {
    if (isAbsent) return 0xFF;
    Settle();
    bool waitsForAnswer = answerDue_ && !takesLastByteAtOnce;
    bool inputFull = inputStuck || clock < inputFullUntil_ || waitsForAnswer;
    return static_cast<std::uint8_t>(static_cast<unsigned>(state_) << 6 | (inputFull ? 2 : 0) |
                                     (outputFull_ ? 1 : 0));
  }

  std::uint8_t ReadData() override {
    if (isAbsent) return 0xFF;
    outputFull_ = false;
    return output_;
  }

  void WriteCommand(std::uint8_t value) override {
    if (!Take()) return;
    answerDue_ = false;
    switch (value) {
      case 0x61:  // write start
        if (outputFull_) hasViolation = true;
        request_.clear();
        lastByteNext_ = inAbort_ = false;
        state_ = State::Write;
        break;
      case 0x62:  // write end
        if (state_ != State::Write) hasViolation = true;
        lastByteNext_ = true;
        break;
      case 0x60:  // get status or abort
        ++aborts;
        inAbort_ = true;
        state_ = State::Error;
        break;
      default:
        Fail();
    }
  }

  void WriteData(std::uint8_t value) override {
    if (!Take()) return;
    if (inAbort_) return GoOnAborting();
    if (state_ == State::Read) {
      if (value != 0x68) hasViolation = true;  // read
      return OfferNext();
    }
    if (state_ != State::Write) {
      hasViolation = true;
      return;
    }
    if (IsDue(failAfterBytes, request_.size())) return Fail();
    request_.push_back(value);
    if (lastByteNext_) TakeRequest();
  }

  void Stall(std::uint32_t microseconds) override { clock += microseconds; }

 private:
  /// Whether a fault's byte has come; it happens once.
  static bool IsDue(int& fault, std::size_t position) {
    return fault == static_cast<int>(position) && (fault = -1, true);
  }

  /// False when nothing takes what is written.
  bool Take() {
    if (isAbsent || inputStuck) return false;
    Settle();
    if (clock < inputFullUntil_) hasViolation = true;
    inputFullUntil_ = clock + byteMicroseconds;
    return true;
  }

  void TakeRequest() {
    requests.push_back(request_);
    if (takesLastByteAtOnce) state_ = State::Read;
    if (answersNothing) return;
    answer_ = answer ? answer(request_) : Bytes{};
    answerDue_ = true;
    answerAt_ = clock + answerMicroseconds;
  }

  /// Offers the answer when its time has come.
  void Settle() {
    if (answerDue_ && clock >= answerAt_) StartAnswer();
  }

  void StartAnswer() {
    answerDue_ = false;
    position_ = 0;
    state_ = State::Read;
    OfferNext();
  }

  void GoOnAborting() {
    if (state_ == State::Error) {
      if (refusedAborts > 0) {
        --refusedAborts;
        return Fail();
      }
      state_ = State::Read;
      return Offer(0x01);  // error status code: aborted by command
    }
    inAbort_ = false;
    state_ = State::Idle;
    Offer(0);
  }

  void OfferNext() {
    if (IsDue(breakAnswerAt, position_)) return Fail();
    if (IsDue(stuckOutputAt, position_)) return;
    if (position_ < answer_.size()) return Offer(answer_[position_++]);
    state_ = State::Idle;
    Offer(0);
  }

  void Offer(std::uint8_t byte) {
    output_ = byte;
    outputFull_ = true;
  }

  void Fail() {
    state_ = State::Error;
    inAbort_ = outputFull_ = false;
  }

  State state_ = State::Idle;
  Bytes request_;
  bool lastByteNext_ = false;
  bool inAbort_ = false;
  Bytes answer_;
  std::size_t position_ = 0;
  bool answerDue_ = false;
  std::uint64_t answerAt_ = 0;
  std::uint64_t inputFullUntil_ = 0;
  bool outputFull_ = false;
  std::uint8_t output_ = 0;
};

}  // namespace varnok::testing
