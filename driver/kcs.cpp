#include "driver/kcs.h"

#include <algorithm>

namespace varnok {
namespace {

// Status register (IPMI v2.0, table 9-1).
constexpr std::uint8_t kOutputFull = 0x01;
constexpr std::uint8_t kInputFull = 0x02;

// Control codes (IPMI v2.0, table 9-3).
constexpr std::uint8_t kGetStatusOrAbort = 0x60;
constexpr std::uint8_t kWriteStart = 0x61;
constexpr std::uint8_t kWriteEnd = 0x62;
constexpr std::uint8_t kRead = 0x68;

constexpr int kAttempts = 3;
constexpr std::uint32_t kPollMicroseconds = 50;

}  // namespace

bool Kcs::WaitFor(std::uint8_t mask, std::uint8_t value) {
  for (std::uint32_t waited = 0; waited < kLimitMicroseconds; waited += kPollMicroseconds) {
    if ((port_.ReadStatus() & mask) == value) return true;
    port_.Stall(kPollMicroseconds);
  }
  return false;
}

bool Kcs::WaitForInputTaken() {
  return WaitFor(kInputFull, 0);
}
bool Kcs::WaitForOutput() {
  return WaitFor(kOutputFull, kOutputFull);
}

void Kcs::DropOutput() {
  if ((port_.ReadStatus() & kOutputFull) != 0) (void)port_.ReadData();
}

Status Kcs::Expect(State state) {
  if (!WaitForInputTaken()) return uefi_status::kTimeout;
  if (CurrentState() != state) return uefi_status::kDeviceError;
  DropOutput();
  return kSuccess;
}

Status Kcs::Send(std::span<const std::uint8_t> request) {
  if (request.size() < 2 || request.size() > kLongestRequest) return uefi_status::kBadBufferSize;
  if (!IsPresent()) return uefi_status::kNotFound;
  Status status = kSuccess;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    status = MakeIdle();
    if (status == kSuccess) status = Write(request);
    if (status == kSuccess) {
      awaitsAnswer_ = true;
      return kSuccess;
    }
    // An interface that takes no byte does not take the abort either.
    if (status == uefi_status::kTimeout || Abort() == uefi_status::kTimeout) return uefi_status::kTimeout;
  }
  return status;
}

Status Kcs::MakeIdle() {
  bool hasAnswer = awaitsAnswer_;
  awaitsAnswer_ = false;
  if (!hasAnswer) {
    if (!WaitForInputTaken()) return uefi_status::kTimeout;
    // Another user of the interface, the firmware before us, may have left an answer too.
    hasAnswer = CurrentState() == State::Read;
  }
  std::size_t dropped = 0;
  if (hasAnswer) (void)ReadAnswer({}, dropped);
  if (!WaitForInputTaken()) return uefi_status::kTimeout;
  if (CurrentState() != State::Idle) return Abort();
  DropOutput();
  return kSuccess;
}

Status Kcs::Write(std::span<const std::uint8_t> request) {
  port_.WriteCommand(kWriteStart);
  Status status = Expect(State::Write);
  for (std::uint8_t byte : request.first(request.size() - 1)) {
    if (status != kSuccess) return status;
    port_.WriteData(byte);
    status = Expect(State::Write);
  }
  if (status != kSuccess) return status;
  port_.WriteCommand(kWriteEnd);
  status = Expect(State::Write);
  if (status != kSuccess) return status;
  // Some interfaces take the last byte only when the answer is there: its wait belongs to the answer.
  port_.WriteData(request.back());
  return kSuccess;
}

Status Kcs::Receive(std::span<std::uint8_t> room, std::size_t& length) {
  length = 0;
  if (!awaitsAnswer_) return uefi_status::kNotReady;
  Status status = ReadAnswer(room, length);
  if (status == uefi_status::kTimeout && length == 0) return status;
  awaitsAnswer_ = false;
  if (status == kSuccess) return status;
  (void)Abort();
  return uefi_status::kDeviceError;
}

Status Kcs::ReadAnswer(std::span<std::uint8_t> room, std::size_t& length) {
  for (std::size_t count = 0; count < kLongestAnswer; ++count) {
    length = std::min(count, room.size());
    if (!WaitForInputTaken()) return uefi_status::kTimeout;
    State state = CurrentState();
    if (state == State::Idle && count > 0) return ReadEnd();
    if (state != State::Read) return uefi_status::kDeviceError;
    if (!WaitForOutput()) return uefi_status::kTimeout;
    std::uint8_t byte = port_.ReadData();
    if (count < room.size()) room[count] = byte;
    port_.WriteData(kRead);
  }
  return uefi_status::kDeviceError;
}

Status Kcs::ReadEnd() {
  if (!WaitForOutput()) return uefi_status::kDeviceError;
  (void)port_.ReadData();
  return kSuccess;
}

Status Kcs::Abort() {
  awaitsAnswer_ = false;
  Status status = kSuccess;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    status = TryAbort();
    if (status != uefi_status::kDeviceError) return status;
  }
  return status;
}

Status Kcs::TryAbort() {
  if (!WaitForInputTaken()) return uefi_status::kTimeout;
  port_.WriteCommand(kGetStatusOrAbort);
  if (!WaitForInputTaken()) return uefi_status::kTimeout;
  DropOutput();
  port_.WriteData(0);
  if (!WaitForInputTaken()) return uefi_status::kTimeout;
  if (CurrentState() == State::Read) {
    if (!WaitForOutput()) return uefi_status::kDeviceError;
    (void)port_.ReadData();
    port_.WriteData(kRead);
    if (!WaitForInputTaken()) return uefi_status::kTimeout;
  }
  if (CurrentState() != State::Idle) return uefi_status::kDeviceError;
  DropOutput();
  return kSuccess;
}

}  // namespace varnok
