// Writes a made-up rehearsal in every form: made_reports hostile|big FOLDER.
#include <fstream>
#include <string>

#include "programs/board/rehearsal_json.h"
#include "rehearsal/reports/html_report.h"
#include "rehearsal/reports/junit_report.h"
#include "rehearsal/reports/text_report.h"

namespace varnok::rehearsal {
namespace {

// Markup, ends of attributes and comments, entities, control characters, ill-formed UTF-8, text turned round.
const std::string kHostile =
    "<script>document.title='taken'</script>\"'><img src=x onerror=\"document.title='taken'\">--></style>&lt;"
    "]]>\x1B[31m\x07\xFF\xC0\x80\xE2\x80\xAE\xEF\xBF\xBE\xC2\x9B";

Run MakeRun(std::size_t board, std::size_t requests, int status, const std::string& text) {
  Run run{.exitStatus = status, .message = status == 0 ? "" : text, .transcript = text, .errorOutput = text};
  std::uint64_t now = 0;
  for (std::size_t i = 0; i < requests; ++i) {
    now += i == requests / 2 ? 301'000'000 : 5'000;
    Exchange exchange{.begun = now, .ended = now + 12'000, .netFunction = 0x0A, .command = 0x11};
    exchange.isWrite = i % 3 == 1;
    exchange.name = exchange.isWrite ? "Write FRU Data" : i == 0 ? text : "Read FRU Data";
    exchange.isAnswered = i != 2;
    now = exchange.ended;
    run.writes += exchange.isWrite ? 1 : 0;
    run.traffic.push_back(exchange);
  }
  run.requests = requests;
  run.microseconds = now + 2'000'000;
  run.stalled = 303'000'000;
  run.board = board;
  return run;
}

BoardAfter MakeBoard(std::size_t number, std::size_t size, const std::string& text) {
  BoardAfter board;
  if (number == 0) return board;
  DeviceImage device{.device = "FRU 0", .before = Bytes(size, 0xFF), .after = Bytes(size, 0xFF)};
  device.areasBefore = {{"header", 0, 8}, {text, 8, size / 4}};
  device.areasAfter = {{"header", 0, 8}, {"board", 8, size / 8}, {text, size / 8 + 8, size}};
  for (std::size_t i = 0; i < size / 2; i += 3) device.after[i] = static_cast<std::uint8_t>(i * number);
  board.devices.push_back(device);
  board.differences = {{boards::Change::Changed, "FRU 0", "Product Info Area", text, text, text, true},
                       {boards::Change::Added, "SDR", "Full Sensor '" + text + "'"},
                       {boards::Change::Removed, "SDR", "Sensor", "Upper", "45"}};
  return board;
}

FaultRun MakeFault(std::size_t kind, std::size_t request, const std::string& text) {
  FaultRun run{.road = kind / 20, .request = request};
  run.kind = kind == 0 ? text : "completion code " + std::to_string(0xC0 + kind);
  const bool isRefused = request % 7 == 0;
  run.exitStatus = isRefused ? 4 : 0;
  run.message = isRefused ? text : "";
  if (isRefused && kind % 3 != 0) run.outcome = FaultOutcome::Old;
  if (kind == 4 && request < 20) run.outcome = FaultOutcome::Between;
  run.canBeShown = kind != 5 || request % 11 != 0;
  run.rerunReaches = kind != 7 || request % 13 != 0;
  run.restoreReaches = request % 26 != 0;
  run.isEndless = kind == 9 && request == 5;
  run.hasCrashed = kind == 9 && request == 6;
  run.isTold = request % 2 == 0;
  if (kind == 8) run.output = request % 3 == 0 ? FaultOutput::Other : FaultOutput::Repeats;
  return run;
}

/// Every fifth road breaks, the last one joins the first.
Road MakeRoad(std::size_t number, std::size_t prompts, std::size_t boardCount, const std::string& text) {
  Road road;
  for (std::size_t bit = 0; bit < prompts; ++bit) {
    const bool isYes = ((number >> (prompts - 1 - bit)) & 1) == 0;
    const std::string menu = isYes ? "1" : "2";
    road.answers.push_back({bit, bit == 0 ? menu : isYes ? "Y" : "N"});
  }
  road.run = MakeRun(number % boardCount, prompts > 8 ? 12 : 60, number % 5 == 4 ? 4 : 0, text);
  if (number + 1 == std::size_t{1} << prompts) road.joins = 0;
  return road;
}

/// 2^prompts roads of a menu and prompts, 40 kinds of faults.
Report MakeReport(std::size_t prompts, std::size_t boardCount, std::size_t faultRequests,
                  const std::string& text) {
  Report report{.package = text, .command = {"/cfg", text}, .board = text};
  report.isAllRoads = true;
  for (std::size_t i = 0; i < 12; ++i)
    report.script.push_back({"PROMPT \"" + text + "\"", i % 2 == 0, i == 4 ? 0U : 3U});
  report.questions.push_back({QuestionKind::Menu, text, 1, {text, "Pedestal, 8 bays"}});
  for (std::size_t i = 1; i < prompts; ++i)
    report.questions.push_back({QuestionKind::Prompt, "Is fan " + std::to_string(i) + " fitted?", i * 2 + 1});
  for (std::size_t i = 0; i < boardCount; ++i) report.boards.push_back(MakeBoard(i, 1024, text));
  for (std::size_t i = 0; i < std::size_t{1} << prompts; ++i) {
    report.roads.push_back(MakeRoad(i, prompts, boardCount, text));
    if (report.roads.back().run.exitStatus != 0) report.brokenRoads.push_back(i);
  }
  report.unsetTags = {text, "NEVER"};
  report.roadsCut = 7;
  report.hasFaults = true;
  for (std::size_t kind = 0; kind < 40; ++kind)
    for (std::size_t request = 1; request <= faultRequests; ++request)
      report.faults.push_back(MakeFault(kind, request, text));
  report.runs = report.roads.size() + report.faults.size();
  report.seconds = 3.25;
  report.cores = 2;
  return report;
}

void Write(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

}  // namespace
}  // namespace varnok::rehearsal

int main(int count, char** arguments) {
  using namespace varnok::rehearsal;
  if (count != 3) return 2;
  const bool isBig = std::string(arguments[1]) == "big";
  const Report report = isBig ? MakeReport(12, 60, 250, "MASTER.CFG") : MakeReport(3, 3, 60, kHostile);
  const std::string folder = arguments[2];
  Write(folder + "/report.html", HtmlReport(report));
  Write(folder + "/report.json", varnok::companion::RehearsalJson(report).Text());
  Write(folder + "/report.xml", JunitReport(report));
  std::string text;
  for (const std::string& line : TextReport(report, false)) text += line + "\n";
  Write(folder + "/report.txt", text);
}
