#include "rehearsal/fleet.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <map>

#include "rehearsal/fleet_wire.h"
#include "rehearsal/results.h"
#include "rehearsal/run_once.h"
#include "sim/board.h"

namespace varnok::rehearsal {
namespace {

namespace fs = std::filesystem;

/// The folders of a fleet, by name: boards, and those that are none.
bool ListFolders(const fs::path& folder, std::vector<fs::path>& boards, std::vector<std::string>& strays,
                 std::string& error) {
  std::error_code failure;
  std::vector<fs::path> all;
  for (fs::directory_iterator each(folder, failure), end; !failure && each != end; each.increment(failure))
    if (std::error_code ignored; each->is_directory(ignored)) all.push_back(each->path());
  if (failure) {
    error = folder.string() + ": " + failure.message();
    return false;
  }
  std::sort(all.begin(), all.end());
  for (const fs::path& path : all) {
    std::error_code ignored;
    if (fs::exists(path / sim::kBoardFile, ignored))
      boards.push_back(path);
    else
      strays.push_back(path.filename().string());
  }
  if (!boards.empty()) return true;
  error = folder.string() + ": holds no board folder";
  return false;
}

/// A process for each board, so many at once as there are cores.
class Workers {
 public:
  Workers(const std::vector<fs::path>& folders, const std::vector<std::string>& arguments,
          const FleetChoice& choice)
      : folders_(folders), arguments_(arguments), choice_(choice) {}

  bool Go(std::vector<FleetBoard>& boards, std::string& error) {
    if (!results_.Open(error)) return false;
    for (const fs::path& folder : folders_) {
      while (children_.size() >= choice_.cores) WaitForOne(boards);
      if (Start(folder)) continue;
      error = std::string("no process for the program: ") + std::strerror(errno);
      break;
    }
    while (!children_.empty()) WaitForOne(boards);
    results_.Take([&](std::span<const std::uint8_t> record) {
      if (FleetBoard board; FromWire(record, board)) boards.push_back(std::move(board));
    });
    // v2 stands in front of v10.
    std::sort(boards.begin(), boards.end(), [](const FleetBoard& left, const FleetBoard& right) {
      return strverscmp(left.name.c_str(), right.name.c_str()) < 0;
    });
    return error.empty();
  }

 private:
  bool Start(const fs::path& folder) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      const std::size_t share = choice_.cores / folders_.size();
      FleetBoard board =
          RehearseBoard(folder, arguments_, choice_, std::max(1U, static_cast<unsigned>(share)));
      results_.Add(ToWire(board));
      _exit(0);
    }
    if (child > 0) children_.emplace(child, folder.filename().string());
    return child > 0;
  }

  void WaitForOne(std::vector<FleetBoard>& boards) {
    int status = 0;
    const pid_t child = waitpid(-1, &status, 0);
    if (child < 0 && errno == EINTR) return;
    const auto found = children_.find(child);
    if (found == children_.end()) return children_.clear();
    if (status != 0)
      boards.push_back(
          {.name = found->second, .error = "its rehearsal ended with status " + std::to_string(status)});
    children_.erase(found);
    choice_.progress(++done_, folders_.size());
  }

  const std::vector<fs::path>& folders_;
  const std::vector<std::string>& arguments_;
  const FleetChoice& choice_;
  Results results_;
  std::map<pid_t, std::string> children_;
  std::size_t done_ = 0;
};

/// What the boards say together of the script and of the answers.
void AddUp(Fleet& fleet, const Script& script) {
  std::set<std::string> unset = script.tags;
  std::map<std::size_t, std::size_t> unused;
  std::size_t rehearsed = 0;
  for (const FleetBoard& board : fleet.boards) {
    fleet.runs += board.runs;
    rehearsed += board.runs == 0 ? 0 : 1;
    for (const std::size_t line : board.lines)
      if (line <= fleet.script.size()) ++fleet.script[line - 1].reached;
    for (const std::string& tag : board.tags) unset.erase(tag);
    for (const std::size_t place : board.unusedAnswers) ++unused[place];
  }
  fleet.unsetTags.assign(unset.begin(), unset.end());
  for (const auto& [place, count] : unused)
    if (count == rehearsed) fleet.unusedAnswers.push_back(place);
}

}  // namespace

std::vector<std::size_t> Fleet::UnreachedLines() const {
  std::vector<std::size_t> lines;
  for (std::size_t i = 0; i < script.size(); ++i)
    if (script[i].isCommand && script[i].reached == 0) lines.push_back(i + 1);
  return lines;
}

bool RehearseFleet(const fs::path& folder, const std::vector<std::string>& arguments,
                   const FleetChoice& choice, Fleet& fleet, std::string& error) {
  const auto begun = std::chrono::steady_clock::now();
  std::vector<fs::path> folders;
  if (!ListFolders(folder, folders, fleet.strays, error)) return false;
  std::vector<std::string> words = {"varnok"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  const Script script = ReadScript(words);
  fleet.command = arguments;
  fleet.folder = folder.string();
  fleet.package = script.file;
  for (const std::string& argument : arguments)
    if (script.file.empty()) fleet.package += (fleet.package.empty() ? "" : " ") + argument;
  fleet.script = script.lines;
  fleet.isAllRoads = choice.answers == nullptr;
  fleet.areFirstAnswers = choice.areFirstAnswers;
  if (!Workers(folders, arguments, choice).Go(fleet.boards, error)) return false;
  AddUp(fleet, script);
  fleet.cores = choice.cores;
  fleet.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count();
  return true;
}

}  // namespace varnok::rehearsal
