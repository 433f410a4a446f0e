#include "programs/board/rehearsal_json.h"

#include <array>
#include <set>

#include "firmware/host/hex.h"
#include "rehearsal/reports/board_maps.h"
#include "rehearsal/reports/fault_groups.h"
#include "rehearsal/reports/told_roads.h"
#include "rehearsal/reports/words.h"

namespace varnok::companion {
namespace {

using namespace rehearsal;

std::string HexText(const boards::Bytes& bytes) {
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const std::uint8_t byte : bytes) text += host::HexByte(byte);
  return text;
}

Json ScriptLineJson(const ScriptLine& line) {
  return Json::Object().Set("text", line.text).Set("isCommand", line.isCommand).Set("reached", line.reached);
}

Json QuestionJson(const Question& question) {
  return Json::Object()
      .Set("kind", KindWord(question.kind))
      .Set("text", question.text)
      .Set("line", question.line)
      .Set("choices", TextsJson(question.choices));
}

Json AnswerJson(const Answer& answer) {
  return Json::Object()
      .Set("question", answer.question)
      .Set("text", answer.text)
      .Set("isInvalid", answer.isInvalid);
}

Json ExchangeJson(const Exchange& exchange) {
  Json json = Json::Object()
                  .Set("begun", exchange.begun)
                  .Set("ended", exchange.ended)
                  .Set("controller", exchange.controller)
                  .Set("channel", exchange.channel)
                  .Set("netFunction", exchange.netFunction)
                  .Set("command", exchange.command)
                  .Set("name", exchange.name)
                  .Set("request", HexText(exchange.request))
                  .Set("isWrite", exchange.isWrite);
  // Null: no answer.
  json.Set("completionCode", exchange.isAnswered ? Json(exchange.completionCode) : Json());
  return json.Set("answer", HexText(exchange.answer));
}

Json RoadJson(const Road& road, bool isWhole) {
  Json json = Json::Object().Set("answers", ListOf(road.answers, AnswerJson));
  json.Set("joins", road.joins ? Json(*road.joins) : Json());
  json.Set("exitStatus", road.run.exitStatus)
      .Set("message", road.run.message)
      .Set("requests", road.run.requests)
      .Set("writes", road.run.writes)
      .Set("microseconds", road.run.microseconds)
      .Set("stalled", road.run.stalled)
      .Set("board", road.run.board);
  if (isWhole)
    json.Set("transcript", road.run.transcript)
        .Set("errorOutput", road.run.errorOutput)
        .Set("traffic", ListOf(road.run.traffic, ExchangeJson));
  return json;
}

Json AreaJson(const Area& area) {
  return Json::Object().Set("name", area.name).Set("offset", area.offset).Set("length", area.length);
}

Json DeviceJson(const DeviceImage& device) {
  return Json::Object()
      .Set("device", device.device)
      .Set("changedBytes", ChangedBytes(device))
      .Set("before", HexText(device.before))
      .Set("after", HexText(device.after))
      .Set("areasBefore", ListOf(device.areasBefore, AreaJson))
      .Set("areasAfter", ListOf(device.areasAfter, AreaJson));
}

Json BoardJson(const BoardAfter& board) {
  return Json::Object()
      .Set("differences", ListOf(board.differences, DifferenceJson))
      .Set("devices", ListOf(board.devices, DeviceJson));
}

Json FaultJson(const FaultRun& run) {
  constexpr std::array<const char*, 3> kOutcomes = {"wanted", "old", "between"};
  constexpr std::array<const char*, 3> kOutputs = {"same", "repeats", "other"};
  return Json::Object()
      .Set("road", run.road)
      .Set("kind", run.kind)
      .Set("request", run.request)
      .Set("name", run.name)
      .Set("result", WordsOf(CellOf(run)).title)
      .Set("exitStatus", run.exitStatus)
      .Set("message", run.message)
      .Set("board", kOutcomes[static_cast<std::size_t>(run.outcome)])
      .Set("isEndless", run.isEndless)
      .Set("hasCrashed", run.hasCrashed)
      .Set("output", kOutputs[static_cast<std::size_t>(run.output)])
      .Set("isTold", run.isTold)
      .Set("errorOutput", run.errorOutput)
      .Set("canBeShown", run.canBeShown)
      .Set("rerunReaches", run.rerunReaches)
      .Set("restoreReaches", run.restoreReaches);
}

Json ResultsJson(const Report& report) {
  Json results = Json::Object();
  const auto counts = CountCells(report);
  for (std::size_t i = 0; i < kCellCount; ++i) results.Set(WordsOf(static_cast<Cell>(i)).title, counts[i]);
  return results;
}

}  // namespace

Json NumbersJson(const std::vector<std::size_t>& numbers) {
  return ListOf(numbers, [](std::size_t number) { return Json(number); });
}

Json TextsJson(const std::vector<std::string>& texts) {
  return ListOf(texts, [](const std::string& text) { return Json(text); });
}

Json FindingJson(const Finding& finding) {
  return Json::Object()
      .Set("weight", WordOf(finding.weight))
      .Set("rule", finding.rule)
      .Set("title", finding.title)
      .Set("detail", finding.detail);
}

Json DifferenceJson(const boards::Difference& difference) {
  constexpr std::array<const char*, 3> kChanges = {"added", "removed", "changed"};
  return Json::Object()
      .Set("part", difference.part)
      .Set("change", kChanges[static_cast<std::size_t>(difference.change)])
      .Set("group", difference.group)
      .Set("field", difference.field)
      .Set("before", difference.before)
      .Set("after", difference.after);
}

Json RehearsalJson(const Report& report) {
  const std::vector<std::size_t> chosen = ToldRoads(report);
  const std::set<std::size_t> told(chosen.begin(), chosen.end());
  Json roads = Json::Array();
  for (std::size_t i = 0; i < report.roads.size(); ++i)
    roads.Add(RoadJson(report.roads[i], told.contains(i)));
  Json json = Json::Object()
                  .Set("version", 1)
                  .Set("package", report.package)
                  .Set("command", TextsJson(report.command))
                  .Set("board", report.board)
                  .Set("findings", ListOf(FindingsOf(report), FindingJson))
                  .Set("script", ListOf(report.script, ScriptLineJson))
                  .Set("unreachedLines", NumbersJson(report.UnreachedLines()))
                  .Set("unsetTags", TextsJson(report.unsetTags))
                  .Set("questions", ListOf(report.questions, QuestionJson))
                  .Set("isAllRoads", report.isAllRoads)
                  .Set("roads", roads)
                  .Set("roadsCut", report.roadsCut)
                  .Set("brokenRoads", NumbersJson(report.brokenRoads))
                  .Set("equalRoads", ListOf(report.EqualRoads(), NumbersJson))
                  .Set("boards", ListOf(report.boards, BoardJson));
  if (report.hasFaults)
    json.Set("faultStep", report.faultStep)
        .Set("faultResults", ResultsJson(report))
        .Set("faults", ListOf(report.faults, FaultJson));
  return json.Set("runs", report.runs).Set("seconds", report.seconds).Set("cores", report.cores);
}

}  // namespace varnok::companion
