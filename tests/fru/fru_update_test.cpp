// Writing with verification, and the display.
#include "app/services/console.h"
#include "app/services/text_output.h"
#include "tests/fru/memory_fru.h"
#include "tests/support/expectations.h"

namespace varnok {
namespace {

using namespace testing;

const std::string kAddressLine = "FRU IMBDEVICE on bus FFh, Device ID 00h, IPMB adresss 20h, Lun 00h\n";

class FruUpdate : public FruDeviceTest {
 protected:
  FruUpdate() { Start(FullImage()); }
  void Start(const Bytes& image) {
    ASSERT_EQ(Load(image), kSuccess) << LastFruError();
    machine.console.clear();
    device.log.clear();
  }
  void SetModes(FruWriteMode mode) {
    for (std::uint32_t area = 1; area <= 6; ++area)
      ASSERT_EQ(fru->SetAreaWriteMode(FruAreaId{area}, mode, kAllMultiRecords), kSuccess);
  }
  void ExpectShown(std::initializer_list<std::string_view> lines) {
    machine.console.clear();
    ASSERT_EQ(fru->Display(), kSuccess);
    for (std::string_view line : lines) EXPECT_TRUE(Says(line)) << line << machine.console;
  }
};

TEST_F(FruUpdate, WritesEveryAreaInOrderAndVerifies) {
  const Bytes wanted = device.image;
  std::fill(device.image.begin(), device.image.end(), std::uint8_t{0xFF});
  ASSERT_EQ(fru->WriteToSystem(), kSuccess) << machine.console;
  EXPECT_EQ(device.image, wanted);
  EXPECT_EQ(machine.console,
            "\n" + kAddressLine +
                "Loading Common Header Area\nLoading FRU Internal Use Area\nLoading FRU Chassis Info Area\n"
                "Loading FRU Board Info Area\nLoading FRU Product Info Area\nLoading FRU Multi Record Area\n"
                "\nFRU File Area(s) successfully loaded into FRU memory.\n");
  // 1 + 1 + 5 + 6 + 6 chunks of eight; five headers' bytes one by one and the data, twice. Then the device is
  // read as for a display, and nothing else is sent.
  EXPECT_EQ(device.log.size(), 31u + 27u);
  for (auto [index, request] : {std::pair{0u, "0A/12: 00 00 00 01 01 02 07 0D 13 00 D5"},
                                {1u, "0A/12: 00 08 00 01 02 03 04 05 06 07 08"},
                                {19u, "0A/12: 00 98 00 C0"},
                                {24u, "0A/12: 00 9D 00 01 02 03"},
                                {30u, "0A/12: 00 A5 00 04 05 06 07"},
                                {31u, "0A/11: 00 00 00 08"}})
    EXPECT_EQ(device.log[index], request) << index;
}

TEST_F(FruUpdate, TellsOnceOfAreasThatAreWrittenElsewhere) {
  ASSERT_EQ(fru->WriteToSystem(), kSuccess);
  EXPECT_EQ(machine.errors, "");
  Start(FullImage({20, 2, 7, 13, 19}));
  EXPECT_NE(fru->WriteToSystem(), kSuccess);
  EXPECT_EQ(
      machine.errors,
      "varnok: FRU ID(0) Addr(20) SlaveAddr(20) Bus(FF): the header has an area at byte 16 that is written at "
      "byte 8; what stands there is lost\n");
}

TEST_F(FruUpdate, SkippedAreasKeepTheirPlaceAndAreNotCompared) {
  ASSERT_EQ(fru->SetAreaWriteMode(ChassisInfoArea, FruWriteMode::Skip, 0), kSuccess);
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
  EXPECT_EQ(device.log.size(), 27u);
  EXPECT_EQ(
      machine.console,
      "\n" + kAddressLine +
          "Verifying Common Header Area\nVerifying FRU Internal Use Area Length\n"
          "Verifying FRU Chassis Info Area\nVerifying FRU Board Info Area\nVerifying FRU Product Info Area\n"
          "Verifying FRU Multi Record Area\n\nFRU File Area(s) Verification Successful.\n");
}

TEST_F(FruUpdate, EachDifferenceHasItsLine) {
  const Bytes image = FullImage();
  // A change of one byte, made good in the checksum at `checksum` so that the device reads well.
  auto shifted = [&](std::size_t offset, std::size_t checksum) {
    return Changed(image, {{offset, image[offset] + 1}, {checksum, image[checksum] - 1}});
  };
  const Bytes product = Join({Header({0, 0, 0, 1, 7}), Area(6, kProductContent)});
  const Bytes records = Header({0, 0, 0, 0, 1});
  // The data checksum keeps the header the same: only the data tell.
  const Bytes one = Record(1, {5, 6}, true);
  const Bytes other = Record(1, {6, 5}, true);
  const Bytes two = Join({Record(1, {5, 6}, false), Record(2, {7}, true)});
  const Bytes unended = Join({Record(1, {5, 6}, false), Bytes(8, 0)});
  struct Case {
    const char* rule;
    Bytes memory;
    Bytes onDevice;
    const char* area;  ///< null: the same
  };
  const Case cases[] = {
      {"header pad", image, shifted(6, 7), "Header Area"},
      {"internal use content", image, shifted(12, 255), nullptr},
      {"chassis type", image, shifted(18, 55), "Chassis Info Area"},
      {"board language", image, shifted(58, 103), nullptr},
      {"board date", image, shifted(61, 103), nullptr},
      {"board manufacturer", image, shifted(64, 103), "Board Info Area"},
      {"product language", image, shifted(106, 151), "Product Info Area"},
      {"record type", image, shifted(160, 164), "MultiRecord area"},
      // The data are compared over the length of the product area.
      {"record data", Join({product, one}), Join({product, other}), "Multi Record area"},
      {"data without a product area", Join({records, one}), Join({records, other}), nullptr},
      {"end-of-list bit", Join({product, two}), Join({product, one}), "MultiRecord area"},
      {"device's list ends first", Join({product, two}), Join({product, unended}), "Multi Record area"},
      {"image's list ends first", Join({product, one}), Join({product, two, Bytes(8, 0)}),
       "MultiRecord area"},
  };
  for (const Case& row : cases) {
    Start(row.memory);
    SetModes(FruWriteMode::Verify);
    device.image = row.onDevice;
    EXPECT_EQ(fru->WriteToSystem(), row.area == nullptr ? kSuccess : kUnexpected) << row.rule;
    if (row.area == nullptr) continue;
    EXPECT_TRUE(Says(Format("\n%s is different between the file and the memory.\n", row.area))) << row.rule;
    EXPECT_TRUE(Says("\nVerification of one or more FRU File Area(s) failed.\n")) << row.rule;
  }
}

TEST_F(FruUpdate, FailuresOfWritingAndReading) {
  device.fault = [](int, MemoryFru::Answer& answer) { answer = {0x80, {}}; };
  ExpectFailure(fru->WriteToSystem(), kAreaNotWritten,
                "Could not write FRU ID(0) Addr(20) SlaveAddr(20) Bus(FF) to system.");
  EXPECT_FALSE(Says("Verification"));
  device.fault = nullptr;
  SetModes(FruWriteMode::Skip);
  device.image[0] = 0x02;
  EXPECT_EQ(fru->WriteToSystem(), kNotIpmiFru) << "verification reads, whatever was written";
}

TEST_F(FruUpdate, AppendsWhatItPrintsAndWritesToTheOutputFile) {
  ASSERT_EQ(FruData::Initialize(), kSuccess);
  Discard(FruData::SetDisplayHexCallback(DisplayHex));
  ASSERT_EQ(FruData::SetOutputFile("FRU.TMP"), kSuccess);
  SetModes(FruWriteMode::Skip);
  ASSERT_EQ(fru->SetAreaWriteMode(CommonHeaderArea, FruWriteMode::WriteAndVerify, 0), kSuccess);
  ASSERT_EQ(fru->WriteToSystem(), kSuccess);
  std::string text = machine.TextOf("FRU.TMP");
  EXPECT_NE(text.find(" 01 01 02 07 0D 13 00 D5"), std::string::npos) << text;
  std::size_t dump = text.find(" 01 01 02");
  EXPECT_EQ(text.substr(0, dump) + text.substr(text.find('\n', dump) + 1), machine.console);
  machine.fileFailures["FRU.TMP"] = uefi_status::kWriteProtected;
  EXPECT_EQ(fru->WriteToSystem(), kOutputFile);
}

TEST_F(FruUpdate, ShowsEveryAreaLineByLine) {
  const Bytes board = Join({Header({0, 0, 1, 0, 0}), Area(6, kBoardContent)});
  const Bytes images[] = {
      FullImage(),
      Join({Header({0, 1, 0, 0, 0}),
            Area(6, {0x17, 0x02, 0x0A, 0xB0, 0x83, 0x86, 0x28, 0xE4, 0x42, 0xC1, 0x20, 0x42, 0x01,
                     0x20, 0x41, 0xA0, 0xC5, 'a',  0,    'b',  0x1B, 'c',  0xC2, 0xE4, 0x1B})}),
      Changed(board, {{8, 2}, {55, board[55] - 1}}),
      Join({Header({0, 1, 0, 0, 0}), Area(2, {0x17, 0xC1, 'x', 0xC0})}),
  };
  const auto expectations = Expectations("fru/images.expected");
  ASSERT_EQ(expectations.size(), std::size(images));
  for (std::size_t i = 0; i < std::size(images); ++i) {
    Start(images[i]);
    ASSERT_EQ(fru->Display(), kSuccess);
    EXPECT_EQ(Escaped(machine.console), expectations[i].second) << expectations[i].first;
  }
  // An area that the header promises and that was never read.
  CFru unread;
  ASSERT_EQ(Decode(unread, Header({0, 1, 0, 0, 0})), kSuccess);
  EXPECT_EQ(unread.Display(), kUnexpected);
  unread.Address().nvsType = nvs_type::kRefused;
  Discard(unread.Display());
  EXPECT_TRUE(Says("\nFRU type not recognized\n\non bus"));
}

TEST_F(FruUpdate, PagesAfterEachAreaUntilStopOrNonStop) {
  ASSERT_EQ(FruData::Initialize(), kSuccess);
  ASSERT_EQ(FruData::SetPagingMode(true), kSuccess);
  machine.keys = u"ms";
  ExpectShown({"Displaying Internal Use Area"});
  EXPECT_FALSE(Says("Display Chassis Area"));
  machine.keys = u"n";
  ExpectShown({"Display MultiRecord Area"});
  EXPECT_FALSE(IsPagingOn());
}

}  // namespace
}  // namespace varnok
