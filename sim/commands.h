// The commands that controllers answer: one table of rows for each topic, each row a net function, a command,
// the lengths that it takes and its handler.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "sim/controller.h"
#include "sim/message.h"

namespace varnok::sim {

class Bmc;

/// What a handler works with. `data` has a length that its row allows.
struct CommandContext {
  Bmc& bmc;
  Controller& self;  ///< the controller that the request is addressed to
  std::span<const std::uint8_t> data;
  std::vector<std::uint8_t>& answer;  ///< the bytes after the completion code
};

/// Returns the completion code; any but 0 drops the answer's bytes.
using CommandHandler = std::uint8_t (*)(CommandContext& context);

namespace row_flag {
inline constexpr unsigned kNone = 0;
inline constexpr unsigned kBmcOnly = 1;         ///< a satellite controller does not know it
inline constexpr unsigned kAnyLun = 2;          ///< else LUN 0 only
inline constexpr unsigned kInTransferMode = 4;  ///< answered in firmware-transfer mode too
}  // namespace row_flag

struct CommandRow {
  std::uint8_t netFunction;
  std::uint8_t command;
  std::uint8_t minLength;
  std::uint8_t maxLength;
  unsigned flags;
  CommandHandler handler;
};

std::span<const CommandRow> AppCommands();       // identity, resets, message flags
std::span<const CommandRow> BridgingCommands();  // Send Message, Get Message
std::span<const CommandRow> PrivateBusCommands();
std::span<const CommandRow> FirmwareCommands();  // firmware-transfer mode
std::span<const CommandRow> FruCommands();
std::span<const CommandRow> SdrCommands();
std::span<const CommandRow> SensorCommands();
std::span<const CommandRow> LanCommands();
std::span<const CommandRow> OemCommands();  // the maker's own: fans, board, processors, key values

/// Runs one request on a controller, completion codes for unknown commands and wrong lengths included.
Response ExecuteCommand(Bmc& bmc, Controller& self, const Request& request);

}  // namespace varnok::sim
