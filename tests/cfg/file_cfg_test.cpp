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
  std::string_view Keyword(std::size_t size = 256) { return file.GetFirstInput(text_, size) ? text_ : "-"; }
  std::string_view Argument(std::size_t size = 256) { return file.GetNextInput(text_, size) ? text_ : "-"; }
  std::string_view Rest(std::size_t size = 256) { return file.GetRemainingLine(text_, size) ? text_ : "-"; }

  testing::TestFirmware machine;
  CFileCfg file{"MISSING.CFG"};

 private:
  std::string_view text_;
};

TEST_F(FileCfg, KeywordsComeFromTrimmedLinesOfAnyLineEnd) {
  EXPECT_TRUE(!file.IsLoaded() && file.EndOfFile()) << "a file that cannot be read has no lines";
  Read(" \tSET a \rCLEAR\tb\n\r// note\r\n\n  ENDIF");
  for (const char* keyword : {"SET", "CLEAR", "ENDIF"}) EXPECT_EQ(Keyword(), keyword);
  EXPECT_EQ(file.GetCurrentLineNumber(), 4u);
  // A number past the end only goes back to the line's start.
  file.SetCurrentLineNumber(5);
  for (const char* keyword : {"ENDIF", "-"}) EXPECT_EQ(Keyword(), keyword);
  EXPECT_TRUE(file.EndOfFile());
  Read("DISPLAY \"see http://x\"");
  EXPECT_EQ(file.CurrentLine(), "DISPLAY \"see http:") << "a comment is cut inside quotes, too";
}

TEST_F(FileCfg, WhatIsReadMustFitItsRoom) {
  // That of an argument is tested against its column. Two adjacent quotes are no argument.
  Read("PROBE  one \"two words\"three \"\" x\n\n");
  EXPECT_EQ(Keyword(5), "-");
  file.SetCurrentLineNumber(0);
  EXPECT_EQ(Keyword(6), "PROBE");
  EXPECT_EQ(Argument(10), "-");
  file.SetCurrentLineNumber(0);
  Keyword();
  EXPECT_EQ(Argument(11), "one");
  EXPECT_EQ(Rest(22), "-");
  EXPECT_EQ(Rest(23), " \"two words\"three \"\" x") << "leading blanks are kept";
  for (const char* argument : {"two words", "three", "-"}) EXPECT_EQ(Argument(), argument);
  file.SetCurrentLineNumber(1);
  EXPECT_TRUE(file.IsLineEmpty());
  EXPECT_EQ(Rest(), "-");
}

}  // namespace
}  // namespace varnok
