// Probes over the simulated default board, through the whole program.
#include "tests/cfg/board_script_test.h"

namespace varnok {
namespace {

using ProbeBoard = testing::BoardScript;

TEST_F(ProbeBoard, AnswersAsWritten) {
  ExpectRows("answers.txt", "", "IFSET YES\nDISPLAY yes\nENDIF\nIFSET NO\nDISPLAY no\nENDIF\n");
}

TEST_F(ProbeBoard, SampleIdentifiesTheBoard) {
  EXPECT_EQ(Run(Sample("IDENTIFY.CFG")), 0) << message;
  EXPECT_EQ(machine.console,
            "Hearth S2 server board.\nTwo processors.\nMemory modules of 16 GiB or more.\n"
            "Drive backplane with its controller.\nPower supply with inventory data.\n"
            "Chassis of two rack units.\n");
  EXPECT_THAT(Traffic(), ::testing::HasSubstr("> 20 32/0 10 43 68 61 73 73 69 73\n"));
}

}  // namespace
}  // namespace varnok
