// The IPMI transport protocol over a KCS interface.
#pragma once

#include "driver/kcs.h"
#include "firmware/ipmi_protocol.h"

namespace varnok {

class IpmiService : public IpmiProtocol {
 public:
  constexpr explicit IpmiService(RegisterPort& port)
      : IpmiProtocol{kIpmiProtocolRevision, &IpmiService::SendRequest, &IpmiService::ReceiveResponse},
        kcs_(port) {}

  /// True when a BMC answers Get Device ID here.
  bool FindBmc();

 private:
  static Status VARNOK_PLATFORM_CALL SendRequest(IpmiProtocol* self, std::uint8_t netFunction,
                                                 std::uint8_t lun, std::uint8_t command,
                                                 const std::uint8_t* data, std::uint32_t dataLength);
  static Status VARNOK_PLATFORM_CALL ReceiveResponse(IpmiProtocol* self, std::uint8_t* netFunction,
                                                     std::uint8_t* lun, std::uint8_t* command,
                                                     std::uint8_t* completionCode, std::uint8_t* data,
                                                     std::uint32_t* dataLength);

  Kcs kcs_;
};

}  // namespace varnok
