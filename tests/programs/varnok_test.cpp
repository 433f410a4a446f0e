// The Linux program as its users run it: a process, its files, its board folder.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <utility>

#include "tests/programs/program_run.h"

namespace varnok::testing {
namespace {

const std::string kBanner = "\nVARNOK Load Utility Version 2.0.1 Build 18 \n\n";

class Varnok : public ::testing::Test {
 protected:
  ProgramResult Run(std::vector<std::string> arguments, std::string input = {}) {
    return ProgramRun{.arguments = std::move(arguments),
                      .input = std::move(input),
                      .environment = {"XDG_STATE_HOME=" + folder.Path().string(),
                                      "VARNOK_TRAFFIC=" + (folder.Path() / "traffic").string()},
                      .workingFolder = folder.Path()}
        .Run();
  }

  TemporaryFolder folder;
};

TEST_F(Varnok, FirstUseMakesTheDefaultBoardAndSaysSoOnce) {
  ProgramResult first = Run({"/d", "fru"});
  EXPECT_EQ(first.status, 0);
  EXPECT_EQ(std::count(first.error.begin(), first.error.end(), '\n'), 1) << first.error;
  EXPECT_NE(first.error.find((folder.Path() / "varnok/board").string()), std::string::npos) << first.error;
  ProgramResult second = Run({"/d", "fru"});
  EXPECT_EQ(second.error, "");
  EXPECT_EQ(second.output, first.output);
}

TEST_F(Varnok, BoardThatIsNoneIsSaid) {
  ProgramResult result =
      ProgramRun{.arguments = {"/d", "fru"}, .environment = {"VARNOK_BOARD=/nowhere/board"}}.Run();
  EXPECT_EQ(result.status, 9);
  EXPECT_EQ(result.output, "");
  EXPECT_NE(result.error.find("/nowhere/board"), std::string::npos) << result.error;
}

TEST_F(Varnok, SampleIsProgrammedVerifiedAndShown) {
  ProgramResult programmed = Run({"/fru", VARNOK_SAMPLES "/server-board.fru"});
  EXPECT_EQ(programmed.status, 0) << programmed.output;
  EXPECT_NE(programmed.output.find("\nFRU File Area(s) successfully loaded into FRU memory.\n"),
            std::string::npos);
  EXPECT_TRUE(programmed.output.ends_with("\nA system reset is required for the update to take effect.\n\n"));
  std::string image = folder.ContentOf("varnok/board/board.bin");
  std::uint8_t sum = 0;
  for (char byte : image.substr(0, 8)) sum = static_cast<std::uint8_t>(sum + static_cast<std::uint8_t>(byte));
  EXPECT_EQ(sum, 0);
  ProgramResult shown = Run({"/d", "fru"});
  EXPECT_EQ(shown.status, 0);
  ProgramResult again = Run({"/fru", VARNOK_SAMPLES "/server-board.fru"});
  EXPECT_EQ(again.status, 0);
  EXPECT_EQ(folder.ContentOf("varnok/board/board.bin"), image) << "programming twice changes nothing";
}

TEST_F(Varnok, ConsoleThatIsGoneDoesNotStopTheProgramming) {
  Run({"/?"});
  std::string command = "cd " + folder.Path().string() +
                        " && XDG_STATE_HOME=$PWD " VARNOK_PROGRAM " /fru " VARNOK_SAMPLES
                        "/server-board.fru | true";
  ASSERT_EQ(std::system(command.c_str()), 0);
  std::string image = folder.ContentOf("varnok/board/board.bin");
  EXPECT_EQ(Run({"/fru", VARNOK_SAMPLES "/server-board.fru"}).status, 0);
  EXPECT_EQ(folder.ContentOf("varnok/board/board.bin"), image) << "the first run wrote everything";
}

TEST_F(Varnok, ErrorLevelIsTheExitStatusAndNeverASuccess) {
  for (auto [level, status] : {std::pair("2A", 0x2A), std::pair("FF", 0xFF), std::pair("100", 0xFF)}) {
    std::ofstream(folder.Path() / "T.CFG") << "ERRORLEVEL " << level << "\n";
    EXPECT_EQ(Run({"/cfg", "T.CFG"}).status, status) << level;
  }
}

TEST_F(Varnok, TraceLogIsLeftInTheCurrentFolder) {
  ProgramResult result = Run({"/?", "-debug3"});
  EXPECT_EQ(result.status, 1) << "the trace switch is no option of the command line";
  EXPECT_EQ(folder.ContentOf("DBGLOG.txt").substr(0, 4), std::string("V\0A\0", 4));
}

}  // namespace
}  // namespace varnok::testing
