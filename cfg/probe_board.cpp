// Probes for what the board is: HWID, SYSTEM, BOARD_ID, DIMM, BIOSVER, BASEBOARD_PRODID, BASEBOARD_REVID.
#include <algorithm>

#include "app/services/scan.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"
#include "cfg/probe.h"
#include "platform/smbios.h"

namespace varnok {
namespace {

constexpr std::uint8_t kGetProductId = 0x93;
constexpr std::uint8_t kGetRevisionId = 0x94;
constexpr int kDots = 5;  // in front of the part of the BIOS version that counts

bool IsLetterOrDigit(char character) {
  char upper = ToUpper(character);
  return (upper >= 'A' && upper <= 'Z') || (character >= '0' && character <= '9');
}

/// The part of a BIOS version between its fifth and sixth dot; empty when it has no fifth.
std::string_view ExtractBiosVersion(std::string_view version) {
  TraceScope scope("CCfgProbeBiosVer::ExtractBiosVersion");
  for (int i = 0; i < kDots; ++i) {
    std::size_t dot = version.find('.');
    version.remove_prefix(dot == version.npos ? version.size() : dot + 1);
  }
  version = version.substr(0, version.find('.'));
  Trace("CCfgProbeBiosVer::ExtractBiosVersion - pszVersion=%s\n", 1, version);
  return version;
}

/// "low-high", "low+" or "number". False when the text is none of these.
bool MatchBiosVersion(std::string_view spec, std::int32_t version, bool& isMatch) {
  std::int32_t low = 0, high = 0;
  if (spec.find('-') != spec.npos) {
    if (Scan(spec, "%d-%d", &low, &high) < 2) return false;
    isMatch = low <= version && version <= high;
    return true;
  }
  if (Scan(spec, "%d", &low) < 1) return false;
  isMatch = spec.find('+') != spec.npos ? version >= low : version == low;
  return true;
}

// Kept: never found; scripts of boards that had hardware IDs still run.
class CCfgProbeHwId : public CCfgProbe {
 public:
  Status ValidateParams() override;

 protected:
  Status Ask(bool& isFound) override;
};

/// The first word of the SMBIOS board product.
class CCfgProbeSystem : public CCfgProbe {
 public:
  Status ValidateParams() override { return RequireCount(1, 1); }

 protected:
  Status Ask(bool& isFound) override;
};

/// The last character of the SMBIOS board product.
class CCfgProbeBoardId : public CCfgProbe {
 public:
  Status ValidateParams() override;

 protected:
  Status Ask(bool& isFound) override;
};

/// The size of the largest memory module.
class CCfgProbeDimm : public CCfgProbe {
 public:
  Status ValidateParams() override;

 protected:
  Status Ask(bool& isFound) override;

 private:
  std::int32_t size_ = 0;
};

/// The sixth part of the SMBIOS BIOS version, against numbers and ranges.
class CCfgProbeBiosVer : public CCfgProbe {
 public:
  Status ValidateParams() override;

 protected:
  Status Ask(bool& isFound) override;
};

/// The base board's product ID, which the BMC knows.
class CCfgProbeProdId : public CCfgProbe {
 public:
  Status ValidateParams() override { return ReadExactly(1); }

 protected:
  Status Ask(bool& isFound) override;
};

/// The base board's revision ID, which the BMC knows.
class CCfgProbeRevId : public CCfgProbe {
 public:
  Status ValidateParams() override { return ReadExactly(1); }

 protected:
  Status Ask(bool& isFound) override;
};

// --- HWID ---

Status CCfgProbeHwId::ValidateParams() {
  return Count() == 0 ? Missing("first", cfg_status::kTooManyParameters) : RequireCount(1, 1);
}

Status CCfgProbeHwId::Ask(bool& isFound) {
  isFound = false;
  return kSuccess;
}

// --- SYSTEM, BOARD_ID ---

Status CCfgProbeSystem::Ask(bool& isFound) {
  std::string product;
  if (SmbiosGetBoardProductName(product) != kSuccess) return AnswerWithoutRecord(isFound);
  // The first character stays whatever it is.
  auto end = std::find_if_not(product.begin() + (product.empty() ? 0 : 1), product.end(), IsLetterOrDigit);
  product.erase(end, product.end());
  isFound = EqualsIgnoreCase(product, Parameter(0));
  return kSuccess;
}

Status CCfgProbeBoardId::ValidateParams() {
  if (Status status = RequireCount(1, 1); status != kSuccess) return status;
  auto code = static_cast<std::uint8_t>(Parameter(0).empty() ? '\0' : Parameter(0).front());
  if (code >= 33 && code <= 125) return kSuccess;
  CCfgParser::SetLastError("The input character '%X' must be printable.", code);
  return cfg_status::kBadValue;
}

Status CCfgProbeBoardId::Ask(bool& isFound) {
  std::string product;
  if (SmbiosGetBoardProductName(product) != kSuccess) return AnswerWithoutRecord(isFound);
  isFound = product.ends_with(Parameter(0).front());
  return kSuccess;
}

// --- DIMM ---

Status CCfgProbeDimm::ValidateParams() {
  if (Count() == 0) return Missing("first", cfg_status::kTooManyParameters);
  if (Status status = RequireCount(1, 1); status != kSuccess) return status;
  if (!StringToDec(Parameter(0), size_)) return RefuseNumber(Parameter(0));
  // The message says more than is asked for: zero is taken.
  if (size_ >= 0) return kSuccess;
  CCfgParser::SetLastError("Invalid value for %s (%d), the value must be greater than zero.",
                           GetDisplayName(), size_);
  return cfg_status::kBadValue;
}

Status CCfgProbeDimm::Ask(bool& isFound) {
  std::uint32_t largest = 0;
  if (SmbiosGetMemoryDeviceSize(largest) != kSuccess) return AnswerWithoutRecord(isFound);
  isFound = static_cast<std::uint32_t>(size_) <= largest;
  return kSuccess;
}

// --- BIOSVER ---

Status CCfgProbeBiosVer::ValidateParams() {
  return Count() == 0 ? Missing("first", cfg_status::kBadValue) : kSuccess;
}

Status CCfgProbeBiosVer::Ask(bool& isFound) {
  std::string text;
  if (SmbiosGetBiosVersion(text) != kSuccess) return AnswerWithoutRecord(isFound);
  std::string_view part = ExtractBiosVersion(text);
  std::int32_t version = 0;
  if (Scan(part, "%d", &version) != 1) return RefuseValue(part);
  isFound = false;
  for (std::string_view spec : Tokens()) {
    bool isMatch = false;
    if (!MatchBiosVersion(spec, version, isMatch)) return RefuseValue(spec);
    isFound = isFound || isMatch;
  }
  return kSuccess;
}

// --- BASEBOARD_PRODID, BASEBOARD_REVID ---

Status CCfgProbeProdId::Ask(bool& isFound) {
  IpmiMessage response;
  if (Status status = AskBmc(kBoardNetFunction, kGetProductId, {}, response); status != kSuccess)
    return status;
  if (ByteAt(response, 0) == 0) {
    CCfgParser::SetLastError("Invalid Base board product ID '0' detected.");
    return cfg_status::kNoProductId;
  }
  isFound = ByteAt(response, 0) == p_[0];
  return kSuccess;
}

Status CCfgProbeRevId::Ask(bool& isFound) {
  IpmiMessage response;
  if (Status status = AskBmc(kBoardNetFunction, kGetRevisionId, {}, response); status != kSuccess)
    return status;
  if (ByteAt(response, 0) == 0) return cfg_status::kBadValue;
  isFound = ByteAt(response, 0) == p_[0];
  return kSuccess;
}

}  // namespace

ProbeFamily BoardProbes() {
  static constexpr ProbeRow kRows[] = {
      {ProbeType{0}, "HWID", "CCfgProbeHwId", MakeProbe<CCfgProbeHwId>},
      {ProbeType{1}, "SYSTEM", "CCfgProbeSystem", MakeProbe<CCfgProbeSystem>},
      {ProbeType{2}, "BOARD_ID", "CCfgProbeBoardId", MakeProbe<CCfgProbeBoardId>},
      {ProbeType{3}, "DIMM", "CCfgProbeDimm", MakeProbe<CCfgProbeDimm>},
      {ProbeType{11}, "BIOSVER", "CCfgProbeBiosVer", MakeProbe<CCfgProbeBiosVer>},
      {ProbeType{20}, "BASEBOARD_PRODID", "CCfgProbeProdId", MakeProbe<CCfgProbeProdId>},
      {ProbeType{21}, "BASEBOARD_REVID", "CCfgProbeRevId", MakeProbe<CCfgProbeRevId>},
  };
  return kRows;
}

}  // namespace varnok
