// The samples on the simulated board: programmed, verified, shown, and the bytes that the board's folder then
// holds.
#include <gtest/gtest.h>

#include <fstream>

#include "fru/fru_data.h"
#include "platform/ipmi.h"
#include "sim/board.h"
#include "tests/fru/images.h"
#include "tests/sim/board_fixture.h"

namespace varnok {
namespace {

using testing::LastFruError;

class FruOnBoard : public testing::BoardTest {
 protected:
  void SetUp() override {
    BoardTest::SetUp();
    OpenDefault();
    machine.protocol = board->InstalledIpmi();
    IpmiReset();
    ASSERT_EQ(IpmiLoadProtocol(), ipmi_result::kSuccess);
    ASSERT_EQ(FruData::Initialize(), kSuccess);
  }
  void TearDown() override {
    FruData::Reset();
    IpmiReset();
    BoardTest::TearDown();
  }
  void Program(const std::string& sample) {
    std::ifstream file(VARNOK_SAMPLES "/" + sample, std::ios::binary);
    machine.files[sample] = std::string(std::istreambuf_iterator<char>(file), {});
    ASSERT_EQ(FruData::LoadConfigurationFromFile(sample), kSuccess) << LastFruError();
    ASSERT_EQ(FruData::CommitConfigurationToSystem(true), kSuccess) << machine.console << LastFruError();
  }
  void Show(std::vector<const char*> arguments) {
    int count = 0;
    ASSERT_EQ(FruData::ParseFruAddress(static_cast<int>(arguments.size()), arguments.data(), count),
              kSuccess);
    machine.console.clear();
    ASSERT_EQ(FruData::DisplaySelectedFru(), kSuccess) << LastFruError();
  }
  bool Says(std::string_view text) const { return machine.console.find(text) != std::string::npos; }

  testing::TestFirmware machine;
};

TEST_F(FruOnBoard, ProgramsTheMinimalSampleByteForByte) {
  Program("minimal.fru");
  testing::Bytes wanted = testing::Join({{0x01, 0, 0, 0x01, 0, 0, 0, 0xFE},
                                         {1, 8, 0, 0, 0, 0},
                                         testing::Field("Varnok Works"),
                                         testing::Field("Hearth Riser"),
                                         testing::Field("0000000000"),
                                         testing::Field("VW-RC-R1"),
                                         testing::Field(""),
                                         {0xC1},
                                         testing::Bytes(9, 0),
                                         {0x25}});
  wanted.resize(256, 0xFF);
  EXPECT_EQ(ReadFile("spare.bin"), wanted);
  Show({"IMBDEVICE", "01"});
  EXPECT_TRUE(Says(" Product Name     (ASCII)       = Hearth Riser\n"));
}

TEST_F(FruOnBoard, ProgramsTheServerBoard) {
  Program("server-board.fru");
  testing::Bytes image = ReadFile("board.bin");
  for (auto [begin, length] : {std::pair{0, 8}, {24, 64}, {88, 120}, {208, 120}})
    EXPECT_EQ(testing::Complement(testing::Bytes(image.begin() + begin, image.begin() + begin + length)), 0)
        << begin;
  machine.console.clear();
  ASSERT_EQ(FruData::DisplaySelectedFru(), kSuccess);
  for (const char* line : {"Internal Information Area (Version 1, Length 16)\n",
                           " Additional Field (ASCII)       = 2U rack, 12 bays\n",
                           " Manufacturing Time(mins)       = 15498728\n",
                           " Mftr FRU File ID (ASCII)       = server-board.fru\n",
                           " Additional Field (ASCII)       = Configuration B\n",
                           " Record 2 (Type C0h, Version 2, Length 23)\n"})
    EXPECT_TRUE(Says(line)) << line;
}

TEST_F(FruOnBoard, ProgramsTheEepromOnItsPrivateBus) {
  Program("eeprom.fru");
  EXPECT_TRUE(Says("\nFRU AT24CO2 on bus 03h, Device ID 00h, IPMB adresss A0h, Lun 00h\n"));
  Show({"AT24C02", "03", "A0"});
  EXPECT_TRUE(Says(" Product Version  (binary)      = 04 01 \n")) << machine.console;
  EXPECT_TRUE(Says("MultiRecord Area (Version 2, Length 18)\n"));
}

TEST_F(FruOnBoard, ShowsEveryKindOfDevice) {
  Show({"IMBDEVICE", "02"});
  EXPECT_TRUE(Says(" Record 24 (")) << "past the first KiB";
  Show({"IMBDEVICE", "00", "CC0"});
  EXPECT_TRUE(Says("Hearth S2 Backplane"));
  Show({"DS1624S", "05", "90", "C20"});
  EXPECT_TRUE(Says("Hearth Front Panel"));
  Show({"IMBDEVICE", "00", "00", "C0"});
  EXPECT_TRUE(Says("Hearth S2 Backplane")) << "bridged on channel 0";
  int count = 0;
  const char* erased[] = {"IMBDEVICE", "01", "FF", "20"};
  ASSERT_EQ(FruData::ParseFruAddress(4, erased, count), kSuccess);
  EXPECT_EQ(FruData::DisplaySelectedFru(), fru_status::kDeviceNotFound);
  EXPECT_EQ(LastFruError(), "The selected FRU is not an IPMI FRU.");
}

}  // namespace
}  // namespace varnok
