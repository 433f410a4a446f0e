#include "rehearsal/reports/fleet_groups.h"

#include <algorithm>
#include <array>
#include <map>

#include "boards/compare.h"
#include "rehearsal/hash.h"
#include "rehearsal/reports/words.h"

namespace varnok::rehearsal {
namespace {

constexpr std::size_t kFates = 7;
constexpr std::array<FateWords, kFates> kFateWords = {{
    {"damaged", "written, and then an error, or a board that the program cannot show any more"},
    {"doubtful", "status 0, and what was written does not fit the board"},
    {"not rehearsed", "the rehearsal itself could not be done"},
    {"refused by the program", "an error of the program, nothing written"},
    {"changed", "status 0, another board than before"},
    {"refused by the script", "ended by ERRORLEVEL, nothing written"},
    {"left as it is", "status 0, nothing changed"},
}};

bool AreAlike(const FleetBoard& left, const FleetBoard& right) {
  const auto isLike = [](const FleetEnd& one, const FleetEnd& other) { return one.IsLike(other); };
  return left.error == right.error && std::is_permutation(left.ends.begin(), left.ends.end(),
                                                          right.ends.begin(), right.ends.end(), isLike);
}

std::uint64_t ContentOf(const FleetBoard& board, const std::string& device) {
  std::uint64_t hash = 0;
  for (const FleetEnd& end : board.ends)
    for (const DeviceContent& content : end.contents)
      if (content.device == device) hash = Mixed(hash, content.hash);
  return hash;
}

/// A board that holds this device alone, as the first road left it.
boards::Source SourceOf(const FleetBoard& board, const std::string& device) {
  boards::Source source;
  for (const FleetEnd& end : board.ends) {
    for (const DeviceImage& image : end.first.devices) {
      if (image.device != device) continue;
      constexpr std::string_view kFru = "FRU ";
      const std::string name = device.starts_with(kFru) ? device.substr(kFru.size()) : device;
      if (device == "SDR")
        (void)boards::SplitRecords(image.after, source.board.records);
      else
        source.board.devices.push_back(
            {.address = boards::ParseDeviceName(name).value_or(boards::DeviceAddress{}),
             .bytes = image.after});
      return source;
    }
  }
  return source;
}

/// In what the devices of these boards differ from the first one's: areas and fields, records.
std::vector<std::string> FieldsOf(const Fleet& fleet, const DeviceResults& results) {
  std::vector<std::string> fields;
  const boards::Source first = SourceOf(fleet.boards[results.alike.front().front()], results.device);
  for (std::size_t i = 1; i < results.alike.size(); ++i) {
    const boards::Source other = SourceOf(fleet.boards[results.alike[i].front()], results.device);
    for (const boards::Difference& difference : boards::Compare(first, other).differences) {
      const bool isWhole = difference.field.empty();
      const std::string field = difference.group + (isWhole ? "" : ", " + difference.field);
      if (std::find(fields.begin(), fields.end(), field) == fields.end()) fields.push_back(field);
    }
  }
  return fields;
}

std::vector<DeviceResults> DevicesOf(const Fleet& fleet, const FleetGroup& group) {
  std::vector<DeviceResults> devices;
  std::map<std::pair<std::string, std::uint64_t>, std::size_t> places;
  const auto find = [&](const std::string& name) -> DeviceResults& {
    for (DeviceResults& each : devices)
      if (each.device == name) return each;
    return devices.emplace_back(DeviceResults{.device = name});
  };
  for (const FleetEnd& end : fleet.boards[group.boards.front()].ends)
    for (const DeviceContent& content : end.contents) (void)find(content.device);
  for (DeviceResults& results : devices) {
    for (const std::size_t board : group.boards) {
      const std::pair key(results.device, ContentOf(fleet.boards[board], results.device));
      const auto [place, isNew] = places.emplace(key, results.alike.size());
      if (isNew) results.alike.emplace_back();
      results.alike[place->second].push_back(board);
    }
    results.fields = FieldsOf(fleet, results);
  }
  return devices;
}

std::string NamesOfFate(const Fleet& fleet, Fate fate, std::size_t& count) {
  std::vector<std::size_t> boards;
  for (std::size_t i = 0; i < fleet.boards.size(); ++i)
    if (fleet.boards[i].TheFate() == fate) boards.push_back(i);
  count = boards.size();
  return Shortened(NamesOf(fleet, boards), 200);
}

void AddBoards(const Fleet& fleet, std::vector<Finding>& findings) {
  struct Row {
    Fate fate;
    Weight weight;
    std::string_view rule;
  };
  constexpr Row kRows[] = {{Fate::Damaged, Weight::Grave, "damaged-board"},
                           {Fate::Doubtful, Weight::Warning, "doubtful-board"},
                           {Fate::Unknown, Weight::Warning, "unknown-board"},
                           {Fate::Failed, Weight::Warning, "failed-board"}};
  for (const Row& row : kRows) {
    std::size_t count = 0;
    const std::string names = NamesOfFate(fleet, row.fate, count);
    const FateWords words = WordsOf(row.fate);
    if (count != 0)
      findings.push_back(
          {row.weight, row.rule,
           Count(count, "board") + " " + std::string(words.word) + ": " + std::string(words.meaning), names,
           "boards"});
  }
}

}  // namespace

FateWords WordsOf(Fate fate) {
  return kFateWords[static_cast<std::size_t>(fate)];
}

std::vector<FleetGroup> GroupsOf(const Fleet& fleet) {
  std::vector<FleetGroup> groups;
  for (std::size_t i = 0; i < fleet.boards.size(); ++i) {
    const FleetBoard& board = fleet.boards[i];
    const auto like = std::find_if(groups.begin(), groups.end(), [&](const FleetGroup& group) {
      return AreAlike(fleet.boards[group.boards.front()], board);
    });
    FleetGroup& group =
        like == groups.end() ? groups.emplace_back(FleetGroup{.fate = board.TheFate()}) : *like;
    group.boards.push_back(i);
  }
  for (FleetGroup& group : groups) group.devices = DevicesOf(fleet, group);
  std::stable_sort(groups.begin(), groups.end(), [](const FleetGroup& left, const FleetGroup& right) {
    return left.fate != right.fate ? left.fate < right.fate : left.boards.size() > right.boards.size();
  });
  return groups;
}

std::string NamesOf(const Fleet& fleet, const std::vector<std::size_t>& boards) {
  std::string names;
  for (const std::size_t board : boards)
    names += (names.empty() ? "" : ", ") + Shortened(fleet.boards[board].name, 60);
  return names;
}

std::string ChangesWords(const FleetEnd& end) {
  std::string words;
  for (const std::string& change : end.changes) words += (words.empty() ? "" : "; ") + Printable(change);
  return words.empty() ? "nothing" : words;
}

std::string EndWords(const FleetEnd& end) {
  const bool isBroken = end.exitStatus != 0 && end.writes != 0;
  return EndWords(end.exitStatus, end.message) + (isBroken ? ", after " + Count(end.writes, "write") : "") +
         "; changes: " + ChangesWords(end);
}

std::string RoadsWords(const FleetEnd& end) {
  std::string words;
  for (const Given& given : end.answers)
    if (given.question.kind != QuestionKind::Probe)
      words += (words.empty() ? "" : "; ") + Shortened(given.question.text, 60) + " " +
               AnswerWords(given.question, {.text = given.text, .isInvalid = given.isInvalid});
  if (words.empty()) words = "no question";
  return end.roads == 1 ? words : Count(end.roads, "road") + ", the first: " + words;
}

std::string ResultsWords(const FleetGroup& group, const DeviceResults& results) {
  const std::size_t count = results.alike.size();
  if (count == 1) return "the same on all of them afterwards";
  return count == group.boards.size() ? "another one on each" : Count(count, "different result");
}

std::uint64_t LongestRun(const Fleet& fleet, const FleetGroup& group, const FleetEnd& end) {
  std::uint64_t longest = 0;
  for (const std::size_t board : group.boards)
    for (const FleetEnd& each : fleet.boards[board].ends)
      if (each.IsLike(end)) longest = std::max(longest, each.microseconds);
  return longest;
}

std::string_view RoadsChoiceWords(const Fleet& fleet) {
  if (fleet.isAllRoads) return "all roads, each probe as its board answers";
  return fleet.areFirstAnswers ? "one road each, the first answer to every question" : "one road each";
}

std::vector<Finding> FindingsOf(const Fleet& fleet) {
  std::vector<Finding> findings;
  AddBoards(fleet, findings);
  const std::vector<std::size_t> lines = fleet.UnreachedLines();
  if (fleet.isAllRoads && !lines.empty())
    findings.push_back(
        {Weight::Warning, "unreached",
         Count(lines.size(), "line") + " of the script that no road of any board reaches",
         "line " + Ranges(lines) + ", first: " + Shortened(fleet.script[lines.front() - 1].text, 60),
         "script"});
  std::string tags;
  for (const std::string& tag : fleet.unsetTags) tags += (tags.empty() ? "" : ", ") + tag;
  if (fleet.isAllRoads && !tags.empty())
    findings.push_back({Weight::Warning, "unset-tag",
                        Count(fleet.unsetTags.size(), "tag") + " that no road of any board sets",
                        Shortened(tags, 200), "script"});
  std::size_t cut = 0;
  for (const FleetBoard& board : fleet.boards) cut += board.roadsCut;
  if (cut > 0)
    findings.push_back({Weight::Warning, "cut", Count(cut, "alternative") + " left out",
                        "the limit of roads was reached: what lies behind them is not known", "boards"});
  if (!fleet.unusedAnswers.empty())
    findings.push_back({Weight::Warning, "unused-answer",
                        Count(fleet.unusedAnswers.size(), "answer") + " that no board used",
                        "line " + Ranges(fleet.unusedAnswers) + " of the answers", "boards"});
  std::string strays;
  for (const std::string& stray : fleet.strays) strays += (strays.empty() ? "" : ", ") + Shortened(stray, 60);
  if (!strays.empty())
    findings.push_back({Weight::Remark, "no-board", Count(fleet.strays.size(), "folder") + " without a board",
                        Shortened(strays, 200), "boards"});
  return findings;
}

std::string Verdict(const Fleet& fleet, const std::vector<FleetGroup>& groups) {
  std::string text = Count(fleet.boards.size(), "board") + " in " + Count(groups.size(), "group");
  std::array<std::size_t, kFates> counts{};
  for (const FleetBoard& board : fleet.boards) ++counts[static_cast<std::size_t>(board.TheFate())];
  for (std::size_t i = 0; i < kFates; ++i)
    if (counts[i] != 0) text += ", " + Grouped(counts[i]) + " " + std::string(kFateWords[i].word);
  return text + ".";
}

}  // namespace varnok::rehearsal
