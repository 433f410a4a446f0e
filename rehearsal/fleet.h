// One package on many boards: what becomes of each.
#pragma once

#include <filesystem>
#include <functional>

#include "rehearsal/performance.h"
#include "rehearsal/report.h"

namespace varnok::rehearsal {

/// What becomes of a board, the gravest first.
enum class Fate : std::uint8_t {
  Damaged,    ///< a run has written when it ends with an error, or the program cannot show the board any more
  Doubtful,   ///< status 0, but what was written does not fit the board
  Unknown,    ///< it could not be rehearsed
  Failed,     ///< the program ends with an error of its own, nothing written
  Changed,    ///< status 0, another board than before
  Refused,    ///< the script ends the run by ERRORLEVEL, nothing written
  Untouched,  ///< status 0, the board is as it was
};

/// What a device holds in the end, for comparing boards.
struct DeviceContent {
  std::string device{};    ///< "FRU 0", "SDR"
  std::uint64_t hash = 0;  ///< of all its contents, in the order of the roads; record IDs do not count
};

/// Roads of one board that end alike.
struct FleetEnd {
  Fate fate = Fate::Untouched;
  int exitStatus = 0;
  std::string message{};
  std::vector<std::string> changes{};  ///< "FRU 0: Board Info Area", "SDR"
  std::vector<std::string> reasons{};  ///< why it is damaged or doubtful
  std::size_t roads = 0;
  std::size_t results = 0;   ///< different boards that they leave
  std::size_t requests = 0;  ///< the most of one run, as the next ones
  std::size_t writes = 0;
  std::uint64_t microseconds = 0;
  std::vector<Given> answers{};           ///< of the first of these roads
  BoardAfter first{};                     ///< that it leaves, without its files
  std::vector<DeviceContent> contents{};  ///< of the devices that change

  /// Whether two boards come to the same.
  bool IsLike(const FleetEnd& other) const;
};

struct FleetBoard {
  std::string name{};                ///< its folder in the fleet's
  std::string error{};               ///< why it could not be rehearsed
  std::vector<FleetEnd> ends{};      ///< the gravest first
  std::vector<std::size_t> lines{};  ///< of the script that a road reached, from 1
  std::vector<std::string> tags{};   ///< that a road set, in capitals
  std::vector<std::size_t> unusedAnswers{};
  std::size_t roads = 0;
  std::size_t roadsCut = 0;
  std::size_t runs = 0;

  Fate TheFate() const { return ends.empty() ? Fate::Unknown : ends.front().fate; }
};

struct Fleet {
  std::string package{};
  std::vector<std::string> command{};  ///< the program's arguments
  std::string folder{};
  std::vector<FleetBoard> boards{};          ///< by name
  std::vector<std::string> strays{};         ///< folders that hold no board
  std::vector<ScriptLine> script{};          ///< `reached` counts boards
  std::vector<std::string> unsetTags{};      ///< on no board, by no road
  std::vector<std::size_t> unusedAnswers{};  ///< lines of the file of answers that no board used
  bool isAllRoads = false;
  bool areFirstAnswers = false;  ///< nobody gave answers
  std::size_t runs = 0;
  double seconds = 0;
  unsigned cores = 1;

  /// Lines of the script, from 1, that no road of any board reached.
  std::vector<std::size_t> UnreachedLines() const;
};

struct FleetChoice {
  Answerer* answers =
      nullptr;  ///< of each board's one road; null: all roads, each probe as its board answers
  bool areFirstAnswers = false;
  std::size_t limit = 10'000;  ///< the most roads of a board
  unsigned cores = 1;
  std::function<void(std::size_t done, std::size_t boards)> progress = [](std::size_t, std::size_t) {};
};

/// Rehearses the command line on each board folder in `folder`, each in a process of its own. False, with
/// `error` set, when there is none, or the system has no process or no memory for it.
bool RehearseFleet(const std::filesystem::path& folder, const std::vector<std::string>& arguments,
                   const FleetChoice& choice, Fleet& fleet, std::string& error);

/// Rehearses it on one board, in this process and those that it forks. A failure stands in the board.
FleetBoard RehearseBoard(const std::filesystem::path& folder, const std::vector<std::string>& arguments,
                         const FleetChoice& choice, unsigned cores);

}  // namespace varnok::rehearsal
