#include "cfg/probe_sensor.h"

#include "cfg/cfg_parser.h"

namespace varnok {
namespace {

constexpr std::uint8_t kGetSensorReading = 0x2D;
constexpr std::uint8_t kOem = 0x30;
constexpr std::uint8_t kGetFanSignal = 0x14;
// Scanning enabled, reading available (IPMI v2.0, section 35.14).
constexpr std::uint8_t kStateMask = 0x60;
constexpr std::uint8_t kScanned = 0x40;

}  // namespace

Status CCfgProbeDiscreteSensor::Ask(bool& isFound) {
  IpmiMessage response;
  if (Status status = AskBmc(net_function::kSensorEvent, kGetSensorReading, {p_[0]}, response);
      status != kSuccess)
    return status;
  isFound = (ByteAt(response, 1) & kStateMask) == kScanned && (ByteAt(response, 2) & p_[1]) == p_[3] &&
            (ByteAt(response, 3) & p_[2]) == p_[4];
  return kSuccess;
}

Status CCfgProbeFan::Ask(bool& isFound) {
  IpmiMessage response;
  if (Status status = AskBmc(kOem, kGetFanSignal, {0x0F, p_[0], 0x00}, response); status != kSuccess) {
    CCfgParser::SetLastError("Invalid value returned by the BMC.\n");
    return status;
  }
  // A script with another signal loads, and fails here.
  if (p_[1] > 1) return cfg_status::kBadValue;
  isFound = (ByteAt(response, 0) >> p_[1] & 1) != 0;
  return kSuccess;
}

}  // namespace varnok
