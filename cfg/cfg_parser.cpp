#include "cfg/cfg_parser.h"

#include <algorithm>
#include <utility>

#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/text_output.h"
#include "app/services/trace.h"
#include "cfg/messages.h"
#include "cfg/script_watcher.h"

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

void CCfgParser::SetLastErrorWith(const char* format, const FormatArgument* arguments, std::size_t count) {
  TraceScope scope("CCfgParser::SetLastError");
  // A script in 16-bit text is full of NULs: each ends its token, not the message that quotes it.
  std::vector<FormatArgument> shown(arguments, arguments + count);
  for (FormatArgument& argument : shown)
    if (argument.kind() == FormatArgument::Kind::Text8) argument = UpToNul(argument.text8());
  EngineMessage().Set(FormatWideWith(format, shown.data(), count));
}

std::u16string_view CCfgParser::GetLastError() {
  TraceScope scope("CCfgParser::GetLastError");
  return EngineMessage().Current();
}

CCfgParser::~CCfgParser() {
  Free();
}

Status CCfgParser::ParseFile(const char16_t* path, const char16_t* name) {
  TraceScope scope("CCfgParser::ParseFile");
  isProcessed_ = false;
  Free();
  if (path == nullptr) {
    SetLastError(cfg_message::kNullFileName, "Configuration");
    return Fail("CCfgParser::ParseFile", "File name is NULL", cfg_status::kFileNotFound);
  }
  const char16_t* checked = name != nullptr ? name : path;
  if (!HasScriptExtension(checked)) {
    SetLastError("%s is an invalid file type, the extension must be '%s'.", checked, kExtension);
    Trace("CCfgParser::ParseFile - %s is an invalid file type, the extension must be .CFG", 1, checked);
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
  TraceFailure("CCfgParser::ParseFile", "Path too long");
  directory_.clear();
  return cfg_status::kFileNotFound;
}

Status CCfgParser::ReadFile(CommandList& commands) {
  TraceScope scope("CCfgParser::ReadFile");
  if (!echoName_.empty() && TheFirmware().OpenFile(Widen(echoName_), FileMode::Append, echo_) != kSuccess) {
    return Fail("CCfgParser::ReadFile", "Unable to open the output file", cfg_status::kFileNotFound);
  }
  reader_ = std::make_unique<CFileCfg>(Narrow(fullPath_));
  Status status = kSuccess;
  if (!reader_->IsLoaded()) {
    SetLastError(cfg_message::kFileNotFound, fileName_);
    Trace("CCfgParser::ReadFile - The file '%s' was not found", 1, fileName_);
    status = cfg_status::kFileNotFound;
  } else if (status = ReadCommands(commands); status != kSuccess) {
    ReportLine();
    // What a refused command registered went with it.
    ForgetUpdates();
  }
  echo_.reset();
  return status;
}

Status CCfgParser::ReadCommands(CommandList& commands) {
  while (!reader_->EndOfFile()) {
    PoolPtr<CCfgCommand> command;
    Status status = CCfgCommand::CreateCommand(reader_.get(), command, this);
    if (status == cfg_status::kEndOfScript) return kSuccess;
    if (status != kSuccess) {
      return Fail("CCfgParser::ReadFile", "Error in reading the configuration file ", status);
    }
    if (command == nullptr) {
      // Kept: the script ends here without an error, and its first commands are run as if they were all. The
      // operator has to know.
      Warn("%s, line %d: out of memory; the script ends in front of this line", fileName_,
           reader_->CurrentIndex() + 1);
      TraceFailure("CCfgParser::ReadFile", "Failed to create command ");
      return kSuccess;
    }
    if (!command->IsValidCommandLocation()) {
      command.reset();
      return Fail("CCfgParser::ReadFile", "Command out of order ", cfg_status::kOutOfPlace);
    }
    commands.push_back(std::move(command));
  }
  return kSuccess;
}

void CCfgParser::ReportLine() {
  std::u16string pending(GetLastError());
  std::u16string place = FormatWide("Invalid input in file '%s' at line %d:\n   ", fileName_,
                                    reader_->GetCurrentLineNumber() + 1);
  SetLastError("%s%s", place, pending);
}

Status CCfgParser::Process() {
  TraceScope scope("CCfgParser::Process");
  ForgetUpdates();
  for (CCfgCommand& command : commands_) {
    Tell(&ScriptWatcher::Runs, command);
    if (Status status = command.Process(); status != kSuccess) {
      return Fail("CCfgParser::Process", "Unable to process command", status);
    }
  }
  isProcessed_ = true;
  return kSuccess;
}

void CCfgParser::Free() {
  TraceScope scope("CCfgParser::Free");
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
  TraceScope scope("CCfgParser::DebugPrint");
  for (CCfgCommand& command : commands_) command.DebugPrint();
}

void CCfgParser::SetTag(std::string_view name) {
  TraceScope scope("CCfgParser::SetTag");
  if (name.data() == nullptr) return;
  tags_.Add(UpToNul(name));
  Tell(&ScriptWatcher::SetsTag, UpToNul(name));
}

void CCfgParser::ClearTag(std::string_view name) {
  TraceScope scope("CCfgParser::ClearTag");
  tags_.Remove(name);
  Tell(&ScriptWatcher::ClearsTag, name);
}

bool CCfgParser::IsTagSet(std::string_view name) const {
  TraceScope scope("CCfgParser::IsTagSet");
  return tags_.Contains(name);
}

int CCfgParser::FindTag(std::string_view name) {
  TraceScope scope("CCfgParser::FindTag");
  return tags_.Find(name);
}

Status CCfgParser::GetTag(std::int64_t index, std::string& name) {
  TraceScope scope("CCfgParser::GetTag");
  if (index < 0 || static_cast<std::size_t>(index) >= tags_.Count()) {
    SetLastError("Unrecoverable internal error: Get tag selector out of range.");
    return Fail("CCfgParser::GetTag", "Unrecoverable internal error: Get tag selector out of range",
                cfg_status::kNoSuchTag);
  }
  name = tags_.At(static_cast<std::size_t>(index));
  return kSuccess;
}

std::string_view CCfgParser::Line(std::uint32_t line) const {
  return reader_ != nullptr ? reader_->Line(line) : std::string_view();
}

void CCfgParser::GotoLineInFile(std::uint32_t line) {
  TraceScope scope("CCfgParser::GotoLineInFile");
  if (reader_ != nullptr) reader_->SetCurrentLineNumber(line);
}

void CCfgParser::ClearConfigNameList() {
  TraceScope scope("CCfgParser::ClearConfigNameList");
  configNames_.reset();
}

void CCfgParser::SetTargetPlatformInfo(std::string_view text) {
  TraceScope scope("CCfgParser::SetTargetPlatformInfo");
  if (targetPlatform_.empty()) targetPlatform_ = FormatWide("%s", text);
}

std::uint8_t CCfgParser::TakeProbeSequence() {
  constexpr std::uint8_t kLast = 63;
  std::uint8_t sequence = probeSequence_;
  probeSequence_ = sequence == kLast ? 1 : static_cast<std::uint8_t>(sequence + 1);
  return sequence;
}

void CCfgParser::EchoLine(std::string_view line) {
  if (echo_ != nullptr) (void)WriteText(*echo_, FormatWide("%s\n", line));
}

}  // namespace varnok
