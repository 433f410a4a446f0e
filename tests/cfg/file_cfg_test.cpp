#include "cfg/file_cfg.h"

#include <gtest/gtest.h>

#include "tests/support/test_firmware.h"

namespace varnok {
namespace {

class FileCfg : public ::testing::Test {
 protected:
  void Read(std::string text) {
    machine.files["S.CFG"] = std::move(text);
    file = CFileCfg("S.CFG");
  }
  // What is read, "-" for nothing.
  std::string Keyword(std::size_t size = 256) { return file.GetFirstInput(text_, size) ? text_ : "-"; }
  std::string Argument(std::size_t size = 256) { return file.GetNextInput(text_, size) ? text_ : "-"; }
  std::string Rest(std::size_t size = 256) { return file.GetRemainingLine(text_, size) ? text_ : "-"; }

  testing::TestFirmware machine;
  CFileCfg file{"MISSING.CFG"};

 private:
  std::string text_;
};

TEST_F(FileCfg, FileThatCannotBeReadHasNoLines) {
  EXPECT_FALSE(file.IsLoaded());
  EXPECT_TRUE(file.EndOfFile());
}

TEST_F(FileCfg, KeywordsComeFromTrimmedLinesOfAnyLineEnd) {
  Read(" \tSET a \rCLEAR\tb\n\r// note\r\n\n  ENDIF");
  for (const char* keyword : {"SET", "CLEAR", "ENDIF"}) EXPECT_EQ(Keyword(), keyword);
  EXPECT_EQ(file.GetCurrentLineNumber(), 4u);
  EXPECT_EQ(Keyword(), "-");
  EXPECT_TRUE(file.EndOfFile());
  Read("DISPLAY \"see http://x\"");
  EXPECT_EQ(file.CurrentLine(), "DISPLAY \"see http:") << "a comment is cut inside quotes, too";
}

TEST_F(FileCfg, RoomIsTestedAgainstTheKeywordAndTheArgumentsColumn) {
  Read("PROBE ab");
  EXPECT_EQ(Keyword(5), "-");
  file.SetCurrentLineNumber(0);
  EXPECT_EQ(Keyword(6), "PROBE");
  EXPECT_EQ(Argument(8), "-");
  file.SetCurrentLineNumber(0);
  Keyword();
  EXPECT_EQ(Argument(9), "ab");
}

TEST_F(FileCfg, ArgumentsAreWordsOrQuotedTexts) {
  Read("PROBE  one \"two words\"three \"\" x");
  Keyword();
  // Two adjacent quotes are no argument.
  for (const char* argument : {"one", "two words", "three", "-"}) EXPECT_EQ(Argument(), argument);
}

TEST_F(FileCfg, RestOfALineKeepsItsLeadingBlanks) {
  Read("SET   a b\n\n");
  Keyword();
  EXPECT_EQ(Rest(6), "-");
  EXPECT_EQ(Rest(7), "   a b");
  file.SetCurrentLineNumber(1);
  EXPECT_TRUE(file.IsLineEmpty());
  EXPECT_EQ(Rest(), "-");
}

TEST_F(FileCfg, LineNumberPastTheEndOnlyGoesBackToTheLinesStart) {
  Read("SET a\nCLEAR a");
  Keyword();
  EXPECT_EQ(Keyword(), "CLEAR");
  file.SetCurrentLineNumber(2);
  EXPECT_EQ(Keyword(), "CLEAR");
}

}  // namespace
}  // namespace varnok
