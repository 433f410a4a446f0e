// One IPMI request or response, as the whole program passes it around.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "firmware/ipmi.h"

namespace varnok {

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
