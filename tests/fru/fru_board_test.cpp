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
    machine.files[sample] = ContentOf(VARNOK_SOURCE_DIR "/samples/" + sample);
    ASSERT_EQ(FruData::LoadConfigurationFromFile(sample), kSuccess) << LastFruError();
    ASSERT_EQ(FruData::CommitConfigurationToSystem(true), kSuccess) << machine.console << LastFruError();
  }
  void ExpectShown(const std::string& address, std::string_view text) {
    int count = 0;
    ASSERT_EQ(ParseAddress(address, count), kSuccess);
    machine.console.clear();
    ASSERT_EQ(FruData::DisplaySelectedFru(), kSuccess) << LastFruError();
    EXPECT_TRUE(Says(text)) << address << machine.console;
  }
};

TEST_F(FruOnBoard, ProgramsTheSamples) {
  Program("minimal.fru");
  const Bytes fields = Fields({"Varnok Works", "Hearth Riser", "0000000000", "VW-RC-R1", ""});
  Bytes wanted = Join({Header({0, 0, 1, 0, 0}), Area(8, Join({Bytes(4, 0), fields}))});
  wanted.resize(256, 0xFF);
  EXPECT_EQ(ReadFile("spare.bin"), wanted);
  Program("server-board.fru");
  ExpectShown("IMBDEVICE 00", " Record 2 (Type C0h, Version 2, Length 23)\n");
  Program("eeprom.fru");
  EXPECT_TRUE(Says("\nFRU AT24CO2 on bus 03h, Device ID 00h, IPMB adresss A0h, Lun 00h\n"));
  ExpectShown("AT24C02 03 A0", " Product Version  (binary)      = 04 01 \n");
  ExpectShown("IMBDEVICE 02", " Record 24 (");  // past the first KiB
  ExpectShown("DS1624S 05 90 C20", "Hearth Front Panel");
  ExpectShown("IMBDEVICE 00 00 C0", "Hearth S2 Backplane");  // bridged on channel 0
}

}  // namespace
}  // namespace varnok
