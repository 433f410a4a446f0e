#include "cfg/fru_address_command.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"
#include "cfg/fru_name_command.h"
#include "cfg/messages.h"
#include "fru/nvs_type.h"

namespace varnok {
namespace {

constexpr const char* kReadAddress = "CCfgFruAddress::ReadFromFile";

}  // namespace

Status CCfgFruAddress::RefuseCount() const {
  CCfgParser::SetLastError("Too many parameters for the %s command.", GetDisplayName());
  return Fail(kReadAddress, "Too many parameters", cfg_status::kTooManyParameters);
}

Status CCfgFruAddress::ReadFromFile(CFileCfg& file) {
  TraceScope scope(kReadAddress);
  std::string_view cursor;
  if (Status status = ReadLine(kReadAddress, file, cursor); status != kSuccess) return status;
  std::array<std::string_view, 4> room;
  std::size_t count = 0;
  while (count < room.size() && !cursor.empty() && GetNextInput(cursor, room[count])) ++count;
  if (count > 0 && !IsBufferEmpty(cursor)) return RefuseCount();
  std::span<const std::string_view> tokens(room.data(), count);
  if (Status status = ReadAddress(tokens); status != kSuccess) return status;
  if (address_.bus == cfg_message::kNoBus && address_.deviceAddress != kBmcAddress) {
    CCfgParser::SetLastError(cfg_message::kBadBus, address_.bus, address_.deviceAddress);
    return Fail(kReadAddress, "Invalid bus and slave address", cfg_status::kBadValue);
  }
  return Attach();
}

/// One token: device ID. Three: kind of storage, bus, slave address. Four: the same with the device ID behind
/// the kind.
Status CCfgFruAddress::ReadAddress(std::span<const std::string_view> tokens) {
  if (tokens.empty()) return MissingParameter(kReadAddress, "first", cfg_status::kTooManyParameters);
  if (tokens.size() == 1) return ReadNumber(tokens[0], address_.deviceId);
  bool isImbDevice = EqualsIgnoreCase(tokens[0], FindNvsType(nvs_type::kImbDevice)->name);
  if (tokens.size() == 2)
    return isImbDevice ? MissingParameter(kReadAddress, "third", cfg_status::kTooManyParameters)
                       : RefuseCount();
  if (Status status = ReadNvsType(tokens[0]); status != kSuccess) return status;
  bool hasDeviceId = tokens.size() == 4;
  if (hasDeviceId && !isImbDevice) return RefuseCount();
  if (hasDeviceId) {
    if (Status status = ReadNumber(tokens[1], address_.deviceId); status != kSuccess) return status;
  }
  if (Status status = ReadNumber(tokens[tokens.size() - 2], address_.bus); status != kSuccess) return status;
  return ReadNumber(tokens.back(), address_.deviceAddress);
}

Status CCfgFruAddress::ReadNvsType(std::string_view token) {
  auto row = std::find_if(std::begin(kNvsTypes), std::end(kNvsTypes),
                          [token](const NvsTypeRow& each) { return EqualsIgnoreCase(token, each.name); });
  if (row == std::end(kNvsTypes)) {
    CCfgParser::SetLastError("%s is not a valid NVS type.", token);
    return Fail(kReadAddress, "Invalid NVS type", cfg_status::kBadNvsType);
  }
  address_.nvsType = row->type;
  return kSuccess;
}

Status CCfgFruAddress::ReadNumber(std::string_view token, std::uint8_t& number) {
  if (StringToInt(token, number)) return kSuccess;
  CCfgParser::SetLastError(cfg_message::kInvalidInput, token, GetDisplayName());
  Trace("%s - %s is not a hexadecimal number", 1, kReadAddress, token);
  return cfg_status::kBadLine;
}

Status CCfgFruAddress::Attach() {
  if (!IsValidCommandLocation()) {
    return Fail(kReadAddress, "No FRUNAME", cfg_status::kOutOfBlock);
  }
  CCfgFruName* fruName = parser_->CurrentFruName();
  if (fruName->IsAddressGiven()) {
    CCfgParser::SetLastError("Multiple 'FRUADDRESS' commands cannot be given after 'FRUNAME'.\n");
    return Fail(kReadAddress, "Second FRUADDRESS for a FRUNAME", cfg_status::kSecondFruAddress);
  }
  fruName->MarkAddressGiven();
  fruName->SetFruAddress(this);
  return kSuccess;
}

Status CCfgFruAddress::Process() {
  constexpr const char* kName = "CCfgFruAddress::Process";
  TraceScope scope(kName);
  if (!IsValidCommandLocation()) {
    return Fail(kName, "No FRUNAME", cfg_status::kOutOfBlock);
  }
  parser_->CurrentFruName()->SetFruAddress(this);
  return kSuccess;
}

bool CCfgFruAddress::IsValidCommandLocation() {
  TraceScope scope("CCfgFruAddress::IsValidCommandLocation");
  if (parser_ != nullptr && parser_->CurrentFruName() != nullptr) return true;
  CCfgParser::SetLastError(cfg_message::kNoFruName);
  TraceFailure("CCfgFruAddress::IsValidCommandLocation", "No FRUNAME");
  return false;
}

FruDeviceAddress CCfgFruAddress::GetAddress() const {
  TraceScope scope("CCfgFruAddress::GetAddress");
  return address_;
}

void CCfgFruAddress::DebugPrint() {
  TraceScope scope("CCfgFruAddress::DebugPrint");
  Print("FRU Address: %s %02X %02X %02X\n", FindNvsType(address_.nvsType)->name, address_.deviceId,
        address_.bus, address_.deviceAddress);
}

CommandFamily FruAddressCommands() {
  static constexpr CommandRow kRows[] = {
      {CommandType{11}, "FRUADDRESS", "FRUADDRESS", Create<CCfgFruAddress>}};
  return kRows;
}

}  // namespace varnok
