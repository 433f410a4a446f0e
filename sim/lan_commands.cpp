// LAN configuration parameters (IPMI v2.0, section 23.2).
#include "sim/commands.h"

namespace varnok::sim {
namespace {

constexpr std::uint8_t kRevision = 0x11;      // of the parameters: present 1, oldest compatible 1
constexpr std::uint8_t kRevisionOnly = 0x80;  // in the channel byte

std::uint8_t GetLanParameters(CommandContext& context) {
  const auto channel = static_cast<std::uint8_t>(context.data[0] & 0x0F);
  for (const LanParameterConfig& row : context.self.Config().answers.lanParameters) {
    if (row.channel != channel || row.parameter != context.data[1] || row.set != context.data[2] ||
        row.block != context.data[3])
      continue;
    context.answer = {kRevision};
    if ((context.data[0] & kRevisionOnly) == 0)
      context.answer.insert(context.answer.end(), row.data.begin(), row.data.end());
    return code::kSuccess;
  }
  return code::kNoParameter;
}

constexpr CommandRow kLanRows[] = {
    {net_function::kTransport, ipmi_command::kGetLanConfiguration, 4, 4, row_flag::kBmcOnly,
     GetLanParameters},
};

}  // namespace

std::span<const CommandRow> LanCommands() {
  return kLanRows;
}

}  // namespace varnok::sim
