// Messages between the BMC and the controllers on its IPMBs: frames with their checksums (IPMB v1.0,
// section 2.11), and the receive message queue that answers wait in.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <vector>

#include "sim/message.h"

namespace varnok::sim {

/// The two's complement of the sum, so that the bytes and their checksum sum to 0.
std::uint8_t IpmbChecksum(std::span<const std::uint8_t> bytes);

/// Answers from controllers, as Get Message hands them out: channel, then the frame without the requester's
/// address.
class ReceiveQueue {
 public:
  static constexpr std::size_t kCapacity = 16;

  bool IsEmpty() const { return messages_.empty(); }
  void Clear() { messages_.clear(); }
  /// A full queue drops the message.
  void Push(std::vector<std::uint8_t> message);
  std::optional<std::vector<std::uint8_t>> Pop();

 private:
  std::deque<std::vector<std::uint8_t>> messages_;
};

}  // namespace varnok::sim
