#include "app/command_line.h"

#include <gtest/gtest.h>

#include "app/services/text.h"
#include "app/varnok.h"
#include "fru/fru_data.h"
#include "tests/support/test_firmware.h"

namespace varnok {
namespace {

// The lines that are refused are tested through the program.
TEST(CommandLineReader, OneOptionChoosesModeAndFile) {
  struct Case {
    std::vector<std::string> arguments;
    RunMode mode;
    std::string fileName;
  } const cases[] = {
      {{"/D", "Fru"}, RunMode::DisplayFru, ""},
      {{"-d", "SDR"}, RunMode::DisplaySdr, ""},
      {{"/d", "smb"}, RunMode::DisplaySmbios, ""},
      {{"-Fru", "-x"}, RunMode::LoadFruFile, "-x.FRU"},  // a file name may begin with anything
      {{"/sdr", "/y"}, RunMode::LoadSdrFile, "/y.SDR"},
      {{"/?"}, RunMode::ShowHelp, ""},
      {{"/CFG"}, RunMode::RunConfigFile, "MASTER.CFG"},
      {{"-Cfg", "board"}, RunMode::RunConfigFile, "board.CFG"},
      {{"/cfg", "scripts\\"}, RunMode::RunConfigFile, "scripts\\MASTER.CFG"},
      {{"/cfg", ""}, RunMode::RunConfigFile, ".CFG"},
      {{"/d", "fru", "IMBDEVICE", "00"}, RunMode::DisplayFru, ""},
      {{"/d", "fru", "IMBDEVICE", "C20", "L00", "FF", "20"}, RunMode::DisplayFru, ""},
      {{"/d", "fru", "AT24C02", "03", "A0"}, RunMode::DisplayFru, ""},
  };
  testing::TestFirmware machine;
  ASSERT_EQ(FruData::Initialize(), kSuccess);
  for (Case one : cases) {
    SCOPED_TRACE(::testing::PrintToString(one.arguments));
    std::vector<char*> arguments{nullptr};  // the program's own name is not looked at
    for (std::string& argument : one.arguments) arguments.push_back(argument.data());
    CommandLine line;
    EXPECT_TRUE(ReadCommandLine(static_cast<int>(arguments.size()), arguments.data(), line));
    EXPECT_EQ(line.mode, one.mode);
    EXPECT_EQ(Narrow(line.fileName), one.fileName);
  }
}

TEST(DefaultExtension, IsAddedToANameWithoutADot) {
  struct Case {
    const char16_t *name, *completed;
  };
  for (auto [name, completed] : {Case{u"board", u"board.FRU"}, Case{u"dir.v2\\board", u"dir.v2\\board.FRU"},
                                 Case{u"board.bin", u"board.bin"}, Case{u"x.", u"x."}, Case{u".x", u".x"},
                                 Case{u"boards\\", u"boards\\MASTER.CFG"}, Case{u"\\", u"\\MASTER.CFG"},
                                 Case{u"\\board", u"\\board.FRU"}, Case{u"", u".FRU"}}) {
    std::u16string text = name;
    CVarnok::AddDefaultExtension(text, u".FRU");
    EXPECT_EQ(text, completed);
  }
  std::u16string text(254, u'n');
  CVarnok::AddDefaultExtension(text, u".FRU");
  EXPECT_EQ(text, std::u16string(254, u'n') + u".");
}

}  // namespace
}  // namespace varnok
