#include <map>

#include "cfg/cfg_command.h"
#include "cfg/command_table.h"
#include "tests/cfg/script_test.h"

namespace varnok {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using Command = testing::ScriptTest;

std::vector<std::string> Tokens(std::string_view text) {
  std::vector<std::string> tokens;
  std::string_view token;
  while (CCfgCommand::GetNextInput(text, token)) tokens.emplace_back(token);
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
  EXPECT_TRUE(CCfgCommand::Display("%hs", std::string(600, 'x')));
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
  // A line of more than 256 characters counts twice.
  const std::pair<int, std::string> lines[] = {
      {2, "second"}, {4, std::string(62, 'x')}, {5, "-kept"}, {7, "zzzz"}, {8, "last"}, {9, "-"}};
  for (const auto& [line, value] : lines) EXPECT_EQ(read("V.TXT", line), value);
  EXPECT_EQ(Message(), "Unable to read the FRU field value from the file 'V.TXT' at line number: 9");
  EngineMessage().Reset();
  EXPECT_EQ(read("MISSING", 1), "-kept");
  EXPECT_EQ(Message(), "");
  std::string value;
  EXPECT_FALSE(CCfgCommand::GetStringFromFile("V.TXT", value, 0, 1));
  EXPECT_EQ(Message(), "Unable to retrieve file V.TXT.");
}

TEST_F(Command, VariableOfTheEnvironmentIsCutToItsBuffer) {
  machine.environment["SN"] = u"12345";
  std::string value;
  EXPECT_FALSE(CCfgCommand::GetEnvVariable("NONE", value, 3));
  EXPECT_TRUE(CCfgCommand::GetEnvVariable("SN", value, 3));
  EXPECT_EQ(value, "123");
  EXPECT_TRUE(CCfgCommand::GetEnvVariable(std::string(1023, 'N'), value, 64));
  EXPECT_EQ(value, "123") << "kept";
  CCfgCommand::Callbacks().getEnvVar = nullptr;
  EXPECT_FALSE(CCfgCommand::GetEnvVariable("SN", value, 3));
}

TEST_F(Command, FilesAreInTheScriptsDirectory) {
  machine.files["fs0:\\kit/T.CFG"] = "SET a\n";
  CCfgCommand command;
  command.Adopt(nullptr, &parser, 0);
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
  EXPECT_EQ(CCfgCommand::CreateCommand(nullptr, command, &parser), cfg_status::kBadLine);
  EXPECT_EQ(Message(), "Internal file error in 'cfgfile.dll'.");
  std::string_view text;
  EXPECT_FALSE(CCfgCommand().ReadLineFromFile(file, text));
  EXPECT_EQ(Message(), "Reading from file failed.");
  EXPECT_TRUE(CCfgCommand::IsSkipCmd(""));
  EXPECT_EQ(CCfgCommand::CreateCommand(&file, command, &parser), kSuccess);
  EXPECT_STREQ(command->GetDisplayName(), "SET");
  EXPECT_EQ(CCfgCommand::CreateCommand(&file, command, &parser), ~std::uint64_t{0});
}

TEST_F(Command, LinesOfASmallerControllerArePassedOver) {
  EXPECT_EQ(Run("PEFNAME any \"thing\nmbmc_pgm x\nMBMC_RMW\nTableName " + std::string(400, 'x')), kSuccess);
  EXPECT_EQ(std::ranges::distance(parser.Commands()), 4);
  EXPECT_EQ(parser.Commands().front().GetDisplayName(), nullptr);
  ASSERT_EQ(Load("BMC_REFRESH"), kSuccess);
  EXPECT_STREQ(parser.Commands().front().GetDisplayName(), "INVLALID_COMMAND_TYPE");
}

/// What a visitor is told, as text.
struct Listing : ScriptVisitor {
  void Command(const CCfgCommand& command) override {
    text += Format("\n%d %s [%s]", command.Line() + 1, command.Keyword(), command.Parameters());
  }
  void Fact(ScriptFact kind, std::string_view what, std::uint32_t line) override {
    const char* names[] = {"tests", "sets",  "yes", "no",  "clears", "asks",
                           "item",  "value", "fru", "sdr", "file",   "env"};
    text += Format(" %s:%s@%d", names[static_cast<std::size_t>(kind)], what, line + 1);
  }
  void EnterBranch() override { text += " {"; }
  void LeaveBranch() override { text += " }"; }
  std::string text;
};

TEST_F(Command, ReaderOutsideIsToldTheScript) {
  ASSERT_EQ(
      Load(
          "SET a // x\nIFSET a \"b c\"\n  CLEAR a\nIFSET d\nELSE\nPEFNAME x\nENDIF\nELSE\nPROMPT \"Q r?\"\n"
          "YES y\nNO n\nENDIF\nMENU m \"M 1\"\nMENU z\nMENUPROMPT\nPROBE PING 3 A0\n\nFOUND f g\n"
          "FRUNAME a.fru\nFRUAREA Board VALIDATE ok\nFRUNAME system\nFRUAREA Product\nFRUFIELD AT @STDIN:ASCII\n"
          "FRUFIELD AT @ENV:ASCII:V\nFRUFIELD AT @FILE:ASCII:f.txt:1\nSDRNAME s.sdr LAST\n"),
      kSuccess);
  Listing listing;
  WalkScript(parser.Commands(), listing);
  EXPECT_EQ(
      listing.text,
      "\n1 SET [a] sets:a@1\n2 IFSET [a \"b c\"] tests:a@2 tests:b c@2 {\n3 CLEAR [a] clears:a@3"
      "\n4 IFSET [d] tests:d@4 { }\n5 ELSE [] { } }\n8 ELSE [] {\n9 PROMPT [\"Q r?\"] asks:Q r?@9 yes:y@10 no:n@11 }"
      "\n13 MENU [m \"M 1\"] asks:@13 item:M 1@13 sets:m@13 item:z@14\n16 PROBE [PING 3 A0] yes:f@18 no:g@18"
      "\n19 FRUNAME [a.fru] fru:a.fru@19\n20 FRUAREA [Board VALIDATE ok] yes:ok@20\n21 FRUNAME [system]"
      "\n22 FRUAREA [Product]\n23 FRUFIELD [AT @STDIN:ASCII] value:AT@23\n24 FRUFIELD [AT @ENV:ASCII:V] env:V@24"
      "\n25 FRUFIELD [AT @FILE:ASCII:f.txt:1] file:f.txt@25\n26 SDRNAME [s.sdr LAST] sdr:s.sdr@26");
}

TEST_F(Command, LogFollowsEveryOperationInAndOut) {
  const char* arguments[] = {"varnok", "-debug3"};
  TraceSelectLevel(2, arguments);
  machine.keys = u"y";
  ASSERT_EQ(
      Run("SET a\nIFSET a\nIFSET b\nELSE\nCLEAR a\nENDIF\nENDIF\nPROMPT q\nYES y\nBMC_REFRESH\nPROBE HWID x\n"
          "FOUND a b\n"),
      kSuccess);
  parser.DebugPrint();
  EXPECT_EQ(Load("SET \xE9y"), cfg_status::kBadLine);
  std::vector<std::string> open, seen;
  for (const std::string& line : machine.TraceLines()) {
    std::string name = line.substr(0, line.rfind(" ["));
    if (line.ends_with(" [ENTRY]")) open.push_back(name), seen.push_back(name);
    if (!line.ends_with(" [EXIT]")) continue;
    ASSERT_EQ(open.back(), name);
    open.pop_back();
  }
  EXPECT_THAT(open, ElementsAre());
  for (const char* name : {"CCfgBmcRefresh::ReadFromFile", "CCfgIfSet::DebugPrint", "CCfgElse::Process",
                           "CCfgProbeHwId::ValidateParams", "CCfgProbeHwId::Process", "CCfgFound::Process"})
    EXPECT_THAT(seen, Contains(name));
  EXPECT_EQ(std::count(seen.begin(), seen.end(), "CCfgCommand::CreateCommand"), 13)
      << "one a command, and one at the end";
  EXPECT_EQ(std::count(seen.begin(), seen.end(), "CCfgIfSet::ReadFromFile"), 2);
  EXPECT_THAT(machine.TextOf("DBGLOG.txt"), ::testing::HasSubstr("Buffer p_buff[]\r\n E9 79 00"));
}

TEST(CommandRows, HaveNumbersOfTheirOwn) {
  std::map<CommandType, std::string_view> names = {{CommandType::Skip, ""}};
  for (auto family : kCommandFamilies)
    for (const CommandRow& row : family())
      EXPECT_EQ(names.try_emplace(row.type, row.name).first->second, row.name) << row.keyword;
}

}  // namespace
}  // namespace varnok
