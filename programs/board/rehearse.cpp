// varnok-board rehearse: what a script or a load file does to a board, on one road or on all of them.
#include "programs/board/command.h"
#include "programs/board/output.h"
#include "programs/board/rehearsal_output.h"
#include "programs/board/rehearse_parts.h"
#include "rehearsal/answers.h"
#include "rehearsal/fault_runs.h"
#include "rehearsal/roads.h"
#include "sim/board_source.h"

namespace varnok::companion {
namespace {

using namespace rehearsal;

constexpr Option kRehearseOptions[] = {
    {"SCRIPT", "", "The script; or, behind --, the program's arguments: -- /fru board.fru",
     Option::OneOrMore},
    {"--board", "FOLDER", "The board, which stays as it is; else VARNOK_BOARD, else the default board"},
    {"--boards", "FOLDER", "Each board folder in this one, and which of them end alike"},
    {"--answers", "FILE", "Answer the questions from this file; else from the keyboard"},
    {"--all-roads", "", "Go every road through the script: each answer, and each outcome of a probe"},
    {"--limit", "N", "The most roads of --all-roads; 10000 without it"},
    {"--every-fault", "", "Go the road once more with each fault of the board at each request"},
    {"--step", "N", "Try every Nth of those runs alone"},
    {"--record", "FILE", "Write the answers that were given into this file"},
    {"--keep", "FOLDER", "Make a board folder of what the board holds afterwards"},
    kReportHtml,
    kReportJunit,
    kReportJson,
    kReportVerbose,
};

bool FindFolder(const Arguments& arguments, std::string& folder, std::string& error) {
  const std::string named = arguments.Value("--board");
  const auto source = named.empty() ? sim::FindBoard(sim::ProcessEnvironment, error)
                                    : std::optional(sim::BoardSource{.folder = named});
  if (!source) return false;
  folder = source->folder.string();
  if (!source->isDefault && !std::filesystem::is_directory(source->folder)) {
    error = folder + ": is no board folder; varnok-board snapshot makes one of a machine";
    return false;
  }
  if (source->isDefault) Note("varnok-board: the default simulated board " + folder);
  const bool isMissing = source->isDefault && !std::filesystem::exists(source->folder / sim::kBoardFile);
  return !isMissing || sim::Board::CreateDefault(source->folder, error);
}

/// The faults, if they are asked for, and the report's end.
int Finish(const Arguments& arguments, Stage& stage, Report& report) {
  FaultChoice choice{.cores = Cores()};
  if (!ReadNumber(arguments, "--step", choice.step)) return kWrongUse;
  Progress progress;
  choice.progress = [&](std::size_t runs) { progress.Show("Faults", runs, 0); };
  std::string error;
  if (arguments.Has("--every-fault") && !DisturbRoads(stage, choice, report, error)) return Fail(error);
  progress.Clear();
  return TellReport(report, arguments);
}

/// Which option stands where it has no meaning; empty when none does.
std::string MisplacedOption(const Arguments& arguments) {
  const bool isAllRoads = arguments.Has("--all-roads");
  if (arguments.Has("--boards"))
    for (const char* name : {"--board", "--record", "--keep", "--every-fault"})
      if (arguments.Has(name)) return std::string(name) + " is for one board, not for --boards";
  for (const char* name : {"--answers", "--record", "--keep"})
    if (isAllRoads && arguments.Has(name)) return std::string(name) + " is for one road, not for --all-roads";
  if (!arguments.Has("--every-fault") && arguments.Has("--step")) return "--step is for --every-fault";
  if (!isAllRoads && arguments.Has("--limit")) return "--limit is for --all-roads";
  if (!isAllRoads && !arguments.Has("--answers") && !arguments.Has("--boards") && arguments.Has("--json"))
    return "--json needs --answers: without them the console is the program's";
  return {};
}

int GoAll(const Arguments& arguments, Stage& stage) {
  RoadOptions options{.cores = Cores()};
  if (!ReadNumber(arguments, "--limit", options.limit)) return kWrongUse;
  Progress progress;
  options.progress = [&](std::size_t roads) { progress.Show("Roads", roads, options.limit); };
  Report report;
  std::string error;
  const bool isDone = GoAllRoads(stage, options, report, error);
  progress.Clear();
  return isDone ? Finish(arguments, stage, report) : Fail(error);
}

int GoOne(const Arguments& arguments, Stage& stage, Answerer& answerer) {
  const bool isLive = !arguments.Has("--answers");
  Outcome outcome;
  std::string error;
  if (!RunOnce(stage, answerer, outcome, error, isLive)) return Fail(error);
  if (!isLive && !arguments.Has("--json")) PrintLine(outcome.run.transcript);
  if (arguments.Has("--record") && !WriteText(arguments.Value("--record"), AnswerText(outcome.given)))
    return kFailed;
  const std::vector<std::string> problems = outcome.problems;
  // A run that was given up tells nothing of the package.
  const bool isWhole = !outcome.isGivenUp;
  if (isWhole && arguments.Has("--keep") && !stage.Save(arguments.Value("--keep"), outcome.images, error))
    return Fail(error);
  ReportBuilder builder(stage);
  builder.Add(std::move(outcome));
  Report report = builder.Finish();
  int status = kFailed;
  if (isWhole) status = problems.empty() ? Finish(arguments, stage, report) : TellReport(report, arguments);
  for (const std::string& problem : problems) Fail(problem);
  return problems.empty() ? status : kFailed;
}

int RunRehearse(const Arguments& arguments) {
  if (const std::string misplaced = MisplacedOption(arguments); !misplaced.empty())
    return Fail(misplaced, kWrongUse);
  if (arguments.Has("--boards")) return RehearseBoards(arguments);
  std::string folder, error;
  if (!FindFolder(arguments, folder, error)) return Fail(error);
  KeyboardAnswers keyboard;
  AnswerFile file;
  if (!ReadAnswers(arguments, file, error)) return Fail(error);
  const std::unique_ptr<Stage> stage = Stage::Open(folder, ProgramArguments(arguments), error);
  if (stage == nullptr) return Fail(error);
  return arguments.Has("--all-roads")
             ? GoAll(arguments, *stage)
             : GoOne(arguments, *stage, arguments.Has("--answers") ? static_cast<Answerer&>(file) : keyboard);
}

}  // namespace

const Command kRehearse = {"rehearse", "Run a script over a copy of a board and tell what it does",
                           kRehearseOptions,
                           "  varnok-board rehearse MASTER.CFG --board myboard --answers rack.answers\n"
                           "  varnok-board rehearse MASTER.CFG --boards fleet --all-roads",
                           RunRehearse};

}  // namespace varnok::companion
