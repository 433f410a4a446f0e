// One exchange with the BMC's SDR repository, and the reservation that precedes the others.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "platform/ipmi.h"
#include "sdr/sdr_status.h"

namespace varnok {

namespace sdr_command {
inline constexpr std::uint8_t kGetInfo = 0x20;
inline constexpr std::uint8_t kReserve = 0x22;
inline constexpr std::uint8_t kGetRecord = 0x23;
inline constexpr std::uint8_t kPartialAdd = 0x25;
inline constexpr std::uint8_t kClear = 0x27;
}  // namespace sdr_command

/// Sends one Storage request to the BMC. Bytes of `response` that did not arrive are 0.
IpmiResult SendSdrRequest(std::uint8_t command, std::span<const std::uint8_t> data, IpmiMessage& response);

/// The trace line "OPERATION - REASON" and the status.
Status SdrFailure(const char* operation, const char* reason, Status status);
/// The failure of a request: a completion code, or else `reason` and `status`.
Status SdrRequestFailure(const char* operation, IpmiResult result, const char* reason, Status status);

using SdrReservation = std::array<std::uint8_t, 2>;

/// Reserve SDR Repository (IPMI v2.0, section 33.11).
Status ReserveSdrRepository(const char* operation, SdrReservation& reservation);

}  // namespace varnok
