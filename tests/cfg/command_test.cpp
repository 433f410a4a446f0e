#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cfg/cfg_command.h"
#include "cfg/flow_commands.h"
#include "tests/cfg/script_test.h"

namespace varnok {
namespace {

using Command = testing::ScriptTest;

std::vector<std::string> Tokens(std::string_view text) {
  std::vector<std::string> tokens;
  std::string token;
  while (CCfgCommand::GetNextInput(text, token)) tokens.push_back(token);
  return tokens;
}

TEST_F(Command, NamesFollowTheTypeCodes) {
  EXPECT_STREQ(CommandName(CommandType::Boot), "BOOT");
  EXPECT_STREQ(CommandName(CommandType::FruName), "FRUNAME");
  EXPECT_STREQ(CommandName(CommandType::SdrName), "SDRNAME");
  EXPECT_STREQ(CommandName(CommandType::Yes), "YES");
  EXPECT_STREQ(CommandName(CommandType::BmcRefresh), "INVLALID_COMMAND_TYPE");
  EXPECT_EQ(CommandName(CommandType::Skip), nullptr);
}

TEST_F(Command, ArgumentsAreSplitAtBlanksAndQuotes) {
  using ::testing::ElementsAre;
  EXPECT_THAT(Tokens("  a\tb\"c \"d e\" \"\"f"), ElementsAre("a", "b\"c", "d e", "", "f"));
  EXPECT_THAT(Tokens("a \"b"), ElementsAre("a"));
  EXPECT_THAT(Tokens("a \xE9"), ElementsAre("a"));
  EXPECT_THAT(Tokens("a //b"), ElementsAre("a"));
}

TEST_F(Command, ArgumentThatCannotBeReadIsLogged) {
  Tokens("//");
  EXPECT_THAT(machine.TraceLines(),
              ::testing::ElementsAre("CCfgCommand::GetNextInput - Buffer parser error(2)"));
}

TEST_F(Command, HexadecimalNumbersStandAloneAndDecimalOnesNeedNot) {
  std::uint32_t number = 0;
  EXPECT_TRUE(CCfgCommand::StringToInt("1F", number));
  EXPECT_EQ(number, 31u);
  for (const char* text : {"1F h", "1Ax", "x", ""})
    EXPECT_FALSE(CCfgCommand::StringToInt(text, number)) << text;
  std::uint8_t byte = 0;
  EXPECT_TRUE(CCfgCommand::StringToInt("1AB", byte));
  EXPECT_EQ(byte, 0xAB);
  std::int32_t decimal = 0;
  EXPECT_TRUE(CCfgCommand::StringToDec("12abc", decimal));
  EXPECT_EQ(decimal, 12);
  EXPECT_FALSE(CCfgCommand::StringToDec("abc", decimal));
}

TEST_F(Command, CharacterIsFoundByItsOccurrence) {
  EXPECT_EQ(CCfgCommand::FindCharacter("a,b,c", ',', 2, 5), 3);
  EXPECT_EQ(CCfgCommand::FindCharacter("a,b,c", ',', 2, 3), -1);
  EXPECT_EQ(CCfgCommand::FindCharacter(std::string_view("a\0,", 3), ',', 1, 3), -1);
}

TEST_F(Command, DisplayedTextIsBoundedAndHarmlessAsAFormat) {
  CCfgCommand::Display("%s %d 50%%\n");
  EXPECT_EQ(machine.console, "%s %d 50%\n");
  machine.console.clear();
  CCfgCommand::Display("%hs", std::string(600, 'x'));
  CCfgCommand::DisplayWide("%ls", std::u16string(2000, u'y'));
  EXPECT_EQ(machine.console, std::string(511, 'x') + std::string(1023, 'y'));
  CCfgCommand::Callbacks().display = nullptr;
  EXPECT_FALSE(CCfgCommand::Display("a"));
  EXPECT_TRUE(CCfgCommand::DisplayWide("a"));
}

TEST_F(Command, InputIsEditedEchoedAndBounded) {
  std::u16string text;
  machine.keys =
      u"ab\b\x01"
      u"cdef\r";
  ASSERT_TRUE(CCfgCommand::GetInputString(text, 5, true));
  EXPECT_EQ(text, u"acde");
  EXPECT_EQ(machine.console, "ab\b \bcde");
  machine.keys = u"\b\n";
  ASSERT_TRUE(CCfgCommand::GetInputString(text, 5, true));
  EXPECT_EQ(text, u"");
  EXPECT_FALSE(CCfgCommand::GetInputString(text, 0, true));
}

TEST_F(Command, InputWithoutEchoIsReadAndNotKept) {
  std::u16string text = u"old";
  machine.keys = u"abc\r";
  EXPECT_TRUE(CCfgCommand::GetInputString(text, 16, false));
  EXPECT_EQ(text, u"");
  EXPECT_EQ(machine.console, "");
  CCfgCommand::Callbacks().inputChar = nullptr;
  EXPECT_FALSE(CCfgCommand::GetInputString(text, 16, true));
}

TEST_F(Command, ValueIsALineOfAFile) {
  machine.files["V.TXT"] = "first\r\nsecond\n\nlast";
  std::string value;
  ASSERT_TRUE(CCfgCommand::GetStringFromFile("V.TXT", value, 64, 2));
  EXPECT_EQ(value, "second");
  ASSERT_TRUE(CCfgCommand::GetStringFromFile("V.TXT", value, 64, 4));
  EXPECT_EQ(value, "last");
  EXPECT_FALSE(CCfgCommand::GetStringFromFile("V.TXT", value, 64, 5));
  EXPECT_EQ(value, "");
  EXPECT_EQ(Message(), "Unable to read the FRU field value from the file 'V.TXT' at line number: 5");
}

TEST_F(Command, ValueMustBeTwoShorterThanItsBufferAndLongLinesCountTwice) {
  machine.files["V.TXT"] = std::string(62, 'x') + "\n" + std::string(63, 'y') + "\n" + std::string(260, 'z');
  std::string value;
  EXPECT_TRUE(CCfgCommand::GetStringFromFile("V.TXT", value, 64, 1));
  EXPECT_FALSE(CCfgCommand::GetStringFromFile("V.TXT", value, 64, 2));
  EXPECT_TRUE(CCfgCommand::GetStringFromFile("V.TXT", value, 64, 4));
  EXPECT_EQ(value, "zzzz");
  EngineMessage().Reset();
  EXPECT_FALSE(CCfgCommand::GetStringFromFile("MISSING", value, 64, 1));
  EXPECT_EQ(Message(), "");
}

TEST_F(Command, VariableOfTheEnvironmentIsCutToItsBuffer) {
  machine.environment["SN"] = u"12345";
  std::string value;
  EXPECT_TRUE(CCfgCommand::GetEnvVariable("SN", value, 3));
  EXPECT_EQ(value, "123");
  EXPECT_FALSE(CCfgCommand::GetEnvVariable("NONE", value, 3));
  value = "kept";
  EXPECT_TRUE(CCfgCommand::GetEnvVariable(std::string(1023, 'N'), value, 64));
  EXPECT_EQ(value, "kept");
}

TEST_F(Command, FilesAreInTheScriptsDirectory) {
  machine.files["fs0:\\kit/T.CFG"] = "SET a\n";
  CCfgSet command;
  command.SetParser(&parser);
  std::u16string path;
  EXPECT_FALSE(command.GetFile(u"A.FRU", path, 256)) << "no script, no directory";
  ASSERT_EQ(parser.ParseFile(u"fs0:\\kit/T.CFG", nullptr), kSuccess);
  ASSERT_TRUE(command.GetFile(u"A.FRU", path, 256));
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
  EXPECT_EQ(CCfgCommand::CreateCommand(nullptr, command, &parser), 0xC00000000009000D);
  EXPECT_EQ(Message(), "Internal file error in 'cfgfile.dll'.");
  EXPECT_EQ(CCfgCommand::CreateCommand(&file, command, &parser), kSuccess);
  EXPECT_EQ(command->Type(), CommandType::Set);
  EXPECT_EQ(CCfgCommand::CreateCommand(&file, command, &parser), ~Status{0});
}

TEST_F(Command, LinesOfASmallerControllerArePassedOver) {
  EXPECT_EQ(Run("PEFNAME any \"thing\nmbmc_pgm x\nMBMC_RMW\nTableName " + std::string(400, 'x')), kSuccess);
  EXPECT_EQ(parser.Commands().size(), 4u);
  EXPECT_EQ(parser.Commands().front()->GetDisplayName(), nullptr);
}

TEST_F(Command, LineIsRefused) {
  constexpr Status kBadLine = 0xC00000000009000D;
  ExpectRefused("SET a\n\nNOSUCH x", 3, 0xC000000000090016, "NOSUCH is not a valid command.");
  ExpectRefused("MENUPROMPT", 1, 0xC000000000090016, "MENUPROMPT is not a valid command.");
  ExpectRefused("DISPLAY " + std::string(292, 'x'), 1, kBadLine,
                "Too many characters on the line: 300.  Must be less than 255.");
  ExpectRefused("DISPLAY \"a", 1, kBadLine, "Invalid number of quotes in line.");
  ExpectRefused("DISPLAY \"a // b\"", 1, kBadLine, "Invalid number of quotes in line.");
  // Commands that read nothing of their own report it in other words.
  ExpectRefused("ENDIF \"", 1, kBadLine, "Reading from file failed.");
  ExpectRefused("SET a\n" + std::string(300, 'K'), 2, kBadLine, "");
  EXPECT_EQ(Load("DISPLAY \"" + std::string(252, 'x') + "\""), kSuccess)
      << "255 characters behind the keyword";
}

}  // namespace
}  // namespace varnok
