// Identity, reset and message flags (IPMI v2.0, chapters 20 and 22).
#include "sim/bmc.h"
#include "sim/commands.h"

namespace varnok::sim {
namespace {

constexpr std::uint8_t kApp = net_function::kApplication;
constexpr std::uint8_t kQueueFlag = 0x01;  // receive message queue

std::uint8_t GetDeviceId(CommandContext& context) {
  const IdentityConfig& identity = context.self.Config().identity;
  const auto low = [](std::uint32_t value, int shift) { return static_cast<std::uint8_t>(value >> shift); };
  context.answer = {
      identity.deviceId,
      static_cast<std::uint8_t>(identity.deviceRevision | (identity.providesSdrs ? 0x80 : 0)),
      static_cast<std::uint8_t>(identity.firmwareMajor | (context.self.InTransferMode() ? 0x80 : 0)),
      identity.firmwareMinor,
      identity.ipmiVersion,
      identity.additionalSupport,
      low(identity.manufacturerId, 0),
      low(identity.manufacturerId, 8),
      low(identity.manufacturerId, 16),
      low(identity.productId, 0),
      low(identity.productId, 8),
  };
  if (identity.answersAuxiliary) {
    context.answer.insert(context.answer.end(), identity.auxiliary.begin(), identity.auxiliary.end());
  }
  return code::kSuccess;
}

std::uint8_t ColdReset(CommandContext& context) {
  context.bmc.Reset(context.self);
  return code::kSuccess;
}

std::uint8_t ClearMessageFlags(CommandContext& context) {
  if ((context.data[0] & kQueueFlag) != 0) context.bmc.Queue().Clear();
  return code::kSuccess;
}

std::uint8_t GetMessageFlags(CommandContext& context) {
  context.answer = {static_cast<std::uint8_t>(context.bmc.Queue().IsEmpty() ? 0 : kQueueFlag)};
  return code::kSuccess;
}

/// Of what can be enabled the board has the receive queue's interrupt alone.
std::uint8_t SetGlobalEnables(CommandContext& context) {
  if ((context.data[0] & ~kQueueFlag) != 0) return code::kInvalidField;
  context.bmc.SetQueueInterrupt(context.data[0] != 0);
  return code::kSuccess;
}

std::uint8_t GetGlobalEnables(CommandContext& context) {
  context.answer = {static_cast<std::uint8_t>(context.bmc.HasQueueInterrupt() ? kQueueFlag : 0)};
  return code::kSuccess;
}

constexpr CommandRow kAppRows[] = {
    {kApp, ipmi_command::kGetDeviceId, 0, 0, row_flag::kInTransferMode, GetDeviceId},
    {kApp, ipmi_command::kColdReset, 0, 0, row_flag::kInTransferMode, ColdReset},
    {kApp, 0x2E, 1, 1, row_flag::kBmcOnly | row_flag::kInTransferMode, SetGlobalEnables},
    {kApp, 0x2F, 0, 0, row_flag::kBmcOnly | row_flag::kInTransferMode, GetGlobalEnables},
    {kApp, ipmi_command::kClearMessageFlags, 1, 1, row_flag::kBmcOnly | row_flag::kInTransferMode,
     ClearMessageFlags},
    {kApp, 0x31, 0, 0, row_flag::kBmcOnly | row_flag::kInTransferMode, GetMessageFlags},
};

}  // namespace

std::span<const CommandRow> AppCommands() {
  return kAppRows;
}

}  // namespace varnok::sim
