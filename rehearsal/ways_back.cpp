#include "rehearsal/ways_back.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>

#include "boards/snapshot/restore.h"
#include "boards/snapshot/snapshot.h"
#include "rehearsal/answers.h"
#include "rehearsal/hash.h"
#include "rehearsal/results.h"
#include "rehearsal/run_once.h"
#include "rehearsal/views.h"

namespace varnok::rehearsal {
namespace {

struct BoardWay {
  std::size_t board = 0;
  WayBack way{};
};

template <class Archive>
void Transfer(Archive& archive, BoardWay& boardWay) {
  archive(boardWay.board, boardWay.way.canBeShown, boardWay.way.rerunReaches, boardWay.way.restoreReaches);
}

class QuietObserver : public boards::Observer {
 public:
  void Step(std::string_view, std::size_t, std::size_t) override {}
};

/// Works in a process of its own, on its own copy of the stage.
class Judge {
 public:
  Judge(Stage& stage, const Outcome& undisturbed)
      : stage_(stage),
        undisturbed_(undisturbed),
        road_(stage.Arguments()),
        views_(ViewsOf(stage.Described())) {
    // What could not be shown before and need not be shown in the end says nothing.
    std::erase_if(views_, [&](const View& view) {
      return !Shows(stage_, view, stage_.Before()) && !Shows(stage_, view, undisturbed_.images);
    });
  }

  WayBack Of(const Images& images) {
    WayBack way;
    for (const View& view : views_) way.canBeShown = way.canBeShown && Shows(stage_, view, images);
    way.rerunReaches = Reruns(images);
    way.restoreReaches = images == stage_.Before() || Restores(images);
    return way;
  }

 private:
  bool Reruns(const Images& images) {
    SameAnswers answers(undisturbed_.given);
    Outcome outcome;
    std::string ignored;
    stage_.Put(images);
    stage_.SetArguments(road_);
    return RunOnce(stage_, answers, outcome, ignored) && stage_.AreAlike(outcome.images, undisturbed_.images);
  }

  /// In a process of its own: what it learns of the machine must not reach the next board.
  bool Restores(const Images& images) {
    stage_.Put(images);
    const pid_t child = fork();
    if (child == 0) _exit(RestoresHere() ? 0 : 1);
    int status = 1;
    while (child > 0 && waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return child > 0 && status == 0;
  }

  bool RestoresHere() {
    host::HostFirmware firmware(stage_.TheBoard());
    InstallFirmware(&firmware);
    boards::Identity identity;
    std::string ignored;
    if (!boards::ReachBmc(identity, ignored)) return false;
    const boards::Board& wanted = stage_.Described();
    std::vector<const boards::Device*> devices;
    for (const boards::Device& device : wanted.devices)
      if (!device.isReadOnly) devices.push_back(&device);
    QuietObserver observer;
    boards::RestoreWork work =
        boards::PlanRestore(devices, wanted.hasRepository ? &wanted.records : nullptr, observer);
    for (boards::DeviceWork& device : work.devices)
      if (device.IsNeeded()) (void)boards::RestoreDevice(device, observer);
    if (work.repository.IsNeeded()) (void)boards::RestoreRecords(work.repository, observer);
    stage_.TheBoard().Images().Settle(sim::StorageFault::kNever - 1);
    return stage_.AreAlike(stage_.ImagesNow(), stage_.Before());
  }

  Stage& stage_;
  const Outcome& undisturbed_;
  std::vector<std::string> road_;
  std::vector<View> views_;
};

}  // namespace

std::size_t DistinctImages::Add(Images images) {
  std::uint64_t hash = 0;
  for (const Bytes& image : images) hash = Mixed(hash, HashOf(image));
  std::vector<std::size_t>& alike = byHash_[hash];
  for (std::size_t index : alike)
    if (images_[index] == images) return index;
  alike.push_back(images_.size());
  images_.push_back(std::move(images));
  return alike.back();
}

bool FindWaysBack(Stage& stage, const Outcome& undisturbed, const std::vector<Images>& boards, unsigned cores,
                  std::vector<WayBack>& ways, std::string& error) {
  Results results;
  if (!results.Open(error)) return false;
  std::fflush(nullptr);
  std::vector<pid_t> workers;
  for (unsigned worker = 0; worker < cores; ++worker) {
    const pid_t child = fork();
    if (child < 0) break;
    if (child > 0) {
      workers.push_back(child);
      continue;
    }
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    Judge judge(stage, undisturbed);
    for (std::size_t i = worker; i < boards.size(); i += cores) {
      BoardWay boardWay{i, judge.Of(boards[i])};
      results.Add(ToWire(boardWay));
    }
    _exit(0);
  }
  for (pid_t worker : workers)
    while (waitpid(worker, nullptr, 0) < 0 && errno == EINTR) {
    }
  ways.assign(boards.size(), {false, false, false});
  std::size_t judged = 0;
  results.Take([&](std::span<const std::uint8_t> record) {
    BoardWay boardWay;
    if (!FromWire(record, boardWay)) return;
    ways[boardWay.board] = boardWay.way;
    ++judged;
  });
  if (judged == boards.size()) return true;
  error = "the boards cannot be judged: no process or no memory for it";
  return false;
}

}  // namespace varnok::rehearsal
