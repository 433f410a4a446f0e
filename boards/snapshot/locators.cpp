#include "boards/snapshot/locators.h"

#include <algorithm>

#include "app/services/format.h"
#include "firmware/ipmi.h"

namespace varnok::boards {
namespace {

constexpr std::size_t kTypeAt = 3;
constexpr std::uint8_t kHasFruInventory = 0x08;

/// Storage on a private bus by the device type of its locator (table 43-12).
struct StorageType {
  std::uint8_t type;
  DeviceKind kind;
  std::size_t size;
};
// clang-format off
constexpr StorageType kStorageTypes[] = {
    {0x02, DeviceKind::Ds1624s, 256},
    {0x08, DeviceKind::At24c02, 128},   // 24C01
    {0x09, DeviceKind::At24c02, 256},   // 24C02
    {0x0E, DeviceKind::At24c02, 4096},  // 24C32
    {0x0F, DeviceKind::At24c02, 8192},  // 24C64
};
// clang-format on
constexpr std::uint8_t kFirstEeprom = 0x08;
constexpr std::uint8_t kLastEeprom = 0x0F;
// Modifiers of the EEPROM types: those that hold FRU inventory, or may.
constexpr std::uint8_t kUnspecified = 0x00;
constexpr std::uint8_t kFruInventory = 0x02;

/// A byte of the record; 0 behind its end.
std::uint8_t ByteAt(const Bytes& record, std::size_t offset) {
  return offset < record.size() ? record[offset] : 0;
}

/// The name at a type/length byte, when it is 8-bit text.
std::string TextAt(const Bytes& record, std::size_t offset) {
  const std::uint8_t typeLength = ByteAt(record, offset);
  if (typeLength >> 6 != 3) return {};
  std::string text;
  for (std::size_t i = offset + 1; i < record.size() && text.size() < (typeLength & 31u); ++i)
    text += static_cast<char>(record[i]);
  return text;
}

void AddController(Located& located, std::uint8_t address, std::uint8_t channel, const std::string& name) {
  if (address == kBmc) return;
  for (LocatedController& controller : located.controllers) {
    if (controller.address != address || controller.channel != channel) continue;
    if (controller.name.empty()) controller.name = name;
    return;
  }
  located.controllers.push_back({address, channel, name});
}

/// Storage that is reached by Master Write-Read: `bus` is the private bus's number.
void AddStorage(Located& located, DeviceAddress address, std::uint8_t slave, std::uint8_t bus,
                std::uint8_t type, std::uint8_t modifier) {
  if (type >= kFirstEeprom && type <= kLastEeprom && modifier != kUnspecified && modifier != kFruInventory)
    return;
  address.slave = slave & 0xFE;
  address.bus = static_cast<std::uint8_t>(bus << 1 | 1);
  for (const StorageType& row : kStorageTypes) {
    if (row.type != type) continue;
    address.kind = row.kind;
    return AddDevice(located, {address, row.size});
  }
  // Other generic devices are sensors and the like; of storage it has to be said that it is left out.
  if (type >= kFirstEeprom && type <= kLastEeprom)
    located.unknown.push_back({Format("EEPROM at bus %02Xh, address %02Xh", address.bus, address.slave),
                               Format("device type %02Xh is addressed in a way of its own", type)});
}

void AddGenericDevice(Located& located, const Bytes& record) {
  const std::uint8_t place = ByteAt(record, 7);
  DeviceAddress address;
  address.controller = ByteAt(record, 5) & 0xFE;
  if (address.controller != kBmc)
    address.channel = static_cast<std::uint8_t>((ByteAt(record, 6) & 1) << 3 | place >> 5);
  AddStorage(located, address, ByteAt(record, 6), place & 7, ByteAt(record, 10), ByteAt(record, 11));
}

void AddFruDevice(Located& located, const Bytes& record) {
  const std::uint8_t access = ByteAt(record, 7);
  DeviceAddress address;
  address.controller = ByteAt(record, 5) & 0xFE;
  if (address.controller != kBmc) address.channel = ByteAt(record, 8) >> 4;
  if ((access & 0x80) == 0)
    return AddStorage(located, address, ByteAt(record, 6), access & 7, ByteAt(record, 10),
                      ByteAt(record, 11));
  address.id = ByteAt(record, 6);
  if (address.id <= kLastFruId) AddDevice(located, {address, 0});
}

void AddManagementController(Located& located, const Bytes& record) {
  DeviceAddress address;
  address.controller = ByteAt(record, 5) & 0xFE;
  if (address.controller == kBmc) return;
  address.channel = ByteAt(record, 6) & 15;
  AddController(located, address.controller, address.channel, TextAt(record, 15));
  if ((ByteAt(record, 8) & kHasFruInventory) != 0) AddDevice(located, {address, 0});
}

void AddSensor(Located& located, const Bytes& record) {
  const bool isOfBmc = ByteAt(record, 5) == kBmc && (ByteAt(record, 6) & 3) == 0;
  if (!isOfBmc) return;
  // One compact record may stand for several sensors with numbers in a row.
  const unsigned shared = record[kTypeAt] == sdr_type::kCompactSensor ? ByteAt(record, 23) & 15u : 0;
  for (unsigned i = 0; i < std::max(shared, 1u); ++i) {
    const auto number = static_cast<std::uint8_t>(ByteAt(record, 7) + i);
    if (std::find(located.sensors.begin(), located.sensors.end(), number) == located.sensors.end())
      located.sensors.push_back(number);
  }
}

}  // namespace

void AddDevice(Located& located, const LocatedDevice& device) {
  for (const LocatedDevice& other : located.devices)
    if (other.address == device.address) return;
  located.devices.push_back(device);
  AddController(located, device.address.controller, device.address.channel, {});
}

Located FindLocated(std::span<const Bytes> records) {
  Located located;
  for (const Bytes& record : records) {
    switch (ByteAt(record, kTypeAt)) {
      case sdr_type::kFullSensor:
      case sdr_type::kCompactSensor:
        AddSensor(located, record);
        break;
      case sdr_type::kGenericLocator:
        AddGenericDevice(located, record);
        break;
      case sdr_type::kFruLocator:
        AddFruDevice(located, record);
        break;
      case sdr_type::kControllerLocator:
        AddManagementController(located, record);
        break;
      default:
        break;
    }
  }
  return located;
}

}  // namespace varnok::boards
