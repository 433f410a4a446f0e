// The command factory: turns the keyword at the start of a line into a command.
#include <algorithm>
#include <array>

#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_command.h"
#include "cfg/cfg_parser.h"
#include "cfg/messages.h"

namespace varnok {
namespace {

constexpr const char* kCreateCommand = "CCfgCommand::CreateCommand";
constexpr std::array<std::string_view, 4> kSkippedKeywords{"TABLENAME", "MBMC_PGM", "MBMC_RMW", "PEFNAME"};

Status CheckSource(const CFileCfg* file, const CCfgParser* parser) {
  if (parser == nullptr) {
    CCfgParser::SetLastError(cfg_message::kInternalError, cfg_message::kModuleName, "CreateCommand");
    return Fail(kCreateCommand, "Value of p_parser is NULL", cfg_status::kNoParser);
  }
  if (file == nullptr) {
    CCfgParser::SetLastError(cfg_message::kInternalFileError, cfg_message::kModuleName);
    return Fail(kCreateCommand, "Value of p_file is NULL", cfg_status::kBadLine);
  }
  return kSuccess;
}

Status RefuseKeyword(std::string_view keyword) {
  CCfgParser::SetLastError(cfg_message::kUnknownCommand, keyword);
  Trace("%s - %s is not a valid command", 1, kCreateCommand, keyword);
  return cfg_status::kUnknownCommand;
}

}  // namespace

bool CCfgCommand::IsSkipCmd(std::string_view keyword) {
  TraceScope scope("CCfgCommand::IsSkipCmd");
  if (keyword.empty()) {
    TraceFailure("CCfgCommand::IsSkipCmd", "Invalid command");
    return true;
  }
  return std::any_of(kSkippedKeywords.begin(), kSkippedKeywords.end(),
                     [keyword](std::string_view skipped) { return EqualsIgnoreCase(keyword, skipped); });
}

Status CCfgCommand::MakeCommand(CFileCfg* file, PoolPtr<CCfgCommand>& command, CCfgParser* parser) {
  command = nullptr;
  if (Status status = CheckSource(file, parser); status != kSuccess) return status;
  std::string_view keyword;
  if (!file->GetFirstInput(keyword, kLineCapacity)) {
    if (file->EndOfFile()) return cfg_status::kEndOfScript;
    return Fail(kCreateCommand, "Configuration file parsing error", cfg_status::kBadLine);
  }
  std::uint32_t line = file->CurrentIndex();
  parser->EchoLine(file->CurrentLine());
  const CommandRow* row = nullptr;
  if (IsSkipCmd(keyword)) {
    Trace("%s - Ignoring mini BMC commands", 2, kCreateCommand);
    command = MakeInPool<CCfgCommand>();
  } else {
    row = FindCommand(keyword);
    if (row == nullptr) return RefuseKeyword(keyword);
    if (Status status = row->create(*file, command, parser); status != kSuccess) return status;
  }
  if (command != nullptr) command->Adopt(row, parser, line);
  return kSuccess;
}

Status CCfgCommand::CreateCommand(CFileCfg* file, PoolPtr<CCfgCommand>& command, CCfgParser* parser) {
  TraceScope scope(kCreateCommand);
  if (Status status = MakeCommand(file, command, parser); status != kSuccess) return status;
  // The rest of a skipped command's line is not looked at.
  if (command == nullptr || command->Type() == CommandType::Skip) return kSuccess;
  Status status = command->ReadFromFile(*file);
  if (status != kSuccess) command = nullptr;
  return status;
}

}  // namespace varnok
