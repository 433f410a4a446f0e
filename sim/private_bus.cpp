// Master Write-Read to the devices on a controller's private buses (IPMI v2.0, section 22.11).
#include "sim/commands.h"

namespace varnok::sim {
namespace {

constexpr std::uint8_t kLargestRead = 60;

std::uint8_t MasterWriteRead(CommandContext& context) {
  const std::uint8_t count = context.data[2];
  if (count > kLargestRead) return code::kCannotReturnLength;
  Eeprom* eeprom = context.self.FindEeprom(context.data[0], context.data[1]);
  if (eeprom == nullptr) return code::kNakOnWrite;
  return eeprom->Transfer(context.data.subspan(3), count, context.answer) ? code::kSuccess
                                                                          : code::kNakOnWrite;
}

constexpr CommandRow kPrivateBusRows[] = {
    {net_function::kApplication, ipmi_command::kMasterWriteRead, 3, 0xFF, row_flag::kAnyLun, MasterWriteRead},
};

}  // namespace

std::span<const CommandRow> PrivateBusCommands() {
  return kPrivateBusRows;
}

}  // namespace varnok::sim
