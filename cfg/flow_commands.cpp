#include "cfg/flow_commands.h"

#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"

namespace varnok {

// --- SET, CLEAR ---

Status CCfgSet::ReadFromFile(CFileCfg& file) {
  TraceScope scope("CCfgSet::ReadFromFile");
  return ReadOneParameter(file, tag_, cfg_status::kTooManyParameters);
}

Status CCfgSet::Process() {
  TraceScope scope("CCfgSet::Process");
  if (parser_ != nullptr) parser_->SetTag(tag_.c_str());
  return kSuccess;
}

Status CCfgClear::ReadFromFile(CFileCfg& file) {
  TraceScope scope("CCfgClear::ReadFromFile");
  return ReadOneParameter(file, tag_, cfg_status::kTooManyParameters);
}

Status CCfgClear::Process() {
  TraceScope scope("CCfgClear::Process");
  if (parser_ == nullptr) return kSuccess;
  wasSet_ = parser_->IsTagSet(tag_);
  parser_->ClearTag(tag_);
  return kSuccess;
}

// --- ERRORLEVEL ---

Status CCfgErrorLevel::ReadFromFile(CFileCfg& file) {
  TraceScope scope("CCfgErrorLevel::ReadFromFile");
  std::string rest;
  if (!ReadLineFromFile(file, rest)) return cfg_status::kBadLine;
  std::string_view cursor = rest;
  std::string token;
  // Without a level the command stands for ERRORLEVEL 0.
  if (IsBufferEmpty(cursor)) return kSuccess;
  if (!GetNextInput(cursor, token) || !StringToInt(token, level_)) {
    CCfgParser::SetLastError("%s is not a valid error level, it must be a valid hexidecimal number.", token);
    Trace("CCfgErrorLevel::ReadFromFile - Invalid error level", 1);
    return cfg_status::kBadLine;
  }
  return RefuseExtra(cursor, cfg_status::kTooManyParameters);
}

Status CCfgErrorLevel::Process() {
  TraceScope scope("CCfgErrorLevel::Process");
  CCfgParser::SetLastError("Configuration file exiting due to ERRORLEVEL %02X.", level_);
  return cfg_status::kErrorLevel + static_cast<std::uint64_t>(std::int64_t{static_cast<std::int32_t>(level_)});
}

void CCfgErrorLevel::DebugPrint() {
  Print("ERRORLEVEL %02X\n", level_);
}

// --- CONFIGURATION ---

Status CCfgConfiguration::ReadFromFile(CFileCfg& file) {
  TraceScope scope("CCfgConfiguration::ReadFromFile");
  constexpr std::size_t kMostParameters = 3;
  std::string rest;
  if (!ReadLineFromFile(file, rest)) return cfg_status::kBadLine;
  std::string_view cursor = rest;
  std::string parameter;
  while (parameters_.size() < kMostParameters && !cursor.empty() && GetNextInput(cursor, parameter))
    parameters_.push_back(parameter);
  if (parameters_.empty()) return MissingParameter("first", cfg_status::kBadLine);
  if (parameters_.size() > 1) parser_->SetTargetPlatformInfo(parameters_[1]);
  return RefuseExtra(cursor, cfg_status::kTooManyParameters);
}

Status CCfgConfiguration::Process() {
  TraceScope scope("CCfgConfiguration::Process");
  std::u16string shown = Widen(parameters_.front());
  for (std::size_t i = 1; i < parameters_.size(); ++i) shown += FormatWide(" %s", Widen(parameters_[i]));
  Print("Update File Configuration: %s\n", shown);
  return kSuccess;
}

// --- BOOT ---

Status CCfgBoot::ReadFromFile(CFileCfg& file) {
  TraceScope scope("CCfgBoot::ReadFromFile");
  std::string rest;
  if (!ReadLineFromFile(file, rest)) return cfg_status::kBadLine;
  return RefuseExtra(rest, cfg_status::kTooManyParameters);
}

void CCfgBoot::DebugPrint() {
  Print("Boot\n");
}

// --- BMC_REFRESH ---

Status CCfgBmcRefresh::Process() {
  TraceScope scope("CCfgBmcRefresh::Process");
  if (parser_ != nullptr) parser_->AddUpdateCommand(*this, nullptr, true);
  return kSuccess;
}

}  // namespace varnok
