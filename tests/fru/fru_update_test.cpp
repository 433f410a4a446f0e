// Writing with verification, and the display.
#include <gtest/gtest.h>

#include "app/services/console.h"
#include "app/services/text_output.h"
#include "fru/fru.h"
#include "fru/fru_data.h"
#include "fru/fru_status.h"
#include "tests/fru/images.h"
#include "tests/fru/memory_fru.h"
#include "tests/support/scripted_ipmi.h"

namespace varnok {
namespace {

using namespace testing;

constexpr std::string_view kAddressLine = "on bus FFh, Device ID 00h, IPMB adresss 20h, Lun 00h\n";
constexpr FruAreaId kAllAreas[] = {FruAreaId::CommonHeaderArea, FruAreaId::InternalUseArea,
                                   FruAreaId::ChassisInfoArea,  FruAreaId::BoardInfoArea,
                                   FruAreaId::ProductInfoArea,  FruAreaId::MultiRecordArea};

class FruUpdate : public ::testing::Test {
 protected:
  void SetUp() override { Start(FullImage()); }
  void TearDown() override { FruData::Reset(); }
  void Start(const Bytes& image) {
    FruData::Reset();
    device.image = image;
    fru = std::make_unique<CFru>();
    ASSERT_EQ(fru->LoadFromSystem({}), kSuccess) << LastFruError();
    machine.console.clear();
    device.log.clear();
  }
  void SetModes(FruWriteMode mode) {
    for (FruAreaId area : kAllAreas) ASSERT_EQ(fru->SetAreaWriteMode(area, mode, kAllMultiRecords), kSuccess);
  }
  bool Says(std::string_view text) const { return machine.console.find(text) != std::string::npos; }

  TestFirmware machine;
  MemoryFru device{machine};
  std::unique_ptr<CFru> fru;
};

TEST_F(FruUpdate, WritesEveryAreaInOrderAndVerifies) {
  const Bytes wanted = device.image;
  std::fill(device.image.begin(), device.image.end(), std::uint8_t{0xFF});
  ASSERT_EQ(fru->WriteToSystem(), kSuccess) << machine.console;
  EXPECT_EQ(device.image, wanted);
  EXPECT_EQ(machine.console,
            "\nFRU IMBDEVICE " + std::string(kAddressLine) +
                "Loading Common Header Area\nLoading FRU Internal Use Area\nLoading FRU Chassis Info Area\n"
                "Loading FRU Board Info Area\nLoading FRU Product Info Area\nLoading FRU Multi Record Area\n"
                "\nFRU File Area(s) successfully loaded into FRU memory.\n");
  // 1 + 1 + 5 + 6 + 6 chunks of eight; five headers' bytes one by one and the data, twice. Then the device is
  // read as for a display, and nothing else is sent.
  std::vector<std::string> written(device.log.begin(), device.log.begin() + 31);
  EXPECT_EQ(device.CountOf("0A/12"), 31);
  EXPECT_EQ(device.log.size(), 31u + 27u);
  EXPECT_EQ(written[0], "0A/12: 00 00 00 01 01 02 07 0D 13 00 D5");
  EXPECT_EQ(written[1], "0A/12: 00 08 00 01 02 03 04 05 06 07 08");
  EXPECT_EQ(written[19], "0A/12: 00 98 00 C0");
  EXPECT_EQ(written[24], "0A/12: 00 9D 00 01 02 03");
  EXPECT_EQ(written[30], "0A/12: 00 A5 00 04 05 06 07");
  EXPECT_EQ(device.log[31], "0A/11: 00 00 00 08");
}

TEST_F(FruUpdate, SkippedAreasKeepTheirPlaceAndAreNotCompared) {
  ASSERT_EQ(fru->SetAreaWriteMode(FruAreaId::ChassisInfoArea, FruWriteMode::Skip, 0), kSuccess);
  const Bytes wanted = device.image;
  device.image[20] ^= 0x20;  // the chassis part number, with its checksum
  device.image[55] = static_cast<std::uint8_t>(device.image[55] + (wanted[20] - device.image[20]));
  std::fill(device.image.begin() + 56, device.image.begin() + 104, std::uint8_t{0xFF});
  ASSERT_EQ(fru->WriteToSystem(), kSuccess) << machine.console;
  EXPECT_FALSE(Says("Loading FRU Chassis Info Area"));
  EXPECT_NE(device.image[20], wanted[20]);
  EXPECT_TRUE(std::equal(wanted.begin() + 56, wanted.end(), device.image.begin() + 56));
}

TEST_F(FruUpdate, ComparesWithoutWritingInModeTwo) {
  SetModes(FruWriteMode::Verify);
  ASSERT_EQ(fru->WriteToSystem(), kSuccess);
  EXPECT_EQ(device.CountOf("0A/12"), 0);
  EXPECT_EQ(
      machine.console,
      "\nFRU IMBDEVICE " + std::string(kAddressLine) +
          "Verifying Common Header Area\nVerifying FRU Internal Use Area Length\n"
          "Verifying FRU Chassis Info Area\nVerifying FRU Board Info Area\nVerifying FRU Product Info Area\n"
          "Verifying FRU Multi Record Area\n\nFRU File Area(s) Verification Successful.\n");
}

TEST_F(FruUpdate, EachDifferenceHasItsLine) {
  // A change of one byte, made good in the checksum at `checksum` so that the device reads well.
  struct Case {
    const char* rule;
    std::size_t offset;
    std::size_t checksum;
    const char* line;  ///< null: not compared
  };
  const Case cases[] = {
      {"header pad", 6, 7, "\nHeader Area is different between the file and the memory.\n"},
      {"internal use content", 12, 12, nullptr},
      {"chassis type", 18, 55, "\nChassis Info Area is different between the file and the memory.\n"},
      {"board language", 58, 103, nullptr},
      {"board date", 61, 103, nullptr},
      {"board manufacturer", 64, 103, "\nBoard Info Area is different between the file and the memory.\n"},
      {"product language", 106, 151, "\nProduct Info Area is different between the file and the memory.\n"},
      {"record type", 160, 164, "\nMultiRecord area is different between the file and the memory.\n"},
  };
  for (const Case& difference : cases) {
    Start(FullImage());
    SetModes(FruWriteMode::Verify);
    ++device.image[difference.offset];
    if (difference.checksum != difference.offset) --device.image[difference.checksum];
    EXPECT_EQ(fru->WriteToSystem(), difference.line == nullptr ? kSuccess : fru_status::kUnexpected)
        << difference.rule;
    if (difference.line == nullptr) continue;
    EXPECT_TRUE(Says(difference.line)) << difference.rule;
    EXPECT_TRUE(Says("\nVerification of one or more FRU File Area(s) failed.\n"));
  }
}

TEST_F(FruUpdate, ComparesRecordDataOverTheProductAreasLength) {
  auto verify = [&](const Bytes& memory, const Bytes& onDevice) {
    Start(memory);
    SetModes(FruWriteMode::Verify);
    device.image = onDevice;
    return fru->WriteToSystem();
  };
  Bytes product = Join({Header({0, 0, 0, 1, 7}), Area(6, ProductContent())});
  Bytes records = Header({0, 0, 0, 0, 1});
  // The data checksum keeps the header the same: only the data tell.
  EXPECT_EQ(verify(Join({product, Record(1, {5, 6}, true)}), Join({product, Record(1, {6, 5}, true)})),
            fru_status::kUnexpected);
  EXPECT_TRUE(Says("\nMulti Record area is different between the file and the memory.\n"));
  EXPECT_EQ(verify(Join({records, Record(1, {5, 6}, true)}), Join({records, Record(1, {6, 5}, true)})),
            kSuccess)
      << "without a product area nothing of the data is compared";
  Bytes shorter = Record(1, {5, 6}, true);
  Bytes longer = Join({Record(1, {5, 6}, false), Record(2, {7}, true)});
  EXPECT_EQ(verify(Join({product, longer}), Join({product, shorter})), fru_status::kUnexpected);
  EXPECT_TRUE(Says("\nMultiRecord area is different between the file and the memory.\n"))
      << "the end-of-list bit";
  Bytes unended = Join({Record(1, {5, 6}, false), Bytes(8, 0)});
  EXPECT_EQ(verify(Join({product, longer}), Join({product, unended})), fru_status::kUnexpected);
  EXPECT_TRUE(Says("\nMulti Record area is different between the file and the memory.\n"))
      << "the device's list ends first";
  EXPECT_EQ(verify(Join({product, shorter}), Join({product, longer, Bytes(8, 0)})), fru_status::kUnexpected);
}

TEST_F(FruUpdate, FailuresOfWritingReadingAndMemory) {
  device.fault = [](int, MemoryFru::Answer& answer) { answer = {0x80, {}}; };
  EXPECT_EQ(fru->WriteToSystem(), fru_status::kAreaNotWritten);
  EXPECT_EQ(LastFruError(), "Could not write FRU ID(0) Addr(20) SlaveAddr(20) Bus(FF) to system.");
  EXPECT_FALSE(Says("Verification"));
  // A byte that does not stay written.
  device.fault = nullptr;
  SetModes(FruWriteMode::Skip);
  device.image[0] = 0x02;
  EXPECT_EQ(fru->WriteToSystem(), fru_status::kNotIpmiFru) << "verification reads, whatever was written";
  machine.FailPoolAllocation(1);
  EXPECT_EQ(fru->WriteToSystem(), fru_status::kOutOfMemory);
  EXPECT_EQ(LastFruError(), "There is not enough memory to complete FRU updates.");
}

TEST_F(FruUpdate, AppendsWhatItPrintsAndWritesToTheOutputFile) {
  ASSERT_EQ(FruData::Initialize(), kSuccess);
  FruData::SetDisplayHexCallback(DisplayHex);
  ASSERT_EQ(FruData::SetOutputFile("FRU.TMP"), kSuccess);
  SetModes(FruWriteMode::Skip);
  ASSERT_EQ(fru->SetAreaWriteMode(FruAreaId::CommonHeaderArea, FruWriteMode::WriteAndVerify, 0), kSuccess);
  ASSERT_EQ(fru->WriteToSystem(), kSuccess);
  std::string text = machine.TextOf("FRU.TMP");
  EXPECT_NE(text.find(" 01 01 02 07 0D 13 00 D5"), std::string::npos) << text;
  std::size_t dump = text.find(" 01 01 02");
  EXPECT_EQ(text.substr(0, dump) + text.substr(text.find('\n', dump) + 1), machine.console);
  machine.fileFailures["FRU.TMP"] = uefi_status::kWriteProtected;
  EXPECT_EQ(fru->WriteToSystem(), fru_status::kOutputFile);
}

TEST_F(FruUpdate, ShowsEveryAreaLineByLine) {
  ASSERT_EQ(fru->Display(), kSuccess);
  EXPECT_EQ(machine.console, "FRU IMBDEVICE " + std::string(kAddressLine) + R"(
Displaying Header Area 
Common Header Area (Version 1, Length 8)
Internal Area Offset           = 01h
Chasis Area Offset             = 02h
Board Area Offset              = 07h
Product Area Offset            = 0Dh
MultiRecord Offset             = 13h
Pad                            = 00h
Checksum                       = D5h
Displaying Internal Use Area 
Internal Information Area (Version 1, Length 8)
0102030405060708
Display Chassis Area 
Chassis Information Area (Version 1, Length 40)
 Chassis Type                   = 17h
 Part Number      (ASCII)       = PN-1
 Serial Number    (ASCII)       = SN-1
 Additional Field (ASCII)       = one
 Additional Field (ASCII)       = two
 Additional Field (ASCII)       = three
Display Board Area 
 Unicode Country Base           = 00h
 Manufacturing Time(mins)       = 66051
 Manufacturer Name(ASCII)       = Maker
 Product Name     (ASCII)       = Board
 Serial Number    (ASCII)       = SN-2
 Part Number      (ASCII)       = PN-2
 Mftr FRU File ID (ASCII)       = b.fru
 Additional Field (ASCII)       = extra
Display Product Area 
 Unicode Country Base           = 19h
 Manufacturer Name(ASCII)       = Maker
 Product Name     (ASCII)       = Server
 Part Number      (ASCII)       = PN-3
 Product Version  (ASCII)       = R1
 Serial Number    (ASCII)       = SN-3
 Asset Tag        (ASCII)       = 
 Mftr FRU File ID (ASCII)       = p.fru
Display MultiRecord Area 
MultiRecord Area (Version 2, Length 17)
 Record 1 (Type C0h, Version 2, Length 3)
C00203FA41
010203
 Record 2 (Type C1h, Version 2, Length 4)
C18204EACF
04050607
)");
}

TEST_F(FruUpdate, ShowsEachEncodingAndWhatIsMissing) {
  Bytes fields = Join({{0x17},
                       {0x02, 0x0A, 0xB0},
                       {0x83, 0x86, 0x28, 0xE4},
                       {0x42, 0xC1, 0x20},
                       {0x42, 0x01, 0x20},
                       {0x41, 0xA0},
                       {0xC5, 'a', 0, 'b', 0x1B, 'c'},
                       {0xC2, 0xE4, 0x1B}});
  Start(Join({Header({0, 1, 0, 0, 0}), Area(6, fields)}));
  ASSERT_EQ(fru->Display(), kSuccess);
  for (const char* line :
       {" Part Number      (binary)      = 0A B0 \n", " Serial Number    (6 bit ASCII) = ABCD\n",
        " Additional Field (BCD+)        = .(6 bit ASCII) = P2 \n",
        " Additional Field (BCD+)        = 0000(6 bit ASCII) =  2 \n",
        " Additional Field (BCD+)        = \b(6 bit ASCII) = H \n", " Additional Field (ASCII)       = a\n",
        " Additional Field (ASCII)       = \xE4?\n",
        "Internal Use Information Area not present in FRU Device\n\n",
        "Board Information Area not present in FRU Device\n\n",
        "Product Information Area not present in FRU Device\n\n",
        "MultiRecord Area not present in FRU Device\n\n"})
    EXPECT_TRUE(Says(line)) << line << machine.console;
  Bytes board = Area(6, BoardContent());
  board[0] = 2;
  --board[47];
  Start(Join({Header({0, 0, 1, 0, 0}), board}));
  ASSERT_EQ(fru->Display(), kSuccess);
  EXPECT_TRUE(Says("Display Board Area \nEEPROM not initialized\n"));
  EXPECT_TRUE(Says("Chassis Information Area not present in FRU Device\n\n"));
  // A fixed field that reads as the end marker ends the area.
  Start(Join({Header({0, 1, 0, 0, 0}), Area(2, {0x17, 0xC1, 'x', 0xC0})}));
  ASSERT_EQ(fru->Display(), kSuccess);
  EXPECT_TRUE(Says(" Chassis Type                   = 17h\nEND OF FIELDS CODE\nDisplay Board Area"));
  // An area that the header promises and that was never read.
  CFru unread;
  Bytes header = Header({0, 1, 0, 0, 0});
  ASSERT_EQ(unread.DecodeHeader(std::span<const std::uint8_t, 8>(header.data(), 8)), kSuccess);
  EXPECT_EQ(unread.Display(), fru_status::kUnexpected);
  unread.Address().nvsType = nvs_type::kRefused;
  (void)unread.Display();
  EXPECT_TRUE(Says("\nFRU type not recognized\n\non bus"));
}

TEST_F(FruUpdate, PagesAfterEachAreaUntilStopOrNonStop) {
  ASSERT_EQ(FruData::Initialize(), kSuccess);
  ASSERT_EQ(FruData::SetPagingMode(true), kSuccess);
  machine.keys = u"ms";
  ASSERT_EQ(fru->Display(), kSuccess);
  EXPECT_TRUE(Says("Displaying Internal Use Area"));
  EXPECT_FALSE(Says("Display Chassis Area"));
  machine.keys = u"n";
  ASSERT_EQ(fru->Display(), kSuccess);
  EXPECT_TRUE(Says("Display MultiRecord Area"));
  EXPECT_FALSE(IsPagingOn());
}

TEST_F(FruUpdate, AnyImageLoadsOrFails) {
  // The same numbers on every run; a third of the images start from a good one, so that the loops get deep.
  std::uint32_t state = 20260101;
  auto next = [&state] {
    return state = state * 1664525 + 1013904223, static_cast<std::uint8_t>(state >> 24);
  };
  int loaded = 0;
  for (int round = 0; round < 600; ++round) {
    device.image = FullImage();
    std::size_t damaged = round % 3 == 0 ? 256 : 1 + round % 4;
    for (std::size_t i = 0; i < damaged; ++i) device.image[damaged == 256 ? i : next()] = next();
    if (round % 3 != 2) {
      device.image[0] = 1;
      device.image[7] = 0;
      device.image[7] = Complement(Bytes(device.image.begin(), device.image.begin() + 8));
    }
    fru = std::make_unique<CFru>();
    if (fru->LoadFromSystem({}) == kSuccess) ++loaded;
    (void)fru->Display();
    device.log.clear();
    machine.console.clear();
  }
  EXPECT_GT(loaded, 0);
}

}  // namespace
}  // namespace varnok
