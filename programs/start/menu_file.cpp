#include "programs/start/menu_file.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "app/services/format.h"
#include "app/services/prepared_text.h"
#include "app/services/text.h"

namespace varnok::start {
namespace {

constexpr unsigned kLongestWait = 3600;  // seconds

/// What stands behind an entry's text.
struct ActionRow {
  std::string_view word;
  Action action;
  bool takesFile;
};
constexpr ActionRow kActions[] = {
    {"RESTORE", Action::Restore, false}, {"PAGE", Action::Page, true},  {"SHELL", Action::Shell, false},
    {"RESTART", Action::Restart, false}, {"EXIT", Action::Exit, false},
};

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  return text;
}

/// The next word of a line, which is left without it.
std::string_view TakeWord(std::string_view& line) {
  line = Trimmed(line);
  const std::string_view word = line.substr(0, line.find_first_of(" \t"));
  line = Trimmed(line.substr(word.size()));
  return word;
}

/// The text in quotes that the line begins with; nothing for another beginning, and for an empty text.
std::optional<std::string> TakeQuoted(std::string_view& line) {
  if (!line.starts_with('"')) return {};
  const std::size_t end = line.find('"', 1);
  if (end == std::string_view::npos || end == 1) return {};
  std::string text(line.substr(1, end - 1));
  line = Trimmed(line.substr(end + 1));
  return text;
}

bool TakeNumber(std::string_view& line, unsigned limit, unsigned& number) {
  const std::string_view word = TakeWord(line);
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  return error == std::errc{} && end == word.data() + word.size() && number <= limit;
}

/// Each of these takes what stands behind the keyword, and gives what is wrong with it, or nothing.
using Fault = std::string;

Fault ReadTitle(std::string_view line, Menu& menu) {
  const auto title = TakeQuoted(line);
  if (!title || !line.empty()) return "TITLE takes a text in double quotes and nothing behind it";
  menu.title = *title;
  return {};
}

Fault ReadEntry(std::string_view line, Menu& menu) {
  const auto title = TakeQuoted(line);
  if (!title || line.empty())
    return "ENTRY takes a text in double quotes and what it does, such as VARNOK /cfg MASTER.CFG";
  if (menu.entries.size() == kMostEntries) return Format("there are more than %u entries", kMostEntries);
  Entry entry{*title, Action::Program, std::string(line)};
  const std::string_view word = TakeWord(line);
  for (const ActionRow& row : kActions) {
    if (!EqualsIgnoreCase(word, row.word)) continue;
    if (row.takesFile == line.empty())
      return Format(row.takesFile ? "%s takes the name of a file" : "%s takes nothing behind it", row.word);
    entry.action = row.action;
    entry.text = line;
  }
  menu.entries.push_back(std::move(entry));
  return {};
}

Fault ReadRun(std::string_view line, Menu& menu) {
  unsigned number = 0;
  unsigned seconds = 0;
  if (!TakeNumber(line, kMostEntries, number) || number == 0 || !EqualsIgnoreCase(TakeWord(line), "AFTER") ||
      !TakeNumber(line, kLongestWait, seconds) || !line.empty())
    return Format("RUN takes an entry's number, AFTER and up to %u seconds: RUN 1 AFTER 10", kLongestWait);
  menu.runs = number;
  menu.seconds = seconds;
  return {};
}

struct Keyword {
  std::string_view word;
  Fault (*read)(std::string_view line, Menu& menu);
};
constexpr Keyword kKeywords[] = {{"TITLE", ReadTitle}, {"ENTRY", ReadEntry}, {"RUN", ReadRun}};

Fault ReadLine(std::string_view line, Menu& menu) {
  const std::string_view word = TakeWord(line);
  for (const Keyword& keyword : kKeywords)
    if (EqualsIgnoreCase(word, keyword.word)) return keyword.read(line, menu);
  return Format("\"%s\" is none of the keywords TITLE, ENTRY and RUN", word);
}

}  // namespace

std::string Problem::Text() const {
  return line != 0 ? Format("%s, line %u: %s", kMenuFile, line, text) : Format("%s: %s", kMenuFile, text);
}

std::vector<Problem> ReadMenu(std::string text, Menu& menu) {
  std::vector<Problem> problems;
  PreparedText lines;
  lines.Assign(std::move(text));
  lines.CutAt("//");
  lines.Trim();
  for (std::size_t i = 0; i < lines.LineCount(); ++i) {
    if (lines.Line(i).empty()) continue;
    if (std::string problem = ReadLine(lines.Line(i), menu); !problem.empty())
      problems.push_back({i + 1, std::move(problem)});
  }
  if (menu.entries.empty()) problems.push_back({0, "there is no ENTRY"});
  if (menu.runs > menu.entries.size()) {
    problems.push_back({0, Format("RUN names entry %u, there are %u", menu.runs, menu.entries.size())});
    menu.runs = 0;
  }
  return problems;
}

std::vector<std::string> ScriptsAmong(std::vector<std::string> names) {
  // Further ones are run from a START.CFG of one's own, or from the shell.
  constexpr std::size_t kMost = 9;
  std::erase_if(names, [](const std::string& name) {
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos || !EqualsIgnoreCase(std::string_view(name).substr(dot), ".cfg") ||
           EqualsIgnoreCase(name, kMenuFile);
  });
  std::sort(names.begin(), names.end());
  const auto master = std::find_if(names.begin(), names.end(), [](const std::string& name) {
    return EqualsIgnoreCase(name, kMasterScript);
  });
  if (master != names.end()) return {*master};
  if (names.size() > kMost) names.resize(kMost);
  return names;
}

std::string UsualMenu(const std::vector<std::string>& scripts) {
  std::string text = "TITLE \"VARNOK\"\n";
  for (const std::string& script : scripts) {
    const bool isPlain = script.find(' ') == std::string::npos;
    text += Format(isPlain ? "ENTRY \"Run the script %s\" VARNOK /cfg %s\n"
                           : "ENTRY \"Run the script %s\" VARNOK /cfg \"%s\"\n",
                   script, script);
  }
  text +=
      "ENTRY \"Show the FRU\" VARNOK /d fru\n"
      "ENTRY \"Show the sensor data records\" VARNOK /d sdr\n"
      "ENTRY \"Show the SMBIOS tables\" VARNOK /d smb\n"
      "ENTRY \"Take a snapshot of the board\" SNAPSHOT\n"
      "ENTRY \"Write a snapshot back to the board\" RESTORE\n"
      "ENTRY \"Read the technician's page\" PAGE README.TXT\n"
      "ENTRY \"Shell\" SHELL\n"
      "ENTRY \"Restart the board\" RESTART\n";
  return text;
}

}  // namespace varnok::start
