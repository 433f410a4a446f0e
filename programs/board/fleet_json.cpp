#include "programs/board/rehearsal_json.h"
#include "rehearsal/reports/fleet_groups.h"
#include "rehearsal/reports/words.h"

namespace varnok::companion {
namespace {

using namespace rehearsal;

Json GivenJson(const Given& given) {
  return Json::Object()
      .Set("kind", KindWord(given.question.kind))
      .Set("question", given.question.text)
      .Set("line", given.question.line)
      .Set("text", given.text)
      .Set("isInvalid", given.isInvalid);
}

Json EndJson(const FleetEnd& end) {
  return Json::Object()
      .Set("fate", WordsOf(end.fate).word)
      .Set("exitStatus", end.exitStatus)
      .Set("message", end.message)
      .Set("changes", TextsJson(end.changes))
      .Set("reasons", TextsJson(end.reasons))
      .Set("roads", end.roads)
      .Set("results", end.results)
      .Set("requests", end.requests)
      .Set("writes", end.writes)
      .Set("microseconds", end.microseconds)
      .Set("answers", ListOf(end.answers, GivenJson))
      .Set("differences", ListOf(end.first.differences, DifferenceJson));
}

Json FleetBoardJson(const FleetBoard& board, std::size_t group) {
  return Json::Object()
      .Set("name", board.name)
      .Set("fate", WordsOf(board.TheFate()).word)
      .Set("group", group)
      .Set("error", board.error)
      .Set("roads", board.roads)
      .Set("roadsCut", board.roadsCut)
      .Set("ends", ListOf(board.ends, EndJson));
}

Json GroupJson(const FleetGroup& group) {
  const auto device = [](const DeviceResults& results) {
    return Json::Object()
        .Set("device", results.device)
        .Set("alike", ListOf(results.alike, NumbersJson))
        .Set("differIn", TextsJson(results.fields));
  };
  return Json::Object()
      .Set("fate", WordsOf(group.fate).word)
      .Set("boards", NumbersJson(group.boards))
      .Set("devices", ListOf(group.devices, device));
}

}  // namespace

Json FleetJson(const Fleet& fleet) {
  const std::vector<FleetGroup> groups = GroupsOf(fleet);
  std::vector<std::size_t> groupOf(fleet.boards.size());
  for (std::size_t i = 0; i < groups.size(); ++i)
    for (const std::size_t board : groups[i].boards) groupOf[board] = i;
  Json boards = Json::Array();
  for (std::size_t i = 0; i < fleet.boards.size(); ++i)
    boards.Add(FleetBoardJson(fleet.boards[i], groupOf[i]));
  return Json::Object()
      .Set("version", 1)
      .Set("package", fleet.package)
      .Set("command", TextsJson(fleet.command))
      .Set("folder", fleet.folder)
      .Set("isAllRoads", fleet.isAllRoads)
      .Set("findings", ListOf(FindingsOf(fleet), FindingJson))
      .Set("groups", ListOf(groups, GroupJson))
      .Set("boards", boards)
      .Set("noBoards", TextsJson(fleet.strays))
      .Set("unreachedLines",
           NumbersJson(fleet.isAllRoads ? fleet.UnreachedLines() : std::vector<std::size_t>{}))
      .Set("unsetTags", TextsJson(fleet.isAllRoads ? fleet.unsetTags : std::vector<std::string>{}))
      .Set("unusedAnswers", NumbersJson(fleet.unusedAnswers))
      .Set("runs", fleet.runs)
      .Set("seconds", fleet.seconds)
      .Set("cores", fleet.cores);
}

}  // namespace varnok::companion
