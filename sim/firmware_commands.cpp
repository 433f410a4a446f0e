// Firmware-transfer mode: entered with the maker's key, left again without one. While in it Get Device ID
// reports an update in progress and every inventory command answers D1h.
#include <algorithm>

#include "sim/commands.h"

namespace varnok::sim {
namespace {

constexpr std::uint8_t kFirmware = net_function::kFirmware;
constexpr unsigned kFlags = row_flag::kBmcOnly | row_flag::kInTransferMode;

std::uint8_t EnterTransferMode(CommandContext& context) {
  const std::string& key = context.self.TransferMode().key;
  if (context.data.size() != key.size()) return code::kLengthInvalid;
  if (context.self.InTransferMode()) return code::kWrongState;
  const bool same =
      std::equal(key.begin(), key.end(), context.data.begin(),
                 [](char wanted, std::uint8_t byte) { return static_cast<std::uint8_t>(wanted) == byte; });
  if (!same) return code::kInvalidField;
  context.self.SetTransferMode(true);
  return code::kSuccess;
}

std::uint8_t ExitTransferMode(CommandContext& context) {
  if (!context.self.InTransferMode()) return code::kWrongState;
  context.self.SetTransferMode(context.self.TransferMode().stuck);
  return code::kSuccess;
}

constexpr CommandRow kFirmwareRows[] = {
    {kFirmware, ipmi_command::kEnterFirmwareTransfer, 0, 0xFF, kFlags, EnterTransferMode},
    {kFirmware, ipmi_command::kExitFirmwareTransfer, 0, 0, kFlags, ExitTransferMode},
};

}  // namespace

std::span<const CommandRow> FirmwareCommands() {
  return kFirmwareRows;
}

}  // namespace varnok::sim
