// The command factory: turns the keyword at the start of a line into a command. Keywords are rows, in the
// order in which they are compared.
#include <algorithm>
#include <array>

#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/block_commands.h"
#include "cfg/cfg_command.h"
#include "cfg/cfg_parser.h"
#include "cfg/dialogue_commands.h"
#include "cfg/flow_commands.h"
#include "cfg/found_command.h"
#include "cfg/fru_address_command.h"
#include "cfg/fru_area_command.h"
#include "cfg/fru_field_command.h"
#include "cfg/fru_name_command.h"
#include "cfg/menu_command.h"
#include "cfg/messages.h"
#include "cfg/probe.h"
#include "cfg/sdr_commands.h"

namespace varnok {
namespace {

using CreateFunction = Status (*)(CFileCfg& file, PoolPtr<CCfgCommand>& command, CCfgParser* parser);

struct KeywordRow {
  std::string_view keyword;
  CreateFunction create;
};

template <class Command, auto... kArguments>
Status Create(CFileCfg&, PoolPtr<CCfgCommand>& command, CCfgParser*) {
  command = MakeInPool<Command>(kArguments...);
  return kSuccess;
}

constexpr std::array kKeywords{
    KeywordRow{"SDRNAME", Create<CCfgSdrName>},
    KeywordRow{"FRUNAME", Create<CCfgFruName>},
    KeywordRow{"SET", Create<CCfgSet>},
    KeywordRow{"CLEAR", Create<CCfgClear>},
    KeywordRow{"IFSET", Create<CCfgIfSet>},
    KeywordRow{"ERRORLEVEL", Create<CCfgErrorLevel>},
    KeywordRow{"MENUTITLE", Create<CCfgMenu, true>},
    KeywordRow{"MENU", Create<CCfgMenu, false>},
    KeywordRow{"DISPLAY", Create<CCfgDisplay>},
    KeywordRow{"BOOT", Create<CCfgBoot>},
    KeywordRow{"ELSE", Create<CCfgElse>},
    KeywordRow{"ENDIF", Create<CCfgEndIf>},
    KeywordRow{"FOUND", Create<CCfgFound>},
    KeywordRow{"PROMPT", Create<CCfgPrompt>},
    KeywordRow{"FRUADDRESS", Create<CCfgFruAddress>},
    KeywordRow{"FRUAREA", Create<CCfgFruArea>},
    KeywordRow{"FRUFIELD", Create<CCfgFruField>},
    KeywordRow{"CONFIGURATION", Create<CCfgConfiguration>},
    KeywordRow{"CLEARSDR", Create<CCfgSdrClear>},
    KeywordRow{"YES", Create<CCfgYes>},
    KeywordRow{"NO", Create<CCfgNo>},
    KeywordRow{"BMC_REFRESH", Create<CCfgBmcRefresh>},
    KeywordRow{"PROBE", CCfgProbe::CreateProbe},
};

constexpr std::array<std::string_view, 4> kSkippedKeywords{"TABLENAME", "MBMC_PGM", "MBMC_RMW", "PEFNAME"};

Status CheckSource(const CFileCfg* file, const CCfgParser* parser) {
  if (parser == nullptr) {
    CCfgParser::SetLastError(cfg_message::kInternalError, cfg_message::kModuleName, "CreateCommand");
    Trace("CCfgCommand::CreateCommand - Value of p_parser is NULL", 1);
    return cfg_status::kNoParser;
  }
  if (file == nullptr) {
    CCfgParser::SetLastError(cfg_message::kInternalFileError, cfg_message::kModuleName);
    Trace("CCfgCommand::CreateCommand - Value of p_file is NULL", 1);
    return cfg_status::kBadLine;
  }
  return kSuccess;
}

}  // namespace

bool CCfgCommand::IsSkipCmd(std::string_view keyword) {
  TraceScope scope("CCfgCommand::IsSkipCmd");
  if (keyword.empty()) {
    Trace("CCfgCommand::IsSkipCmd - Invalid command", 1);
    return true;
  }
  return std::any_of(kSkippedKeywords.begin(), kSkippedKeywords.end(),
                     [keyword](std::string_view skipped) { return EqualsIgnoreCase(keyword, skipped); });
}

Status CCfgCommand::MakeCommand(CFileCfg* file, PoolPtr<CCfgCommand>& command, CCfgParser* parser) {
  command = nullptr;
  if (Status status = CheckSource(file, parser); status != kSuccess) return status;
  std::string keyword;
  if (!file->GetFirstInput(keyword, kLineCapacity)) {
    if (file->EndOfFile()) return cfg_status::kEndOfScript;
    Trace("CCfgCommand::CreateCommand - Configuration file parsing error", 1);
    return cfg_status::kBadLine;
  }
  parser->EchoLine(file->CurrentLine());
  if (IsSkipCmd(keyword)) {
    Trace("CCfgCommand::CreateCommand - Ignoring mini BMC commands", 2);
    command = MakeInPool<CCfgCommand>(CommandType::Skip);
  } else {
    auto row = std::find_if(kKeywords.begin(), kKeywords.end(), [&keyword](const KeywordRow& each) {
      return EqualsIgnoreCase(keyword, each.keyword);
    });
    if (row == kKeywords.end()) {
      CCfgParser::SetLastError(cfg_message::kUnknownCommand, keyword);
      Trace("CCfgCommand::CreateCommand - %s is not a valid command", 1, keyword);
      return cfg_status::kUnknownCommand;
    }
    if (Status status = row->create(*file, command, parser); status != kSuccess) return status;
  }
  if (command != nullptr) command->SetParser(parser);
  return kSuccess;
}

Status CCfgCommand::CreateCommand(CFileCfg* file, PoolPtr<CCfgCommand>& command, CCfgParser* parser) {
  TraceScope scope("CCfgCommand::CreateCommand");
  if (Status status = MakeCommand(file, command, parser); status != kSuccess) return status;
  // The rest of a skipped command's line is not looked at.
  if (command == nullptr || command->Type() == CommandType::Skip) return kSuccess;
  Status status = command->ReadFromFile(*file);
  if (status != kSuccess) command = nullptr;
  return status;
}

}  // namespace varnok
