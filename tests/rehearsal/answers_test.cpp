// Answers from a file, and what becomes of a run that they do not fit.
#include "rehearsal/answers.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>

#include "rehearsal/run_once.h"
#include "tests/support/host_files.h"

namespace varnok::testing {
namespace {

using namespace rehearsal;

constexpr const char* kScript =
    "MENUTITLE \"Which = one?\"\nMENU RACK \"A rack\"\nMENU NONE None\nMENUPROMPT\n"
    "PROMPT \"Go on?\"\nYES ON\nPROBE SYSTEM HEARTH\nFOUND H\n"
    "IFSET ON RACK\nFRUNAME SYSTEM\nFRUAREA Product\nFRUFIELD S# @STDIN:ASCII\nENDIF\n";

class AnswersOfRuns : public ::testing::Test {
 protected:
  AnswersOfRuns() {
    std::string error;
    EXPECT_TRUE(sim::Board::CreateDefault(folder.Path() / "board", error)) << error;
    std::ofstream(folder.Path() / "S.CFG") << kScript;
    std::string path = (folder.Path() / "S.CFG").string();
    path.front() = '\\';
    stage = Stage::Open(folder.Path() / "board", {"/cfg", path}, error);
    EXPECT_NE(stage, nullptr) << error;
  }

  rehearsal::Outcome Run(Answerer& answerer) {
    rehearsal::Outcome outcome;
    std::string error;
    EXPECT_TRUE(RunOnce(*stage, answerer, outcome, error)) << error;
    return outcome;
  }

  TemporaryFolder folder;
  std::unique_ptr<Stage> stage;
};

TEST_F(AnswersOfRuns, FitOrAreTold) {
  struct Row {
    const char* file;
    const char* result;  ///< what was answered, or the first problem
  };
  const Row kRows[] = {
      {"\"which = ONE?\" = a rack\nGo  on? = y\nProduct Serial Number = SN42\n", "1 Y yes SN42"},
      {"# remark\n* = 2\nline 5 = no\nline 7 = failing\n",
       "line 7: PROBE SYSTEM HEARTH asks nothing that could fail"},
      {"* menu = 1\n* prompt = Y\n* value = \" a \"\n", "1 Y yes  a "},
      {"* = 2\nGo on? = N\nPROBE SYSTEM HEARTH = no\n", "2 N no"},
      // A value that is refused, then the next line's.
      {"* menu = 1\n* prompt = Y\n* value = X\n* value = SN42\n", "1 Y yes X! SN42"},
      {"* menu = 1\n* prompt = Y\n* value = X\n", "line 12: \"X\" is refused for \"Product Serial Number\""},
      {"* menu = 3\n", "line 1: \"3\" is no answer to \"Which = one?\""},
      {"* menu = 1\n", "line 5: there is no answer to \"Go on?\""},
      {"* = 2\nGo on? = Y\nGone = Y\n", "line 3 of the answers was not used"},
      {"* = 2\nGo on? = Y\nline 7 = maybe\n",
       "line 7: a probe comes to yes, no or failing, not to \"maybe\""},
      {"Go on? Y\n", "line 1: is not QUESTION = ANSWER"},
      {"\n* colour = Y\n", "line 2: behind * stands prompt, menu, header, value or probe, or nothing"},
  };
  for (const Row& row : kRows) {
    AnswerFile file;
    std::string result;
    if (file.Parse(row.file, result)) {
      const rehearsal::Outcome outcome = Run(file);
      for (const Given& given : outcome.given)
        result += (result.empty() ? "" : " ") + given.text + (given.isInvalid ? "!" : "");
      if (!outcome.problems.empty()) result = outcome.problems.front();
      // What is recorded runs the same road.
      AnswerFile again;
      std::string error;
      EXPECT_TRUE(again.Parse(AnswerText(outcome.given), error)) << error;
      if (outcome.problems.empty() && result.find("no") == std::string::npos) {
        EXPECT_EQ(Run(again).given, outcome.given) << row.file;
      }
    }
    EXPECT_EQ(result, row.result) << row.file;
  }
}

TEST(AnswerText, LeavesOutAMenuNumberThatNoItemHas) {
  const Question menu{.kind = QuestionKind::Menu, .text = "Which?", .choices = {"A rack"}};
  EXPECT_EQ(AnswerText({{menu, "7", true}, {menu, "1"}}), "Which? = A rack\n");
}

/// The program dies at its first question.
class DeadlyAnswers : public Answerer {
 public:
  std::optional<std::string> Answer(Performance&, const Inquiry&) override {
    raise(SIGSEGV);
    return "";
  }
};

TEST_F(AnswersOfRuns, ADeathIsAnOutcome) {
  signal(SIGSEGV, SIG_DFL);
  DeadlyAnswers deadly;
  const rehearsal::Outcome outcome = Run(deadly);
  EXPECT_EQ(outcome.run.message, "SIGSEGV");
  EXPECT_EQ(outcome.run.exitStatus, 128 + SIGSEGV);
}

}  // namespace
}  // namespace varnok::testing
