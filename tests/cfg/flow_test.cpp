// SET, CLEAR, IFSET, ELSE, ENDIF, ERRORLEVEL, CONFIGURATION and BOOT.
#include "cfg/block.h"
#include "tests/cfg/script_test.h"

namespace varnok {
namespace {

using Flow = testing::ScriptTest;

TEST_F(Flow, BlockRunsWhenAllItsTagsAreSet) {
  EXPECT_EQ(Run("SET A\nIFSET a B\nDISPLAY both\nELSE\nDISPLAY other\nENDIF\n"
                "SET b\nIFSET A b\nDISPLAY both\nELSE\nDISPLAY other\nENDIF\n"
                "CLEAR a\nCLEAR never\nIFSET A\nDISPLAY never\nENDIF\n"),
            kSuccess);
  EXPECT_EQ(machine.console, "other\nboth\n");
}

TEST_F(Flow, BlocksNestInBothBranches) {
  EXPECT_EQ(Run("SET a\nIFSET x\n IFSET a\n DISPLAY 1\n ENDIF\nELSE\n IFSET x\n DISPLAY 2\n ELSE\n  IFSET a\n"
                "  DISPLAY 3\n  ENDIF\n DISPLAY 4\n ENDIF\n DISPLAY 5\nENDIF\nDISPLAY 6\n"),
            kSuccess);
  EXPECT_EQ(machine.console, "3\n4\n5\n6\n");
}

TEST_F(Flow, FailureInABlockStopsTheScript) {
  EXPECT_EQ(Run("SET a\nIFSET a\nIFSET a\nDISPLAY 1\nERRORLEVEL 7\nENDIF\nDISPLAY 2\nENDIF\nDISPLAY 3"),
            0xC0000000000903EF);
  EXPECT_EQ(machine.console, "1\n");
}

TEST_F(Flow, BlockIsRefused) {
  constexpr Status kNoEndIf = 0xC000000000090013;
  const std::string follow = " can not be used here, it must follow an IFSET command.";
  const std::string noEndIf = " found without matching ENDIF.";
  ExpectRefused("SET a\nENDIF", 2, kOutOfPlace, "Command ENDIF" + follow);
  ExpectRefused("SET a\nELSE\nSET b\nENDIF", 2, kOutOfPlace, "Command ELSE" + follow);
  ExpectRefused("IFSET a\nELSE\nSET b\nELSE\nENDIF\nENDIF", 4, kOutOfPlace, "Command ELSE" + follow);
  ExpectRefused("IFSET a\nIFSET b\nNO x\nENDIF\nENDIF", 3, kOutOfPlace,
                "Command NO can not be used here, it must follow a PROMPT command.");
  ExpectRefused("IFSET a\nSET a b\nENDIF", 2, kTooMany, Extra("SET", "b"));
  // At the end of the file the line after the last one is named.
  ExpectRefused("IFSET a\nSET b\n", 3, kNoEndIf, "IFSET" + noEndIf);
  ExpectRefused("IFSET a\nELSE\nSET b\n", 4, kNoEndIf, "ELSE" + noEndIf);
  ExpectRefused("IFSET a\nIFSET b\nENDIF\n", 4, kNoEndIf, "IFSET" + noEndIf);
}

TEST_F(Flow, CursorWalksABody) {
  ASSERT_EQ(Load("IFSET a\nSET b\nSET c\nENDIF"), kSuccess);
  CCfgCommand& block = parser.Commands().front();
  const CommandList& body = block.AsBlock()->Body();
  CCfgCommand *first = &body.front(), *second = &body.back(), *none = nullptr;
  for (CCfgCommand* next : {first, second, none}) EXPECT_EQ(block.Next(), next);
  for (CCfgCommand* previous : {second, first, none}) EXPECT_EQ(block.Previous(), previous);
  block.Next();
  block.ResetLink();
  EXPECT_EQ(block.Next(), first);
}

TEST_F(Flow, DebugPrintShowsBlocksWithoutTheirElse) {
  ASSERT_EQ(Load("IFSET a \"b c\"\nERRORLEVEL 1f\nIFSET d\nBOOT\nENDIF\nELSE\nBOOT\nENDIF\nERRORLEVEL"),
            kSuccess);
  parser.DebugPrint();
  EXPECT_EQ(machine.console, "IFSET a b c\nERRORLEVEL 1F\nIFSET d\nBoot\nERRORLEVEL 00\n");
  machine.console.clear();
  parser.Commands().front().AsBlock()->Choose()->DebugPrint();
  EXPECT_EQ(machine.console, "ELSE\nBoot\n") << "by itself";
}

TEST_F(Flow, ErrorLevelStopsTheScript) {
  const std::string exiting = "Configuration file exiting due to ERRORLEVEL ";
  ExpectStopped("ERRORLEVEL 1F\nDISPLAY never", 0xC000000000090407, exiting + "1F.");
  ExpectStopped("ERRORLEVEL", 0xC0000000000903E8, exiting + "00.");
  ExpectStopped("ERRORLEVEL FFFFFFFF", 0xC0000000000903E7, exiting + "FFFFFFFF.");
  EXPECT_EQ(machine.console, "");
  for (std::string level : {"1G", "1F h"})
    ExpectRefused("ERRORLEVEL \"" + level + "\"", 1, kBadLine,
                  level + " is not a valid error level, it must be a valid hexidecimal number.");
}

TEST_F(Flow, ConfigurationIsShownOnTheConsoleItself) {
  CCfgCommand::Callbacks().display = nullptr;
  EXPECT_EQ(Run("CONFIGURATION \"Hearth S2\" S2 third\nCONFIGURATION Other Later\nBOOT\n"), kSuccess);
  EXPECT_EQ(machine.console,
            "Update File Configuration: Hearth S2 S2 third\nUpdate File Configuration: Other Later\n");
  EXPECT_EQ(parser.TargetPlatformInfo(), u"S2");
}

TEST_F(Flow, BlockThatLosesACommandToTheFullPoolDoesNotRun) {
  machine.FailPoolAllocation(2);
  EXPECT_EQ(Load("IFSET a\nSET b\nENDIF"), 0xC000000000090032);
  machine.FailPoolAllocation(2);
  EXPECT_EQ(Run("DISPLAY 1\nDISPLAY 2\nDISPLAY 3"), kSuccess) << "at the top level the script just ends";
  EXPECT_EQ(machine.console, "1\n");
}

}  // namespace
}  // namespace varnok
