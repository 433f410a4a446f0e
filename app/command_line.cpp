#include "app/command_line.h"

#include <array>
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

bool IsOption(std::string_view argument, std::string_view name) {
  return StartsLikeOption(argument) && EqualsIgnoreCase(argument.substr(1), name);
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
    if (IsOption(option, "?") || IsOption(option, "h")) {
      commandLine_.mode = RunMode::ShowHelp;
      return true;
    }
    if (IsOption(option, "cfg")) return ReadScriptName();
    if (arguments_.empty()) return false;
    if (IsOption(option, "d")) return ReadDisplay();
    if (IsOption(option, "fru")) return ReadFileName(RunMode::LoadFruFile, u".FRU");
    if (IsOption(option, "sdr")) return ReadFileName(RunMode::LoadSdrFile, u".SDR");
    return false;
  }

  bool ReadFileName(RunMode mode, std::u16string_view extension) {
    commandLine_.mode = mode;
    commandLine_.fileName = Widen(Take());
    // A cut name would name another file.
    if (commandLine_.fileName.size() > kFileNameLength) return false;
    CVarnok::AddDefaultExtension(commandLine_.fileName, extension);
    return true;
  }

  bool ReadScriptName() {
    if (!arguments_.empty() && !StartsLikeOption(arguments_.front()))
      return ReadFileName(RunMode::RunConfigFile, u".CFG");
    commandLine_.mode = RunMode::RunConfigFile;
    commandLine_.fileName = kDefaultScript;
    return true;
  }

  bool ReadDisplay() {
    struct Area {
      std::string_view name;
      RunMode mode;
    };
    static constexpr std::array<Area, 3> kAreas{
        {{"sdr", RunMode::DisplaySdr}, {"smb", RunMode::DisplaySmbios}, {"fru", RunMode::DisplayFru}}};
    std::string_view name = Take();
    for (const Area& area : kAreas)
      if (EqualsIgnoreCase(name, area.name)) commandLine_.mode = area.mode;
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
