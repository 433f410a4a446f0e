// What the codes of sensor data records mean: eight range tables, as this program words them. They differ in
// places from the tables of IPMI v2.0 (sensor types end at 27h, entity IDs at 25h, units at 90).
#pragma once

#include <cstdint>
#include <string_view>

namespace varnok {

/// Indices of the tables.
enum class SdrTable : std::uint8_t {
  SensorType,
  DeviceType,
  DeviceTypeModifier,  ///< one of three tables, by the device type
  EntityId,
  Unspecified,  ///< no record uses it
  EventType,
  Unit,
  InterruptType,
};

/// The rows of a table, packed, because hundreds of pointers cost more than the texts: for each row its
/// lowest code, its highest code, its text and a NUL. Empty for an index outside the eight.
std::string_view SdrDecodeTable(SdrTable table, std::uint8_t deviceType);

/// The text of the first row with the code; null when there is none.
const char* FindDecodeText(std::string_view table, std::uint8_t code);

}  // namespace varnok
