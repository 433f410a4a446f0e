#include "platform/cfw_update.h"

#include <algorithm>

#include "app/services/console.h"
#include "app/services/format.h"
#include "app/services/scan.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "firmware/bytes.h"
#include "firmware/ipmi.h"
#include "platform/answer_doubts.h"
#include "platform/fw_status.h"
#include "platform/ipmi.h"

namespace varnok {
namespace {

constexpr const char* kNoVersion = "Unable to read FW version from the BMC.";
constexpr const char* kInTransferMode = "BMC is in FW Transfer Mode. Unable to continue with the operation.";
constexpr const char* kNotInTransferMode =
    "BMC is not in FW Transfer Mode. Unable to continue with the operation.";
constexpr const char* kEnterFailed = "\nEnter Fw Transfer Mode Failed..\n";
constexpr std::size_t kMessageLimit = 256;

// Positions in a Get Device ID response. A BMC may leave out the auxiliary bytes; they read as 0 then.
constexpr std::size_t kFirmwareRevisionAt = 2;
constexpr std::size_t kProductIdAt = 9;
constexpr std::size_t kAuxiliaryAt = 11;
constexpr std::uint8_t kTransferModeBit = 0x80;
// Where each area's version starts: major, then minor.
constexpr std::array<std::size_t, 3> kVersionAt = {kFirmwareRevisionAt, kAuxiliaryAt + 2, kAuxiliaryAt};

constexpr std::uint32_t kSecondsAfterExit = 30;
constexpr int kResetPolls = 10;
constexpr std::uint32_t kMillisecondsPerPoll = 5000;

/// A version's two hexadecimal fields as one number. Tenths of the minor field, not a decimal reading: 1.10
/// is 2.6.
double VersionValue(std::uint32_t major, std::uint32_t minor) {
  return minor / 10.0 + major;
}

/// False when the pattern has too few fields.
bool MatchPattern(std::u16string_view pattern, double version, bool& isMatch) {
  std::uint32_t major = 0, minor = 0, highMajor = 0, highMinor = 0;
  if (pattern.find(u'-') != pattern.npos) {
    if (Scan(pattern, "%2X.%2X-%2X.%2X", &major, &minor, &highMajor, &highMinor) < 4) return false;
    isMatch = VersionValue(major, minor) <= version && version <= VersionValue(highMajor, highMinor);
  } else if (pattern.find(u'+') != pattern.npos) {
    if (Scan(pattern, "%2X.%2X+", &major, &minor) < 2) return false;
    isMatch = version >= VersionValue(major, minor);
  } else {
    if (Scan(pattern, "%2X.%2X", &major, &minor) < 2) return false;
    isMatch = version == VersionValue(major, minor);
  }
  return true;
}

}  // namespace

void CfwUpdate::Prepare(std::uint8_t target, std::uint8_t netFunction, std::uint8_t command) {
  request_ = {};
  request_.targetAddress = target;
  request_.netFunction = netFunction;
  request_.command = command;
}

bool CfwUpdate::Exchange() {
  return IpmiTransaction(request_, response_) == ipmi_result::kSuccess &&
         response_.completionCode == completion_code::kSuccess;
}

bool CfwUpdate::ExchangeDeviceId(std::uint8_t target) {
  Prepare(target, net_function::kApplication, ipmi_command::kGetDeviceId);
  // A BMC whose answer ends before its revision has not said whether it is in transfer mode.
  return Exchange() && response_.dataLength >= kFirmwareRevisionAt + 2;
}

bool CfwUpdate::ResponseShowsTransferMode() const {
  return (response_.data[kFirmwareRevisionAt] & kTransferModeBit) != 0;
}

Status CfwUpdate::ReadVersionFromSystem() {
  TraceScope scope("CfwUpdate::ReadVersionFromSystem");
  if (!ExchangeDeviceId(deviceAddress_)) {
    lastError_ = Widen(kNoVersion);
    return Fail("CfwUpdate::ReadVersionFromSystem", "ProcessMessage failed", fw_status::kExchangeFailed);
  }
  const auto& data = response_.data;
  for (std::size_t i = 0; i < versions_.size(); ++i)
    versions_[i] = FormatWide("%X.%02X", data[kVersionAt[i]], data[kVersionAt[i] + 1]);
  productId_ = WordAt(data, kProductIdAt);
  return kSuccess;
}

const char16_t* CfwUpdate::GetVersion() const {
  TraceScope scope("CfwUpdate::GetVersion");
  return area_ >= 1 && area_ <= versions_.size() ? versions_[area_ - 1].c_str() : nullptr;
}

Status CfwUpdate::IsBmcInFwTransferMode(bool& isInTransferMode) {
  TraceScope scope("CfwUpdate::IsBmcInFwTransferMode");
  isInTransferMode = false;
  if (!ExchangeDeviceId(kBmcAddress)) {
    lastError_ = Widen(kNoVersion);
    return Fail("CfwUpdate::IsBmcInFwTransferMode", "ProcessMessage failed", fw_status::kExchangeFailed);
  }
  isInTransferMode = ResponseShowsTransferMode();
  if (isInTransferMode) lastError_ = Widen(kInTransferMode);
  return kSuccess;
}

Status CfwUpdate::EnterFwTransferMode(std::uint8_t target, std::string_view key) {
  TraceScope scope("CfwUpdate::EnterFwTransferMode");
  if (target != kBmcAddress) return kSuccess;
  bool isInTransferMode = false;
  if (Status status = IsBmcInFwTransferMode(isInTransferMode); status != kSuccess) return status;
  if (isInTransferMode) {
    Print("\nController at address %02x  Already in FwTransfer mode..\n", target);
    return Fail("CfwUpdate::EnterFwTransferMode", "BMC is in FW Transfer mode", fw_status::kExchangeFailed);
  }
  Prepare(target, net_function::kFirmware, ipmi_command::kEnterFirmwareTransfer);
  request_.dataLength = static_cast<std::uint32_t>(std::min<std::size_t>(key.size(), IpmiMessage::kCapacity));
  std::copy_n(key.begin(), request_.dataLength, request_.data.begin());
  if (!Exchange()) {
    PrintText(kEnterFailed);
    return Fail("CfwUpdate::EnterFwTransferMode", "ProcessMessage failed", fw_status::kExchangeFailed);
  }
  if (Status status = IsBmcInFwTransferMode(isInTransferMode); status != kSuccess) return status;
  if (!isInTransferMode) {
    PrintText(kEnterFailed);
    lastError_ = Widen(kNotInTransferMode);
    return Fail("CfwUpdate::EnterFwTransferMode", "BMC is not in FW Transfer mode",
                fw_status::kExchangeFailed);
  }
  return kSuccess;
}

Status CfwUpdate::ExitFwTransferMode(std::uint8_t target) {
  TraceScope scope("CfwUpdate::ExitFwTransferMode");
  if (target != kBmcAddress) return kSuccess;
  bool isInTransferMode = false;
  if (Status status = IsBmcInFwTransferMode(isInTransferMode); status != kSuccess) return status;
  if (!isInTransferMode) {
    lastError_ = Widen(kNotInTransferMode);
    return Fail("CfwUpdate::ExitFwTransferMode", "BMC is not in FW Transfer mode",
                fw_status::kExchangeFailed);
  }
  Prepare(target, net_function::kFirmware, ipmi_command::kExitFirmwareTransfer);
  if (!Exchange()) {
    Print("\nExitFwTransferMode:: Error in Process Message Function..\n");
    return Fail("CfwUpdate::ExitFwTransferMode", "ProcessMessage failed", fw_status::kExchangeFailed);
  }
  Wait(kSecondsAfterExit);
  if (Status status = IsBmcInFwTransferMode(isInTransferMode); status != kSuccess) return status;
  if (isInTransferMode) {
    Print("\nExit Firmware Transfer Mode failed..\n");
    return Fail("CfwUpdate::ExitFwTransferMode", "BMC is in FW Transfer mode", fw_status::kExchangeFailed);
  }
  return kSuccess;
}

Status CfwUpdate::InvalidVersion(std::u16string_view text) {
  lastError_ = FormatUpTo(kMessageLimit, "Format of version string \"%s\" is invalid.", text);
  return Fail("CfwUpdate::IsVersionSupported", "Invalid version string", fw_status::kInvalidVersion);
}

Status CfwUpdate::IsVersionSupported(std::u16string_view version, std::span<const std::u16string> patterns,
                                     bool& isSupported) {
  TraceScope scope("CfwUpdate::IsVersionSupported");
  isSupported = false;
  std::uint32_t major = 0, minor = 0;
  if (Scan(version, "%2X.%2X", &major, &minor) < 2) return InvalidVersion(version);
  const double value = VersionValue(major, minor);
  for (const std::u16string& pattern : patterns) {
    bool isMatch = false;
    if (!MatchPattern(pattern, value, isMatch)) return InvalidVersion(pattern);
    isSupported = isSupported || isMatch;
  }
  return kSuccess;
}

Status CfwUpdate::ResetBmc(std::uint8_t target) {
  TraceScope scope("CfwUpdate::ResetBmc");
  const ExpectedSilence silence;
  Print("This operation will take around 50 seconds to complete\n");
  Prepare(target, net_function::kApplication, ipmi_command::kColdReset);
  // A BMC that resets at once may not take part in the hand-over any more; the polls tell whether it is back.
  (void)IpmiTransaction(request_, response_, /*noResponse=*/true);
  bool isAnswered = false;
  for (int poll = 0; poll < kResetPolls; ++poll) {
    DelayMilliseconds(kMillisecondsPerPoll);
    isAnswered = ExchangeDeviceId(kBmcAddress);
    if (isAnswered && !ResponseShowsTransferMode()) break;
  }
  if (!isAnswered) {
    Print("BMC Refresh failure\n");
    return Fail("CfwUpdate::ResetBmc", "ProcessMessage failed", fw_status::kExchangeFailed);
  }
  return kSuccess;
}

void CfwUpdate::Wait(std::uint32_t seconds) {
  TraceScope scope("CfwUpdate::Wait");
  DelayMilliseconds(seconds * 1000);
}

}  // namespace varnok
