// A package on many boards: which of them end alike, which refuse, which would be damaged.
#include "rehearsal/fleet.h"

#include <gtest/gtest.h>

#include <fstream>

#include "boards/folder.h"
#include "rehearsal/answers.h"
#include "rehearsal/reports/fleet_report.h"
#include "tests/support/host_files.h"

namespace varnok::testing {
namespace {

using namespace rehearsal;
namespace fs = std::filesystem;

class Fleets : public ::testing::Test {
 protected:
  Fleets() {
    for (const auto& entry : fs::directory_iterator(VARNOK_SAMPLES)) fs::copy(entry.path(), folder.Path());
    const char* kBoards[][3] = {{"a", "", ""},
                                {"b", "", ""},
                                {"broken", "\"clock\"", "\"clokc\""},
                                {"other", "\"0x2E\"", "\"0x2F\""},
                                {"riserless", "\"id\": 2, \"file\": \"riser", "\"id\": 5, \"file\": \"riser"},
                                {"small", "\"capacity\": 32768", "\"capacity\": 100"}};
    for (const auto& [name, from, to] : kBoards) Make(name, from, to);
    fs::create_directories(folder.Path() / "fleet/notes");
    std::ofstream(folder.Path() / "fleet/readme") << "none";
  }

  void Make(const std::string& name, const std::string& from, const std::string& to) {
    std::string error;
    const fs::path board = folder.Path() / "fleet" / name;
    ASSERT_TRUE(sim::Board::CreateDefault(board, error)) << error;
    boards::Bytes bytes;
    ASSERT_TRUE(boards::ReadFile(board / "board.json", bytes, error)) << error;
    std::string json(bytes.begin(), bytes.end());
    if (!from.empty()) json.replace(json.find(from), from.size(), to);
    std::ofstream(board / "board.json") << json;
    fs::resize_file(board / "sdr.bin", 0);
  }

  /// What is shown in front of the groups, without the times.
  std::string Shown(const std::string& script, const std::string& answers) {
    std::string path = (folder.Path() / script).string();
    path.front() = '\\';
    AnswerFile file;
    std::string text;
    EXPECT_TRUE(file.Parse(answers, text)) << text;
    file.isForMany = true;
    FleetChoice choice{.cores = 2};
    if (!answers.empty()) choice.answers = &file;
    EXPECT_TRUE(RehearseFleet(folder.Path() / "fleet", {"/cfg", path}, choice, fleet, text)) << text;
    const std::vector<std::string> lines = FleetText(fleet, false);
    for (std::size_t i = 1; i < lines.size() && !lines[i].starts_with("Group"); ++i)
      for (const char each : lines[i] + "\n")
        if (each != ' ' || !text.ends_with(' ')) text += each;
    return text;
  }

  TemporaryFolder folder;
  Fleet fleet;
};

TEST_F(Fleets, AreGroupedByWhatBecomesOfTheirBoards) {
  // The board that is another one is not asked, which leaves its answers over; line 4 nobody asks for.
  const std::string kAnswers = "* = N\nWhich chassis is the board built into? = 2\nline 45 = Y\nline 3 = Y\n";
  EXPECT_EQ(
      Shown("MASTER.CFG", kAnswers),
      R"( grave: 1 board damaged: written, and then an error, or a board that the program cannot show any more
 small
 warning: 1 board doubtful: status 0, and what was written does not fit the board
 riserless
 warning: 1 board not rehearsed: the rehearsal itself could not be done
 broken
 warning: 1 answer that no board used
 line 4 of the answers
 remark: 1 folder without a board
 notes

 group boards become status time changes
 1 1 damaged 4 9.4 s SDR
 2 1 doubtful 0 31.7 s FRU 0: Chassis Info Area, Board Info Area, Product Info Area; SDR
 3 1 not rehearsed 
 4 2 changed 0 31.7 s FRU 0: Chassis Info Area, Board Info Area, Product Info Area; SDR
 5 1 refused by the script 32 0.3 s nothing

)");
}

TEST_F(Fleets, CountAnAnswerAsUsedThatTheyGiveBeforeOneIsMissing) {
  EXPECT_NE(
      Shown("MASTER.CFG", "Which chassis is the board built into? = 2\n").find("5 boards not rehearsed"),
      std::string::npos);
  EXPECT_EQ(fleet.unusedAnswers, std::vector<std::size_t>{});
}

TEST_F(Fleets, AnswerProbesThemselvesOnAllRoads) {
  // All roads of one board alone would go into both branches.
  std::ofstream(folder.Path() / "GUARD.CFG")
      << "PROBE BASEBOARD_PRODID 2F\nFOUND OTHER\nIFSET OTHER\nERRORLEVEL 5\nENDIF\n"
         "IFSET NEVER\nBOOT\nENDIF\nSDRNAME HEARTHS2.SDR\n";
  EXPECT_EQ(
      Shown("GUARD.CFG", ""),
      R"( grave: 1 board damaged: written, and then an error, or a board that the program cannot show any more
 small
 warning: 1 board not rehearsed: the rehearsal itself could not be done
 broken
 warning: 1 line of the script that no road of any board reaches
 line 7, first: BOOT
 warning: 1 tag that no road of any board sets
 NEVER
 remark: 1 folder without a board
 notes

 group boards become status time changes
 1 1 damaged 4 4.4 s SDR
 2 1 not rehearsed 
 3 3 changed 0 3.7 s SDR
 4 1 refused by the script 5 0.3 s nothing

)");
}

}  // namespace
}  // namespace varnok::testing
