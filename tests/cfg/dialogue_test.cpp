// DISPLAY, PROMPT with YES and NO, MENUTITLE, MENU and MENUPROMPT.
#include "cfg/menu_command.h"
#include "tests/cfg/script_test.h"

namespace varnok {
namespace {

using Dialogue = testing::ScriptTest;

constexpr Status kTooMany = 0xC00000000009000B;
constexpr Status kBadLine = 0xC00000000009000D;

TEST_F(Dialogue, DisplayShowsItsTextAsAFormat) {
  EXPECT_EQ(Run("DISPLAY \"100%% of %s\"\nDISPLAY \"\"\nDISPLAY word"), kSuccess);
  EXPECT_EQ(machine.console, "100% of %s\n\nword\n");
  ExpectRefused("DISPLAY", 1, kBadLine, "The DISPLAY command is missing its first parameter.");
  ExpectRefused("DISPLAY two words", 1, kTooMany,
                "Too many parameters for the DISPLAY command.\n   The parameters 'words' were not accepted.");
}

TEST_F(Dialogue, PromptSetsTheTagOfItsAnswer) {
  machine.keys = u"xqNy";
  EXPECT_EQ(Run("PROMPT \"Go on?\"\n\nyes Y1\n// note\nno N1\nPROMPT Again?\nYES Y2\nYES Y3\nBOOT"),
            kSuccess);
  EXPECT_EQ(machine.console, "Go on? N\nAgain? y\n");
  EXPECT_TRUE(parser.IsTagSet("N1"));
  EXPECT_FALSE(parser.IsTagSet("Y1"));
  EXPECT_TRUE(parser.IsTagSet("Y3"));
  EXPECT_FALSE(parser.IsTagSet("Y2")) << "the last of several YES lines counts";
}

TEST_F(Dialogue, PromptWithoutAnswersSetsNothing) {
  machine.keys = u"yn";
  EXPECT_EQ(Run("PROMPT A?\nPROMPT B?\nDISPLAY end"), kSuccess);
  EXPECT_EQ(parser.TagCount(), 0u);
}

TEST_F(Dialogue, InputThatFailsCountsAsAYes) {
  machine.keys = u"x\x0416";
  EXPECT_EQ(Run("PROMPT A?\nYES Y\nNO N\nBOOT"), kSuccess);
  EXPECT_TRUE(parser.IsTagSet("Y"));
  EXPECT_EQ(machine.console, "A? x\n");
}

TEST_F(Dialogue, PromptIsRefused) {
  ExpectRefused("PROMPT\nBOOT", 1, kBadLine, "The PROMPT command is missing its first parameter.");
  ExpectRefused("PROMPT a b\nBOOT", 1, kBadLine,
                "Too many parameters for the PROMPT command.\n   The parameters 'b' were not accepted.");
  ExpectRefused("PROMPT a", 2, kBadLine, "");
  ExpectRefused("PROMPT a\nYES y", 3, kBadLine, "");
  ExpectRefused("PROMPT a\nDISPLAY \"b\nBOOT", 2, kBadLine, "Invalid number of quotes in line.");
  // The reader stands on the line after the one that is wrong.
  ExpectRefused("PROMPT a\nYES\nBOOT", 3, kBadLine, "The YES command is missing its first parameter.");
  ExpectRefused("PROMPT a\nNO x y\nBOOT", 3, kBadLine,
                "Too many parameters for the NO command.\n   The parameters 'y' were not accepted.");
  ExpectRefused("PROMPT a\nNO t1\nYES t2\nBOOT", 3, 0xC000000000090015,
                "Command YES can not be used here, it must follow a PROMPT command.");
  // A NO that is the script's last line is read twice, the second time as a command of its own.
  ExpectRefused("PROMPT a\nNO t1", 2, 0xC000000000090015,
                "Command NO can not be used here, it must follow a PROMPT command.");
  ExpectStopped("PROMPT \" \"\nBOOT", 0xC00000000009000C, "  is not a valid input for the PROMPT command.");
}

TEST_F(Dialogue, MenuSetsTheTagOfItsChoiceButNotOfItsLastItem) {
  const std::string menu =
      "MENUTITLE \"Rack\"\nMENU one \"First %d\"\nmenu two\nMENU three Third\nMENUPROMPT\n";
  machine.keys = u"0\r4\rabc\r\r2\b1\r";
  EXPECT_EQ(Run(menu), kSuccess);
  EXPECT_EQ(machine.console, "Rack\n1\tFirst %d\n2\ttwo\n3\tThird\n04abc2\b \b1\n1\n");
  EXPECT_EQ(parser.FindTag("one"), 0);
  machine.keys = u"3\r";
  EXPECT_EQ(Run(menu), kSuccess);
  EXPECT_EQ(parser.TagCount(), 0u);
}

TEST_F(Dialogue, MenuAnswerTakesItsBaseFromItsPrefix) {
  for (std::u16string answer : {u"0x2", u"02", u"2", u" 2x"}) {
    machine.keys = answer + u"\r";
    EXPECT_EQ(Run("MENU a\nMENU b\nMENU c\nMENUPROMPT"), kSuccess);
    EXPECT_TRUE(parser.IsTagSet("b"));
  }
  machine.keys = u"-1\r08\r99999999999999\r1\r";
  EXPECT_EQ(Run("MENU a\nMENU b\nMENUPROMPT"), kSuccess);
  EXPECT_TRUE(parser.IsTagSet("a"));
}

TEST_F(Dialogue, MenuWithoutInputEnds) {
  CCfgCommand::Callbacks().inputChar = nullptr;
  EXPECT_EQ(Run("MENU a\nMENU b\nMENUPROMPT"), 0xC00000000009000F);
}

TEST_F(Dialogue, MenuIsRefused) {
  ExpectRefused("MENUTITLE\nMENU a\nMENUPROMPT", 1, kBadLine,
                "The MENUTITLE command is missing its first parameter.");
  ExpectRefused("MENUTITLE a b\nMENU a\nMENUPROMPT", 1, kTooMany,
                "Too many parameters for the MENUTITLE command.\n   The parameters 'b' were not accepted.");
  ExpectRefused("MENU\nMENUPROMPT", 1, kTooMany, "The MENU command is missing its first parameter.");
  ExpectRefused("MENU a\nSET b\nMENUPROMPT", 2, 0xC000000000090015,
                "The 'SET' command cannot be used between MENUTITLE, MENU, and MENUPROMPT.");
  ExpectRefused("MENU a\nMENU b\n", 3, kBadLine,
                "The MENUPROMPT command was not found before the end of the file.");
  ExpectRefused("MENUTITLE a\nMENUPROMPT", 2, kBadLine,
                "MENUPROMPT command found without a preceding MENU command.");
  ExpectRefused("MENU a\nMENUPROMPT x", 2, kTooMany,
                "Too many parameters for the MENUTITLE command.\n   The parameters 'x' were not accepted.");
  // The wrong item is named when the menu's end has been read.
  ExpectRefused("MENU a b c\nMENU d\nMENUPROMPT", 3, kTooMany,
                "Too many parameters for the MENUTITLE command.\n   The parameters 'c' were not accepted.");
}

TEST_F(Dialogue, OnlyATitledMenuIsLimited) {
  std::string items;
  for (int i = 1; i <= 33; ++i) items += "MENU t" + std::to_string(i) + "\n";
  EXPECT_EQ(Load(items + "MENUPROMPT"), kSuccess);
  ExpectRefused("MENUTITLE a\n" + items + "MENUPROMPT", 35, 0xC000000000090016,
                "Invalid number of menus to prompt: 33, the maximum allowed is 32.");
}

TEST_F(Dialogue, DebugPrintShowsAMenu) {
  ASSERT_EQ(Load("MENUTITLE Rack\nMENU a One\nMENUPROMPT"), kSuccess);
  parser.DebugPrint();
  EXPECT_EQ(machine.console, "Rack\na\tOne\n");
}

}  // namespace
}  // namespace varnok
