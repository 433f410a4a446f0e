#include "rehearsal/script.h"

#include <algorithm>
#include <limits>

#include "app/command_line.h"
#include "app/services/text.h"
#include "boards/check/file_checks.h"
#include "boards/check/file_text.h"
#include "boards/desk_machine.h"
#include "boards/folder.h"
#include "cfg/cfg_parser.h"
#include "firmware/host/argument_list.h"
#include "firmware/host/file_system.h"
#include "firmware/host/utf8.h"

namespace varnok::rehearsal {
namespace {

using boards::Capitals;

constexpr std::size_t kEnd = std::numeric_limits<std::size_t>::max();

/// The name of the script as the program would open it; empty when the arguments run none.
std::u16string ScriptName(const std::vector<std::string>& arguments) {
  host::ArgumentList words(host::Latin1FromUtf8(arguments));
  CommandLine line;
  const bool isValid = words.Count() > 1 && ReadCommandLine(words.Count(), words.Pointers(), line);
  return isValid && line.mode == RunMode::RunConfigFile ? line.fileName : std::u16string();
}

void ReadLines(const std::string& file, std::vector<ScriptLine>& lines) {
  Bytes bytes;
  std::string ignored;
  if (!boards::ReadFile(file, bytes, ignored)) return;
  std::string line;
  const auto end = [&] {
    if (line.ends_with('\r')) line.pop_back();
    lines.push_back({.text = host::Utf8FromLatin1(line)});
    line.clear();
  };
  for (std::uint8_t byte : bytes) {
    if (byte == '\n')
      end();
    else
      line += static_cast<char>(byte);
  }
  if (!line.empty()) end();
}

class Reader : public ScriptVisitor {
 public:
  Reader(Script& script, std::u16string directory) : script_(script), directory_(std::move(directory)) {}

  void Command(const CCfgCommand& command) override { Mark(command.Line()); }

  void Fact(ScriptFact kind, std::string_view text, std::uint32_t line) override {
    switch (kind) {
      case ScriptFact::TestsTag:
        Test(text, line + 1);
        break;
      case ScriptFact::SetsTag:
      case ScriptFact::SetsTagOnYes:
      case ScriptFact::SetsTagOnNo:
        script_.tags.insert(Capitals(text));
        Mark(line);
        break;
      case ScriptFact::Item:
        Mark(line);
        break;
      case ScriptFact::SdrFile:
        TakeSdrFile(text);
        break;
      default:
        break;
    }
  }

 private:
  void Mark(std::uint32_t line) {
    if (line < script_.lines.size()) script_.lines[line].isCommand = true;
  }

  void Test(std::string_view tag, std::size_t line) {
    script_.tags.insert(Capitals(tag));
    std::size_t& last = script_.lastTests[Capitals(tag)];
    last = std::max(last, line);
  }

  /// Its records are chosen when all commands have run.
  void TakeSdrFile(std::string_view name) {
    const bool isWhole = name.find(':') != std::string_view::npos;
    Bytes bytes;
    std::string ignored;
    if (!boards::ReadFile(host::ResolvePath((isWhole ? u"" : directory_) + Widen(name)), bytes, ignored))
      return;
    for (const std::string& tag : boards::TagsOfSdrFile({bytes.begin(), bytes.end()}))
      script_.lastTests[Capitals(tag)] = kEnd;
  }

  Script& script_;
  std::u16string directory_;
};

}  // namespace

bool Script::IsTagLive(const std::string& tag, std::size_t line) const {
  const auto test = lastTests.find(tag);
  return test != lastTests.end() && test->second > line;
}

Script ReadScript(const std::vector<std::string>& arguments) {
  const boards::DeskMachine desk;
  Script script;
  const std::u16string name = ScriptName(arguments);
  if (name.empty()) return script;
  script.file = host::ResolvePath(name);
  ReadLines(script.file, script.lines);
  CCfgParser parser;
  if (parser.ParseFile(name.c_str(), nullptr) != kSuccess) return script;
  Reader reader(script, std::u16string(parser.Directory()));
  WalkScript(parser.Commands(), reader);
  return script;
}

}  // namespace varnok::rehearsal
