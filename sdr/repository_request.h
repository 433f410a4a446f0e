// One exchange with the BMC's SDR repository, and the reservation that precedes the others.
#pragma once

#include <cstdint>
#include <span>

#include "platform/ipmi.h"
#include "sdr/sdr_status.h"

namespace varnok {

/// Sends one Storage request to the BMC. Bytes of `response` that did not arrive are 0.
IpmiResult SendSdrRequest(std::uint8_t command, std::span<const std::uint8_t> data, IpmiMessage& response);

/// The failure of a request: a completion code, or else `reason` and `status`.
Status SdrRequestFailure(const char* operation, IpmiResult result, const char* reason, Status status);

/// Reserve SDR Repository (IPMI v2.0, section 33.11).
Status ReserveSdrRepository(const char* operation, std::uint16_t& reservation);

}  // namespace varnok
