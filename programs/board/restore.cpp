// varnok-board restore: a folder's images and records back to a machine.
#include "boards/snapshot/restore.h"

#include "boards/folder.h"
#include "boards/machine.h"
#include "boards/snapshot/snapshot.h"
#include "programs/board/json.h"
#include "programs/board/machine_use.h"

namespace varnok::companion {
namespace {

constexpr Option kRestoreOptions[] = {
    {"FOLDER", "", "The board to restore", Option::Required},
    {"--to", "MACHINE", kMachineHelp},
    {"--fru", "ID", "Restore this device alone: 0, 2@C0, AT24C02:03:A0", Option::Many},
    {"--sdr", "", "Restore the SDR repository alone"},
    {"--yes", "", "Do not ask"},
    {"--other-board", "", "Go on when the machine's maker or product is not the folder's"},
    {"--json", "", "Say what was done as JSON; needs --yes"},
};

/// The devices that --fru names, all of them without it.
bool SelectDevices(const Arguments& arguments, const boards::Board& board,
                   std::vector<const boards::Device*>& devices, std::string& error) {
  if (!arguments.Has("--fru") && !arguments.Has("--sdr"))
    for (const boards::Device& device : board.devices) devices.push_back(&device);
  for (const std::string& name : arguments.Values("--fru")) {
    const auto address = boards::ParseDeviceName(name);
    if (!address) error = "--fru: \"" + name + "\" is no device like 0, 2@C0 or AT24C02:03:A0";
    devices.push_back(address ? board.Find(*address) : nullptr);
    if (address && devices.back() == nullptr) error = "--fru: the folder has no device " + NameOf(*address);
    if (!error.empty()) return false;
  }
  return true;
}

/// One thing that was restored, or not.
struct Done {
  std::string what;
  boards::Outcome outcome;
  bool isWritten;
};

std::vector<Done> Restore(boards::RestoreWork& work, ProgressObserver& observer) {
  std::vector<Done> done;
  for (boards::DeviceWork& device : work.devices) {
    const bool isNeeded = device.IsNeeded();
    done.push_back({NameOf(device.wanted->address),
                    isNeeded ? RestoreDevice(device, observer) : device.outcome, isNeeded});
  }
  if (work.repository.wanted != nullptr) {
    const bool isNeeded = work.repository.IsNeeded();
    done.push_back({"SDR repository",
                    isNeeded ? RestoreRecords(work.repository, observer) : work.repository.outcome,
                    isNeeded});
  }
  observer.Clear();
  return done;
}

Json ToJson(const std::vector<Done>& done, const std::string& machine) {
  const auto result = [](const Done& row) {
    return Json::Object()
        .Set("what", row.what)
        .Set("state", !row.outcome.IsDone() ? "failed"
                      : row.isWritten       ? "restored"
                                            : "equal")
        .Set("completionCode", row.outcome.completionCode != 0 ? Json(row.outcome.completionCode) : Json())
        .Set("text", row.outcome.Text());
  };
  return Json::Object().Set("version", 1).Set("machine", machine).Set("results", ListOf(done, result));
}

/// Shows the plan; false when it must not be carried out.
bool IsWanted(const Arguments& arguments, const boards::RestoreWork& work, const std::string& machine) {
  if (!arguments.Has("--json")) {
    for (const boards::DeviceWork& device : work.devices) PrintLine(device.Text());
    if (work.repository.wanted != nullptr) PrintLine(work.repository.Text());
  }
  return !work.IsNeeded() || arguments.Has("--yes") || Ask("Write this to " + machine + "? [y/N] ");
}

bool IsSameProduct(const boards::Board& board, const boards::Identity& machine) {
  const auto& identity = board.bmc.identity;
  return !identity ||
         (identity->manufacturerId == machine.manufacturerId && identity->productId == machine.productId);
}

int RunRestore(const Arguments& arguments) {
  if (arguments.Has("--json") && !arguments.Has("--yes")) return Fail("--json needs --yes", kWrongUse);
  boards::Board board;
  std::string error;
  if (!boards::LoadFolder(arguments.Value("FOLDER"), board, error)) return Fail(error);
  std::vector<const boards::Device*> devices;
  if (!SelectDevices(arguments, board, devices, error)) return Fail(error, kWrongUse);
  const bool takesRecords = arguments.Has("--sdr") || (!arguments.Has("--fru") && board.hasRepository);
  if (takesRecords && !board.hasRepository) return Fail("--sdr: the folder has no SDR repository", kWrongUse);

  const std::string name = MachineName(arguments, "--to");
  auto machine = boards::OpenMachine::Open(name, error);
  boards::Identity identity;
  if (machine == nullptr || !ReachBmc(identity, error)) return Fail(error);
  if (!IsSameProduct(board, identity) && !arguments.Has("--other-board"))
    return Fail(name + " is another product than the folder's board; --other-board restores all the same");
  ProgressObserver observer;
  boards::RestoreWork work = PlanRestore(devices, takesRecords ? &board.records : nullptr, observer);
  observer.Clear();
  if (!IsWanted(arguments, work, name)) {
    PrintLine("Nothing was written.");
    return kFound;
  }
  bool isGood = true;
  const std::vector<Done> done = Restore(work, observer);
  for (const Done& row : done) {
    isGood = isGood && row.outcome.IsDone();
    if (row.isWritten && !arguments.Has("--json"))
      PrintLine(row.what + (row.outcome.IsDone() ? ": restored" : ": NOT restored: " + row.outcome.Text()));
  }
  if (arguments.Has("--json")) PrintLine(ToJson(done, name).Text());
  return isGood
             ? kDone
             : Fail("not everything could be restored; what is listed as restored is compared byte by byte");
}

}  // namespace

const Command kRestore = {"restore", "Write a folder's FRU images and SDRs back where the machine differs",
                          kRestoreOptions, "  varnok-board restore before --to /dev/ipmi0 --fru 0",
                          RunRestore};

}  // namespace varnok::companion
