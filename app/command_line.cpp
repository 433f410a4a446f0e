#include "app/command_line.h"

#include <span>

#include "app/services/format.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "app/varnok.h"
#include "fru/fru_data.h"

namespace varnok {
namespace {

constexpr std::u16string_view kDefaultScript = u"MASTER.CFG";

bool StartsLikeOption(std::string_view argument) {
  return !argument.empty() && (argument.front() == '/' || argument.front() == '-');
}

const ModeRow* FindRow(std::span<const ModeRow> rows, std::string_view name) {
  for (const ModeRow& row : rows)
    if (EqualsIgnoreCase(name, row.name)) return &row;
  return nullptr;
}

/// Walks the arguments; each option takes what belongs to it.
class ArgumentReader {
 public:
  ArgumentReader(std::span<char*> arguments, CommandLine& commandLine)
      : arguments_(arguments), commandLine_(commandLine) {}

  /// One option with its arguments must be the whole line.
  bool Read() { return ReadOption() && arguments_.empty(); }

 private:
  std::string_view Take() {
    std::string_view argument = arguments_.front();
    arguments_ = arguments_.subspan(1);
    return argument;
  }

  bool ReadOption() {
    std::string_view option = Take();
    const ModeRow* row = StartsLikeOption(option) ? FindRow(kModeOptions, option.substr(1)) : nullptr;
    if (row == nullptr) return false;
    if (row->mode == RunMode::RunConfigFile) return ReadScriptName(*row);
    if (row->mode == RunMode::ShowHelp) {
      commandLine_.mode = row->mode;
      return true;
    }
    if (arguments_.empty()) return false;
    return row->mode == RunMode::DisplayFru ? ReadDisplay() : ReadFileName(*row);
  }

  bool ReadFileName(const ModeRow& row) {
    commandLine_.mode = row.mode;
    commandLine_.fileName = Widen(Take());
    // A cut name would name another file.
    if (commandLine_.fileName.size() > kFileNameLength) return false;
    CVarnok::AddDefaultExtension(commandLine_.fileName, row.extension);
    return true;
  }

  bool ReadScriptName(const ModeRow& row) {
    if (!arguments_.empty() && !StartsLikeOption(arguments_.front())) return ReadFileName(row);
    commandLine_.mode = row.mode;
    commandLine_.fileName = kDefaultScript;
    return true;
  }

  bool ReadDisplay() {
    if (const ModeRow* area = FindRow(kDisplayAreas, Take())) commandLine_.mode = area->mode;
    if (commandLine_.mode == RunMode::DisplayFru) return ReadFruAddress();
    return commandLine_.mode != RunMode::NoMode;
  }

  bool ReadFruAddress() {
    if (arguments_.empty() || StartsLikeOption(arguments_.front())) return true;
    int consumed = 0;
    if (FruData::ParseFruAddress(static_cast<int>(arguments_.size()), arguments_.data(), consumed) !=
        kSuccess)
      return false;
    arguments_ = arguments_.subspan(static_cast<std::size_t>(consumed));
    return true;
  }

  std::span<char*> arguments_;
  CommandLine& commandLine_;
};

}  // namespace

bool ReadCommandLine(int argc, char* argv[], CommandLine& commandLine) {
  commandLine = {};
  if (argc < 2) return false;
  return ArgumentReader({argv + 1, static_cast<std::size_t>(argc - 1)}, commandLine).Read();
}

void CVarnok::AddDefaultExtension(std::u16string& fileName, std::u16string_view extension) {
  TraceScope scope("CVarnok::AddDefaultExtension");
  if (!fileName.empty() && fileName.back() == u'\\') {
    // Kept: whatever extension was asked for; one rule for the three file options.
    fileName = FormatUpTo(kFileNameLength, "%s%s", fileName, kDefaultScript);
    return;
  }
  std::size_t found = fileName.find_last_of(u".\\");
  // A backslash in front of everything is not looked at, a dot there is.
  bool hasDot = found != std::u16string::npos && fileName[found] == u'.';
  if (!hasDot) fileName = FormatUpTo(kFileNameLength, "%s%s", fileName, extension);
}

}  // namespace varnok
