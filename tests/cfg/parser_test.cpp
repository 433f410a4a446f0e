// The reader of a script, and its parser.
#include "tests/cfg/script_test.h"

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
  EXPECT_THAT(machine.TraceLines(),
              ::testing::IsSupersetOf({"CCfgCommand::CreateCommand - FOO%d%s is not a valid command",
                                       "CCfgParser::ReadFile - Error in reading the configuration file "}));
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
  EXPECT_EQ(Tags(), "[two THREE]");
  EXPECT_EQ(parser.FindTag("three") + parser.FindTag("one"), 1 - 1);
  std::string name;
  for (std::int64_t index : {-1, 2}) {
    EXPECT_EQ(parser.GetTag(index, name), 0xC000000000090012);
    EXPECT_EQ(Message(), "Unrecoverable internal error: Get tag selector out of range.");
  }
  parser.SetTag("One");
  EXPECT_EQ(Tags(), "[two THREE One]");
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
