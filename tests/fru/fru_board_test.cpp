// The samples on the simulated board: programmed, verified, shown, and the bytes that the board's folder then
// holds.
#include <fstream>

#include "tests/fru/fru_test.h"
#include "tests/sim/board_fixture.h"

namespace varnok {
namespace {

using namespace testing;

class FruOnBoard : public FruTestOn<BoardTest> {
 protected:
  void SetUp() override {
    OpenDefault();
    machine.protocol = board->InstalledIpmi();
    ASSERT_EQ(IpmiLoadProtocol(), ipmi_result::kSuccess);
    ASSERT_EQ(FruData::Initialize(), kSuccess);
  }
  void Program(const std::string& sample) {
    machine.files[sample] = ContentOf(VARNOK_SAMPLES "/" + sample);
    ASSERT_EQ(FruData::LoadConfigurationFromFile(sample), kSuccess) << LastFruError();
    ASSERT_EQ(FruData::CommitConfigurationToSystem(true), kSuccess) << machine.console << LastFruError();
  }
  void Show(const std::string& address) {
    int count = 0;
    ASSERT_EQ(ParseAddress(address, count), kSuccess);
    machine.console.clear();
    ASSERT_EQ(FruData::DisplaySelectedFru(), kSuccess) << LastFruError();
  }
};

TEST_F(FruOnBoard, ProgramsTheSamples) {
  Program("minimal.fru");
  const Bytes fields = Fields({"Varnok Works", "Hearth Riser", "0000000000", "VW-RC-R1", ""});
  Bytes wanted = Join({Header({0, 0, 1, 0, 0}), Area(8, Join({Bytes(4, 0), fields}))});
  wanted.resize(256, 0xFF);
  EXPECT_EQ(ReadFile("spare.bin"), wanted);
  Program("server-board.fru");
  Show("IMBDEVICE 00");
  EXPECT_TRUE(Says(" Record 2 (Type C0h, Version 2, Length 23)\n"));
  Program("eeprom.fru");
  EXPECT_TRUE(Says("\nFRU AT24CO2 on bus 03h, Device ID 00h, IPMB adresss A0h, Lun 00h\n"));
  Show("AT24C02 03 A0");
  EXPECT_TRUE(Says(" Product Version  (binary)      = 04 01 \n")) << machine.console;
}

TEST_F(FruOnBoard, ShowsEveryKindOfDevice) {
  for (auto [address, text] : {std::pair{"IMBDEVICE 02", " Record 24 ("},  // past the first KiB
                               {"IMBDEVICE 00 CC0", "Hearth S2 Backplane"},
                               {"DS1624S 05 90 C20", "Hearth Front Panel"},
                               {"IMBDEVICE 00 00 C0", "Hearth S2 Backplane"}}) {  // bridged on channel 0
    Show(address);
    EXPECT_TRUE(Says(text)) << address;
  }
  int count = 0;
  ASSERT_EQ(ParseAddress("IMBDEVICE 01 FF 20", count), kSuccess);
  machine.console.clear();
  ExpectFailure(FruData::DisplaySelectedFru(), kDeviceNotFound, "The selected FRU is not an IPMI FRU.");
  EXPECT_EQ(machine.console, "\nCould not find the specified FRU Device.\n\n\n") << "an erased device";
}

}  // namespace
}  // namespace varnok
