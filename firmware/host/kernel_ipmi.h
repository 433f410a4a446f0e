// The kernel's IPMI device (/dev/ipmi0) as a BMC. The kernel keeps Send Message and Get Message to itself and
// bridges on its own, so the two are translated: a Send Message becomes a request to the controller's IPMB
// address, the next Get Message hands out its answer.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "firmware/status.h"

namespace varnok::host {

class KernelIpmi {
 public:
  struct Answer {
    std::uint8_t netFunction = 0;  ///< the request's plus 1
    std::uint8_t lun = 0;
    std::uint8_t command = 0;
    std::vector<std::uint8_t> bytes;  ///< completion code, then data
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
  void AnswerLocally(std::uint8_t lun, std::uint8_t command, std::vector<std::uint8_t> bytes);
  Status SendBridged(std::uint8_t lun, std::span<const std::uint8_t> frame);
  Status GetBridged(std::uint8_t lun);

  int descriptor_;
  long messageId_ = 0;
  bool isWaiting_ = false;
  std::uint8_t waitingLun_ = 0;
  std::optional<Answer> ready_;
  std::optional<Bridged> bridged_;
};

}  // namespace varnok::host
