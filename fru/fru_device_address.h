// Where a FRU device is: which controller answers for it, and the storage behind that controller.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "fru/nvs_type.h"
#include "platform/ipmi_message.h"

namespace varnok {

struct FruDeviceAddress {
  std::uint8_t deviceAddress = 0x20;      ///< slave address on the private bus, or the target of bridging
  std::uint8_t bus = 0xFF;                ///< private bus, or the channel of bridging; FFh = none
  std::uint8_t deviceId = 0;              ///< FRU device ID at the controller
  std::uint8_t controller = kBmcAddress;  ///< IPMB address of the controller that owns the FRU
  std::uint8_t lun = 0;                   ///< LUN of Master Write-Read
  std::uint32_t nvsType = nvs_type::kImbDevice;
  std::optional<std::u16string> displayName;  ///< the title that a FRU file gives

  /// The same device without the title of a file.
  FruDeviceAddress Untitled() const {
    return {deviceAddress, bus, deviceId, controller, lun, nvsType, std::nullopt};
  }

  /// True when both name the same device; the display name does not count.
  bool IsSameDevice(const FruDeviceAddress& other) const {
    return nvsType == other.nvsType && lun == other.lun && deviceAddress == other.deviceAddress &&
           bus == other.bus && controller == other.controller && deviceId == other.deviceId;
  }
};

}  // namespace varnok
