// varnok-board rehearse --boards: what a script or a load file does to each board of a fleet.
#include <algorithm>
#include <charconv>
#include <thread>

#include "boards/folder.h"
#include "programs/board/output.h"
#include "programs/board/rehearsal_json.h"
#include "programs/board/rehearsal_output.h"
#include "programs/board/rehearse_parts.h"
#include "rehearsal/fleet.h"
#include "rehearsal/reports/fleet_groups.h"
#include "rehearsal/reports/fleet_report.h"

namespace varnok::companion {

using namespace rehearsal;

namespace {

int TellFleet(const Fleet& fleet, const Arguments& arguments) {
  if (arguments.Has("--json")) {
    PrintLine(FleetJson(fleet).Text());
  } else {
    for (const std::string& line : FleetText(fleet, arguments.Has("--verbose"))) PrintLine(line);
  }
  if (arguments.Has("--junit") && !WriteText(arguments.Value("--junit"), FleetJunit(fleet))) return kFailed;
  if (arguments.Has("--html") && !WriteText(arguments.Value("--html"), FleetHtml(fleet))) return kFailed;
  const auto isUnknown = [](const FleetBoard& board) { return board.TheFate() == Fate::Unknown; };
  if (!fleet.unusedAnswers.empty() || std::any_of(fleet.boards.begin(), fleet.boards.end(), isUnknown))
    return kFailed;
  return SeriousCount(FindingsOf(fleet)) == 0 ? kDone : kFound;
}

}  // namespace

/// The program's arguments: as given, or those that run the script.
std::vector<std::string> ProgramArguments(const Arguments& arguments) {
  std::vector<std::string> words = arguments.Values("SCRIPT");
  const bool isOption =
      words.front().starts_with('-') || (words.front().starts_with('/') && words.front().rfind('/') == 0);
  if (words.size() != 1 || isOption) return words;
  // To the program a word that begins with '/' is an option.
  if (words.front().starts_with('/')) words.front().front() = '\\';
  return {"/cfg", words.front()};
}

bool ReadAnswers(const Arguments& arguments, AnswerFile& file, std::string& error) {
  if (!arguments.Has("--answers")) return true;
  boards::Bytes text;
  const std::string name = arguments.Value("--answers");
  if (!boards::ReadFile(name, text, error)) return false;
  if (file.Parse({reinterpret_cast<const char*>(text.data()), text.size()}, error)) return true;
  error = name + ": " + error;
  return false;
}

/// A number from 1 on; false, and the error is told, for anything else.
bool ReadNumber(const Arguments& arguments, const char* option, std::size_t& number) {
  if (!arguments.Has(option)) return true;
  const std::string text = arguments.Value(option);
  const char* end = text.data() + text.size();
  if (std::from_chars(text.data(), end, number).ptr == end && number != 0) return true;
  Fail(std::string(option) + ": \"" + text + "\" is no number from 1 on", kWrongUse);
  return false;
}

unsigned Cores() {
  return std::max(1U, std::thread::hardware_concurrency());
}

int RehearseBoards(const Arguments& arguments) {
  AnswerFile file;
  FirstAnswers first;
  std::string error;
  if (!ReadAnswers(arguments, file, error)) return Fail(error);
  file.isForMany = true;
  FleetChoice choice{.areFirstAnswers = !arguments.Has("--answers"), .cores = Cores()};
  if (!ReadNumber(arguments, "--limit", choice.limit)) return kWrongUse;
  if (!arguments.Has("--all-roads"))
    choice.answers = choice.areFirstAnswers ? static_cast<Answerer*>(&first) : &file;
  Progress progress;
  choice.progress = [&](std::size_t done, std::size_t boards) { progress.Show("Boards", done, boards); };
  Fleet fleet;
  const bool isDone =
      RehearseFleet(arguments.Value("--boards"), ProgramArguments(arguments), choice, fleet, error);
  progress.Clear();
  return isDone ? TellFleet(fleet, arguments) : Fail(error);
}

}  // namespace varnok::companion
