#include "tests/driver/kcs_machine.h"

namespace varnok::testing {
namespace {

constexpr std::uint8_t kOutputFull = 0x01;
constexpr std::uint8_t kInputFull = 0x02;
constexpr std::uint8_t kGetStatusOrAbort = 0x60;
constexpr std::uint8_t kWriteStart = 0x61;
constexpr std::uint8_t kWriteEnd = 0x62;
constexpr std::uint8_t kRead = 0x68;

}  // namespace

void KcsMachine::LeaveAnswer(Bytes bytes) {
  answer_ = std::move(bytes);
  position_ = 0;
  state_ = State::Read;
  OfferNext();
}

std::uint8_t KcsMachine::ReadStatus() {
  if (isAbsent) return 0xFF;
  Settle();
  bool waitsForAnswer = answerDue_ && !takesLastByteAtOnce;
  bool inputFull = inputStuck || clock < inputFullUntil_ || waitsForAnswer;
  return static_cast<std::uint8_t>(static_cast<unsigned>(state_) << 6 | (inputFull ? kInputFull : 0) |
                                   (outputFull_ ? kOutputFull : 0));
}

std::uint8_t KcsMachine::ReadData() {
  if (isAbsent) return 0xFF;
  outputFull_ = false;
  return output_;
}

void KcsMachine::Take() {
  Settle();
  if (inputStuck || clock < inputFullUntil_) hasViolation = true;
  inputFullUntil_ = clock + byteMicroseconds;
}

void KcsMachine::WriteCommand(std::uint8_t value) {
  if (isAbsent || inputStuck) return;
  Take();
  answerDue_ = false;
  switch (value) {
    case kWriteStart:
      if (outputFull_) hasViolation = true;
      request_.clear();
      lastByteNext_ = false;
      inAbort_ = false;
      state_ = State::Write;
      break;
    case kWriteEnd:
      if (state_ != State::Write) hasViolation = true;
      lastByteNext_ = true;
      break;
    case kGetStatusOrAbort:
      ++aborts;
      inAbort_ = true;
      abortRead_ = false;
      state_ = State::Error;
      break;
    default:
      Fail();
  }
}

void KcsMachine::WriteData(std::uint8_t value) {
  if (isAbsent || inputStuck) return;
  Take();
  if (inAbort_ && !abortRead_) {
    if (refusedAborts > 0) {
      --refusedAborts;
      return Fail();
    }
    abortRead_ = true;
    state_ = State::Read;
    return Offer(0x01);  // error status code: aborted by command
  }
  if (inAbort_) {
    inAbort_ = false;
    state_ = State::Idle;
    return Offer(0);
  }
  if (state_ == State::Read) {
    if (value != kRead) hasViolation = true;
    return OfferNext();
  }
  if (state_ != State::Write) {
    hasViolation = true;
    return;
  }
  if (failAfterBytes == static_cast<int>(request_.size())) {
    failAfterBytes = -1;
    return Fail();
  }
  request_.push_back(value);
  if (!lastByteNext_) return;
  requests.push_back(request_);
  if (takesLastByteAtOnce) state_ = State::Read;
  if (answersNothing) return;
  answer_ = answer ? answer(request_) : Bytes{};
  position_ = 0;
  answerDue_ = true;
  answerAt_ = clock + answerMicroseconds;
}

void KcsMachine::Settle() {
  if (!answerDue_ || clock < answerAt_) return;
  answerDue_ = false;
  state_ = State::Read;
  OfferNext();
}

void KcsMachine::Offer(std::uint8_t byte) {
  output_ = byte;
  outputFull_ = true;
}

void KcsMachine::OfferNext() {
  if (breakAnswerAt == static_cast<int>(position_)) {
    breakAnswerAt = -1;
    return Fail();
  }
  if (stuckOutputAt == static_cast<int>(position_)) {
    stuckOutputAt = -1;
    return;
  }
  if (position_ == answer_.size()) {
    state_ = State::Idle;
    return Offer(0);
  }
  Offer(answer_[position_++]);
}

void KcsMachine::Fail() {
  state_ = State::Error;
  inAbort_ = false;
  outputFull_ = false;
}

}  // namespace varnok::testing
