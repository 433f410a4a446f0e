// Command type codes and the keywords that messages show for them.
#pragma once

#include <cstdint>

namespace varnok {

/// The index of a command's name in the name table. MENU shares MENUTITLE's code.
enum class CommandType : std::uint32_t {
  Boot = 0,
  CfgName = 1,
  Clear = 2,
  Comment = 3,
  Configuration = 4,
  Display = 5,
  Else = 6,
  EndIf = 7,
  ErrorLevel = 8,
  Found = 9,
  FruName = 10,
  FruAddress = 11,
  FruArea = 12,
  FruField = 13,
  IfSet = 14,
  MenuTitle = 15,
  Menu = 16,
  MenuPrompt = 17,
  No = 18,
  Probe = 19,
  Prompt = 20,
  ClearSdr = 21,
  SdrName = 22,
  Set = 23,
  Yes = 24,
  BmcRefresh = 25,
  Skip = 26,
};

/// The name of a type; null for one without a name.
const char* CommandName(CommandType type);

}  // namespace varnok
