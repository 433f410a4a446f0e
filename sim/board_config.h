// What board.json says, with every default filled in. docs/board.md describes each key.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/ipmi_message.h"
#include "sim/faults.h"
#include "sim/message.h"

namespace varnok::sim {

/// What Get Device ID answers (IPMI v2.0, section 20.1).
struct IdentityConfig {
  std::uint8_t deviceId = 0x20;
  std::uint8_t deviceRevision = 1;  ///< 0 to 15
  bool providesSdrs = true;
  std::uint8_t firmwareMajor = 1;     ///< 0 to 127
  std::uint8_t firmwareMinor = 0x05;  ///< BCD
  std::uint8_t ipmiVersion = 0x02;    ///< 02h: 2.0, 51h: 1.5
  std::uint8_t additionalSupport = 0xBF;
  std::uint32_t manufacturerId = 0x01E240;
  std::uint16_t productId = 0x4311;
  std::array<std::uint8_t, 4> auxiliary{};
  bool answersAuxiliary = true;  ///< false: the answer ends before the auxiliary bytes
};

/// Firmware-transfer mode, in which the BMC takes no inventory traffic.
struct TransferModeConfig {
  bool active = false;  ///< the BMC starts in it
  bool stuck = false;   ///< leaving it answers success and does not leave it
  std::string key = "OKAPI";
};

/// The largest FRU read and write of one request; 0: no limit.
struct FruLimits {
  std::uint8_t read = 0;
  std::uint8_t write = 0;
  std::uint8_t readCode = code::kCannotReturnLength;
  std::uint8_t writeCode = code::kLengthInvalid;
};

struct FruConfig {
  std::string path;  ///< where in board.json, for errors
  std::uint8_t id = 0;
  std::optional<std::uint32_t> size;
  bool wordAccess = false;
  bool readOnly = false;
  std::string file;
};

enum class EepromKind { At24c02, Ds1624s };

/// A serial EEPROM on a private bus of a controller.
struct EepromConfig {
  std::string path;
  EepromKind kind = EepromKind::At24c02;
  std::uint8_t bus = 0;      ///< the whole bus byte of Master Write-Read
  std::uint8_t address = 0;  ///< the whole slave address byte, bit 0 clear
  std::uint32_t size = 256;
  bool readOnly = false;
  std::string file;
};

/// A sensor's answer to Get Sensor Reading (IPMI v2.0, section 35.14).
struct SensorConfig {
  std::uint8_t number = 0;
  std::vector<std::uint8_t> reading;  ///< reading, flags, one or two state bytes
  std::uint8_t completionCode = 0;
};

/// One LAN configuration parameter (IPMI v2.0, section 23.2).
struct LanParameterConfig {
  std::uint8_t channel = 0;
  std::uint8_t parameter = 0;
  std::uint8_t set = 0;
  std::uint8_t block = 0;
  std::vector<std::uint8_t> data;  ///< behind the parameter revision
};

/// The answer to one of the maker's own requests, net function 30h.
struct OemConfig {
  std::uint8_t command = 0;
  std::vector<std::uint8_t> data;  ///< how the request's data begins
  std::vector<std::uint8_t> answer;
  std::uint8_t completionCode = 0;
};

struct KeyValueConfig {
  std::string key;
  std::string value;
};

/// What the BMC alone answers, as rows.
struct AnswerConfig {
  std::vector<SensorConfig> sensors;
  std::vector<LanParameterConfig> lanParameters;
  std::vector<OemConfig> oem;
  std::vector<KeyValueConfig> keyValues;
};

/// The BMC or a controller on an IPMB.
struct ControllerConfig {
  std::string name;
  std::uint8_t address = kBmcAddress;
  std::uint8_t channel = 0;
  IdentityConfig identity;
  std::uint32_t coldResetMilliseconds = 12'000;
  FruLimits limits;
  std::vector<FruConfig> frus;
  std::vector<EepromConfig> eeproms;
  AnswerConfig answers;
};

/// The BMC's SDR repository.
struct SdrConfig {
  std::string file = "sdr.bin";  ///< empty: the BMC has no repository
  bool isFileNamed = false;      ///< else it is created when it is missing
  std::uint32_t capacity = 32768;
  std::uint32_t eraseMilliseconds = 500;
  std::uint8_t readLimit = 62;   ///< the most bytes of one Get SDR
  std::uint16_t endId = 0xFFFF;  ///< the next-record ID that the last record's answer names
};

struct BoardConfig {
  std::string clockStart = "2026-01-01T08:00:00";
  std::uint32_t exchangeMicroseconds = 1000;  ///< what one request and its answer take
  TransferModeConfig transferMode;
  SdrConfig sdrs;
  ControllerConfig bmc;
  std::vector<ControllerConfig> controllers;
  std::vector<FaultRule> faults;
  std::optional<std::string> smbiosFile = "smbios.bin";  ///< none: a board without SMBIOS tables
};

/// Reads board.json. Throws BoardError that names the key's path.
BoardConfig ReadBoardConfig(const std::filesystem::path& file);

}  // namespace varnok::sim
