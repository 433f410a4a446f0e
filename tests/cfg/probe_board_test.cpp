// Probes over the simulated default board, through the whole program.
#include "tests/cfg/board_script_test.h"

namespace varnok {
namespace {

using ::testing::HasSubstr;

class ProbeBoard : public testing::BoardScript {
 protected:
  /// Expects the same answer of each probe of a list ("a; b; c") behind other lines: "yes", "no", or the exit
  /// status with the message.
  void ExpectAnswers(const std::string& probes, const std::string& answer, const std::string& before = "") {
    for (const std::string& probe : testing::Split(probes)) {
      int status = Run(before + "PROBE " + probe +
                       "\nFOUND YES NO\nIFSET YES\nDISPLAY yes\nENDIF\nIFSET NO\nDISPLAY no\nENDIF\n");
      EXPECT_EQ(status == 0 ? machine.console : std::to_string(status) + " " + message + "\n", answer + "\n")
          << probe;
    }
  }
};

TEST_F(ProbeBoard, DefaultBoardAnswersEveryProbe) {
  ExpectAnswers(
      "SYSTEM HEARTH; BOARD_ID d; BIOSVER 40-50 62+; DIMM 16384; PROCESSOR 2; PROCESSOR 1 0 06 40; "
      "PROCESSOR 1 0 00 02 06 40; PROCESSOR_FAMILY_MODEL 1 6 24; PROCESSOR_CORES 1 8; PROCESSOR_TDC 1 5A; "
      "BMC_TYPE; BMCVER 01.05+; HSCVER BOOT 01.12; DEVICE_ID C0 0 0C01; DEVICE_ID 2C 6; DEVICE_ID 20 0 4311; "
      "BMCCONFIG Region EU; QRX_TYPE; BASEBOARD_PRODID 2E; BASEBOARD_REVID 3; PING 03 A0; IMBDEVICE 02; "
      "IMBDEVICE FF 20; IMBDEVICE 0 FF 20; DS1624S 05 90; AT24C02 03 A0; DISCRETE_SENSOR 60 83 00 80 00; "
      "FAN_SIGNAL 2 0",
      "yes");
  ExpectAnswers(
      "HWID 1234; K410V_SYS; PROCESSOR 3; DEVICE_ID C2 0; DEVICE_ID 30 0; DEVICE_ID C0 0 0C02; "
      "BMCCONFIG Planet EU; PING 03 A2; IMBDEVICE 01; IMBDEVICE 09; AT24C02 03 A2; DS1624S 05 92; "
      "DISCRETE_SENSOR 6B 00 00 00 00; FAN_SIGNAL 2 1",
      "no");
}

TEST_F(ProbeBoard, FailedQueryEndsTheScriptWithItsOwnExitStatus) {
  ExpectAnswers("FAN_SIGNAL 9 0", "7 Invalid value returned by the BMC.\n");
  ExpectAnswers("DISCRETE_SENSOR F0 0 0 0 0", "7 ");
}

TEST_F(ProbeBoard, FieldOfTheSelectedArea) {
  const std::string fru = "FRUNAME SYSTEM\n", board = fru + "FRUAREA Board\n";
  ExpectAnswers("FRUFIELD PN hearth; FRUFIELD S# VWSB25061234; FRUFIELD AM MAC", "yes", board);
  // The second is longer than the field.
  ExpectAnswers("FRUFIELD pn \"Hearth S3\"; FRUFIELD S# VWSB250612345", "no", board);
  ExpectAnswers("FRUFIELD PV x; FRUFIELD XY x", "7 No such FRU field.", board);
  ExpectAnswers("FRUFIELD PV r3; FRUFIELD AM \"Configuration B\"", "yes", fru + "FRUAREA Product\n");
  ExpectAnswers("FRUFIELD P# VW-CH2U; FRUFIELD AM \"2U rack\"", "yes", fru + "FRUAREA Chassis\n");
  ExpectAnswers("FRUFIELD PN hearth", "yes", board + "IFSET NONE\nFRUNAME SYSTEM\nENDIF\n");
  const std::string noArea = "7 Select an area before performing the probe operation.";
  ExpectAnswers("FRUFIELD PN x", noArea);
  ExpectAnswers("FRUFIELD PN x", noArea, board + "SET T\nIFSET T\nFRUNAME SYSTEM\nENDIF\n");
  EXPECT_EQ(Run("PROBE FRUFIELD PN x\n" + board), 7) << "the area stands behind the probe";
  EXPECT_EQ(Run("FRUNAME SYSTEM\nPROBE FRUFIELD PN x\nFRUAREA Board\n"), 7);
}

TEST_F(ProbeBoard, SampleIdentifiesTheBoard) {
  EXPECT_EQ(Run(Sample("IDENTIFY.CFG")), 0) << message;
  EXPECT_EQ(machine.console,
            "Hearth S2 server board.\nTwo processors.\nMemory modules of 16 GiB or more.\n"
            "Drive backplane with its controller.\nPower supply with inventory data.\n"
            "Chassis of two rack units.\n");
  EXPECT_THAT(Traffic(), HasSubstr("> 20 32/0 10 43 68 61 73 73 69 73\n"));
}

}  // namespace
}  // namespace varnok
