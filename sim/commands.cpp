#include "sim/commands.h"

#include "sim/bmc.h"
#include "sim/error.h"

namespace varnok::sim {
namespace {

using Table = std::span<const CommandRow> (*)();
constexpr Table kTables[] = {AppCommands, BridgingCommands, PrivateBusCommands, FirmwareCommands, FruCommands,
                             SdrCommands, SensorCommands,   LanCommands,        OemCommands};

const CommandRow* FindRow(const Request& request) {
  for (Table table : kTables) {
    for (const CommandRow& row : table()) {
      if (row.netFunction == request.netFunction && row.command == request.command) return &row;
    }
  }
  return nullptr;
}

std::uint8_t Run(Bmc& bmc, Controller& self, const Request& request, std::vector<std::uint8_t>& answer) {
  const CommandRow* row = FindRow(request);
  const bool known = row != nullptr && (self.IsBmc() || (row->flags & row_flag::kBmcOnly) == 0);
  if (self.InTransferMode() && (!known || (row->flags & row_flag::kInTransferMode) == 0)) {
    return code::kInFirmwareUpdate;
  }
  if (!known) return code::kInvalidCommand;
  if (request.lun != 0 && (row->flags & row_flag::kAnyLun) == 0) return code::kInvalidForLun;
  if (request.data.size() < row->minLength || request.data.size() > row->maxLength)
    return code::kLengthInvalid;
  CommandContext context{bmc, self, request.data, answer};
  try {
    return row->handler(context);
  } catch (const StorageFull&) {
    return code::kOutOfSpace;
  } catch (const BoardError& error) {
    bmc.Log().Failure(error.what());
    return code::kUnspecified;
  }
}

}  // namespace

Response ExecuteCommand(Bmc& bmc, Controller& self, const Request& request) {
  Response response{static_cast<std::uint8_t>(request.netFunction + 1), request.lun, request.command, 0, {}};
  response.completionCode = Run(bmc, self, request, response.data);
  if (response.completionCode != code::kSuccess) response.data.clear();
  return response;
}

}  // namespace varnok::sim
