// The system side of a KCS interface (IPMI v2.0, section 9): one request is written, its answer is read.
// Every wait has a limit, every wrong state goes through the interface's error exit, and an answer that
// nobody fetched is read away before the next request.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "driver/register_port.h"
#include "firmware/status.h"

namespace varnok {

class Kcs {
 public:
  /// Net function, LUN, command and data. No BMC takes more.
  static constexpr std::size_t kLongestRequest = 255;
  /// Where an answer that does not end is given up.
  static constexpr std::size_t kLongestAnswer = 1024;
  /// How long a BMC may take over a byte, and over its answer.
  static constexpr std::uint32_t kLimitMicroseconds = 5'000'000;

  constexpr explicit Kcs(RegisterPort& port) : port_(port) {}

  /// False when nothing drives the status register.
  bool IsPresent() { return port_.ReadStatus() != kNothing; }

  /// Writes a request: net function and LUN, command, data.
  /// kBadBufferSize for a length that KCS cannot carry, kNotFound when no interface is there, kTimeout when
  /// it takes no byte, kDeviceError when it left the protocol at every attempt.
  Status Send(std::span<const std::uint8_t> request);

  /// Reads the answer to the request: net function and LUN, command, completion code, data. What `room`
  /// cannot hold is read and dropped. kNotReady when no request waits for an answer; kTimeout when the BMC
  /// still works on it, a later call goes on waiting; kDeviceError when the answer broke off.
  Status Receive(std::span<std::uint8_t> room, std::size_t& length);

 private:
  enum class State : std::uint8_t { Idle = 0, Read = 1, Write = 2, Error = 3 };
  static constexpr std::uint8_t kNothing = 0xFF;

  State CurrentState() { return static_cast<State>(port_.ReadStatus() >> 6); }
  bool WaitFor(std::uint8_t mask, std::uint8_t value);
  bool WaitForInputTaken();
  bool WaitForOutput();
  void DropOutput();

  Status MakeIdle();
  Status Write(std::span<const std::uint8_t> request);
  Status Expect(State state);
  Status ReadAnswer(std::span<std::uint8_t> room, std::size_t& length);
  Status ReadEnd();
  Status Abort();
  Status TryAbort();

  RegisterPort& port_;
  bool awaitsAnswer_ = false;
};

}  // namespace varnok
