// varnok-board log: what a traffic log says, in words and in numbers.
#include <cstdio>
#include <fstream>
#include <iostream>

#include "boards/traffic.h"
#include "programs/board/command.h"
#include "programs/board/json.h"
#include "programs/board/output.h"

namespace varnok::companion {
namespace {

constexpr Option kLogOptions[] = {
    {"FILE", "", "The log, as VARNOK_TRAFFIC makes it; - is stdin", Option::Required},
    {"--names", "", "Show every line, in words too"},
    {"--json", "", "Show the numbers as JSON"},
};

Json ToJson(const boards::TrafficTotals& totals) {
  const auto command = [](const auto& row) {
    const auto& [key, sums] = row;
    return Json::Object()
        .Set("name", boards::CommandName(key.first, key.second))
        .Set("netFunction", key.first)
        .Set("command", key.second)
        .Set("requests", sums.requests)
        .Set("microseconds", sums.microseconds)
        .Set("longestMicroseconds", sums.longest);
  };
  const auto count = [](const auto& row) {
    return Json::Object().Set("what", row.first).Set("count", row.second);
  };
  return Json::Object()
      .Set("version", 1)
      .Set("requests", totals.requests)
      .Set("answers", totals.answers)
      .Set("lost", totals.lost)
      .Set("refused", totals.refused)
      .Set("events", totals.events)
      .Set("microseconds", totals.microseconds)
      .Set("commands", ListOf(totals.commands, command))
      .Set("completionCodes", ListOf(totals.codes, count))
      .Set("faults", ListOf(totals.remarks, count));
}

void PrintTotals(const boards::TrafficTotals& totals) {
  PrintLine(std::to_string(totals.requests) + " requests, " + std::to_string(totals.answers) + " answers, " +
            std::to_string(totals.lost) + " lost, " + std::to_string(totals.refused) + " refused, " +
            std::to_string(totals.events) + " events in " + boards::SecondsText(totals.microseconds) + " s");
  PrintLine();
  PrintLine("  requests      answered after s    longest s  command");
  for (const auto& [key, command] : totals.commands) {
    char row[80];
    std::snprintf(row, sizeof row, "%10zu%22s%13s  ", command.requests,
                  boards::SecondsText(command.microseconds).c_str(),
                  boards::SecondsText(command.longest).c_str());
    PrintLine(row + boards::CommandName(key.first, key.second));
  }
  auto print = [](const char* title, const std::map<std::string, std::size_t>& rows) {
    if (!rows.empty()) PrintLine(std::string("\n") + title);
    for (const auto& [what, count] : rows) PrintLine("  " + std::to_string(count) + " times " + what);
  };
  print("Completion codes:", totals.codes);
  print("Faults and events:", totals.remarks);
}

int RunLog(const Arguments& arguments) {
  const std::string name = arguments.Value("FILE");
  std::ifstream file;
  if (name != "-") file.open(name);
  std::istream& log = name == "-" ? std::cin : file;
  if (!log) return Fail(name + ": cannot be read");
  boards::TrafficTotals totals;
  std::string text;
  std::size_t width = 0;
  for (std::size_t number = 1; std::getline(log, text); ++number) {
    const auto line = boards::ParseTrafficLine(text);
    // The last line of a run that was cut short may be cut too.
    if (!line && log.eof()) break;
    if (!line) return Fail(name + ":" + std::to_string(number) + ": is no line of a traffic log");
    totals.Add(*line);
    if (!arguments.Has("--names")) continue;
    // In one column, but for a line that is longer than those around it.
    constexpr std::size_t kWidest = 80;
    width = std::min(std::max(width, text.size() + 2), kWidest);
    const std::string words = InWords(*line);
    PrintLine(words.empty() ? text
                            : text + std::string(width > text.size() ? width - text.size() : 2, ' ') + words);
  }
  if (log.bad() || (!log.eof() && log.fail())) return Fail(name + ": cannot be read");
  if (arguments.Has("--names") && !arguments.Has("--json")) PrintLine();
  if (arguments.Has("--json")) {
    PrintLine(ToJson(totals).Text());
  } else {
    PrintTotals(totals);
  }
  return totals.lost + totals.refused + totals.codes.size() == 0 ? kDone : kFound;
}

}  // namespace

const Command kLog = {"log", "Read a traffic log: totals, time, faults, commands by name", kLogOptions,
                      "  varnok-board log traffic.log --names", RunLog};

}  // namespace varnok::companion
