// The bytes of a FRU inventory device or a private-bus EEPROM, read and written whole in chunks as the device
// takes them (IPMI v2.0, sections 34.1 to 34.3 and 22.11). What the bytes mean is nobody's business here.
#pragma once

#include <cstddef>
#include <span>

#include "boards/board_data.h"
#include "boards/snapshot/exchange.h"

namespace varnok::boards {

/// Learns the size and the access of the inventory device at `device.address`. An EEPROM cannot be asked: it
/// keeps the size that `device.bytes` has, or gets 256 bytes.
Outcome MeasureDevice(Device& device);

/// Reads all of `device.bytes`. When it fails on the way, the bytes up to there stay and the rest is cut off.
Outcome ReadDevice(Device& device, Observer& observer);

/// Writes `bytes` at `offset` of the device. `chunk` is the most that it takes at once, and becomes less when
/// it refuses that much.
Outcome WriteDevice(const Device& device, std::size_t offset, std::span<const std::uint8_t> bytes,
                    std::size_t& chunk);

/// What WriteDevice begins with.
inline constexpr std::size_t kLargestWrite = 16;

}  // namespace varnok::boards
