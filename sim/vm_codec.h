// The serial protocol between a virtual machine and a BMC outside of it, as QEMU's ipmi-bmc-extern and the
// "VM" codec of OpenIPMI speak it:
//
//   message   sequence, net function and LUN, command, data..., checksum, A0h
//   command   code, parameters..., A1h
//
// A response has its completion code in front of the data. The checksum makes the message sum to 0. A byte
// A0h, A1h or AAh inside is sent as AAh and the byte with bit 4 set.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <variant>
#include <vector>

#include "sim/message.h"

namespace varnok::sim {

/// Commands of the machine's side of the line, and of ours.
namespace vm_command {
inline constexpr std::uint8_t kNoAttention = 0x00;
inline constexpr std::uint8_t kAttention = 0x01;
inline constexpr std::uint8_t kAttentionWithInterrupt = 0x02;
inline constexpr std::uint8_t kEnableInterrupt = 0x05;  // of the interface, for its answers too
inline constexpr std::uint8_t kDisableInterrupt = 0x06;
inline constexpr std::uint8_t kCapabilities = 0x08;
inline constexpr std::uint8_t kVersion = 0xFF;
}  // namespace vm_command

inline constexpr std::uint8_t kVmProtocolVersion = 1;

struct VmRequest {
  std::uint8_t sequence = 0;
  Request request;
};

struct VmCommand {
  std::uint8_t code = 0;
  std::vector<std::uint8_t> parameters;
};

using VmInput = std::variant<VmRequest, VmCommand>;

/// Takes the line's bytes one by one. What is damaged, too short or too long is dropped up to its end.
class VmDecoder {
 public:
  /// Longer messages are dropped.
  static constexpr std::size_t kLongest = 300;

  /// The input that `byte` completes, if any.
  std::optional<VmInput> Push(std::uint8_t byte);

 private:
  std::optional<VmInput> TakeMessage();
  std::optional<VmInput> TakeCommand();

  std::vector<std::uint8_t> bytes_;
  bool isEscaped_ = false;
  bool isDamaged_ = false;
};

std::vector<std::uint8_t> EncodeVmResponse(std::uint8_t sequence, const Response& response);
std::vector<std::uint8_t> EncodeVmCommand(const VmCommand& command);

}  // namespace varnok::sim
