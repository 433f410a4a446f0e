// A board as data: who it is, what its FRU devices, its SDR repository and its SMBIOS tables hold, byte for
// byte. A board folder, a dump and a machine are all read into this; everything that the companion shows,
// compares, writes or restores starts here. Builds for UEFI too.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "firmware/ipmi.h"

namespace varnok::boards {

using Bytes = std::vector<std::uint8_t>;

inline constexpr std::uint8_t kBmc = kBmcAddress;
inline constexpr std::uint8_t kLastFruId =
    254;  // of a controller's FRU devices; FFh is reserved (IPMI v2.0, section 38)

enum class DeviceKind : std::uint8_t {
  Fru,      ///< a FRU inventory device of a controller, by its device ID
  At24c02,  ///< a serial EEPROM on a controller's private bus, by its slave address
  Ds1624s,  ///< the storage of a DS1624S on such a bus
};

/// Where a device is.
struct DeviceAddress {
  DeviceKind kind = DeviceKind::Fru;
  std::uint8_t controller = kBmc;  ///< IPMB slave address of the controller that owns it
  std::uint8_t channel = 0;        ///< of the BMC that leads to that controller
  std::uint8_t id = 0;             ///< FRU device ID
  std::uint8_t bus = 0;            ///< the whole bus byte of Master Write-Read
  std::uint8_t slave = 0;          ///< slave address on that bus, bit 0 clear

  bool operator==(const DeviceAddress&) const = default;
};

/// The channel on which the transport seeks a controller: 6 for 2Ch, else the primary IPMB, 0.
std::uint8_t UsualChannel(std::uint8_t controller);

/// "0" and "2@C0" for FRU devices 0 of the BMC and 2 of controller C0h; "AT24C02:03:A0" for an EEPROM of the
/// BMC at bus 03h, slave address A0h; "2@C0.3" where the channel is not the usual one.
std::string NameOf(const DeviceAddress& address);
/// Reads what NameOf gives; nothing when `name` has another form. Letters count without regard to case.
std::optional<DeviceAddress> ParseDeviceName(std::string_view name);
/// The name of the device's file in a folder that a snapshot makes: "fru-2@C0.bin", "AT24C02-03-A0.bin".
std::string FileNameOf(const DeviceAddress& address);
/// Reads what FileNameOf gives.
std::optional<DeviceAddress> ParseFileName(std::string_view name);

/// What Get Device ID answers (IPMI v2.0, section 20.1).
struct Identity {
  std::uint8_t deviceId = 0x20;
  std::uint8_t deviceRevision = 0;  ///< 0 to 15
  bool providesSdrs = false;
  std::uint8_t firmwareMajor = 0;   ///< 0 to 127
  std::uint8_t firmwareMinor = 0;   ///< BCD
  std::uint8_t ipmiVersion = 0x02;  ///< BCD, digits swapped: 02h is 2.0, 51h is 1.5
  std::uint8_t additionalSupport = 0;
  std::uint32_t manufacturerId = 0;  ///< 20 bits used, IANA enterprise number
  std::uint16_t productId = 0;
  std::array<std::uint8_t, 4> auxiliary{};
  bool hasAuxiliary = false;      ///< false: the answer ends before these bytes
  bool isInTransferMode = false;  ///< device firmware or an update in progress

  bool operator==(const Identity&) const = default;
};

/// Reads the answer's bytes behind the completion code; nothing when there are fewer than 11.
std::optional<Identity> DecodeIdentity(std::span<const std::uint8_t> answer);

/// The BMC or a controller behind it.
struct Controller {
  std::uint8_t address = kBmc;
  std::uint8_t channel = 0;
  std::string name;                  ///< for people
  std::optional<Identity> identity;  ///< nothing when it did not answer
};

struct Device {
  DeviceAddress address{};
  Bytes bytes{};              ///< the whole device, damaged or not
  bool isWordAccess = false;  ///< its requests count in units of two bytes
  bool isReadOnly = false;
  std::string file{};  ///< its file in the folder that it was read from; empty for one that has none yet
};

/// A sensor's answer to Get Sensor Reading (IPMI v2.0, section 35.14).
struct SensorReading {
  std::uint8_t number = 0;
  std::uint8_t completionCode = 0;
  Bytes bytes{};  ///< reading, flags, one or two state bytes

  bool operator==(const SensorReading&) const = default;
};

struct Board {
  std::string description;
  Controller bmc;
  std::vector<Controller> controllers;  ///< behind the BMC
  std::vector<Device> devices;          ///< FRU devices and EEPROMs, of the BMC and of the controllers
  bool hasRepository = true;            ///< false: the BMC has no SDR repository
  std::size_t repositoryCapacity = 0;   ///< bytes; 0: not known
  std::vector<Bytes> records;          ///< the repository's records in its order, each with its 5-byte header
  std::vector<SensorReading> sensors;  ///< of the BMC
  Bytes smbios;                        ///< as `dmidecode --dump-bin` writes it; empty: no tables

  const Device* Find(const DeviceAddress& address) const;
  Controller* FindController(std::uint8_t address, std::uint8_t channel);
};

/// Cuts records that stand back to back, as `ipmitool sdr dump` writes them. Returns the bytes behind the
/// last whole record; none for a whole dump.
std::span<const std::uint8_t> SplitRecords(std::span<const std::uint8_t> dump, std::vector<Bytes>& records);
/// The records back to back.
Bytes JoinRecords(std::span<const Bytes> records);

}  // namespace varnok::boards
