#include "cfg/probe_bmc.h"

#include "app/services/text.h"
#include "cfg/cfg_main.h"
#include "cfg/cfg_parser.h"
#include "platform/fw_update.h"

namespace varnok {
namespace {

constexpr std::string_view kBootOption = "BOOT";
constexpr std::uint32_t kFirmwareArea = 1;
constexpr std::uint32_t kBootArea = 3;
constexpr std::uint32_t kUnknownBmc = 0;
constexpr std::uint32_t kKalvoteBmc = 1;

}  // namespace

Status CCfgProbeBmcConfig::Ask(bool& isFound) {
  return ProbeKeyValue(Parameter(0).c_str(), Parameter(1).c_str(), isFound);
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
  for (const std::string& spec : Parameters()) specs.push_back(Widen(spec));
  const char16_t* version = nullptr;
  Status status = FwUpdate::SelectDeviceAddress(target_);
  if (status == kSuccess) status = FwUpdate::LoadConfigurationFromSystem();
  if (status == kSuccess) status = FwUpdate::SelectDeviceArea(isBootArea_ ? kBootArea : kFirmwareArea);
  if (status == kSuccess) status = FwUpdate::GetVersionFromSystem(version);
  if (status == kSuccess) status = FwUpdate::IsVersionSupported(version, specs, isFound);
  if (status == kSuccess) return kSuccess;
  const char16_t* text = nullptr;
  FwUpdate::GetLastErrorMessage(text);
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

}  // namespace varnok
