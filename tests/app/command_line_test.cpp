#include "app/command_line.h"

#include <gtest/gtest.h>

#include "app/services/text.h"
#include "fru/fru_data.h"
#include "tests/support/test_firmware.h"

namespace varnok {
namespace {

class CommandLineReader : public ::testing::Test {
 protected:
  CommandLineReader() { EXPECT_EQ(FruData::Initialize(), kSuccess); }
  ~CommandLineReader() override { FruData::Reset(); }

  /// The mode and the file name; NoMode for an invalid line.
  static std::pair<RunMode, std::string> Read(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "VARNOK");
    std::vector<char*> vector;
    for (std::string& argument : arguments) vector.push_back(argument.data());
    vector.push_back(nullptr);
    CommandLine line;
    if (!ReadCommandLine(static_cast<int>(arguments.size()), vector.data(), line))
      return {RunMode::NoMode, ""};
    return {line.mode, Narrow(line.fileName)};
  }

  testing::TestFirmware machine;
};

using Result = std::pair<RunMode, std::string>;

TEST_F(CommandLineReader, OneOptionChoosesTheMode) {
  EXPECT_EQ(Read({"/D", "Fru"}), Result(RunMode::DisplayFru, ""));
  EXPECT_EQ(Read({"-d", "SDR"}), Result(RunMode::DisplaySdr, ""));
  EXPECT_EQ(Read({"/d", "smb"}), Result(RunMode::DisplaySmbios, ""));
  EXPECT_EQ(Read({"-Fru", "-x"}), Result(RunMode::LoadFruFile, "-x.FRU"))
      << "a file name may begin with anything";
  EXPECT_EQ(Read({"/sdr", "/y"}), Result(RunMode::LoadSdrFile, "/y.SDR"));
  EXPECT_EQ(Read({"/?"}), Result(RunMode::ShowHelp, ""));
}

TEST_F(CommandLineReader, ScriptNameIsOptional) {
  EXPECT_EQ(Read({"/CFG"}), Result(RunMode::RunConfigFile, "MASTER.CFG"));
  EXPECT_EQ(Read({"-Cfg", "board"}), Result(RunMode::RunConfigFile, "board.CFG"));
  EXPECT_EQ(Read({"/cfg", "scripts\\"}), Result(RunMode::RunConfigFile, "scripts\\MASTER.CFG"));
  EXPECT_EQ(Read({"/cfg", ""}), Result(RunMode::RunConfigFile, ".CFG"));
  EXPECT_EQ(Read({"/cfg", "-x"}).first, RunMode::NoMode) << "MASTER.CFG, and -x is left over";
}

TEST_F(CommandLineReader, FruAddressTakesTheRestOfTheLine) {
  EXPECT_EQ(Read({"/d", "fru", "IMBDEVICE", "00"}).first, RunMode::DisplayFru);
  EXPECT_EQ(Read({"/d", "fru", "IMBDEVICE", "C20", "L00", "FF", "20"}).first, RunMode::DisplayFru);
  EXPECT_EQ(Read({"/d", "fru", "AT24C02", "03", "A0"}).first, RunMode::DisplayFru);
  EXPECT_EQ(Read({"/d", "fru", "imbdevice", "00"}).first, RunMode::NoMode);
  EXPECT_EQ(Read({"/d", "fru", "IMBDEVICE", "00", "/?"}).first, RunMode::NoMode) << "a switch is left over";
}

TEST(DefaultExtension, IsAddedToANameWithoutADot) {
  struct Case {
    const char16_t* name;
    const char16_t* completed;
  };
  for (auto [name, completed] :
       {Case{u"board", u"board.FRU"}, Case{u"dir.v2\\board", u"dir.v2\\board.FRU"},
        Case{u"board.bin", u"board.bin"}, Case{u"x.", u"x."}, Case{u".x", u".x"},
        Case{u"boards\\", u"boards\\MASTER.CFG"}, Case{u"\\", u"\\MASTER.CFG"},
        Case{u"\\board", u"\\board.FRU"}, Case{u"a.b\\c", u"a.b\\c.FRU"}, Case{u"", u".FRU"}}) {
    std::u16string text = name;
    AddDefaultExtension(text, u".FRU");
    EXPECT_EQ(text, completed);
  }
  std::u16string text(254, u'n');
  AddDefaultExtension(text, u".FRU");
  EXPECT_EQ(text, std::u16string(254, u'n') + u".");
}

}  // namespace
}  // namespace varnok
