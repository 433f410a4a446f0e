// What the codes of sensor data records mean by IPMI v2.0 and its errata: the program's own tables, and what
// those leave out because its display ends earlier.
#pragma once

#include <cstdint>
#include <string>

namespace varnok::boards {

enum class SdrCode { SensorType, EventType, EntityId, Unit, DeviceType, Interrupt, RecordType };

/// The meaning of `code`; "reserved 8Fh" or the like for one that has none.
std::string SdrCodeText(SdrCode table, std::uint8_t code);
/// The modifier of a device type (IPMI v2.0, section 43.12).
std::string DeviceModifierText(std::uint8_t deviceType, std::uint8_t modifier);

}  // namespace varnok::boards
