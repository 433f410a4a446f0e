// What the codes of sensor data records mean: eight range tables, as this program words them. They differ in
// places from the tables of IPMI v2.0 (sensor types end at 27h, entity IDs at 25h, units at 90).
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace varnok {

struct SdrDecodeRow {
  const char* text;
  std::uint32_t low;
  std::uint32_t high;
};

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

/// The rows of a table; empty for an index outside the eight.
std::span<const SdrDecodeRow> SdrDecodeTable(SdrTable table, std::uint8_t deviceType);

}  // namespace varnok
