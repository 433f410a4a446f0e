#include "cfg/probe.h"

#include <algorithm>
#include <cstddef>

#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"
#include "cfg/messages.h"
#include "cfg/script_watcher.h"
#include "platform/answer_doubts.h"
#include "platform/smbios.h"

namespace varnok {
namespace {

constexpr const char* kProbeKeyword = "PROBE";
constexpr const char* kFoundKeyword = "FOUND";
constexpr const char* kCreateProbe = "CCfgProbe::CreateProbe";
constexpr const char* kReadProbe = "CCfgProbe::ReadFromFile";

Status RefuseProbe(std::string_view keyword, const char* text) {
  CCfgParser::SetLastError(text, keyword);
  Trace("%s - Unable to create probe %s", 1, kCreateProbe, keyword);
  return cfg_status::kBadProbeType;
}

}  // namespace

/// FOUND: turns the answer of the PROBE before it into a tag.
class CCfgFound : public CCfgCommand {
 public:
  Status ReadFromFile(CFileCfg& file) override;
  /// Sets the tag of the answer; a "no" without a second tag sets none.
  Status Process() override;
  void DebugPrint() override;
  /// False: a FOUND that no PROBE has read is out of place.
  bool IsValidCommandLocation() override;
  void Describe(ScriptVisitor& visitor) const override;

  void SetFound(bool isFound) { isFound_ = isFound; }

 private:
  bool isFound_ = false;
  std::string_view foundTag_;
  std::string_view notFoundTag_;  ///< without text when there is none
};

// --- Reading ---

Status CCfgProbe::CreateProbe(CFileCfg& file, PoolPtr<CCfgCommand>& command, CCfgParser* parser) {
  TraceScope scope(kCreateProbe);
  if (parser == nullptr) {
    CCfgParser::SetLastError(cfg_message::kInternalError, cfg_message::kModuleName, "CreateProbe");
    return Fail(kCreateProbe, "Value of p_parser is NULL", cfg_status::kNoParser);
  }
  std::string_view keyword;
  if (!file.GetNextInput(keyword, kLineCapacity)) {
    CCfgParser::SetLastError(cfg_message::kMissingParameter, kProbeKeyword, "first");
    return Fail(kCreateProbe, "No probe keyword", cfg_status::kTooManyParameters);
  }
  const ProbeRow* row = FindProbe(keyword);
  if (row == nullptr) return RefuseProbe(keyword, "'%s' is not a valid probe type.");
  PoolPtr<CCfgProbe> probe = row->make();
  if (probe == nullptr)
    return RefuseProbe(keyword, "Unrecoverable internal error: Failed to create PROBE command.");
  probe->probeRow_ = row;
  command = std::move(probe);
  return kSuccess;
}

Status CCfgProbe::ReadFromFile(CFileCfg& file) {
  TraceScope scope(kReadProbe);
  Status status = ReadParameters(file);
  if (status == kSuccess) status = ReadFound(file);
  return status == kSuccess ? kSuccess : Fail(kReadProbe, "Unable to read the PROBE command", status);
}

Status CCfgProbe::ReadParameters(CFileCfg& file) {
  std::string_view cursor, token;
  if (!ReadLineFromFile(file, cursor)) return cfg_status::kBadLine;
  while (!cursor.empty() && GetNextInput(cursor, token)) parameters_.push_back(token);
  // What is no word must not leave the probe with fewer parameters than were written.
  if (Status status = RefuseExtra(kReadProbe, cursor, cfg_status::kBadLine); status != kSuccess)
    return status;
  TraceScope scope(ClassName(), "ValidateParams");
  Status status = ValidateParams();
  if (status != kSuccess) Trace("%s::ValidateParams - Invalid parameters", 1, ClassName());
  return status;
}

Status CCfgProbe::ReadFound(CFileCfg& file) {
  std::string_view keyword;
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
  Tell(&ScriptWatcher::Probes, *this);
  Status status = Ask(isFound);
  Tell(&ScriptWatcher::IsProbed, status, isFound);
  if (status != kSuccess) {
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

void CCfgProbe::Describe(ScriptVisitor& visitor) const {
  if (found_ != nullptr) found_->Describe(visitor);
}

const char* CCfgProbe::GetProbeDisplayName() const {
  TraceScope scope("CCfgProbe::GetProbeDisplayName");
  return probeRow_->keyword;
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
  if (bus == cfg_message::kNoBus && slave != kBmcAddress) {
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

std::uint8_t CCfgProbe::ByteAt(const IpmiMessage& response, std::size_t index, bool isOptional) {
  if (index < std::min<std::size_t>(response.dataLength, response.data.size())) return response.data[index];
  if (!isOptional) NoteDoubt(AnswerDoubt::Useless);
  return 0;
}

Status CCfgProbe::AnswerWithoutRecord(bool& isFound) {
  isFound = false;
  // A look-up leaves no text of its own.
  const char16_t* text = nullptr;
  (void)SmbiosGetLastErrorMessage(text);  // cannot fail
  CCfgParser::SetLastError("%s", text != nullptr ? text : u"");
  return kSuccess;
}

// --- FOUND ---

Status CCfgFound::ReadFromFile(CFileCfg& file) {
  constexpr const char* kName = "CCfgFound::ReadFromFile";
  TraceScope scope(kName);
  std::string_view cursor;
  if (Status status = ReadLine(kName, file, cursor); status != kSuccess) return status;
  if (!GetNextInput(cursor, foundTag_)) return MissingParameter(kName, "first", cfg_status::kBadLine);
  if (!IsBufferEmpty(cursor)) (void)GetNextInput(cursor, notFoundTag_);
  return RefuseExtra(kName, cursor, cfg_status::kTooManyParameters);
}

Status CCfgFound::Process() {
  TraceScope scope("CCfgFound::Process");
  Tell(&ScriptWatcher::Reaches, Line());
  std::string_view tag = isFound_ ? foundTag_ : notFoundTag_;
  if (tag.data() != nullptr && parser_ != nullptr) parser_->SetTag(tag);
  return kSuccess;
}

bool CCfgFound::IsValidCommandLocation() {
  TraceScope scope("CCfgFound::IsValidCommandLocation");
  CCfgParser::SetLastError("Command %s can not be used here, it must directly follow a PROBE command.",
                           GetDisplayName());
  TraceFailure("CCfgFound::IsValidCommandLocation", "FOUND without PROBE");
  return false;
}

void CCfgFound::DebugPrint() {
  TraceScope scope("CCfgFound::DebugPrint");
  Print("FOUND");
  if (foundTag_.data() != nullptr) Print(":\t%s", foundTag_);
  if (notFoundTag_.data() != nullptr) Print("\t%s", notFoundTag_);
  Print("\n");
}

void CCfgFound::Describe(ScriptVisitor& visitor) const {
  visitor.Fact(ScriptFact::SetsTagOnYes, foundTag_, Line());
  if (notFoundTag_.data() != nullptr) visitor.Fact(ScriptFact::SetsTagOnNo, notFoundTag_, Line());
}

CommandFamily ProbeCommands() {
  static constexpr CommandRow kRows[] = {
      {CommandType{19}, kProbeKeyword, kProbeKeyword, CCfgProbe::CreateProbe},
      {CommandType::Found, kFoundKeyword, kFoundKeyword, Create<CCfgFound>},
  };
  return kRows;
}

}  // namespace varnok
