// The IPMI protocol's Send and Receive over a simulated BMC.
#pragma once

#include <deque>

#include "firmware/ipmi_protocol.h"
#include "sim/bmc.h"

namespace varnok::sim {

class ProtocolAdapter {
 public:
  explicit ProtocolAdapter(Bmc& bmc);
  ProtocolAdapter(const ProtocolAdapter&) = delete;
  ProtocolAdapter& operator=(const ProtocolAdapter&) = delete;

  IpmiProtocol* Protocol() { return &protocol_; }

 private:
  // The struct that callers hold, with the way back to its adapter.
  struct Interface : IpmiProtocol {
    ProtocolAdapter* owner;
  };
  struct Waiting {
    Response response;
    bool staysForNextSend;  ///< a duplicate: the next request finds it in front of its own answer
    std::uint64_t due;      ///< from when on it can be received, in microseconds of the board
  };

  static Status Send(IpmiProtocol* self, std::uint8_t netFunction, std::uint8_t lun, std::uint8_t command,
                     const std::uint8_t* data, std::uint32_t dataLength) noexcept;
  static Status Receive(IpmiProtocol* self, std::uint8_t* netFunction, std::uint8_t* lun,
                        std::uint8_t* command, std::uint8_t* completionCode, std::uint8_t* data,
                        std::uint32_t* dataLength) noexcept;
  Status SendRequest(const Request& request);

  Bmc& bmc_;
  Interface protocol_{};
  std::deque<Waiting> waiting_;
};

}  // namespace varnok::sim
