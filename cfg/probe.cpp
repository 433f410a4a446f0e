#include "cfg/probe.h"

#include <algorithm>
#include <cstddef>

#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"
#include "cfg/messages.h"
#include "platform/smbios.h"

namespace varnok {
namespace {

constexpr const char* kFoundKeyword = "FOUND";
constexpr std::uint8_t kNoBus = 0xFF;

Status RefuseProbe(std::string_view keyword, const char* text) {
  CCfgParser::SetLastError(text, keyword);
  Trace("CCfgProbe::CreateProbe - Unable to create probe %s", 1, keyword);
  return cfg_status::kBadProbeType;
}

}  // namespace

// --- Reading ---

Status CCfgProbe::CreateProbe(CFileCfg& file, PoolPtr<CCfgCommand>& command, CCfgParser* parser) {
  TraceScope scope("CCfgProbe::CreateProbe");
  if (parser == nullptr) {
    CCfgParser::SetLastError(cfg_message::kInternalError, cfg_message::kModuleName, "CreateProbe");
    Trace("CCfgProbe::CreateProbe - Value of p_parser is NULL", 1);
    return cfg_status::kNoParser;
  }
  std::string keyword;
  if (!file.GetNextInput(keyword, kLineCapacity)) {
    CCfgParser::SetLastError(cfg_message::kMissingParameter, CommandName(CommandType::Probe), "first");
    Trace("CCfgProbe::CreateProbe - No probe keyword", 1);
    return cfg_status::kTooManyParameters;
  }
  auto rows = ProbeRows();
  auto row = std::find_if(rows.begin(), rows.end(), [&keyword](const ProbeRow& each) {
    return EqualsIgnoreCase(keyword, each.keyword);
  });
  if (row == rows.end()) return RefuseProbe(keyword, "'%s' is not a valid probe type.");
  PoolPtr<CCfgProbe> probe = row->make();
  if (probe == nullptr)
    return RefuseProbe(keyword, "Unrecoverable internal error: Failed to create PROBE command.");
  probe->type_ = row->type;
  command = std::move(probe);
  return kSuccess;
}

const char* CCfgProbe::ClassName() const {
  auto index = static_cast<std::size_t>(type_);
  return index < ProbeRows().size() ? ProbeRows()[index].className : "CCfgProbe";
}

Status CCfgProbe::ReadFromFile(CFileCfg& file) {
  TraceScope scope("CCfgProbe::ReadFromFile");
  Status status = ReadParameters(file);
  if (status == kSuccess) status = ReadFound(file);
  if (status != kSuccess) Trace("CCfgProbe::ReadFromFile - Unable to read the PROBE command", 1);
  return status;
}

Status CCfgProbe::ReadParameters(CFileCfg& file) {
  std::string rest;
  if (!ReadLineFromFile(file, rest)) return cfg_status::kBadLine;
  std::string_view cursor = rest;
  std::string token;
  while (!cursor.empty() && GetNextInput(cursor, token)) parameters_.push_back(token);
  // What is no word must not leave the probe with fewer parameters than were written.
  if (Status status = RefuseExtra(cursor, cfg_status::kBadLine); status != kSuccess) return status;
  TraceScope scope(ClassName(), "ValidateParams");
  Status status = ValidateParams();
  if (status != kSuccess) Trace("%s::ValidateParams - Invalid parameters", 1, ClassName());
  return status;
}

Status CCfgProbe::ReadFound(CFileCfg& file) {
  std::string keyword;
  bool isRead = file.GetFirstInput(keyword, kLineCapacity);
  file.SetCurrentLineNumber(file.GetCurrentLineNumber());
  if (!isRead || !EqualsIgnoreCase(keyword, kFoundKeyword)) return kSuccess;
  PoolPtr<CCfgCommand> command;
  Status status = CreateCommand(&file, command, parser_);
  if (status == kSuccess && command != nullptr && command->Type() == CommandType::Found)
    found_ = std::move(command);
  return status;
}

// --- Running ---

Status CCfgProbe::Process() {
  TraceScope scope(ClassName(), "Process");
  bool isFound = false;
  if (Status status = Ask(isFound); status != kSuccess) {
    Trace("%s::Process - Unable to answer the probe", 1, ClassName());
    return status;
  }
  SetFound(isFound);
  return ProcessFound();
}

void CCfgProbe::SetFound(bool isFound) {
  TraceScope scope("CCfgProbe::SetFound");
  if (found_ != nullptr) static_cast<CCfgFound&>(*found_).SetFound(isFound);
}

Status CCfgProbe::ProcessFound() {
  TraceScope scope("CCfgProbe::ProcessFound");
  return found_ != nullptr ? found_->Process() : kSuccess;
}

const char* CCfgProbe::GetProbeDisplayName() const {
  TraceScope scope("CCfgProbe::GetProbeDisplayName");
  auto index = static_cast<std::size_t>(type_);
  return index < ProbeRows().size() ? ProbeRows()[index].keyword : nullptr;
}

// --- Checks ---

Status CCfgProbe::RefuseCount() const {
  CCfgParser::SetLastError("Too many parameters for the %s command.", GetProbeDisplayName());
  return cfg_status::kTooManyParameters;
}

Status CCfgProbe::RequireCount(std::size_t least, std::size_t most) const {
  // Too few are reported as too many.
  return Count() < least || Count() > most ? RefuseCount() : kSuccess;
}

Status CCfgProbe::Missing(const char* which, Status status) const {
  CCfgParser::SetLastError("The %s %s command is missing its %s parameter.", GetDisplayName(),
                           GetProbeDisplayName(), which);
  return status;
}

Status CCfgProbe::ReadBytes(std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    std::string_view text = i < Count() ? std::string_view(Parameter(i)) : std::string_view();
    if (!StringToInt(text, p_[i])) return RefuseNumber(text);
  }
  return kSuccess;
}

Status CCfgProbe::ReadExactly(std::size_t count) {
  Status status = RequireCount(count, count);
  return status == kSuccess ? ReadBytes(count) : status;
}

Status CCfgProbe::RefuseNumber(std::string_view text) const {
  CCfgParser::SetLastError(cfg_message::kNotHexadecimal, text, GetDisplayName());
  return cfg_status::kBadValue;
}

Status CCfgProbe::RefuseValue(std::string_view text) const {
  CCfgParser::SetLastError(cfg_message::kInvalidInput, text, GetDisplayName());
  return cfg_status::kBadValue;
}

Status CCfgProbe::CheckDevice(std::uint8_t bus, std::uint8_t slave) {
  if ((slave & 1) != 0) {
    CCfgParser::SetLastError("The device address %02X is not even.", slave);
    return cfg_status::kBadValue;
  }
  if (bus == kNoBus && slave != kBmcAddress) {
    CCfgParser::SetLastError(cfg_message::kBadBus, bus, slave);
    return cfg_status::kBadValue;
  }
  return kSuccess;
}

// --- Requests, look-ups ---

IpmiMessage CCfgProbe::Request(std::uint8_t netFunction, std::uint8_t command,
                               std::initializer_list<std::uint8_t> data) {
  IpmiMessage request;
  request.targetAddress = kBmcAddress;
  request.netFunction = netFunction;
  request.command = command;
  request.dataLength = static_cast<std::uint32_t>(data.size());
  std::copy(data.begin(), data.end(), request.data.begin());
  return request;
}

Status CCfgProbe::AskBmc(std::uint8_t netFunction, std::uint8_t command,
                         std::initializer_list<std::uint8_t> data, IpmiMessage& response) {
  return ToStatus(IpmiTransaction(Request(netFunction, command, data), response));
}

std::uint8_t CCfgProbe::ByteAt(const IpmiMessage& response, std::size_t index) {
  return index < std::min<std::size_t>(response.dataLength, response.data.size()) ? response.data[index] : 0;
}

Status CCfgProbe::AnswerWithoutRecord(bool& isFound) {
  isFound = false;
  // A look-up leaves no text of its own.
  const char16_t* text = nullptr;
  (void)SmbiosGetLastErrorMessage(text);  // cannot fail
  CCfgParser::SetLastError("%s", text != nullptr ? text : u"");
  return kSuccess;
}

}  // namespace varnok
