// Messages between the BMC and the controllers on its IPMBs: frames with their checksums (IPMB v1.0,
// section 2.11), and the receive message queue that answers wait in.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "sim/clock.h"
#include "sim/message.h"

namespace varnok::sim {

/// Answers from controllers, as Get Message hands them out: channel, then the frame without the requester's
/// address.
class ReceiveQueue {
 public:
  static constexpr std::size_t kCapacity = 16;

  explicit ReceiveQueue(const VirtualClock& clock) : clock_(clock) {}

  bool IsEmpty() const;
  void Clear() { messages_.clear(); }
  /// A full queue drops the message. It can be taken from `due` on, in microseconds of the board.
  void Push(std::vector<std::uint8_t> message, std::uint64_t due = 0);
  std::optional<std::vector<std::uint8_t>> Pop();

 private:
  struct Message {
    std::vector<std::uint8_t> bytes;
    std::uint64_t due;
  };

  const VirtualClock& clock_;
  std::deque<Message> messages_;
};

}  // namespace varnok::sim
