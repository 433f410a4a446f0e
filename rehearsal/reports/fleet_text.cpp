#include <algorithm>

#include "rehearsal/reports/fleet_groups.h"
#include "rehearsal/reports/fleet_report.h"
#include "rehearsal/reports/text_table.h"
#include "rehearsal/reports/words.h"

namespace varnok::rehearsal {
namespace {

class FleetWriter {
 public:
  FleetWriter(const Fleet& fleet, bool isVerbose)
      : fleet_(fleet), isVerbose_(isVerbose), groups_(GroupsOf(fleet)) {}

  std::vector<std::string> Write() {
    Line(Printable(fleet_.package) + " on " + Printable(fleet_.folder) + ": " + Verdict(fleet_, groups_));
    for (const Finding& finding : FindingsOf(fleet_)) {
      Line("  " + std::string(WordOf(finding.weight)) + ": " + finding.title);
      Wrapped("    ", finding.detail);
    }
    Line({});
    Table();
    for (std::size_t i = 0; i < groups_.size(); ++i) Group(i);
    Line({});
    Line(Foot());
    return std::move(lines_);
  }

 private:
  static constexpr std::size_t kWidth = 100;

  void Line(std::string text) { lines_.push_back(std::move(text)); }

  /// Broken behind blanks.
  void Wrapped(const std::string& indent, std::string text) {
    while (WidthOf(text) > kWidth) {
      const std::size_t blank = text.rfind(' ', kWidth);
      if (blank == std::string::npos || blank == 0) break;
      Line(indent + text.substr(0, blank));
      text.erase(0, blank + 1);
    }
    Line(indent + text);
  }

  /// A row for each end; of further ends of a group the first cells are empty.
  void Table() {
    TextTable table({true, true, false, true, true, false});
    table.Row({"group", "boards", "become", "status", "time", "changes"});
    for (std::size_t i = 0; i < groups_.size(); ++i) {
      const FleetGroup& group = groups_[i];
      std::vector<std::string> cells = {std::to_string(i + 1), Grouped(group.boards.size())};
      const std::vector<FleetEnd>& ends = fleet_.boards[group.boards.front()].ends;
      if (ends.empty()) table.Row({cells[0], cells[1], std::string(WordsOf(group.fate).word), "", "", ""});
      for (const FleetEnd& end : ends) {
        table.Row({cells[0], cells[1], std::string(WordsOf(end.fate).word), std::to_string(end.exitStatus),
                   TimeWords(LongestRun(fleet_, group, end)), Shortened(ChangesWords(end), 70)});
        cells = {"", ""};
      }
    }
    table.WriteTo(lines_);
  }

  void Group(std::size_t number) {
    const FleetGroup& group = groups_[number];
    const FleetBoard& first = fleet_.boards[group.boards.front()];
    Line({});
    Line("Group " + std::to_string(number + 1) + ": " + Count(group.boards.size(), "board") + " " +
         std::string(WordsOf(group.fate).word));
    Wrapped("  ", NamesOf(fleet_, group.boards));
    if (!first.error.empty()) Wrapped("    ", Printable(first.error));
    for (const FleetEnd& end : first.ends) End(end, first.ends.size() > 1);
    for (const DeviceResults& device : group.devices) Device(group, device);
  }

  void End(const FleetEnd& end, bool isOneOfMany) {
    const std::string head = isOneOfMany ? std::string(WordsOf(end.fate).word) + ": " : "";
    Wrapped("    ", head + EndWords(end));
    for (const std::string& reason : end.reasons) Wrapped("      ", Printable(reason));
    if (fleet_.isAllRoads) Wrapped("      ", RoadsWords(end));
    if (!isVerbose_) return;
    for (const boards::Difference& difference : end.first.differences)
      Line("      " + Printable(difference.part) +
           (difference.group.empty() ? "" : ", " + Printable(difference.group)) + ": " +
           DifferenceWords(difference));
  }

  void Device(const FleetGroup& group, const DeviceResults& device) {
    const std::size_t results = device.alike.size();
    if (group.boards.size() == 1) return;
    Line("    " + device.device + ": " + ResultsWords(group, device));
    if (results == 1) return;
    for (std::size_t i = 0; i < results && results < group.boards.size(); ++i)
      Wrapped("      ", NamesOf(fleet_, device.alike[i]));
    constexpr std::size_t kMostFields = 12;
    std::string fields;
    for (std::size_t i = 0; i < device.fields.size() && (isVerbose_ || i < kMostFields); ++i)
      fields += (i == 0 ? "" : "; ") + Printable(device.fields[i]);
    if (device.fields.size() > kMostFields && !isVerbose_)
      fields += "; " + Grouped(device.fields.size() - kMostFields) + " more";
    if (!fields.empty()) Wrapped("      ", "they differ in: " + fields);
  }

  std::string Foot() const {
    return Count(fleet_.runs, "run") + " on " + Count(fleet_.cores, "core") + " in " +
           TimeWords(static_cast<std::uint64_t>(fleet_.seconds * 1e6)) + "; " +
           std::string(RoadsChoiceWords(fleet_));
  }

  const Fleet& fleet_;
  bool isVerbose_;
  std::vector<FleetGroup> groups_;
  std::vector<std::string> lines_;
};

}  // namespace

std::vector<std::string> FleetText(const Fleet& fleet, bool isVerbose) {
  return FleetWriter(fleet, isVerbose).Write();
}

}  // namespace varnok::rehearsal
