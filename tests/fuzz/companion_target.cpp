// The commands of varnok-board over a file that holds anything.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "programs/board/command.h"
#include "sim/board.h"
#include "tests/fuzz/target.h"
#include "tests/support/host_files.h"

namespace varnok::fuzz {
namespace {

namespace fs = std::filesystem;
using companion::Command;

struct Line {
  const Command& command;
  std::vector<std::pair<const char*, const char*>> options;
};

/// "input" is the file, "board" the default board, "input-board" one whose board.json it is.
const Line kLines[] = {
    {companion::kShow, {{"BOARD", "input"}, {"--as", "fru"}, {"--details", ""}, {"--hex", ""}}},
    {companion::kShow, {{"BOARD", "input"}, {"--as", "sdr"}, {"--details", ""}}},
    {companion::kShow, {{"BOARD", "input"}, {"--as", "smbios"}, {"--json", ""}}},
    {companion::kShow, {{"BOARD", "input"}, {"--json", ""}}},
    {companion::kShow, {{"BOARD", "input-board"}, {"--json", ""}}},
    {companion::kDiff, {{"BEFORE", "input"}, {"AFTER", "board/board.bin"}, {"--as", "fru"}}},
    {companion::kDiff, {{"BEFORE", "board/sdr.bin"}, {"AFTER", "input"}, {"--as", "sdr"}}},
    {companion::kDiff, {{"BEFORE", "board/smbios.bin"}, {"AFTER", "input"}, {"--as", "smbios"}}},
    {companion::kDiff, {{"BEFORE", "board"}, {"AFTER", "input-board"}}},
    {companion::kFruText, {{"IMAGE", "input"}}},
    {companion::kSdrText, {{"DUMP", "input"}}},
    {companion::kCheck, {{"FILES", "input.fru"}, {"--board", "board"}}},
    {companion::kCheck, {{"FILES", "input.sdr"}, {"--board", "board"}}},
    {companion::kCheck, {{"FILES", "input.cfg"}, {"--board", "board"}}},
    {companion::kCheck, {{"FILES", "input.cfg"}, {"--format", "sarif"}}},
    {companion::kImport, {{"FOLDER", "made"}, {"--fru", "0=input"}}},
    {companion::kImport, {{"FOLDER", "made"}, {"--sdr", "input"}}},
    {companion::kImport, {{"FOLDER", "made"}, {"--smbios", "input"}, {"--identity", "input"}}},
    {companion::kImport, {{"FOLDER", "made"}, {"--identity", "input"}}},
    {companion::kLog, {{"FILE", "input"}, {"--names", ""}}},
    {companion::kLog, {{"FILE", "input"}, {"--json", ""}}},
};

struct Desk {
  Desk() {
    fs::current_path(folder.Path());
    std::string error;
    if (!sim::Board::CreateDefault("board", error)) std::abort();
    fs::copy("board", "input-board");
  }
  testing::TemporaryFolder folder;
};

}  // namespace

/// A byte that stands for a command line, and the file.
void RunCompanion(std::string_view input) {
  static Desk desk;
  const auto first = static_cast<unsigned char>(input.empty() ? 0 : input.front());
  input.remove_prefix(input.empty() ? 0 : 1);
  const Line& line = kLines[first % std::size(kLines)];
  for (const char* name : {"input", "input.fru", "input.sdr", "input.cfg", "input-board/board.json"})
    std::ofstream(name, std::ios::binary) << input;
  fs::remove_all("made");
  companion::Arguments arguments;
  for (const auto& [name, value] : line.options) arguments.Add(name, value);
  line.command.run(arguments);
}

}  // namespace varnok::fuzz
