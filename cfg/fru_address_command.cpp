#include "cfg/fru_address_command.h"

#include <algorithm>
#include <array>

#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"
#include "cfg/fru_name_command.h"
#include "cfg/messages.h"

namespace varnok {
namespace {

constexpr std::string_view kImbDeviceName = "IMBDEVICE";

constexpr std::uint8_t kNoBus = 0xFF;

Status RefuseCount(const char* name) {
  CCfgParser::SetLastError("Too many parameters for the %s command.", name);
  Trace("CCfgFruAddress::ReadFromFile - Too many parameters", 1);
  return cfg_status::kTooManyParameters;
}

}  // namespace

Status CCfgFruAddress::ReadFromFile(CFileCfg& file) {
  TraceScope scope("CCfgFruAddress::ReadFromFile");
  constexpr std::size_t kMostTokens = 4;
  std::string rest;
  if (!ReadLineFromFile(file, rest)) return cfg_status::kBadLine;
  std::string_view cursor = rest;
  std::vector<std::string> tokens;
  std::string token;
  while (tokens.size() < kMostTokens && !cursor.empty() && GetNextInput(cursor, token))
    tokens.push_back(token);
  if (!tokens.empty() && !IsBufferEmpty(cursor)) return RefuseCount(GetDisplayName());
  if (Status status = ReadAddress(tokens); status != kSuccess) return status;
  if (address_.bus == kNoBus && address_.deviceAddress != kBmcAddress) {
    CCfgParser::SetLastError(cfg_message::kBadBus, address_.bus, address_.deviceAddress);
    Trace("CCfgFruAddress::ReadFromFile - Invalid bus and slave address", 1);
    return cfg_status::kBadValue;
  }
  return Attach();
}

/// One token: device ID. Three: kind of storage, bus, slave address. Four: the same with the device ID behind
/// the kind.
Status CCfgFruAddress::ReadAddress(const std::vector<std::string>& tokens) {
  if (tokens.empty()) return MissingParameter("first", cfg_status::kTooManyParameters);
  if (tokens.size() == 1) return ReadNumber(tokens[0], address_.deviceId);
  bool isImbDevice = EqualsIgnoreCase(tokens[0], kImbDeviceName);
  if (tokens.size() == 2)
    return isImbDevice ? MissingParameter("third", cfg_status::kTooManyParameters)
                       : RefuseCount(GetDisplayName());
  if (Status status = ReadNvsType(tokens[0]); status != kSuccess) return status;
  bool hasDeviceId = tokens.size() == 4;
  if (hasDeviceId && !isImbDevice) return RefuseCount(GetDisplayName());
  if (hasDeviceId) {
    if (Status status = ReadNumber(tokens[1], address_.deviceId); status != kSuccess) return status;
  }
  if (Status status = ReadNumber(tokens[tokens.size() - 2], address_.bus); status != kSuccess) return status;
  return ReadNumber(tokens.back(), address_.deviceAddress);
}

Status CCfgFruAddress::ReadNvsType(const std::string& token) {
  auto row = std::find_if(kNvsTypes.begin(), kNvsTypes.end(),
                          [&token](const NvsTypeRow& each) { return EqualsIgnoreCase(token, each.name); });
  if (row == kNvsTypes.end()) {
    CCfgParser::SetLastError("%s is not a valid NVS type.", token);
    Trace("CCfgFruAddress::ReadFromFile - Invalid NVS type", 1);
    return cfg_status::kBadNvsType;
  }
  address_.nvsType = row->type;
  return kSuccess;
}

Status CCfgFruAddress::ReadNumber(const std::string& token, std::uint8_t& number) {
  if (StringToInt(token, number)) return kSuccess;
  CCfgParser::SetLastError(cfg_message::kInvalidInput, token, GetDisplayName());
  Trace("CCfgFruAddress::ReadFromFile - %s is not a hexadecimal number", 1, token);
  return cfg_status::kBadLine;
}

Status CCfgFruAddress::Attach() {
  if (!IsValidCommandLocation()) return cfg_status::kOutOfBlock;
  CCfgFruName* fruName = parser_->CurrentFruName();
  if (fruName->IsAddressGiven()) {
    CCfgParser::SetLastError("Multiple 'FRUADDRESS' commands cannot be given after 'FRUNAME'.\n");
    Trace("CCfgFruAddress::ReadFromFile - Second FRUADDRESS for a FRUNAME", 1);
    return cfg_status::kSecondFruAddress;
  }
  fruName->MarkAddressGiven();
  fruName->SetFruAddress(this);
  return kSuccess;
}

Status CCfgFruAddress::Process() {
  TraceScope scope("CCfgFruAddress::Process");
  if (!IsValidCommandLocation()) return cfg_status::kOutOfBlock;
  parser_->CurrentFruName()->SetFruAddress(this);
  return kSuccess;
}

bool CCfgFruAddress::IsValidCommandLocation() {
  TraceScope scope("CCfgFruAddress::IsValidCommandLocation");
  if (parser_ != nullptr && parser_->CurrentFruName() != nullptr) return true;
  CCfgParser::SetLastError(cfg_message::kNoFruName);
  Trace("CCfgFruAddress::IsValidCommandLocation - No FRUNAME", 1);
  return false;
}

void CCfgFruAddress::DebugPrint() {
  auto row = std::find_if(kNvsTypes.begin(), kNvsTypes.end(),
                          [this](const NvsTypeRow& each) { return each.type == address_.nvsType; });
  Print("FRU Address: %s %02X %02X %02X\n", row->name, address_.deviceId, address_.bus,
        address_.deviceAddress);
}

}  // namespace varnok
