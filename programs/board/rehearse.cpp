// varnok-board rehearse: what a script or a load file does to a board, on one road or on all of them.
#include <algorithm>
#include <charconv>
#include <fstream>
#include <thread>

#include "boards/folder.h"
#include "programs/board/command.h"
#include "programs/board/output.h"
#include "rehearsal/answers.h"
#include "rehearsal/roads.h"
#include "sim/board_source.h"

namespace varnok::companion {
namespace {

using namespace rehearsal;

constexpr Option kOptions[] = {
    {"SCRIPT", "", "The script; or, behind --, the program's arguments: -- /fru board.fru",
     Option::OneOrMore},
    {"--board", "FOLDER", "The board, which stays as it is; else VARNOK_BOARD, else the default board"},
    {"--answers", "FILE", "Answer the questions from this file; else from the keyboard"},
    {"--record", "FILE", "Write the answers that were given into this file"},
    {"--all-roads", "", "Go every road through the script: each answer, and each outcome of a probe"},
    {"--limit", "N", "The most roads of --all-roads; 10000 without it"},
    {"--keep", "FOLDER", "Make a board folder of what the board holds afterwards"},
};

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

bool FindFolder(const Arguments& arguments, std::string& folder, std::string& error) {
  folder = arguments.Value("--board");
  if (!folder.empty()) return true;
  const std::optional<sim::BoardSource> source = sim::FindBoard(sim::ProcessEnvironment, error);
  if (!source) return false;
  folder = source->folder.string();
  const bool isMissing = source->isDefault && !std::filesystem::exists(source->folder / sim::kBoardFile);
  return !isMissing || sim::Board::CreateDefault(source->folder, error);
}

bool WriteText(const std::string& file, const std::string& text) {
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream << text;
  return static_cast<bool>(stream.flush());
}

std::unique_ptr<Answerer> MakeAnswerer(const Arguments& arguments, std::string& error) {
  if (!arguments.Has("--answers")) return std::make_unique<KeyboardAnswers>();
  boards::Bytes text;
  auto file = std::make_unique<AnswerFile>();
  const std::string name = arguments.Value("--answers");
  if (!boards::ReadFile(name, text, error)) return nullptr;
  if (file->Parse({reinterpret_cast<const char*>(text.data()), text.size()}, error)) return file;
  error = name + ": " + error;
  return nullptr;
}

void PrintRoads(const Report& report) {
  for (std::size_t i = 0; i < report.roads.size(); ++i) {
    const Road& road = report.roads[i];
    std::string line = std::to_string(i + 1) + ":";
    for (const Answer& answer : road.answers)
      line += " " + std::to_string(report.questions[answer.question].line) + "=" + answer.text +
              (answer.isInvalid ? "!" : "");
    line += " -> " + std::to_string(road.run.exitStatus) + " " + road.run.message + " writes " +
            std::to_string(road.run.writes) + " board " + std::to_string(road.run.board) + " us " +
            std::to_string(road.run.microseconds) + " req " + std::to_string(road.run.requests);
    if (road.joins) line += " as " + std::to_string(*road.joins + 1);
    PrintLine(line);
  }
  for (std::size_t i = 0; i < report.script.size(); ++i)
    if (report.script[i].isCommand && report.script[i].reached == 0)
      PrintLine("unreached " + std::to_string(i + 1) + " " + report.script[i].text);
  for (const std::string& tag : report.unsetTags) PrintLine("unset " + tag);
  for (std::size_t road : report.brokenRoads) PrintLine("broken " + std::to_string(road + 1));
  PrintLine("cut " + std::to_string(report.roadsCut) + " runs " + std::to_string(report.runs) + " seconds " +
            std::to_string(report.seconds) + " boards " + std::to_string(report.boards.size()));
}

int Explore(const Arguments& arguments, Stage& stage) {
  RoadOptions options{.cores = std::max(1u, std::thread::hardware_concurrency())};
  const std::string limit = arguments.Value("--limit", "10000");
  const char* end = limit.data() + limit.size();
  if (std::from_chars(limit.data(), end, options.limit).ptr != end || options.limit == 0)
    return Fail("--limit: \"" + limit + "\" is no number of roads", kWrongUse);
  Report report;
  std::string error;
  if (!GoAllRoads(stage, options, report, error)) return Fail(error);
  PrintRoads(report);
  return kDone;
}

int Run(const Arguments& arguments) {
  std::string folder, error;
  if (!FindFolder(arguments, folder, error)) return Fail(error);
  const std::unique_ptr<Answerer> answerer = MakeAnswerer(arguments, error);
  if (answerer == nullptr) return Fail(error);
  const std::unique_ptr<Stage> stage = Stage::Open(folder, ProgramArguments(arguments), error);
  if (stage == nullptr) return Fail(error);
  if (arguments.Has("--all-roads")) return Explore(arguments, *stage);
  const bool isLive = !arguments.Has("--answers");
  Outcome outcome;
  if (!RunOnce(*stage, *answerer, outcome, error, isLive)) return Fail(error);
  if (!isLive) PrintLine(outcome.run.transcript);
  if (arguments.Has("--record") && !WriteText(arguments.Value("--record"), AnswerText(outcome.given)))
    return Fail(arguments.Value("--record") + ": cannot be written");
  if (arguments.Has("--keep") && !stage->Save(arguments.Value("--keep"), outcome.images, error))
    return Fail(error);
  const std::vector<std::string> problems = outcome.problems;
  ReportBuilder builder(*stage);
  builder.Add(std::move(outcome));
  const Report report = builder.Finish();
  const rehearsal::Run& run = report.roads.front().run;
  PrintLine("status " + std::to_string(run.exitStatus) + ", " + std::to_string(run.requests) + " requests, " +
            std::to_string(run.microseconds / 1'000'000) + " s, writes " + std::to_string(run.writes));
  for (const boards::Difference& difference : report.boards[run.board].differences)
    PrintLine(difference.part + " " + difference.group + " " + difference.field + ": " + difference.before +
              " -> " + difference.after);
  for (const std::string& problem : problems) Fail(problem);
  return problems.empty() ? kDone : kFailed;
}

}  // namespace

const Command kRehearse = {"rehearse", "Run a script over a copy of a board and tell what it does", kOptions,
                           "  varnok-board rehearse MASTER.CFG --board myboard --answers rack.answers", Run};

}  // namespace varnok::companion
