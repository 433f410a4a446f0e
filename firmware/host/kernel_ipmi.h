// The kernel's IPMI device (/dev/ipmi0) as a BMC. The kernel keeps Send Message and Get Message to itself and
// bridges on its own, so the two are translated: a Send Message becomes a request to the controller's IPMB
// address, the next Get Message hands out its answer. The kernel also hides that nobody took a request: it
// tries again for seconds and then answers in the controller's place. Whoever sends the same request again
// after that is told what a BMC tells at once: it was not taken.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "firmware/status.h"

namespace varnok::host {

class KernelIpmi {
 public:
  /// Room for the kernel's longest (IPMI_MAX_MSG_LENGTH).
  static constexpr std::size_t kLargestMessage = 272;

  struct Answer {
    std::uint8_t netFunction = 0;  ///< the request's plus 1
    std::uint8_t lun = 0;
    std::uint8_t command = 0;
    std::array<std::uint8_t, kLargestMessage> room;
    std::size_t count = 0;

    /// Completion code, then data.
    std::span<const std::uint8_t> Bytes() const { return std::span(room).first(count); }
  };

  /// Takes over an open device.
  explicit KernelIpmi(int descriptor) : descriptor_(descriptor) {}
  ~KernelIpmi();
  KernelIpmi(const KernelIpmi&) = delete;
  KernelIpmi& operator=(const KernelIpmi&) = delete;

  /// One request to the BMC; the answer to an earlier one is given up. kDeviceError when the kernel refuses
  /// it.
  Status Send(std::uint8_t netFunction, std::uint8_t lun, std::uint8_t command,
              std::span<const std::uint8_t> data);
  /// The answer to the last request, once: kNotReady without one, kTimeout when none comes.
  Status Receive(Answer& answer);

 private:
  /// A request on its way through the kernel's bridge, as its Send Message named it.
  struct Bridged {
    long messageId = 0;
    std::uint8_t channel = 0;
    std::uint8_t responder = 0;
    std::uint8_t requesterLun = 0;
    std::uint8_t responderLun = 0;
    std::uint8_t sequence = 0;
  };

  template <class Address>
  bool Submit(Address address, std::uint8_t netFunction, std::uint8_t command,
              std::span<const std::uint8_t> data);
  bool WaitForAnswer(Answer& answer);
  void AnswerLocally(std::uint8_t lun, std::uint8_t command, std::span<const std::uint8_t> bytes);
  void AnswerLocally(std::uint8_t lun, std::uint8_t command, std::uint8_t completionCode);
  Status SendBridged(std::uint8_t lun, std::span<const std::uint8_t> frame);
  Status GetBridged(std::uint8_t lun);

  int descriptor_;
  long messageId_ = 0;
  bool isWaiting_ = false;
  std::uint8_t waitingLun_ = 0;
  std::optional<Answer> ready_;
  std::optional<Bridged> bridged_;
  /// The latest frame, and whether the kernel gave up on it: no controller took it.
  std::array<std::uint8_t, kLargestMessage> frame_{};
  std::size_t frameLength_ = 0;
  bool isGivenUp_ = false;
};

}  // namespace varnok::host
