// The program as a whole, one part of its input hostile at a time, or all at once.
#include <iterator>
#include <vector>

#include "tests/fuzz/program.h"
#include "tests/fuzz/target.h"
#include "tests/support/split.h"

namespace varnok::fuzz {
namespace {

constexpr std::string_view kSeparator = "\x1E";

constexpr const char* kModes[] = {"/d fru",
                                  "/d sdr",
                                  "/d smb",
                                  "/fru server-board.fru",
                                  "/sdr server-board.sdr",
                                  "/cfg MASTER.CFG",
                                  "/cfg RESIZE.CFG",
                                  "/cfg SUPPLY.CFG",
                                  "/cfg IDENTIFY.CFG",
                                  "/cfg FIELDS.CFG",
                                  "/cfg COMPARE.CFG",
                                  "/cfg VALIDATE.CFG",
                                  "/fru eeprom.fru",
                                  "/fru minimal.fru",
                                  "/sdr minimal.sdr",
                                  "/d fru IMBDEVICE C0 00",
                                  "/d fru AT24C02 03 A0",
                                  "/?"};

/// The mode that the input's first byte stands for, which is taken off.
std::string TakeMode(std::string_view& input) {
  const auto first = static_cast<unsigned char>(input.empty() ? 0 : input.front());
  input.remove_prefix(input.empty() ? 0 : 1);
  return kModes[first % std::size(kModes)];
}

}  // namespace

/// Six parts with a byte 1Eh between them, any of which may be missing.
void RunProgram(std::string_view input) {
  std::vector<std::string> parts = testing::Split(input, kSeparator);
  parts.resize(6);
  Run({.commandLine = parts[0],
       .file = parts[1],
       .answers = parts[2],
       .image = parts[3],
       .smbios = parts[4],
       .keys = parts[5]});
}

/// A script, a byte 1Eh, keys.
void RunScript(std::string_view input) {
  std::vector<std::string> parts = testing::Split(input, kSeparator);
  parts.resize(2);
  Run({.commandLine = "/cfg x.cfg", .file = parts[0], .keys = parts[1]});
}

void RunFruFile(std::string_view input) {
  Run({.commandLine = "/fru x", .file = std::string(input)});
}

void RunSdrFile(std::string_view input) {
  Run({.commandLine = "/sdr x", .file = std::string(input)});
}

void RunFruImage(std::string_view input) {
  Run({.commandLine = TakeMode(input), .image = std::string(input)});
}

void RunRepository(std::string_view input) {
  Run({.commandLine = TakeMode(input), .repository = std::string(input)});
}

void RunSmbiosTable(std::string_view input) {
  Run({.commandLine = TakeMode(input), .smbios = std::string(input)});
}

void RunCommandLine(std::string_view input) {
  Run({.commandLine = std::string(input), .file = "DISPLAY \"x\"\n"});
}

void RunAnswers(std::string_view input) {
  Run({.commandLine = TakeMode(input), .answers = std::string(input)});
}

void RunDescription(std::string_view input) {
  Run({.commandLine = TakeMode(input), .description = std::string(input)});
}

}  // namespace varnok::fuzz
