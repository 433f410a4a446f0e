#include "boards/snapshot/snapshot_text.h"

#include "app/services/format.h"

namespace varnok::boards {

std::vector<std::string> SnapshotLines(const Snapshot& snapshot) {
  const Board& board = snapshot.board;
  std::vector<std::string> lines;
  if (const auto& identity = board.bmc.identity)
    lines.push_back(Format("BMC: manufacturer %06Xh, product %04Xh, firmware %u.%02X",
                           identity->manufacturerId, identity->productId, identity->firmwareMajor,
                           identity->firmwareMinor));
  for (const Controller& controller : board.controllers)
    lines.push_back(Format("Controller %02Xh %s", controller.address, controller.name));
  for (const Device& device : board.devices)
    lines.push_back(Format("Device %-16s %5u bytes", NameOf(device.address), device.bytes.size()));
  lines.push_back(board.hasRepository ? Format("SDR repository: %u records", board.records.size())
                                      : std::string("SDR repository: the BMC has none"));
  lines.push_back(Format("Sensors: %u readings", board.sensors.size()));
  lines.push_back(board.smbios.empty() ? std::string("SMBIOS tables: none")
                                       : Format("SMBIOS tables: %u bytes", board.smbios.size()));
  for (const Unread& unread : snapshot.unread)
    lines.push_back(Format("Not read: %s: %s", unread.what, unread.outcome.Text()));
  return lines;
}

}  // namespace varnok::boards
