#include "cfg/cfg_parser.h"

#include <algorithm>
#include <utility>

#include "app/services/text.h"
#include "app/services/text_output.h"
#include "app/services/trace.h"
#include "cfg/messages.h"

namespace varnok {
namespace {

constexpr std::u16string_view kExtension = u".CFG";
constexpr std::size_t kPathCapacity = 1024;

/// The length of the part of a path up to and including its last separator.
std::size_t DirectoryLength(std::u16string_view path) {
  std::size_t last = path.find_last_of(u"\\/:");
  return last == std::u16string_view::npos ? 0 : last + 1;
}

bool HasScriptExtension(std::u16string_view name) {
  std::size_t dot = name.rfind(u'.');
  return dot != std::u16string_view::npos && EqualsIgnoreCase(name.substr(dot), kExtension);
}

}  // namespace

CCfgParser::~CCfgParser() {
  Free();
}

Status CCfgParser::ParseFile(const char16_t* path, const char16_t* name) {
  TraceScope scope(u"CCfgParser::ParseFile");
  isProcessed_ = false;
  Free();
  if (path == nullptr) {
    SetLastError(cfg_message::kNullFileName, u"Configuration");
    Trace(u"CCfgParser::ParseFile - File name is NULL", 1);
    return cfg_status::kFileNotFound;
  }
  const char16_t* checked = name != nullptr ? name : path;
  if (!HasScriptExtension(checked)) {
    SetLastError(u"%ls is an invalid file type, the extension must be '%ls'.", checked, kExtension);
    Trace(u"CCfgParser::ParseFile - %ls is an invalid file type, the extension must be .CFG", 1, checked);
    return cfg_status::kBadExtension;
  }
  fileName_ = path;
  if (Status status = DerivePaths(); status != kSuccess) return status;
  ClearConfigNameList();
  configNames_.emplace(fileName_.substr(DirectoryLength(fileName_)));
  return ReadFile(commands_);
}

Status CCfgParser::DerivePaths() {
  directory_ = fileName_.substr(0, DirectoryLength(fileName_));
  bool hasDirectory = !directory_.empty();
  if (!hasDirectory) directory_ = u".\\";
  fullPath_ = hasDirectory ? fileName_ : directory_ + fileName_;
  if (directory_.size() < kPathCapacity && fullPath_.size() < kPathCapacity) return kSuccess;
  Trace(u"CCfgParser::ParseFile - Path too long", 1);
  directory_.clear();
  return cfg_status::kFileNotFound;
}

Status CCfgParser::ReadFile(CommandList& commands) {
  TraceScope scope(u"CCfgParser::ReadFile");
  if (!echoName_.empty() && TheFirmware().OpenFile(Widen(echoName_), FileMode::Append, echo_) != kSuccess) {
    Trace(u"CCfgParser::ReadFile - Unable to open the output file", 1);
    return cfg_status::kFileNotFound;
  }
  reader_ = std::make_unique<CFileCfg>(Narrow(fullPath_));
  Status status = kSuccess;
  if (!reader_->IsLoaded()) {
    SetLastError(cfg_message::kFileNotFound, fileName_);
    Trace(u"CCfgParser::ReadFile - The file '%ls' was not found", 1, fileName_);
    status = cfg_status::kFileNotFound;
  } else if (status = ReadCommands(commands); status != kSuccess) {
    ReportLine();
    // What a refused command registered went with it.
    ForgetUpdates();
  }
  reader_.reset();
  echo_.reset();
  return status;
}

Status CCfgParser::ReadCommands(CommandList& commands) {
  while (!reader_->EndOfFile()) {
    PoolPtr<CCfgCommand> command;
    Status status = CCfgCommand::CreateCommand(reader_.get(), command, this);
    if (status == cfg_status::kEndOfScript) return kSuccess;
    if (status != kSuccess) {
      Trace(u"CCfgParser::ReadFile - Error in reading the configuration file ", 1);
      return status;
    }
    if (command == nullptr) {
      // The script ends here, without an error: its first commands are run as if they were all.
      Trace(u"CCfgParser::ReadFile - Failed to create command ", 1);
      return kSuccess;
    }
    if (!command->IsValidCommandLocation()) {
      command.reset();
      Trace(u"CCfgParser::ReadFile - Command out of order ", 1);
      return cfg_status::kOutOfPlace;
    }
    commands.push_back(std::move(command));
  }
  return kSuccess;
}

void CCfgParser::ReportLine() {
  std::u16string pending(GetLastError());
  std::u16string place =
      Format(u"Invalid input in file '%ls' at line %d:\n   ", fileName_, reader_->GetCurrentLineNumber() + 1);
  SetLastError(u"%s%s", place, pending);
}

Status CCfgParser::Process() {
  TraceScope scope(u"CCfgParser::Process");
  ForgetUpdates();
  for (const PoolPtr<CCfgCommand>& command : commands_) {
    if (Status status = command->Process(); status != kSuccess) {
      Trace(u"CCfgParser::Process - Unable to process command", 1);
      return status;
    }
  }
  isProcessed_ = true;
  return kSuccess;
}

void CCfgParser::Free() {
  TraceScope scope(u"CCfgParser::Free");
  ForgetUpdates();
  currentFruName_ = nullptr;
  commands_.clear();
  tags_.Clear();
  reader_.reset();
  configNames_.reset();
  fileName_.clear();
  directory_.clear();
  fullPath_.clear();
  targetPlatform_.clear();
  isProcessed_ = false;
}

void CCfgParser::DebugPrint() {
  TraceScope scope(u"CCfgParser::DebugPrint");
  for (const PoolPtr<CCfgCommand>& command : commands_) command->DebugPrint();
}

void CCfgParser::SetTag(const char* name) {
  TraceScope scope(u"CCfgParser::SetTag");
  if (name != nullptr) tags_.Add(name);
}

void CCfgParser::ClearTag(std::string_view name) {
  TraceScope scope(u"CCfgParser::ClearTag");
  tags_.Remove(name);
}

bool CCfgParser::IsTagSet(std::string_view name) const {
  TraceScope scope(u"CCfgParser::IsTagSet");
  return tags_.Contains(name);
}

int CCfgParser::FindTag(std::string_view name) {
  TraceScope scope(u"CCfgParser::FindTag");
  return tags_.Find(name);
}

Status CCfgParser::GetTag(std::int64_t index, std::string& name) {
  TraceScope scope(u"CCfgParser::GetTag");
  if (index < 0 || static_cast<std::size_t>(index) >= tags_.Count()) {
    SetLastError(u"Unrecoverable internal error: Get tag selector out of range.");
    Trace(u"CCfgParser::GetTag - Unrecoverable internal error: Get tag selector out of range", 1);
    return cfg_status::kNoSuchTag;
  }
  name = tags_.At(static_cast<std::size_t>(index));
  return kSuccess;
}

void CCfgParser::GotoLineInFile(std::uint32_t line) {
  TraceScope scope(u"CCfgParser::GotoLineInFile");
  if (reader_ != nullptr) reader_->SetCurrentLineNumber(line);
}

void CCfgParser::ClearConfigNameList() {
  TraceScope scope(u"CCfgParser::ClearConfigNameList");
  configNames_.reset();
}

void CCfgParser::SetTargetPlatformInfo(std::string_view text) {
  TraceScope scope(u"CCfgParser::SetTargetPlatformInfo");
  if (targetPlatform_.empty()) targetPlatform_ = Format(u"%hs", text);
}

std::uint8_t CCfgParser::TakeProbeSequence() {
  constexpr std::uint8_t kLast = 63;
  std::uint8_t sequence = probeSequence_;
  probeSequence_ = sequence == kLast ? 1 : static_cast<std::uint8_t>(sequence + 1);
  return sequence;
}

void CCfgParser::EchoLine(std::string_view line) {
  if (echo_ != nullptr) (void)WriteText(*echo_, Format(u"%s\n", line));
}

}  // namespace varnok
