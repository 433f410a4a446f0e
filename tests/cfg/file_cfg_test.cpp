#include "cfg/file_cfg.h"

#include <gtest/gtest.h>

#include "tests/support/test_firmware.h"

namespace varnok {
namespace {

class FileCfgTest : public ::testing::Test {
 protected:
  CFileCfg Read(std::string text) {
    machine.files["S.CFG"] = std::move(text);
    return CFileCfg("S.CFG");
  }
  testing::TestFirmware machine;
};

TEST_F(FileCfgTest, FileThatCannotBeReadHasNoLines) {
  CFileCfg file("MISSING.CFG");
  EXPECT_FALSE(file.IsLoaded());
  EXPECT_TRUE(file.EndOfFile());
}

TEST_F(FileCfgTest, KeywordsComeFromTrimmedLinesOfAnyLineEnd) {
  CFileCfg file = Read(" \tSET a \rCLEAR\tb\n\r// note\r\n\n  ENDIF");
  std::string text;
  for (const char* keyword : {"SET", "CLEAR", "ENDIF"}) {
    ASSERT_TRUE(file.GetFirstInput(text, 256));
    EXPECT_EQ(text, keyword);
  }
  EXPECT_EQ(file.GetCurrentLineNumber(), 4u);
  EXPECT_FALSE(file.GetFirstInput(text, 256));
  EXPECT_TRUE(file.EndOfFile());
}

TEST_F(FileCfgTest, CommentIsCutInsideQuotesToo) {
  CFileCfg file = Read("DISPLAY \"see http://x\"");
  EXPECT_EQ(file.CurrentLine(), "DISPLAY \"see http:");
}

TEST_F(FileCfgTest, KeywordMustBeShorterThanItsBuffer) {
  CFileCfg file = Read("ABCD x");
  std::string text;
  EXPECT_FALSE(file.GetFirstInput(text, 4));
  file.SetCurrentLineNumber(0);
  EXPECT_TRUE(file.GetFirstInput(text, 5));
}

TEST_F(FileCfgTest, ArgumentsAreWordsOrQuotedTexts) {
  CFileCfg file = Read("PROBE  one \"two words\"three \"\" x");
  std::string text;
  ASSERT_TRUE(file.GetFirstInput(text, 256));
  for (const char* argument : {"one", "two words", "three"}) {
    ASSERT_TRUE(file.GetNextInput(text, 256));
    EXPECT_EQ(text, argument);
  }
  EXPECT_FALSE(file.GetNextInput(text, 256)) << "two adjacent quotes are no argument";
}

TEST_F(FileCfgTest, RoomForAnArgumentIsTestedAgainstItsColumn) {
  CFileCfg file = Read("PROBE ab");
  std::string text;
  ASSERT_TRUE(file.GetFirstInput(text, 256));
  EXPECT_FALSE(file.GetNextInput(text, 8));
  file.SetCurrentLineNumber(0);
  ASSERT_TRUE(file.GetFirstInput(text, 256));
  EXPECT_TRUE(file.GetNextInput(text, 9));
}

TEST_F(FileCfgTest, RestOfALineKeepsItsLeadingBlanks) {
  CFileCfg file = Read("SET   a b\n\n");
  std::string text;
  ASSERT_TRUE(file.GetFirstInput(text, 256));
  EXPECT_FALSE(file.GetRemainingLine(text, 6));
  ASSERT_TRUE(file.GetRemainingLine(text, 7));
  EXPECT_EQ(text, "   a b");
  file.SetCurrentLineNumber(1);
  EXPECT_TRUE(file.IsLineEmpty());
  EXPECT_FALSE(file.GetRemainingLine(text, 256));
}

TEST_F(FileCfgTest, LineNumberPastTheEndOnlyGoesBackToTheLinesStart) {
  CFileCfg file = Read("SET a\nCLEAR a");
  std::string text;
  ASSERT_TRUE(file.GetFirstInput(text, 256));
  ASSERT_TRUE(file.GetFirstInput(text, 256));
  file.SetCurrentLineNumber(2);
  ASSERT_TRUE(file.GetFirstInput(text, 256));
  EXPECT_EQ(text, "CLEAR");
}

}  // namespace
}  // namespace varnok
