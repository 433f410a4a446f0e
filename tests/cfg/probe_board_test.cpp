// Probes over the simulated default board, through the whole program.
#include <gmock/gmock.h>

#include "tests/cfg/board_script_test.h"

namespace varnok {
namespace {

using ::testing::HasSubstr;

class ProbeBoard : public testing::BoardScript {
 protected:
  /// "yes", "no", or the exit status with the message.
  std::string Ask(const std::string& before, const std::string& probe) {
    int status = Run(before + "PROBE " + probe +
                     "\nFOUND YES NO\nIFSET YES\nDISPLAY yes\nENDIF\nIFSET NO\nDISPLAY no\nENDIF\n");
    if (status != 0) return std::to_string(status) + " " + message;
    return machine.console.substr(0, machine.console.find('\n'));
  }
  std::string Ask(const std::string& probe) { return Ask("", probe); }
};

TEST_F(ProbeBoard, DefaultBoardAnswersEveryProbe) {
  for (const char* probe : {"SYSTEM HEARTH",
                            "BOARD_ID d",
                            "BIOSVER 40-50 62+",
                            "DIMM 16384",
                            "PROCESSOR 2",
                            "PROCESSOR 1 0 06 40",
                            "PROCESSOR 1 0 00 02 06 40",
                            "PROCESSOR_FAMILY_MODEL 1 6 24",
                            "PROCESSOR_CORES 1 8",
                            "PROCESSOR_TDC 1 5A",
                            "BMC_TYPE",
                            "BMCVER 01.05+",
                            "HSCVER BOOT 01.12",
                            "DEVICE_ID C0 0 0C01",
                            "DEVICE_ID 2C 6",
                            "DEVICE_ID 20 0 4311",
                            "BMCCONFIG Region EU",
                            "QRX_TYPE",
                            "BASEBOARD_PRODID 2E",
                            "BASEBOARD_REVID 3",
                            "PING 03 A0",
                            "IMBDEVICE 02",
                            "IMBDEVICE FF 20",
                            "IMBDEVICE 0 FF 20",
                            "DS1624S 05 90",
                            "AT24C02 03 A0",
                            "DISCRETE_SENSOR 60 83 00 80 00",
                            "FAN_SIGNAL 2 0"})
    EXPECT_EQ(Ask(probe), "yes") << probe;
  for (const char* probe :
       {"HWID 1234", "K410V_SYS", "PROCESSOR 3", "DEVICE_ID C2 0", "DEVICE_ID 30 0", "DEVICE_ID C0 0 0C02",
        "BMCCONFIG Planet EU", "PING 03 A2", "IMBDEVICE 01", "IMBDEVICE 09", "AT24C02 03 A2", "DS1624S 05 92",
        "DISCRETE_SENSOR 6B 00 00 00 00", "FAN_SIGNAL 2 1"})
    EXPECT_EQ(Ask(probe), "no") << probe;
}

TEST_F(ProbeBoard, FailedQueryEndsTheScriptWithItsOwnExitStatus) {
  EXPECT_EQ(Ask("FAN_SIGNAL 9 0"), "7 Invalid value returned by the BMC.\n");
  EXPECT_EQ(Ask("DISCRETE_SENSOR F0 0 0 0 0"), "7 ");
  EXPECT_EQ(Ask("PING x"),
            "6 Invalid input in file 'T.CFG' at line 1:\n   Too many parameters for the PING command.");
}

TEST_F(ProbeBoard, FieldOfTheSelectedArea) {
  const std::string board = "FRUNAME SYSTEM\nFRUAREA Board\n", product = "FRUNAME SYSTEM\nFRUAREA Product\n",
                    chassis = "FRUNAME SYSTEM\nFRUAREA Chassis\n";
  EXPECT_EQ(Ask(board, "FRUFIELD PN hearth"), "yes");
  EXPECT_EQ(Ask(board, "FRUFIELD pn \"Hearth S3\""), "no");
  EXPECT_EQ(Ask(board, "FRUFIELD S# VWSB25061234"), "yes");
  EXPECT_EQ(Ask(board, "FRUFIELD S# VWSB250612345"), "no") << "longer than the field";
  EXPECT_EQ(Ask(board, "FRUFIELD AM MAC"), "yes");
  EXPECT_EQ(Ask(product, "FRUFIELD PV r3"), "yes");
  EXPECT_EQ(Ask(product, "FRUFIELD AM \"Configuration B\""), "yes");
  EXPECT_EQ(Ask(chassis, "FRUFIELD P# VW-CH2U"), "yes");
  EXPECT_EQ(Ask(chassis, "FRUFIELD AM \"2U rack\""), "yes");
  EXPECT_EQ(Ask(board, "FRUFIELD PV x"), "7 No such FRU field.");
  EXPECT_EQ(Ask(board, "FRUFIELD XY x"), "7 No such FRU field.");
  EXPECT_EQ(Ask(board + "IFSET NONE\nFRUNAME SYSTEM\nENDIF\n", "FRUFIELD PN hearth"), "yes") << "not taken";
  const std::string noArea = "7 Select an area before performing the probe operation.";
  EXPECT_EQ(Ask("FRUFIELD PN x"), noArea);
  EXPECT_EQ(Ask(board + "SET T\nIFSET T\nFRUNAME SYSTEM\nENDIF\n", "FRUFIELD PN x"), noArea) << "taken";
  EXPECT_EQ(Run("PROBE FRUFIELD PN x\n" + board), 7) << "the area stands behind the probe";
  EXPECT_EQ(Run("FRUNAME SYSTEM\nPROBE FRUFIELD PN x\nFRUAREA Board\n"), 7);
}

TEST_F(ProbeBoard, SampleIdentifiesTheBoard) {
  std::string script = ReadHostFile(std::filesystem::path(VARNOK_SAMPLES) / "IDENTIFY.CFG");
  EXPECT_EQ(Run(script), 0) << message;
  EXPECT_EQ(machine.console,
            "Hearth S2 server board.\nTwo processors.\nMemory modules of 16 GiB or more.\n"
            "Drive backplane with its controller.\nPower supply with inventory data.\n"
            "Chassis of two rack units.\n");
  EXPECT_THAT(Traffic(), HasSubstr("> 20 32/0 10 43 68 61 73 73 69 73\n"));
}

}  // namespace
}  // namespace varnok
