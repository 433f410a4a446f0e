// Sensor data records for tests: whole records of every type, good ones of fixed content and legal ones of
// random content.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "sdr/record_types.h"
#include "tests/support/split.h"

namespace varnok::testing {

using Bytes = std::vector<std::uint8_t>;

/// One behind the other.
Bytes Joined(Bytes head, const Bytes& tail);

/// Header and body; the record length follows from them.
Bytes Record(std::uint8_t type, const Bytes& body, std::uint16_t id = 0x0012);
/// A record whose ID string follows `body` and its type/length byte.
Bytes NamedRecord(std::uint8_t type, Bytes body, std::string_view name, std::uint16_t id = 0x0012);

/// A full sensor record: a temperature in degrees Celsius.
Bytes TemperatureRecord(std::string_view name = "Inlet Temp", std::uint16_t id = 0x0012);
/// A FRU device locator record.
Bytes FruLocatorRecord(std::string_view name = "Riser", std::uint16_t id = 0x0012);
/// An entity association record.
Bytes AssociationRecord(std::uint16_t id = 0x0012);

/// A record of random content and legal length.
Bytes RandomRecord(const SdrType& type, std::mt19937& random);

}  // namespace varnok::testing
