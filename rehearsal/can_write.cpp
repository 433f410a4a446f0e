#include "rehearsal/can_write.h"

#include "firmware/ipmi.h"

namespace varnok::rehearsal {

bool CanWrite(std::uint8_t netFunction, std::uint8_t command, std::span<const std::uint8_t> data) {
  // Bus, slave address and count; then what is written: with more than an address it is stored.
  constexpr std::size_t kHead = 3;
  constexpr std::size_t kLongestAddress = 2;
  if (netFunction == net_function::kApplication)
    return command == ipmi_command::kMasterWriteRead && data.size() > kHead + kLongestAddress;
  if (netFunction != net_function::kStorage) return false;
  switch (command) {
    case ipmi_command::kWriteFruData:
    case ipmi_command::kAddSdr:
    case ipmi_command::kPartialAddSdr:
    case ipmi_command::kDeleteSdr:
    case ipmi_command::kClearSdrRepository:
      return true;
    default:
      return false;
  }
}

}  // namespace varnok::rehearsal
