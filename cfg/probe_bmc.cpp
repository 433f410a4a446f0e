// Probes for the BMC and what stands behind it: BMCCONFIG, PING, DEVICE_ID, BMCVER and HSCVER, BMC_TYPE,
// K410V_SYS, QRX_TYPE.
#include <string>
#include <string_view>
#include <vector>

#include "app/services/text.h"
#include "cfg/cfg_main.h"
#include "cfg/cfg_parser.h"
#include "cfg/probe.h"
#include "platform/fw_update.h"

namespace varnok {
namespace {

constexpr std::string_view kBootOption = "BOOT";
constexpr std::uint32_t kFirmwareArea = 1;
constexpr std::uint32_t kBootArea = 3;
constexpr std::uint32_t kUnknownBmc = 0;
constexpr std::uint32_t kKalvoteBmc = 1;

class CCfgProbeBmcConfig : public CCfgProbe {
 public:
  Status ValidateParams() override { return RequireCount(2, 2); }

 protected:
  Status Ask(bool& isFound) override;
};

/// Whether a device on a private bus answers.
class CCfgProbePing : public CCfgProbe {
 public:
  Status ValidateParams() override;

 protected:
  Status Ask(bool& isFound) override;
};

/// Whether a controller answers, and is this product.
class CCfgProbeDeviceId : public CCfgProbe {
 public:
  Status ValidateParams() override;

 protected:
  Status Ask(bool& isFound) override;

 private:
  std::uint32_t product_ = 0;
};

/// The BMC's firmware version, or that of its boot area, against versions and ranges.
class CCfgProbeBmcVer : public CCfgProbe {
 public:
  Status ValidateParams() override;

 protected:
  Status Ask(bool& isFound) override;

 private:
  bool isBootArea_ = false;
};

class CCfgProbeBmcType : public CCfgProbe {
 public:
  Status ValidateParams() override { return RequireCount(0, 0); }

 protected:
  Status Ask(bool& isFound) override;
};

class CCfgProbeK410V : public CCfgProbe {
 public:
  Status ValidateParams() override { return RequireCount(0, 0); }

 protected:
  Status Ask(bool& isFound) override { return ProbeIsK410V(0, isFound); }
};

class CCfgProbeQRX : public CCfgProbe {
 public:
  Status ValidateParams() override { return RequireCount(0, 0); }

 protected:
  Status Ask(bool& isFound) override { return ProbeAdvanced(0, isFound); }
};

Status CCfgProbeBmcConfig::Ask(bool& isFound) {
  return ProbeKeyValue(UpToNul(Parameter(0)), UpToNul(Parameter(1)), isFound);
}

Status CCfgProbePing::ValidateParams() {
  Status status = ReadExactly(2);
  return status == kSuccess ? CheckDevice(p_[0], p_[1]) : status;
}

Status CCfgProbePing::Ask(bool& isFound) {
  return ProbeFruDevice(p_[0], p_[1], 0, isFound);
}

// --- DEVICE_ID ---

Status CCfgProbeDeviceId::ValidateParams() {
  if (Count() < 2) return Missing(Count() == 0 ? "first" : "second", cfg_status::kTooManyParameters);
  Status status = RequireCount(2, 3);
  if (status == kSuccess) status = ReadBytes(2);
  if (status != kSuccess || Count() == 2) return status;
  return StringToInt(Parameter(2), product_) ? kSuccess : RefuseNumber(Parameter(2));
}

Status CCfgProbeDeviceId::Ask(bool& isFound) {
  std::uint32_t id = 0;
  Status status = ProbeDeviceId(p_[0], p_[1], id, isFound);
  isFound = isFound && (Count() == 2 || id == product_);
  return status;
}

// --- BMCVER, HSCVER ---

Status CCfgProbeBmcVer::ValidateParams() {
  if (Count() > 0 && EqualsIgnoreCase(Parameter(0), kBootOption)) {
    DropFirstParameter();
    isBootArea_ = true;
  }
  return Count() == 0 ? Missing("first", cfg_status::kBadValue) : kSuccess;
}

Status CCfgProbeBmcVer::Ask(bool& isFound) {
  std::vector<std::u16string> specs;
  for (std::string_view spec : Tokens()) specs.push_back(Widen(spec));
  const char16_t* version = nullptr;
  // HSCVER asks the BMC as well.
  Status status = FwUpdate::SelectDeviceAddress(kBmcAddress);
  if (status == kSuccess) status = FwUpdate::LoadConfigurationFromSystem();
  if (status == kSuccess) status = FwUpdate::SelectDeviceArea(isBootArea_ ? kBootArea : kFirmwareArea);
  if (status == kSuccess) status = FwUpdate::GetVersionFromSystem(version);
  if (status == kSuccess) status = FwUpdate::IsVersionSupported(version, specs, isFound);
  if (status == kSuccess) return kSuccess;
  const char16_t* text = nullptr;
  Discard(FwUpdate::GetLastErrorMessage(text));  // without one there is none to hand on
  CCfgParser::SetLastError("%s", text != nullptr ? text : u"");
  return status;
}

// --- BMC_TYPE ---

Status CCfgProbeBmcType::Ask(bool& isFound) {
  std::uint32_t type = CfgMain::GetBmcIdentity().type;
  if (type == kKalvoteBmc) parser_->SetTargetPlatformInfo("BMC_KALVOTE");
  isFound = type != kUnknownBmc;
  return kSuccess;
}

}  // namespace

ProbeFamily BmcProbes() {
  static constexpr ProbeRow kRows[] = {
      {ProbeType{4}, "BMCCONFIG", "CCfgProbeBmcConfig", MakeProbe<CCfgProbeBmcConfig>},
      {ProbeType{5}, "PING", "CCfgProbePing", MakeProbe<CCfgProbePing>},
      {ProbeType{6}, "DEVICE_ID", "CCfgProbeDeviceId", MakeProbe<CCfgProbeDeviceId>},
      {ProbeType{12}, "BMCVER", "CCfgProbeBmcVer", MakeProbe<CCfgProbeBmcVer>},
      {ProbeType{13}, "HSCVER", "CCfgProbeBmcVer", MakeProbe<CCfgProbeBmcVer>},
      {ProbeType{14}, "BMC_TYPE", "CCfgProbeBmcType", MakeProbe<CCfgProbeBmcType>},
      {ProbeType{15}, "K410V_SYS", "CCfgProbeK410V", MakeProbe<CCfgProbeK410V>},
      {ProbeType{16}, "QRX_TYPE", "CCfgProbeQRX", MakeProbe<CCfgProbeQRX>},
  };
  return kRows;
}

}  // namespace varnok
