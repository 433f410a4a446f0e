// What the SDRs say is on the board: controllers, FRU devices, EEPROMs and sensors (IPMI v2.0, chapter 43).
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "boards/board_data.h"

namespace varnok::boards {

/// A controller that a record or a device names.
struct LocatedController {
  std::uint8_t address = 0;
  std::uint8_t channel = 0;
  std::string name;
};

struct LocatedDevice {
  DeviceAddress address;
  std::size_t size = 0;  ///< bytes; 0: the device tells
};

/// A device that a record names and that no request here can reach.
struct UnknownDevice {
  std::string name;
  std::string reason;
};

struct Located {
  std::vector<LocatedController> controllers;  ///< without the BMC
  std::vector<LocatedDevice> devices;
  std::vector<UnknownDevice> unknown;
  std::vector<std::uint8_t> sensors;  ///< numbers of the BMC's sensors that have a reading
};

/// Each of them once, in the records' order.
Located FindLocated(std::span<const Bytes> records);

/// Adds the device, and the controller that it stands behind, unless they are there.
void AddDevice(Located& located, const LocatedDevice& device);

}  // namespace varnok::boards
