#include "cfg/cfg_command.h"
#include "cfg/flow_commands.h"
#include "tests/cfg/script_test.h"

namespace varnok {
namespace {

using ::testing::ElementsAre;
using Command = testing::ScriptTest;

std::vector<std::string> Tokens(std::string_view text) {
  std::vector<std::string> tokens;
  std::string token;
  while (CCfgCommand::GetNextInput(text, token)) tokens.push_back(token);
  return tokens;
}

TEST_F(Command, ArgumentsAreSplitAtBlanksAndQuotes) {
  EXPECT_THAT(Tokens("  a\tb\"c~ \"d e\" \"\"f"), ElementsAre("a", "b\"c~", "d e", "", "f"));
  for (const char* text : {"a \"b", "a \xE9", "a //b"}) EXPECT_THAT(Tokens(text), ElementsAre("a"));
  EXPECT_EQ(machine.TraceLines().back(), "CCfgCommand::GetNextInput - Buffer parser error(2)");
}

TEST_F(Command, CharacterIsFoundByItsOccurrence) {
  EXPECT_EQ(CCfgCommand::FindCharacter("a,b,c", ',', 2, 5), 3);
  EXPECT_EQ(CCfgCommand::FindCharacter("a,b,c", ',', 2, 3), -1);
  EXPECT_EQ(CCfgCommand::FindCharacter(std::string_view("a\0,", 3), ',', 1, 3), -1);
}

TEST_F(Command, DisplayedTextIsBounded) {
  CCfgCommand::Display("%hs", std::string(600, 'x'));
  CCfgCommand::DisplayWide("%ls", std::u16string(2000, u'y'));
  EXPECT_EQ(machine.console, std::string(511, 'x') + std::string(1023, 'y'));
  CCfgCommand::Callbacks().display = nullptr;
  EXPECT_FALSE(CCfgCommand::Display("a"));
  EXPECT_TRUE(CCfgCommand::DisplayWide("a"));
}

TEST_F(Command, InputIsEditedEchoedAndBounded) {
  std::u16string text;
  machine.keys = u"ab\b\1\177cdef\r\b\n";
  ASSERT_TRUE(CCfgCommand::GetInputString(text, 5, true));
  EXPECT_EQ(text, u"acde");
  EXPECT_EQ(machine.console, "ab\b \bcde");
  ASSERT_TRUE(CCfgCommand::GetInputString(text, 5, true));
  EXPECT_EQ(text, u"");
  EXPECT_FALSE(CCfgCommand::GetInputString(text, 0, true));
  // Without echo it is read and not kept.
  machine.console.clear();
  machine.keys = u"abc\r";
  EXPECT_TRUE(CCfgCommand::GetInputString(text, 16, false));
  EXPECT_EQ(Narrow(text) + machine.console, "");
  CCfgCommand::Callbacks().inputChar = nullptr;
  EXPECT_FALSE(CCfgCommand::GetInputString(text, 16, true));
}

TEST_F(Command, ValueIsALineOfAFileAndTwoShorterThanItsBuffer) {
  machine.files["V.TXT"] = "first\r\nsecond\n\n" + std::string(62, 'x') + "\n" + std::string(63, 'y') + "\n" +
                           std::string(260, 'z') + "\nlast";
  auto read = [](const char* name, int line) {
    std::string value = "kept";
    return CCfgCommand::GetStringFromFile(name, value, 64, line) ? value : "-" + value;
  };
  EXPECT_EQ(read("V.TXT", 2), "second");
  EXPECT_EQ(read("V.TXT", 4), std::string(62, 'x'));
  EXPECT_EQ(read("V.TXT", 5), "-kept");
  EXPECT_EQ(read("V.TXT", 7), "zzzz") << "a line of more than 256 characters counts twice";
  EXPECT_EQ(read("V.TXT", 8), "last");
  EXPECT_EQ(read("V.TXT", 9), "-");
  EXPECT_EQ(Message(), "Unable to read the FRU field value from the file 'V.TXT' at line number: 9");
  EngineMessage().Reset();
  EXPECT_EQ(read("MISSING", 1), "-kept");
  EXPECT_EQ(Message(), "");
}

TEST_F(Command, VariableOfTheEnvironmentIsCutToItsBuffer) {
  machine.environment["SN"] = u"12345";
  std::string value;
  EXPECT_FALSE(CCfgCommand::GetEnvVariable("NONE", value, 3));
  EXPECT_TRUE(CCfgCommand::GetEnvVariable("SN", value, 3));
  EXPECT_EQ(value, "123");
  EXPECT_TRUE(CCfgCommand::GetEnvVariable(std::string(1023, 'N'), value, 64));
  EXPECT_EQ(value, "123") << "kept";
}

TEST_F(Command, FilesAreInTheScriptsDirectory) {
  machine.files["fs0:\\kit/T.CFG"] = "SET a\n";
  CCfgSet command;
  command.SetParser(&parser);
  std::u16string path;
  EXPECT_FALSE(command.GetFile(u"A.FRU", path, 256)) << "no script, no directory";
  ASSERT_EQ(parser.ParseFile(u"fs0:\\kit/T.CFG", nullptr), kSuccess);
  EXPECT_EQ(parser.ConfigNames()->name, u"T.CFG");
  ASSERT_TRUE(command.GetFile(u"A.FRU", path, 15));
  EXPECT_EQ(path, u"fs0:\\kit/A.FRU");
  ASSERT_TRUE(command.GetFile(u"fs1:A.FRU", path, 256));
  EXPECT_EQ(path, u"fs1:A.FRU");
  EXPECT_FALSE(command.GetFile(u"A.FRU", path, 14));
  EXPECT_EQ(Message(), "Internal error - file path name to large for buffer.");
}

TEST_F(Command, FactoryNeedsAParserAndAFile) {
  machine.files["S.CFG"] = "SET a";
  CFileCfg file("S.CFG");
  PoolPtr<CCfgCommand> command;
  EXPECT_EQ(CCfgCommand::CreateCommand(&file, command, nullptr), 0xC00000000009001C);
  EXPECT_THAT(Message(), ::testing::StartsWith("Unrecoverable interanl error in 'cfgfile.dll' - command "));
  EXPECT_EQ(CCfgCommand::CreateCommand(nullptr, command, &parser), kBadLine);
  EXPECT_EQ(Message(), "Internal file error in 'cfgfile.dll'.");
  EXPECT_EQ(CCfgCommand::CreateCommand(&file, command, &parser), kSuccess);
  EXPECT_EQ(command->Type(), CommandType::Set);
  EXPECT_EQ(CCfgCommand::CreateCommand(&file, command, &parser), ~std::uint64_t{0});
}

TEST_F(Command, LinesOfASmallerControllerArePassedOver) {
  EXPECT_EQ(Run("PEFNAME any \"thing\nmbmc_pgm x\nMBMC_RMW\nTableName " + std::string(400, 'x')), kSuccess);
  EXPECT_EQ(parser.Commands().size(), 4u);
  EXPECT_EQ(parser.Commands().front()->GetDisplayName(), nullptr);
  EXPECT_STREQ(CommandName(CommandType::BmcRefresh), "INVLALID_COMMAND_TYPE");
}

TEST_F(Command, LineIsRefused) {
  ExpectRefused("SET a\n\nNOSUCH x", 3, kUnknown, "NOSUCH is not a valid command.");
  ExpectRefused("MENUPROMPT", 1, kUnknown, "MENUPROMPT is not a valid command.");
  ExpectRefused("DISPLAY " + std::string(292, 'x'), 1, kBadLine,
                "Too many characters on the line: 300.  Must be less than 255.");
  for (const char* line : {"DISPLAY \"a", "DISPLAY \"a // b\""})
    ExpectRefused(line, 1, kBadLine, "Invalid number of quotes in line.");
  // Commands that read nothing of their own report it in other words.
  ExpectRefused("ENDIF \"", 1, kBadLine, "Reading from file failed.");
  ExpectRefused("SET a\n" + std::string(300, 'K'), 2, kBadLine, "");
  EXPECT_EQ(Load("DISPLAY \"" + std::string(252, 'x') + "\""), kSuccess)
      << "255 characters behind the keyword";
}

TEST_F(Command, TooFewOrTooManyParametersAreRefused) {
  struct {
    const char* command;
    Status missing;      ///< status without a parameter; kSuccess where none is asked for
    const char* most;    ///< as many parameters as are taken
    Status extra;        ///< status with one more; kSuccess where there is no limit
    const char* before;  ///< the line in front
  } const cases[] = {
      {"SET", kBadLine, " a", kTooMany, "BOOT"},
      {"CLEAR", kBadLine, " a", kTooMany, "BOOT"},
      {"IFSET", kBadLine, "", kSuccess, "BOOT"},
      {"ELSE", kSuccess, "", kBadLine, "IFSET a"},
      {"ERRORLEVEL", kSuccess, " 1", kTooMany, "BOOT"},
      {"CONFIGURATION", kBadLine, " a b c", kTooMany, "BOOT"},
      {"BOOT", kSuccess, "", kTooMany, "BOOT"},
      {"DISPLAY", kBadLine, " a", kTooMany, "BOOT"},
      {"PROMPT", kBadLine, " a", kBadLine, "BOOT"},
      {"MENUTITLE", kBadLine, " a", kTooMany, "BOOT"},
      {"FOUND", kBadLine, " a b", kTooMany, "PROBE HWID a"},
      {"FRUNAME", kBadLine, " a", kTooMany, "BOOT"},
      {"FRUAREA", kBadLine, " Board COMPARE", kTooMany, "FRUNAME a"},
      {"FRUFIELD", kBadLine, "", kSuccess, "FRUNAME a"},
      {"SDRNAME", kBadLine, " a.sdr last COMPARE First", kTooMany, "BOOT"},
      {"CLEARSDR", kSuccess, "", kTooMany, "BOOT"},
  };
  for (const auto& each : cases) {
    std::string line = std::string(each.before) + "\n" + each.command;
    if (each.missing != kSuccess) ExpectRefused(line, 2, each.missing, Missing(each.command));
    if (each.extra != kSuccess)
      ExpectRefused(line + each.most + " now  \"x\"", 2, each.extra, Extra(each.command, "now  \"x\""));
  }
}

}  // namespace
}  // namespace varnok
