// Probes for what the BMC measures: DISCRETE_SENSOR, FAN_SIGNAL.
#include "cfg/cfg_parser.h"
#include "cfg/probe.h"

namespace varnok {
namespace {

constexpr std::uint8_t kGetFanSignal = 0x14;
// Scanning enabled, reading available (IPMI v2.0, section 35.14).
constexpr std::uint8_t kStateMask = 0x60;
constexpr std::uint8_t kScanned = 0x40;

class CCfgProbeDiscreteSensor : public CCfgProbe {
 public:
  Status ValidateParams() override { return ReadExactly(5); }

 protected:
  Status Ask(bool& isFound) override;
};

class CCfgProbeFan : public CCfgProbe {
 public:
  Status ValidateParams() override { return ReadExactly(2); }

 protected:
  Status Ask(bool& isFound) override;
};

Status CCfgProbeDiscreteSensor::Ask(bool& isFound) {
  IpmiMessage response;
  if (Status status = AskBmc(net_function::kSensorEvent, ipmi_command::kGetSensorReading, {p_[0]}, response);
      status != kSuccess)
    return status;
  isFound = (ByteAt(response, 1) & kStateMask) == kScanned && (ByteAt(response, 2) & p_[1]) == p_[3] &&
            (ByteAt(response, 3, /*isOptional=*/true) & p_[2]) == p_[4];
  return kSuccess;
}

Status CCfgProbeFan::Ask(bool& isFound) {
  IpmiMessage response;
  if (Status status = AskBmc(kBoardNetFunction, kGetFanSignal, {0x0F, p_[0], 0x00}, response);
      status != kSuccess) {
    CCfgParser::SetLastError("Invalid value returned by the BMC.\n");
    return status;
  }
  // A script with another signal loads, and fails here.
  if (p_[1] > 1) return cfg_status::kBadValue;
  isFound = (ByteAt(response, 0) >> p_[1] & 1) != 0;
  return kSuccess;
}

}  // namespace

ProbeFamily SensorProbes() {
  static constexpr ProbeRow kRows[] = {
      {ProbeType{19}, "DISCRETE_SENSOR", "CCfgProbeDiscreteSensor", MakeProbe<CCfgProbeDiscreteSensor>},
      {ProbeType{23}, "FAN_SIGNAL", "CCfgProbeFan", MakeProbe<CCfgProbeFan>},
  };
  return kRows;
}

}  // namespace varnok
