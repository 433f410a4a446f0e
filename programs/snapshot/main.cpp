// SNAPSHOT.EFI: the board into a folder of the stick, and back. Reading, writing and comparing are
// varnok-board's code.
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/services/console.h"
#include "app/services/text.h"
#include "boards/snapshot/restore.h"
#include "boards/snapshot/snapshot.h"
#include "boards/snapshot/snapshot_text.h"
#include "firmware/entry.h"
#include "firmware/firmware.h"
#include "programs/snapshot/stick_folder.h"

namespace varnok {
namespace {

using snapshot::StickFolder;

/// Exit statuses, as varnok-board has them.
enum ExitStatus : int { kDone = 0, kFound = 1, kWrongUse = 2, kFailed = 3 };

constexpr const char* kUsage =
    "SNAPSHOT [FOLDER]\n"
    "  reads FRU devices, SDR repository, sensors and SMBIOS tables into a new\n"
    "  folder; without a name into the next free one from BOARD001 on\n"
    "SNAPSHOT /restore FOLDER [DEVICE...]\n"
    "  writes FRU devices and SDR repository back where they differ, after a\n"
    "  question; with devices (0, 2@C0, AT24C02:03:A0, sdr) those alone\n"
    "Exit status: 0 done, 1 something could not be read or was not wanted,\n"
    "2 wrong use, 3 could not be done.\n";

int Fail(const std::string& error, int status = kFailed) {
  Print("ERROR: %s\n", error);
  return status;
}

/// One line for each thing that is begun: the console may be a file.
class Announcer : public boards::Observer {
 public:
  void Step(std::string_view what, std::size_t, std::size_t) override {
    if (what == last_) return;
    last_ = what;
    Print("... %s\n", last_);
  }

 private:
  std::string last_;
};

int TakeSnapshot(std::string_view name) {
  boards::Identity identity;
  std::string error;
  if (!boards::ReachBmc(identity, error)) return Fail(error);
  std::u16string path;
  if (!snapshot::MakeStickFolder(name, path, error)) return Fail(error);
  boards::Snapshot taken;
  Announcer announcer;
  if (!boards::TakeSnapshot({}, announcer, taken, error)) return Fail(error);
  StickFolder folder(path);
  std::string failed;
  if (boards::SaveBoard(taken.board, folder, failed) != kSuccess) return Fail(failed + ": cannot be written");
  for (const std::string& line : boards::SnapshotLines(taken)) Print("%s\n", line);
  Print("The board is in %ls.\n", path);
  return taken.unread.empty() ? kDone : kFound;
}

/// What the names behind the folder select, everything without any.
struct Selection {
  std::vector<const boards::Device*> devices;
  bool hasRecords = false;
};

bool Select(const boards::Board& board, const std::vector<std::string_view>& names, Selection& selection,
            std::string& error) {
  selection.hasRecords = names.empty() && board.hasRepository;
  if (names.empty())
    for (const boards::Device& device : board.devices) selection.devices.push_back(&device);
  for (std::string_view name : names) {
    const auto address = boards::ParseDeviceName(name);
    const bool isRecords = EqualsIgnoreCase(name, "sdr") && board.hasRepository;
    const boards::Device* device = address ? board.Find(*address) : nullptr;
    if (!isRecords && device == nullptr) {
      error = std::string("the folder has no device ").append(name);
      return false;
    }
    selection.hasRecords = selection.hasRecords || isRecords;
    if (device != nullptr) selection.devices.push_back(device);
  }
  return true;
}

bool Ask(const char* question) {
  Print("%s [Y/N] ", question);
  for (;;) {
    const char16_t key = ToUpper(TheFirmware().ReadKey());
    if (key != u'Y' && key != u'N') continue;
    Print("%lc\n", key);
    return key == u'Y';
  }
}

/// Says how one piece of work ended; false when it failed.
bool Report(const std::string& what, const boards::Outcome& outcome) {
  Print(outcome.IsDone() ? "%s: restored\n" : "%s: NOT restored: %s\n", what, outcome.Text());
  return outcome.IsDone();
}

int Write(boards::RestoreWork& work, Announcer& announcer) {
  bool isGood = !work.HasObstacle();
  for (boards::DeviceWork& device : work.devices)
    if (device.IsNeeded() && !Report(NameOf(device.wanted->address), RestoreDevice(device, announcer)))
      isGood = false;
  if (work.repository.IsNeeded() && !Report("SDR repository", RestoreRecords(work.repository, announcer)))
    isGood = false;
  return isGood ? kDone : Fail("not everything could be restored");
}

int Restore(std::string_view name, const std::vector<std::string_view>& names) {
  boards::Board board;
  std::string error;
  if (!StickFolder(Widen(name)).Read(board, error)) return Fail(error);
  Selection selection;
  if (!Select(board, names, selection, error)) return Fail(error, kWrongUse);
  boards::Identity identity;
  if (!boards::ReachBmc(identity, error)) return Fail(error);
  Announcer announcer;
  boards::RestoreWork work =
      PlanRestore(selection.devices, selection.hasRecords ? &board.records : nullptr, announcer);
  for (const boards::DeviceWork& device : work.devices) Print("%s\n", device.Text());
  if (selection.hasRecords) Print("%s\n", work.repository.Text());
  if (work.IsNeeded() && !Ask("Write this to the board?")) {
    Print("Nothing was written.\n");
    return kFound;
  }
  return Write(work, announcer);
}

}  // namespace

int Main(int argc, char* argv[]) {
  std::vector<std::string_view> arguments(argv + 1, argv + (argc < 1 ? 1 : argc));
  if (arguments.empty()) return TakeSnapshot({});
  const std::string_view first = arguments.front();
  const bool isSwitch = first.starts_with('/') || first.starts_with('-');
  if (!isSwitch && arguments.size() == 1) return TakeSnapshot(first);
  if (isSwitch && EqualsIgnoreCase(first.substr(1), "restore") && arguments.size() >= 2)
    return Restore(arguments[1], {arguments.begin() + 2, arguments.end()});
  const bool asksHelp = isSwitch && (first.substr(1) == "?" || EqualsIgnoreCase(first.substr(1), "h"));
  Print(kUsage);
  return asksHelp ? kDone : kWrongUse;
}

}  // namespace varnok
