// varnok-board snapshot: a machine's board into a folder.
#include "boards/snapshot/snapshot.h"

#include <cstdio>
#include <cstdlib>

#include "boards/folder.h"
#include "boards/machine.h"
#include "boards/snapshot/snapshot_text.h"
#include "programs/board/json.h"
#include "programs/board/machine_use.h"

namespace varnok::companion {

std::string MachineName(const Arguments& arguments, std::string_view option) {
  const char* variable = std::getenv("VARNOK_BOARD");
  return arguments.Value(option, variable != nullptr && *variable != '\0' ? variable : "/dev/ipmi0");
}

namespace {

constexpr Option kSnapshotOptions[] = {
    {"FOLDER", "", "The folder to make", Option::Required},
    {"--from", "MACHINE", kMachineHelp},
    {"--device", "ID", "Read this device too: 2@C0, AT24C02:03:A0", Option::Many},
    {"--json", "", "Say what was read as JSON"},
};

Json ToJson(const boards::Snapshot& snapshot, const std::string& folder) {
  const boards::Board& board = snapshot.board;
  Json devices = Json::Array();
  for (const boards::Device& device : board.devices)
    devices.Add(Json::Object()
                    .Set("device", NameOf(device.address))
                    .Set("file", FileNameOf(device.address))
                    .Set("bytes", device.bytes.size()));
  Json unread = Json::Array();
  for (const boards::Unread& row : snapshot.unread) {
    const bool hasCode = row.outcome.completionCode != 0;
    unread.Add(Json::Object()
                   .Set("what", row.what)
                   .Set("completionCode", hasCode ? Json(row.outcome.completionCode) : Json())
                   .Set("text", row.outcome.Text()));
  }
  return Json::Object()
      .Set("version", 1)
      .Set("folder", folder)
      .Set("devices", devices)
      .Set("controllers", board.controllers.size())
      .Set("sdrRecords", board.records.size())
      .Set("sensorReadings", board.sensors.size())
      .Set("smbiosBytes", board.smbios.size())
      .Set("unread", unread);
}

int RunSnapshot(const Arguments& arguments) {
  std::vector<boards::DeviceAddress> named;
  for (const std::string& name : arguments.Values("--device")) {
    const auto address = boards::ParseDeviceName(name);
    if (!address)
      return Fail("--device: \"" + name + "\" is no device like 2@C0 or AT24C02:03:A0", kWrongUse);
    named.push_back(*address);
  }
  const std::string folder = arguments.Value("FOLDER");
  std::string error;
  auto machine = boards::OpenMachine::Open(MachineName(arguments, "--from"), error);
  // Reading takes its time: a folder that cannot be had is better known before.
  if (machine == nullptr || !boards::MakeFreeFolder(folder, error)) return Fail(error);
  boards::Snapshot snapshot;
  ProgressObserver observer;
  const bool isTaken = TakeSnapshot(named, observer, snapshot, error);
  observer.Clear();
  if (!isTaken || !boards::SaveFolder(folder, snapshot.board, error)) return Fail(error);
  if (arguments.Has("--json")) {
    PrintLine(ToJson(snapshot, folder).Text());
  } else {
    for (const std::string& line : boards::SnapshotLines(snapshot)) PrintLine(line);
    PrintLine("The board is in " + folder + ".");
  }
  return snapshot.unread.empty() ? kDone : kFound;
}

}  // namespace

const Command kSnapshot = {"snapshot", "Read a machine's board into a folder", kSnapshotOptions,
                           "  varnok-board snapshot before --from /dev/ipmi0", RunSnapshot};

}  // namespace varnok::companion
