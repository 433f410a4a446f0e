// One IPMI request or response, as the whole program passes it around.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace varnok {

/// IPMB slave address of the BMC (IPMI v2.0, section 5.2).
inline constexpr std::uint8_t kBmcAddress = 0x20;

/// Net function codes, unshifted (IPMI v2.0, table 5-1).
namespace net_function {
inline constexpr std::uint8_t kSensorEvent = 0x04;
inline constexpr std::uint8_t kApplication = 0x06;
inline constexpr std::uint8_t kFirmware = 0x08;
inline constexpr std::uint8_t kStorage = 0x0A;
inline constexpr std::uint8_t kTransport = 0x0C;
}  // namespace net_function

/// Completion codes that the program tells apart (IPMI v2.0, table 5-2).
namespace completion_code {
inline constexpr std::uint8_t kSuccess = 0x00;
inline constexpr std::uint8_t kNakOnWrite = 0x83;
inline constexpr std::uint8_t kNodeBusy = 0xC0;
inline constexpr std::uint8_t kLengthInvalid = 0xC7;
inline constexpr std::uint8_t kLengthLimitExceeded = 0xC8;
inline constexpr std::uint8_t kCannotReturnLength = 0xCA;
}  // namespace completion_code

/// Request or response. `dataLength` is the number of valid bytes of `data`, never more than its size.
struct IpmiMessage {
  static constexpr std::uint32_t kCapacity = 64;

  std::uint8_t targetAddress = 0;
  std::uint8_t netFunction = 0;  ///< a response carries the request's value plus 1
  std::uint8_t lun = 0;
  std::uint8_t command = 0;
  std::array<std::uint8_t, kCapacity> data{};
  std::uint32_t dataLength = 0;
  std::uint8_t completionCode = 0;  ///< responses only
};
static_assert(sizeof(IpmiMessage) == 76);

}  // namespace varnok
