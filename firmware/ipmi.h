// IPMI's names: what the program, its driver, the kernel's device and the simulated board say to each other.
// IPMI v2.0 throughout; the section stands beside each group.
#pragma once

#include <cstdint>
#include <span>

namespace varnok {

/// IPMB slave address of the BMC (section 5.2).
inline constexpr std::uint8_t kBmcAddress = 0x20;

/// Net function codes of requests, unshifted; the answer carries the next one (table 5-1).
namespace net_function {
inline constexpr std::uint8_t kChassis = 0x00;
inline constexpr std::uint8_t kSensorEvent = 0x04;
inline constexpr std::uint8_t kApplication = 0x06;
inline constexpr std::uint8_t kFirmware = 0x08;
inline constexpr std::uint8_t kStorage = 0x0A;
inline constexpr std::uint8_t kTransport = 0x0C;
}  // namespace net_function

/// Commands by net function (appendix G).
namespace ipmi_command {
// Application (chapters 20 and 22).
inline constexpr std::uint8_t kGetDeviceId = 0x01;
inline constexpr std::uint8_t kColdReset = 0x02;
inline constexpr std::uint8_t kClearMessageFlags = 0x30;
inline constexpr std::uint8_t kGetMessage = 0x33;
inline constexpr std::uint8_t kSendMessage = 0x34;
inline constexpr std::uint8_t kGetChannelInfo = 0x42;
inline constexpr std::uint8_t kMasterWriteRead = 0x52;
// Sensor/Event (chapter 35).
inline constexpr std::uint8_t kGetSensorReading = 0x2D;
// Firmware: the BMC firmware's own.
inline constexpr std::uint8_t kEnterFirmwareTransfer = 0x00;
inline constexpr std::uint8_t kExitFirmwareTransfer = 0x04;
// Storage: FRU inventory (chapter 34).
inline constexpr std::uint8_t kGetFruAreaInfo = 0x10;
inline constexpr std::uint8_t kReadFruData = 0x11;
inline constexpr std::uint8_t kWriteFruData = 0x12;
// Storage: SDR repository (chapter 33).
inline constexpr std::uint8_t kGetSdrRepositoryInfo = 0x20;
inline constexpr std::uint8_t kGetSdrAllocationInfo = 0x21;
inline constexpr std::uint8_t kReserveSdrRepository = 0x22;
inline constexpr std::uint8_t kGetSdr = 0x23;
inline constexpr std::uint8_t kAddSdr = 0x24;
inline constexpr std::uint8_t kPartialAddSdr = 0x25;
inline constexpr std::uint8_t kDeleteSdr = 0x26;
inline constexpr std::uint8_t kClearSdrRepository = 0x27;
// Transport (chapter 23).
inline constexpr std::uint8_t kGetLanConfiguration = 0x02;
}  // namespace ipmi_command

/// Types of sensor data records (chapter 43), those that others than their readers know.
namespace sdr_type {
inline constexpr std::uint8_t kFullSensor = 0x01;
inline constexpr std::uint8_t kCompactSensor = 0x02;
inline constexpr std::uint8_t kGenericLocator = 0x10;
inline constexpr std::uint8_t kFruLocator = 0x11;
inline constexpr std::uint8_t kControllerLocator = 0x12;
}  // namespace sdr_type

/// Completion codes (table 5-2); below C0h those of single commands.
namespace completion_code {
inline constexpr std::uint8_t kSuccess = 0x00;
inline constexpr std::uint8_t kQueueEmpty = 0x80;      ///< Get Message
inline constexpr std::uint8_t kWriteProtected = 0x80;  ///< Write FRU Data
inline constexpr std::uint8_t kNoParameter = 0x80;     ///< Get LAN Configuration Parameters
inline constexpr std::uint8_t kRecordLength = 0x80;    ///< Add SDR, Partial Add SDR
inline constexpr std::uint8_t kDeviceBusy = 0x81;      ///< Read and Write FRU Data
inline constexpr std::uint8_t kNakOnWrite = 0x83;      ///< Send Message, Master Write-Read
inline constexpr std::uint8_t kNodeBusy = 0xC0;
inline constexpr std::uint8_t kInvalidCommand = 0xC1;
inline constexpr std::uint8_t kInvalidForLun = 0xC2;
inline constexpr std::uint8_t kTimeout = 0xC3;
inline constexpr std::uint8_t kOutOfSpace = 0xC4;
inline constexpr std::uint8_t kReservationLost = 0xC5;
inline constexpr std::uint8_t kLengthInvalid = 0xC7;
inline constexpr std::uint8_t kLengthLimitExceeded = 0xC8;
inline constexpr std::uint8_t kOutOfRange = 0xC9;
inline constexpr std::uint8_t kCannotReturnLength = 0xCA;
inline constexpr std::uint8_t kNotPresent = 0xCB;
inline constexpr std::uint8_t kInvalidField = 0xCC;
inline constexpr std::uint8_t kInFirmwareUpdate = 0xD1;
inline constexpr std::uint8_t kInsufficientPrivilege = 0xD4;
inline constexpr std::uint8_t kWrongState = 0xD5;
inline constexpr std::uint8_t kUnspecified = 0xFF;
}  // namespace completion_code

/// The two's complement of the sum, so that the bytes and it sum to 0 (IPMB frames, section 5.1 of the IPMB
/// protocol; FRU areas and headers, FRU storage definition, chapters 8 to 16).
constexpr std::uint8_t IpmiChecksum(std::span<const std::uint8_t> bytes) {
  unsigned sum = 0;
  for (std::uint8_t byte : bytes) sum += byte;
  return static_cast<std::uint8_t>(0U - sum);
}

}  // namespace varnok
