#include "cfg/command_type.h"

#include <array>
#include <cstddef>

namespace varnok {
namespace {

struct NameRow {
  const char* name;
  std::uint32_t number;  ///< the type plus 1; nothing reads it
};

// BMC_REFRESH has no name of its own: messages show the last row as it is spelled.
constexpr std::array<NameRow, 26> kNames{{
    {"BOOT", 1},          {"CFGNAME", 2},
    {"CLEAR", 3},         {"//", 4},
    {"CONFIGURATION", 5}, {"DISPLAY", 6},
    {"ELSE", 7},          {"ENDIF", 8},
    {"ERRORLEVEL", 9},    {"FOUND", 10},
    {"FRUNAME", 11},      {"FRUADDRESS", 12},
    {"FRUAREA", 13},      {"FRUFIELD", 14},
    {"IFSET", 15},        {"MENUTITLE", 16},
    {"MENU", 17},         {"MENUPROMPT", 18},
    {"NO", 19},           {"PROBE", 20},
    {"PROMPT", 21},       {"CLEARSDR", 22},
    {"SDRNAME", 23},      {"SET", 24},
    {"YES", 25},          {"INVLALID_COMMAND_TYPE", 26},
}};

}  // namespace

const char* CommandName(CommandType type) {
  auto index = static_cast<std::size_t>(type);
  return index < kNames.size() ? kNames[index].name : nullptr;
}

}  // namespace varnok
