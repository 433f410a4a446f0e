// Requests and responses as the simulated board passes them around, and the completion codes that it answers.
#pragma once

#include <cstdint>
#include <vector>

namespace varnok::sim {

struct Request {
  std::uint8_t netFunction = 0;
  std::uint8_t lun = 0;
  std::uint8_t command = 0;
  std::vector<std::uint8_t> data;
};

struct Response {
  std::uint8_t netFunction = 0;  ///< the request's plus 1
  std::uint8_t lun = 0;
  std::uint8_t command = 0;
  std::uint8_t completionCode = 0;
  std::vector<std::uint8_t> data;  ///< after the completion code
};

/// What became of one request.
struct Delivery {
  bool refused = false;  ///< the request did not get through: the send fails, on the IPMB it is a NAK
  std::vector<Response> answers;  ///< none: no answer comes; two: the second is a duplicate left behind
};

/// Completion codes (IPMI v2.0, table 5-2, and the command-specific ones of chapters 22, 23 and 34).
namespace code {
inline constexpr std::uint8_t kSuccess = 0x00;
inline constexpr std::uint8_t kQueueEmpty = 0x80;      // Get Message
inline constexpr std::uint8_t kWriteProtected = 0x80;  // Write FRU Data
inline constexpr std::uint8_t kNoParameter = 0x80;     // Get LAN Configuration Parameters
inline constexpr std::uint8_t kNakOnWrite = 0x83;      // Send Message, Master Write-Read
inline constexpr std::uint8_t kRecordLength = 0x80;    // Add SDR, Partial Add SDR
inline constexpr std::uint8_t kNodeBusy = 0xC0;
inline constexpr std::uint8_t kInvalidCommand = 0xC1;
inline constexpr std::uint8_t kInvalidForLun = 0xC2;
inline constexpr std::uint8_t kOutOfSpace = 0xC4;
inline constexpr std::uint8_t kReservationLost = 0xC5;
inline constexpr std::uint8_t kLengthInvalid = 0xC7;
inline constexpr std::uint8_t kLengthLimitExceeded = 0xC8;
inline constexpr std::uint8_t kOutOfRange = 0xC9;
inline constexpr std::uint8_t kCannotReturnLength = 0xCA;
inline constexpr std::uint8_t kNotPresent = 0xCB;
inline constexpr std::uint8_t kInvalidField = 0xCC;
inline constexpr std::uint8_t kInFirmwareUpdate = 0xD1;
inline constexpr std::uint8_t kWrongState = 0xD5;
inline constexpr std::uint8_t kUnspecified = 0xFF;
}  // namespace code

}  // namespace varnok::sim
