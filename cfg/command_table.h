// The script's commands as rows. A family of commands is one file that keeps its classes to itself and hands
// out its rows; to add a family, write its file and name it in kCommandFamilies.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "firmware/pool.h"
#include "firmware/status.h"

namespace varnok {

class CCfgCommand;
class CCfgParser;
class CFileCfg;

/// The type code of a command; its row says which. Named here are the codes that the engine asks for. 1, 3
/// and 17 are those of keywords that begin no command (CFGNAME, comments, MENUPROMPT).
enum class CommandType : std::uint8_t {
  Else = 6,
  EndIf = 7,
  Found = 9,
  SdrName = 22,
  BmcRefresh = 25,
  Skip = 26,  ///< of a smaller controller's scripts: passed over, without a row
};

/// Makes the command of a line whose keyword has been read; null when the pool is exhausted.
using CreateCommandFunction = Status (*)(CFileCfg& file, PoolPtr<CCfgCommand>& command, CCfgParser* parser);

struct CommandRow {
  CommandType type;
  std::string_view keyword;  ///< of the line, in any case
  const char* name;          ///< what messages call the command
  CreateCommandFunction create;
};

/// For the rows of commands that are made without looking at their line.
template <class Command, auto... kArguments>
Status Create(CFileCfg&, PoolPtr<CCfgCommand>& command, CCfgParser*) {
  command = MakeInPool<Command>(kArguments...);
  return kSuccess;
}

using CommandFamily = std::span<const CommandRow>;
CommandFamily SdrCommands();
CommandFamily FruNameCommands();
CommandFamily FlowCommands();
CommandFamily BlockCommands();
CommandFamily MenuCommands();
CommandFamily DialogueCommands();
CommandFamily ProbeCommands();
CommandFamily FruAddressCommands();
CommandFamily FruAreaCommands();
CommandFamily FruFieldCommands();

/// In the order in which keywords are compared.
inline constexpr std::array kCommandFamilies{
    SdrCommands,      FruNameCommands, FlowCommands,       BlockCommands,   MenuCommands,
    DialogueCommands, ProbeCommands,   FruAddressCommands, FruAreaCommands, FruFieldCommands,
};

/// The row of a keyword; null for one that begins no command.
const CommandRow* FindCommand(std::string_view keyword);

}  // namespace varnok
