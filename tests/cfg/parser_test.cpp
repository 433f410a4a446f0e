#include "tests/cfg/script_test.h"

namespace varnok {
namespace {

using Parser = testing::ScriptTest;

TEST_F(Parser, OnlyScriptsByTheirExtension) {
  for (const char16_t* name : {u"board.cfg", u"BOARD.CFG"}) {
    machine.files[".\\" + Narrow(name)] = "SET a";
    EXPECT_EQ(parser.ParseFile(name, nullptr), kSuccess);
  }
  for (const char16_t* name : {u"board.cfg.bak", u"board", u"v2.cfg\\board"}) {
    EXPECT_EQ(parser.ParseFile(name, nullptr), 0xC000000000090008);
    EXPECT_EQ(Message(), Narrow(name) + " is an invalid file type, the extension must be '.CFG'.");
  }
  EXPECT_EQ(parser.ParseFile(u"board.cfg", u"other.txt"), 0xC000000000090008)
      << "a name given is checked instead";
}

TEST_F(Parser, FileMustBeNamedThereAndNotTooLong) {
  constexpr Status kNotFound = 0xC000000000090007;
  EXPECT_EQ(parser.ParseFile(nullptr, nullptr), kNotFound);
  EXPECT_EQ(Message(), "Configuration file name is null.");
  EXPECT_EQ(parser.ParseFile(u"fs0:\\NONE.CFG", nullptr), kNotFound);
  EXPECT_EQ(Message(), "The file 'fs0:\\NONE.CFG' was not found.");
  std::u16string name = std::u16string(1018, u'x') + u".CFG";
  machine.files[".\\" + Narrow(name)] = "";
  EXPECT_EQ(parser.ParseFile(name.c_str(), nullptr), kNotFound) << "1024 characters with the directory";
  machine.files[".\\" + Narrow(name.substr(1))] = "";
  EXPECT_EQ(parser.ParseFile(name.c_str() + 1, nullptr), kSuccess);
}

TEST_F(Parser, LineOfAFailureIsNamedAndTheMessageIsBounded) {
  EXPECT_EQ(Load("FOO%d%s"), cfg_status::kUnknownCommand);
  for (const char* line : {"CCfgCommand::CreateCommand - FOO%d%s is not a valid command",
                           "CCfgParser::ReadFile - Error in reading the configuration file "})
    EXPECT_THAT(machine.TraceLines(), ::testing::Contains(line));
  Discard(Load(std::string(250, 'x') + "\n"));
  EXPECT_LT(Message().size(), 512u);
  CCfgParser::SetLastError("%ls", std::u16string(600, u'y'));
  EXPECT_EQ(Message(), std::string(511, 'y'));
}

TEST_F(Parser, LoadingAgainForgetsTheScript) {
  ASSERT_EQ(Run("SET a\nCONFIGURATION n first\nBMC_REFRESH"), kSuccess);
  ASSERT_EQ(Load("CONFIGURATION n second"), kSuccess);
  EXPECT_FALSE(parser.IsTagSet("a"));
  EXPECT_EQ(parser.TargetPlatformInfo(), u"second");
  EXPECT_EQ(parser.Execute(), 0xC000000000090011) << "not processed";
  parser.ClearConfigNameList();
  EXPECT_EQ(parser.ConfigNames(), nullptr);
}

TEST_F(Parser, TagsKeepTheirOrder) {
  for (const char* tag : {"One", "two", "THREE", "TWO"}) parser.SetTag(tag);
  parser.SetTag({});
  EXPECT_EQ(parser.FindTag("three"), 2);
  parser.ClearTag("ONE");
  std::string name;
  EXPECT_EQ(parser.GetTag(0, name), kSuccess);
  EXPECT_EQ(name, "two");
  EXPECT_EQ(parser.FindTag("three") + parser.FindTag("one"), 1 - 1);
  for (std::int64_t index : {-1, 2}) {
    EXPECT_EQ(parser.GetTag(index, name), 0xC000000000090012);
    EXPECT_EQ(Message(), "Unrecoverable internal error: Get tag selector out of range.");
  }
  parser.SetTag("One");
  EXPECT_EQ(parser.FindTag("one"), 2) << "set again, it is the last";
}

TEST_F(Parser, LinesReadAreEchoedIntoTheOutputFile) {
  parser.SetEchoFile("CFG.TMP");
  ASSERT_EQ(Load("  SET a // note\n\nPEFNAME x\nPROMPT q\nYES y\nBOOT"), kSuccess);
  EXPECT_EQ(machine.TextOf("CFG.TMP"), "SET a\nPEFNAME x\nPROMPT q\nBOOT\n");
  machine.fileFailures["CFG.TMP"] = uefi_status::kWriteProtected;
  EXPECT_EQ(Load("SET a"), 0xC000000000090007);
}

}  // namespace
}  // namespace varnok
