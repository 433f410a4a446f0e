// All roads through scripts: what is found, and that each road really goes as it is told.
#include "rehearsal/roads.h"

#include <gtest/gtest.h>

#include <fstream>

#include "rehearsal/answers.h"
#include "rehearsal/road_map.h"
#include "tests/support/host_files.h"

namespace varnok::testing {
namespace {

using namespace rehearsal;

class Roads : public ::testing::Test {
 protected:
  Roads() {
    std::string error;
    EXPECT_TRUE(sim::Board::CreateDefault(folder.Path() / "board", error)) << error;
    for (const auto& entry : std::filesystem::directory_iterator(VARNOK_SAMPLES))
      std::filesystem::copy(entry.path(), folder.Path());
  }

  std::unique_ptr<Stage> Open(std::vector<std::string> arguments) {
    std::string error;
    auto stage = Stage::Open(folder.Path() / "board", std::move(arguments), error);
    EXPECT_NE(stage, nullptr) << error;
    return stage;
  }

  std::unique_ptr<Stage> OpenScript(const std::string& name, const std::string& text) {
    if (!text.empty()) std::ofstream(folder.Path() / name) << text;
    std::string path = (folder.Path() / name).string();
    path.front() = '\\';
    return Open({"/cfg", path});
  }

  static Report GoAll(Stage& stage, const RoadOptions& options = {.cores = 2}) {
    Report report;
    std::string error;
    EXPECT_TRUE(GoAllRoads(stage, options, report, error)) << error;
    return report;
  }

  TemporaryFolder folder;
};

/// "4 roads, boards 2, unreached 7 9, unset X, broken 1, cut 0"
std::string Summary(const Report& report) {
  std::string text =
      std::to_string(report.roads.size()) + " roads, " + std::to_string(report.boards.size()) + " boards";
  for (std::size_t i = 0; i < report.script.size(); ++i)
    if (report.script[i].isCommand && report.script[i].reached == 0)
      text += ", line " + std::to_string(i + 1);
  for (const std::string& tag : report.unsetTags) text += ", tag " + tag;
  for (std::size_t road : report.brokenRoads) text += ", broken " + std::to_string(road + 1);
  if (report.roadsCut != 0) text += ", cut " + std::to_string(report.roadsCut);
  return text;
}

std::string Times(int count, const std::string& text) {
  std::string all;
  for (int i = 0; i < count; ++i) {
    for (std::size_t at = 0, next = 0; at < text.size(); at = next + 1) {
      next = std::min(text.find('#', at), text.size());
      all += text.substr(at, next - at) + (next < text.size() ? std::to_string(i) : "");
    }
  }
  return all;
}

/// A road that joins another leaves that one's board: whole runs with the same answers must say the same.
void ExpectRoadsGoAsTold(Stage& stage, const Report& report, std::size_t step) {
  for (std::size_t i = 0; i < report.roads.size(); i += step) {
    const Road& road = report.roads[i];
    GivenAnswers answers(AnswersOf(report, i));
    rehearsal::Outcome outcome;
    std::string error;
    ASSERT_TRUE(RunOnce(stage, answers, outcome, error)) << error;
    EXPECT_EQ(outcome.problems, std::vector<std::string>{}) << "road " << i + 1;
    EXPECT_EQ(outcome.run.exitStatus, road.run.exitStatus) << "road " << i + 1;
    EXPECT_EQ(outcome.run.microseconds, road.run.microseconds) << "road " << i + 1;
    EXPECT_EQ(outcome.run.writes, road.run.writes) << "road " << i + 1;
    EXPECT_EQ(outcome.lines, road.lines) << "road " << i + 1;
    const BoardAfter& told = report.boards[road.run.board];
    const BoardAfter left = stage.Describe(outcome.images);
    ASSERT_EQ(left.devices.size(), told.devices.size()) << "road " << i + 1;
    for (std::size_t device = 0; device < left.devices.size(); ++device)
      EXPECT_EQ(left.devices[device].after, told.devices[device].after) << "road " << i + 1;
  }
}

TEST_F(Roads, AreFoundAndGoAsTold) {
  struct Row {
    const char* name;
    std::string text;
    const char* summary;
    std::size_t step = 1;
  };
  const std::string kFields = "FRUNAME SYSTEM\nFRUAREA Product\n";
  // clang-format off
  const Row kRows[] = {
      {"MASTER.CFG", "", "20 roads, 9 boards"},
      {"IDENTIFY.CFG", "", "500 roads, 1 boards", 23},
      {"MENU30.CFG", "MENUTITLE M\n" + Times(30, "MENU T# \"Item #\"\n") + "MENUPROMPT\nIFSET T28\nCLEARSDR\nENDIF\nIFSET T29\nBOOT\nENDIF\n",
       "30 roads, 2 boards, line 37, tag T29"},
      // Twelve questions of which each matters alone.
      {"TWELVE.CFG", Times(12, "PROMPT \"Q#\"\nYES T#\nIFSET T#\nDISPLAY x\nENDIF\n"), "13 roads, 1 boards"},
      // All six count at the end, where two of them make one difference.
      {"LATE.CFG",
       Times(6, "PROMPT \"Q#\"\nYES T#\n") + kFields + "IFSET T0\nFRUFIELD PV V1\nENDIF\n" +
           "IFSET T1 T2\nFRUFIELD AT A1\nENDIF\nIFSET T3 T4 T5\nFRUFIELD S# S1\nENDIF\n",
       "64 roads, 8 boards", 5},
      {"HALF.CFG", "PROMPT Q\nYES A\nIFSET A\nCLEARSDR\nSDRNAME NONE.SDR\nENDIF\n", "2 roads, 2 boards, broken 1"},
      {"TAGS.CFG", "PROMPT Q\nYES A\nNO B\nIFSET A B\nBOOT\nENDIF\nIFSET C\nELSE\nBOOT\nENDIF\n",
       "2 roads, 1 boards, line 5, tag C"},
      {"VALUE.CFG", kFields + "FRUFIELD S# @STDIN:ASCII\n", "2 roads, 1 boards"},
      {"PROBES.CFG", "PROBE SYSTEM HEARTH\nFOUND H\nPROBE DEVICE_ID C0 0 0C01\nFOUND B NO_B\nIFSET H NO_B\nCLEARSDR\nENDIF\n",
       "6 roads, 2 boards"},
      {"REFUSED.CFG", "PROMPT Q\nNONSENSE\n", "1 roads, 1 boards"},
      // The file's header is another than the device's.
      {"WHOLE.CFG", "FRUNAME HEARTHS2.FRU\nFRUADDRESS 02\nFRUAREA Header\n", "2 roads, 1 boards"},
  };
  // clang-format on
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    const auto stage = OpenScript(row.name, row.text);
    const Report report = GoAll(*stage);
    EXPECT_EQ(Summary(report), row.summary);
    ExpectRoadsGoAsTold(*stage, report, row.step);
  }
}

// A process goes on with the first answer of each state that it sees first: there it died.
TEST(RoadMap, ADeathStandsAtTheAnswerThatLedToIt) {
  Trace state{.state = 1, .alternatives = {"Y", "N"}};
  Trace leaf{.kind = TraceKind::Leaf, .path = {{.state = 1, .alternative = 1, .text = "N"}}};
  Trace death{.kind = TraceKind::Death};
  death.outcome.run.message = "SIGSEGV";
  RoadMap map;
  for (Trace* trace : {&state, &leaf, &death}) ASSERT_TRUE(map.Take(ToWire(*trace)));
  const State& seen = map.states.at(map.start->state);
  ASSERT_TRUE(seen.ways.contains(0) && seen.ways.contains(1));
  EXPECT_EQ(map.leaves[seen.ways.at(0).leaf].outcome.run.message, "SIGSEGV");
  EXPECT_EQ(seen.ways.at(0).text, "Y");
  EXPECT_EQ(map.leaves[seen.ways.at(1).leaf].kind, TraceKind::Leaf);
}

}  // namespace
}  // namespace varnok::testing
