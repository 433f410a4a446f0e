// DISPLAY, PROMPT with YES and NO, MENUTITLE, MENU and MENUPROMPT.
#include "tests/cfg/script_test.h"

namespace varnok {
namespace {

using Dialogue = testing::ScriptTest;

TEST_F(Dialogue, DisplayShowsItsTextAsAFormat) {
  EXPECT_EQ(Run("DISPLAY \"100%% of %s %d\"\nDISPLAY \"\"\nDISPLAY word"), kSuccess);
  EXPECT_EQ(machine.console, "100% of %s %d\n\nword\n");
}

TEST_F(Dialogue, PromptSetsTheTagOfItsAnswer) {
  machine.keys = u"xqNyyn";
  EXPECT_EQ(Run("PROMPT \"Go on?\"\n\nyes Y1\n// note\nno N1\nPROMPT Again?\nYES Y2\nYES Y3\n"
                "PROMPT A?\nPROMPT B?\nBOOT"),
            kSuccess);
  EXPECT_EQ(machine.console, "Go on? N\nAgain? y\nA? y\nB? n\n");
  EXPECT_TRUE(parser.IsTagSet("N1"));
  EXPECT_TRUE(parser.IsTagSet("Y3")) << "the last of several YES lines counts";
  EXPECT_EQ(parser.TagCount(), 2u);
}

TEST_F(Dialogue, InputThatFailsCountsAsAYesAndAKeyWithoutACharacterAsNone) {
  CCfgCommand::Callbacks().inputChar = [](char& key) {
    key = 'x';
    return 0;
  };
  EXPECT_EQ(Run("PROMPT A?\nYES Y\nNO N\nBOOT"), kSuccess);
  EXPECT_TRUE(parser.IsTagSet("Y"));
  EXPECT_EQ(machine.console, "A? x\n");
  CCfgCommand::Callbacks().inputChar = InputChar;
  // A cursor key, and what a layout has for a letter beyond 8 bits, are delivered as a character that nobody
  // waits for.
  machine.keys = std::u16string(
      u"\0n\0"
      u"1\0\r",
      6);
  EXPECT_EQ(Run("PROMPT A?\nYES Y\nNO N\nMENU M\nMENU X\nMENUPROMPT"), kSuccess);
  EXPECT_EQ(parser.FindTag("N") + 10 * parser.FindTag("M"), 10);
}

TEST_F(Dialogue, TagIsSetBeforeTheAnswerIsShown) {
  static CCfgParser* current;
  static std::string order;
  current = &parser;
  order.clear();
  CCfgCommand::Callbacks().display = [](std::u16string_view text) {
    order += Narrow(text) + (current->IsTagSet("Y") ? "set " : "unset ");
  };
  machine.keys = u"y";
  EXPECT_EQ(Run("PROMPT A?\nYES Y\nBOOT"), kSuccess);
  EXPECT_EQ(order, "A?unset  unset y\nset ");
}

TEST_F(Dialogue, PromptIsRefused) {
  const std::string misplaced = " can not be used here, it must follow a PROMPT command.";
  ExpectRefused("PROMPT a", 2, kBadLine, "");
  ExpectRefused("PROMPT a\nYES y", 3, kBadLine, "");
  ExpectRefused("PROMPT a\nDISPLAY \"b\nBOOT", 2, kBadLine, "Invalid number of quotes in line.");
  // The reader stands on the line after the one that is wrong.
  ExpectRefused("PROMPT a\nYES\nBOOT", 3, kBadLine, Missing("YES"));
  ExpectRefused("PROMPT a\nNO x y\nBOOT", 3, kBadLine, Extra("NO", "y"));
  ExpectRefused("PROMPT a\nNO t1\nYES t2\nBOOT", 3, kOutOfPlace, "Command YES" + misplaced);
  // A NO that is the script's last line is read twice, the second time as a command of its own.
  ExpectRefused("PROMPT a\nNO t1", 2, kOutOfPlace, "Command NO" + misplaced);
  ExpectStopped("PROMPT \" \"\nBOOT", kBadValue, Invalid(" ", "PROMPT"));
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
  machine.console.clear();
  parser.DebugPrint();
  EXPECT_EQ(machine.console, "Rack\none\tFirst %d\ntwo\ttwo\nthree\tThird\n");
}

TEST_F(Dialogue, MenuAnswerTakesItsBaseFromItsPrefix) {
  std::string menu = "MENUPROMPT";
  for (int item = 9; item > 0; --item) menu = "MENU " + std::to_string(item) + "\n" + menu;
  for (std::u16string answer :
       {u"0x8\r", u"010\r", u"8\r", u" 8x\r", u"+8\r", u"-1\r08\r99999999999999\r8\r"}) {
    machine.keys = answer;
    EXPECT_EQ(Run(menu), kSuccess);
    EXPECT_TRUE(parser.IsTagSet("8")) << Narrow(answer);
  }
  CCfgCommand::Callbacks().inputChar = nullptr;
  EXPECT_EQ(Run(menu), 0xC00000000009000F) << "nothing can be read";
}

TEST_F(Dialogue, MenuIsRefused) {
  ExpectRefused("MENU\nMENUPROMPT", 1, kTooMany, Missing("MENU"));
  ExpectRefused("BOOT\nMENU a \"b\nMENUPROMPT", 2, kBadLine, "Invalid number of quotes in line.");
  ExpectRefused("MENU " + std::string(295, 'x') + "\nMENUPROMPT", 1, kBadLine,
                "Too many characters on the line: 300.  Must be less than 255.");
  ExpectRefused("MENU a\nSET b\nMENUPROMPT", 2, kOutOfPlace,
                "The 'SET' command cannot be used between MENUTITLE, MENU, and MENUPROMPT.");
  ExpectRefused("MENU a\nMENU b\n", 3, kBadLine,
                "The MENUPROMPT command was not found before the end of the file.");
  ExpectRefused("MENUTITLE a\nMENUPROMPT", 2, kBadLine,
                "MENUPROMPT command found without a preceding MENU command.");
  ExpectRefused("MENU a\nMENUPROMPT x", 2, kTooMany, Extra("MENUTITLE", "x"));
  // The wrong item is named when the menu's end has been read.
  ExpectRefused("MENU a b c\nMENU d\nMENUPROMPT", 3, kTooMany, Extra("MENUTITLE", "c"));
  // Only a titled menu is limited.
  std::string items;
  for (int i = 1; i <= 33; ++i) items += "MENU t" + std::to_string(i) + "\n";
  EXPECT_EQ(Load(items + "MENUPROMPT"), kSuccess);
  ExpectRefused("MENUTITLE a\n" + items + "MENUPROMPT", 35, kUnknown,
                "Invalid number of menus to prompt: 33, the maximum allowed is 32.");
}

}  // namespace
}  // namespace varnok
