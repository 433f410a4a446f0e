#include "cfg/sdr_commands.h"

#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"
#include "cfg/messages.h"
#include "sdr/sdr_data.h"

namespace varnok {
namespace {

/// Makes the SDR manager's message the engine's; false when it has none.
bool TakeSdrMessage() {
  const char16_t* text = nullptr;
  if (SdrData::GetLastErrorMessage(text) != kSuccess || text == nullptr || *text == u'\0') return false;
  CCfgParser::SetLastError("%s", text);
  return true;
}

}  // namespace

// --- SDRNAME ---

Status CCfgSdrName::ReadFromFile(CFileCfg& file) {
  TraceScope scope("CCfgSdrName::ReadFromFile");
  std::string rest;
  if (!ReadLineFromFile(file, rest)) return cfg_status::kBadLine;
  std::string_view cursor = rest;
  std::string name;
  if (!GetNextInput(cursor, name)) return MissingParameter("first", cfg_status::kBadLine);
  SetName(name);
  // Only so that input files can be counted before the script is processed, which begins with an empty update
  // list.
  parser_->AddUpdateCommand(*this, this, false);
  return ReadOptions(cursor);
}

Status CCfgSdrName::ReadOptions(std::string_view cursor) {
  std::string option;
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
      return RefuseExtra(fromOption, cfg_status::kTooManyParameters);
  }
  return kSuccess;
}

Status CCfgSdrName::Process() {
  TraceScope scope("CCfgSdrName::Process");
  if (GetWideName().empty()) {
    CCfgParser::SetLastError(cfg_message::kNullFileName, "SDR");
    Trace("CCfgSdrName::Process - File name is NULL", 1);
    return cfg_status::kBadValue;
  }
  if (!GetFile(GetWideName(), path_, kPathCapacity)) {
    CCfgParser::SetLastError(cfg_message::kCannotRetrieve, GetWideName());
    Trace("CCfgSdrName::Process - Unable to retrieve file %s", 1, GetWideName());
    return cfg_status::kFileNotFound;
  }
  Status status = SdrData::LoadConfigurationFromFile(path_);
  SdrData::SetCompareOnly(isCompare_);
  if (status != kSuccess) {
    if (!TakeSdrMessage()) CCfgParser::SetLastError(cfg_message::kFileNotFound, path_);
    Trace("CCfgSdrName::Process - LoadConfigurationFromFile failed", 1);
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
      Trace("CCfgSdrName::Execute - GetTag failed", 1);
      return cfg_status::kSdrCommitFailed;
    }
    if (tag.empty()) {
      Trace("CCfgSdrName::Execute - The tag is empty", 1);
      return cfg_status::kNoSuchTag;
    }
    if (SdrData::SetTag(Widen(tag)) != kSuccess) {
      TakeSdrMessage();
      Trace("CCfgSdrName::Execute - SetTag failed", 1);
      return cfg_status::kSdrCommitFailed;
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
    Trace("CCfgSdrName::Execute - No SDR file is loaded", 1);
    return cfg_status::kSdrCommitFailed;
  }
  if (SdrData::CommitConfigurationToSystem() == kSuccess) return kSuccess;
  if (!TakeSdrMessage()) CCfgParser::SetLastError("Unknown error occurred during %s process.", "SDR");
  Trace("CCfgSdrName::Execute - CommitConfigurationToSystem failed", 1);
  return cfg_status::kSdrCommitFailed;
}

void CCfgSdrName::DebugPrint() {
  Print("%s\n", GetName());
}

// --- CLEARSDR ---

Status CCfgSdrClear::ReadFromFile(CFileCfg& file) {
  TraceScope scope("CCfgSdrClear::ReadFromFile");
  isRead_ = true;
  std::string rest;
  if (!ReadLineFromFile(file, rest)) return cfg_status::kBadLine;
  return RefuseExtra(rest, cfg_status::kTooManyParameters);
}

Status CCfgSdrClear::Process() {
  TraceScope scope("CCfgSdrClear::Process");
  Status status = SdrData::ClearRepository();
  if (status != kSuccess) Trace("CCfgSdrClear::Process - ClearSDRRepository failed", 1);
  return status;
}

}  // namespace varnok
