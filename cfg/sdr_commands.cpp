// SDRNAME and CLEARSDR: programming an SDR file, and emptying the BMC's SDR repository.
#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"
#include "cfg/file_input_command.h"
#include "cfg/messages.h"
#include "sdr/sdr_data.h"

namespace varnok {
namespace {

constexpr const char* kReadSdrName = "CCfgSdrName::ReadFromFile";

/// Makes the SDR manager's message the engine's; false when it has none.
bool TakeSdrMessage() {
  const char16_t* text = nullptr;
  if (SdrData::GetLastErrorMessage(text) != kSuccess || text == nullptr || *text == u'\0') return false;
  CCfgParser::SetLastError("%s", text);
  return true;
}

class CCfgSdrName : public CCfgCommand, public CCfgFileInputCommand {
 public:
  Status ReadFromFile(CFileCfg& file) override;
  /// Loads the file into the SDR manager and registers the command in place of an earlier SDRNAME.
  Status Process() override;
  /// Hands the script's tags to the SDR manager, then writes (or compares) the records that they select.
  Status Execute() override;
  void DebugPrint() override;
  bool IsWriteFirst() const override { return isWriteFirst_; }
  void Describe(ScriptVisitor& visitor) const override;

 private:
  Status ReadOptions(std::string_view cursor);
  Status SelectTags();

  bool isWriteFirst_ = true;
  bool isCompare_ = false;
};

class CCfgSdrClear : public CCfgCommand {
 public:
  Status ReadFromFile(CFileCfg& file) override;
  // Kept: clears the repository at once, not with the commit; a later failure finds it empty.
  Status Process() override;
  void DebugPrint() override { TraceScope scope("CCfgSdrClear::DebugPrint"); }
};

// --- SDRNAME ---

Status CCfgSdrName::ReadFromFile(CFileCfg& file) {
  TraceScope scope(kReadSdrName);
  std::string_view cursor, name;
  if (Status status = ReadLine(kReadSdrName, file, cursor); status != kSuccess) return status;
  if (!GetNextInput(cursor, name)) return MissingParameter(kReadSdrName, "first", cfg_status::kBadLine);
  SetName(std::string(name));
  // Only so that input files can be counted before the script is processed, which begins with an empty update
  // list.
  parser_->AddUpdateCommand(*this, this, false);
  return ReadOptions(cursor);
}

Status CCfgSdrName::ReadOptions(std::string_view cursor) {
  std::string_view option;
  while (!IsBufferEmpty(cursor)) {
    std::string_view fromOption = cursor;
    bool isRead = GetNextInput(cursor, option);
    if (isRead && EqualsIgnoreCase(option, "COMPARE"))
      isCompare_ = true;
    else if (isRead && EqualsIgnoreCase(option, "FIRST"))
      isWriteFirst_ = true;
    else if (isRead && EqualsIgnoreCase(option, "LAST"))
      isWriteFirst_ = false;
    else
      return RefuseExtra(kReadSdrName, fromOption, cfg_status::kTooManyParameters);
  }
  return kSuccess;
}

Status CCfgSdrName::Process() {
  TraceScope scope("CCfgSdrName::Process");
  if (GetWideName().empty()) {
    CCfgParser::SetLastError(cfg_message::kNullFileName, "SDR");
    return Fail("CCfgSdrName::Process", "File name is NULL", cfg_status::kBadValue);
  }
  if (!GetFile(GetWideName(), path_, kPathCapacity)) {
    CCfgParser::SetLastError(cfg_message::kCannotRetrieve, GetWideName());
    Trace("CCfgSdrName::Process - Unable to retrieve file %s", 1, GetWideName());
    return cfg_status::kFileNotFound;
  }
  Status status = SdrData::LoadConfigurationFromFile(path_);
  Discard(SdrData::SetCompareOnly(isCompare_));  // also behind a load that failed
  if (status != kSuccess) {
    if (!TakeSdrMessage()) CCfgParser::SetLastError(cfg_message::kFileNotFound, path_);
    TraceFailure("CCfgSdrName::Process", "LoadConfigurationFromFile failed");
    return status == sdr_status::kCannotOpenFile ? cfg_status::kFileNotFound : cfg_status::kSdrLoadFailed;
  }
  parser_->AddUpdateCommand(*this, this, true);
  return kSuccess;
}

Status CCfgSdrName::SelectTags() {
  for (std::size_t i = 0; i < parser_->TagCount(); ++i) {
    std::string tag;
    if (parser_->GetTag(static_cast<std::int64_t>(i), tag) != kSuccess) {
      TakeSdrMessage();
      return Fail("CCfgSdrName::Execute", "GetTag failed", cfg_status::kSdrCommitFailed);
    }
    if (tag.empty()) {
      return Fail("CCfgSdrName::Execute", "The tag is empty", cfg_status::kNoSuchTag);
    }
    if (SdrData::SetTag(Widen(tag)) != kSuccess) {
      TakeSdrMessage();
      return Fail("CCfgSdrName::Execute", "SetTag failed", cfg_status::kSdrCommitFailed);
    }
  }
  return kSuccess;
}

Status CCfgSdrName::Execute() {
  TraceScope scope("CCfgSdrName::Execute");
  if (Status status = SelectTags(); status != kSuccess) return status;
  bool isLoaded = false;
  if (SdrData::IsLoaded(isLoaded) != kSuccess || !isLoaded) {
    CCfgParser::SetLastError(cfg_message::kFileNotFound, GetWideName());
    return Fail("CCfgSdrName::Execute", "No SDR file is loaded", cfg_status::kSdrCommitFailed);
  }
  if (SdrData::CommitConfigurationToSystem() == kSuccess) return kSuccess;
  if (!TakeSdrMessage()) CCfgParser::SetLastError("Unknown error occurred during %s process.", "SDR");
  return Fail("CCfgSdrName::Execute", "CommitConfigurationToSystem failed", cfg_status::kSdrCommitFailed);
}

void CCfgSdrName::DebugPrint() {
  TraceScope scope("CCfgSdrName::DebugPrint");
  Print("%s\n", GetName());
}

void CCfgSdrName::Describe(ScriptVisitor& visitor) const {
  visitor.Fact(ScriptFact::SdrFile, GetName(), Line());
}

// --- CLEARSDR ---

Status CCfgSdrClear::ReadFromFile(CFileCfg& file) {
  constexpr const char* kName = "CCfgSdrClear::ReadFromFile";
  TraceScope scope(kName);
  std::string_view rest;
  Status status = ReadLine(kName, file, rest);
  return status == kSuccess ? RefuseExtra(kName, rest, cfg_status::kTooManyParameters) : status;
}

Status CCfgSdrClear::Process() {
  TraceScope scope("CCfgSdrClear::Process");
  Status status = SdrData::ClearRepository();
  if (status != kSuccess) return Fail("CCfgSdrClear::Process", "ClearSDRRepository failed", status);
  return kSuccess;
}

}  // namespace

CommandFamily SdrCommands() {
  static constexpr CommandRow kRows[] = {
      {CommandType::SdrName, "SDRNAME", "SDRNAME", Create<CCfgSdrName>},
      {CommandType{21}, "CLEARSDR", "CLEARSDR", Create<CCfgSdrClear>},
  };
  return kRows;
}

}  // namespace varnok
