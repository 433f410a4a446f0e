// The requests that reach a FRU device, to the byte, and what is made of its answers.
#include <gtest/gtest.h>

#include "fru/fru.h"
#include "fru/fru_status.h"
#include "tests/fru/images.h"
#include "tests/fru/memory_fru.h"
#include "tests/support/scripted_ipmi.h"

namespace varnok {
namespace {

using namespace testing;

constexpr FruDeviceAddress kBmcFru{};
const FruDeviceAddress kEeprom{.deviceAddress = 0xA0,
                               .bus = 3,
                               .deviceId = 0,
                               .controller = 0x20,
                               .lun = 1,
                               .nvsType = 0,
                               .displayName = {}};
const FruDeviceAddress kThermometer{.deviceAddress = 0x90,
                                    .bus = 5,
                                    .deviceId = 0,
                                    .controller = 0x20,
                                    .lun = 0,
                                    .nvsType = 1,
                                    .displayName = {}};
/// Reached by bridging on channel 3, where completion codes are seen one by one.
const FruDeviceAddress kBridged{.deviceAddress = 0xC0,
                                .bus = 3,
                                .deviceId = 0,
                                .controller = 0x20,
                                .lun = 0,
                                .nvsType = 2,
                                .displayName = {}};

class FruRequests : public ::testing::Test {
 protected:
  Status Read(const FruDeviceAddress& address, std::uint32_t offset, std::size_t count) {
    read.assign(count, 0xEE);
    return CFru::ReadDataFromFRU(address, offset, read);
  }
  /// One bridged request and its answer.
  void Bridge(std::uint8_t sequence, std::uint8_t command, const Bytes& data, const Bytes& answer,
              std::uint8_t code = 0) {
    bmc.ExpectSend(3, 0xC0, sequence, 0x0A, command, data).Reply({});
    bmc.ExpectFetch().ReplyBridged(0xC0, sequence, 0x0A, command, answer, code);
  }

  TestFirmware machine;
  ScriptedIpmi bmc{machine};
  Bytes read;
};

TEST_F(FruRequests, ReadInventoryInChunksOfEight) {
  bmc.Expect(0x0A, 0x11, {0, 0xFC, 0x01, 8}).Reply({8, 1, 2, 3, 4, 5, 6, 7, 8});
  bmc.Expect(0x0A, 0x11, {0, 0x04, 0x02, 2}).Reply({2, 9, 10});
  EXPECT_EQ(Read(kBmcFru, 0x1FC, 10), kSuccess);
  EXPECT_EQ(read, (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
}

TEST_F(FruRequests, ReadAndWritePrivateBusStorage) {
  bmc.Expect(0x06, 0x52, {3, 0xA0, 2, 0x01, 0x02}, 1).Reply({7, 8});
  EXPECT_EQ(Read(kEeprom, 0x102, 2), kSuccess);
  bmc.Expect(0x06, 0x52, {5, 0x90, 2, 0x17, 0x02}).Reply({7, 8});
  EXPECT_EQ(Read(kThermometer, 2, 2), kSuccess);
  Bytes data{1, 2, 3, 4, 5, 6, 7, 8, 9};
  bmc.Expect(0x06, 0x52, {3, 0xA0, 0, 0x00, 0x10, 1, 2, 3, 4, 5, 6, 7, 8}, 1).Reply({});
  bmc.Expect(0x06, 0x52, {3, 0xA0, 0, 0x00, 0x18, 9}, 1).Reply({});
  EXPECT_EQ(CFru::WriteFruDataToBmc(kEeprom, 0x10, data), kSuccess);
  bmc.Expect(0x06, 0x52, {5, 0x90, 0, 0x17, 0x10, 1}).Reply({});
  EXPECT_EQ(CFru::WriteFruDataToBmc(kThermometer, 0x10, std::span(data).first(1)), kSuccess);
}

TEST_F(FruRequests, ShrinkReadsTo8And4And0And1) {
  Bridge(1, 0x11, {0, 0, 0, 8}, {}, 0xC8);
  Bridge(2, 0x11, {0, 0, 0, 4}, {}, 0xCA);
  Bridge(3, 0x11, {0, 0, 0, 0}, {}, 0xC8);
  Bridge(4, 0x11, {0, 0, 0, 1}, {}, 0xC8);
  EXPECT_EQ(Read(kBridged, 0, 8), fru_status::kReadFailed);
  // An accepted 0 goes on with 1 too; a busy device is asked again.
  Bridge(5, 0x11, {0, 0, 0, 2}, {}, 0xC0);
  Bridge(6, 0x11, {0, 0, 0, 2}, {2, 7, 8});
  EXPECT_EQ(Read(kBridged, 0, 2), kSuccess);
  Bridge(7, 0x11, {0, 0, 0, 4}, {}, 0xC8);
  Bridge(8, 0x11, {0, 0, 0, 0}, {0});
  for (std::uint8_t i = 0; i < 4; ++i) Bridge(static_cast<std::uint8_t>(9 + i), 0x11, {0, i, 0, 1}, {1, i});
  EXPECT_EQ(Read(kBridged, 0, 4), kSuccess);
  EXPECT_EQ(read, (Bytes{0, 1, 2, 3}));
  Bridge(13, 0x11, {0, 0, 0, 2}, {}, 0xFF);
  EXPECT_EQ(Read(kBridged, 0, 2), fru_status::kReadFailed);
}

TEST_F(FruRequests, ShrinkWritesTo8And4And0AndEnd) {
  const Bytes data{1, 2, 3, 4, 5, 6, 7, 8};
  Bridge(1, 0x12, {0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8}, {}, 0xC7);
  Bridge(2, 0x12, {0, 0, 0, 1, 2, 3, 4}, {}, 0xC7);
  Bridge(3, 0x12, {0, 0, 0}, {}, 0xC7);
  EXPECT_EQ(CFru::WriteFruDataToBmc(kBridged, 0, data), fru_status::kWriteFailed);
  Bridge(4, 0x12, {0, 0, 0, 1, 2, 3, 4, 5}, {}, 0xC7);
  Bridge(5, 0x12, {0, 0, 0, 1}, {}, 0xC7);
  EXPECT_EQ(CFru::WriteFruDataToBmc(kBridged, 0, std::span(data).first(5)), fru_status::kWriteFailed);
  Bridge(6, 0x12, {0, 0, 0, 1, 2}, {}, 0xC0);
  Bridge(7, 0x12, {0, 0, 0, 1, 2}, {0});  // a count of 0 in a good answer is not believed
  EXPECT_EQ(CFru::WriteFruDataToBmc(kBridged, 0, std::span(data).first(2)), kSuccess);
  Bridge(8, 0x12, {0, 0, 0, 1, 2}, {}, 0x80);
  EXPECT_EQ(CFru::WriteFruDataToBmc(kBridged, 0, std::span(data).first(2)), fru_status::kWriteFailed);
}

TEST_F(FruRequests, AnswersThatDeliverLessThanAskedAreRefused) {
  for (const Bytes& answer :
       {Bytes{}, Bytes{4}, Bytes{4, 1, 2, 3}, Bytes{3, 1, 2, 3, 4}, Bytes{0, 0, 0, 0, 0}}) {
    bmc.Expect(0x0A, 0x11, {0, 0, 0, 4}).Reply(answer);
    EXPECT_EQ(Read(kBmcFru, 0, 4), fru_status::kReadFailed) << answer.size();
    EXPECT_EQ(read, Bytes(4, 0xEE)) << "nothing is invented";
  }
  bmc.Expect(0x06, 0x52, {3, 0xA0, 2, 0, 0}, 1).Reply({7});
  EXPECT_EQ(Read(kEeprom, 0, 2), fru_status::kReadFailed);
  bmc.Expect(0x0A, 0x11, {0, 0, 0, 4}).Reply({9, 1, 2, 3, 4, 5, 6, 7, 8, 9});
  EXPECT_EQ(Read(kBmcFru, 0, 4), kSuccess) << "a longer answer holds what was asked";
  EXPECT_EQ(read, (Bytes{1, 2, 3, 4}));
  // Answers to another command, three times: the transport gives up without an error, but nothing was read.
  bmc.ExpectSend(3, 0xC0, 1, 0x0A, 0x11, {0, 0, 0, 4}).Reply({});
  for (int i = 0; i < 3; ++i) bmc.ExpectFetch().ReplyBridged(0xC0, 1, 0x0A, 0x12, {4, 1, 2, 3, 4});
  EXPECT_EQ(Read(kBridged, 0, 4), fru_status::kReadFailed);
}

TEST_F(FruRequests, TheTransportsResultPassesThrough) {
  for (int i = 0; i < 11; ++i) bmc.Expect(0x0A, 0x11, {0, 0, 0, 4}).Reply({}, 0xC8);
  EXPECT_EQ(Read(kBmcFru, 0, 4), static_cast<Status>(std::int64_t{ipmi_result::kCompletionCode}));
}

TEST_F(FruRequests, RefusedKindsAndOffsetsSendNothing) {
  FruDeviceAddress refused{.nvsType = nvs_type::kRefused, .displayName = {}};
  Bytes data(2);
  EXPECT_EQ(Read(refused, 0, 2), fru_status::kReadFailed);
  EXPECT_EQ(CFru::WriteFruDataToBmc(refused, 0, data), fru_status::kWriteFailed);
  EXPECT_EQ(Read(kBmcFru, 0xFFFF, 2), fru_status::kReadFailed);
  EXPECT_EQ(CFru::WriteFruDataToBmc(kBmcFru, 0xFFFF, data), fru_status::kWriteFailed);
  FruDeviceAddress unknown = kEeprom;
  unknown.nvsType = 7;
  bmc.Expect(0x06, 0x52, {3, 0xA0, 2, 0, 0}, 1).Reply({7, 8});
  EXPECT_EQ(Read(unknown, 0, 2), kSuccess) << "like an EEPROM";
}

class FruReading : public ::testing::Test {
 protected:
  Status Load(const Bytes& image) {
    device.image = image;
    device.log.clear();
    SetFruError(u"");
    fru = std::make_unique<CFru>();
    return fru->LoadFromSystem({});
  }

  TestFirmware machine;
  MemoryFru device{machine};
  std::unique_ptr<CFru> fru;
};

TEST_F(FruReading, ReadsHeaderBoardProductChassisInternalAndRecordsInThisOrder) {
  ASSERT_EQ(Load(FullImage()), kSuccess) << LastFruError();
  const std::vector<std::string> starts = {
      "0A/11: 00 00 00 08",                        // header
      "0A/11: 00 38 00 02", "0A/11: 00 38 00 08",  // board: its length, then all of it
      "0A/11: 00 68 00 02", "0A/11: 00 68 00 08",  // product
      "0A/11: 00 10 00 02", "0A/11: 00 10 00 08",  // chassis
      "0A/11: 00 08 00 08",                        // internal use
      "0A/11: 00 98 00 03", "0A/11: 00 98 00 08",  // records: their lengths, then all of them
      "0A/11: 00 A0 00 03", "0A/11: 00 A0 00 08", "0A/11: 00 A8 00 01"};
  std::vector<std::string> seen;
  for (const std::string& line : device.log)
    if (std::find(starts.begin(), starts.end(), line) != starts.end()) seen.push_back(line);
  EXPECT_EQ(seen, starts);
  EXPECT_EQ(device.log.size(), 1u + (1 + 6) + (1 + 6) + (1 + 5) + 1 + (1 + 1) + (1 + 2));
  EXPECT_EQ(fru->InternalUse().GetLength(), 8u);
  EXPECT_EQ(fru->MultiRecLength(), 17u);
  EXPECT_FALSE(fru->IsImageInvalid());
}

TEST_F(FruReading, EachInvalidAreaHasItsStatusTextAndFlag) {
  const std::string name = "ID(0) Addr(20) SlaveAddr(20) Bus(FF)";
  struct Case {
    const char* rule;
    Bytes image;
    Status status;
    std::string message;
    bool isImageInvalid;
  };
  Bytes negativeInternal = FullImage();
  Bytes header = Header({20, 2, 7, 13, 19});
  std::copy(header.begin(), header.end(), negativeInternal.begin());
  const Case cases[] = {
      {"format version", Damaged(0, 0x02), fru_status::kNotIpmiFru, "The selected FRU is not an IPMI FRU.",
       false},
      {"header checksum", Damaged(7, 0), fru_status::kInvalidHeader,
       "Invalid FRU header area in system FRU " + name + ".", true},
      {"board checksum", Damaged(103, 0), fru_status::kBoardInfoArea,
       "Invalid FRU board area in system FRU " + name + ".", true},
      {"board length", Damaged(57, 65), uefi_status::kBadBufferSize,
       "Invalid FRU board area in system FRU " + name + ".", true},
      {"product checksum", Damaged(151, 0), fru_status::kProductInfoArea, "", true},
      {"product length", Damaged(105, 0xFF), uefi_status::kBadBufferSize, "", true},
      {"chassis checksum", Damaged(55, 0), fru_status::kChassisInfoArea,
       "Invalid FRU chassis area in system FRU " + name + ".", true},
      {"internal use behind the chassis", negativeInternal, fru_status::kInternalUseArea,
       "Invalid FRU internal area in system FRU " + name + ".", true},
      {"record checksum", Damaged(157, 9), fru_status::kMultiRecordArea,
       "Invalid FRU multi-record area in system FRU " + name + ".", true},
      {"record past the device", Damaged(162, 0xFF), fru_status::kMultiRecordArea,
       "Invalid FRU multi-record area in system FRU " + name + ".", false},
  };
  for (const Case& broken : cases) {
    EXPECT_EQ(Load(broken.image), broken.status) << broken.rule;
    EXPECT_EQ(LastFruError(), broken.message) << broken.rule;
    EXPECT_EQ(fru->IsImageInvalid(), broken.isImageInvalid) << broken.rule;
  }
}

TEST_F(FruReading, AFailedRequestIsTheAreasErrorExceptOfHeaderAndProduct) {
  const Status transport = static_cast<Status>(std::int64_t{ipmi_result::kCompletionCode});
  // The first request of each area, by its number.
  for (auto [first, status] : {std::pair{1, transport},
                               {2, fru_status::kBoardInfoArea},
                               {9, transport},
                               {16, fru_status::kChassisInfoArea},
                               {22, fru_status::kInternalUseArea},
                               {23, fru_status::kMultiRecordArea}}) {
    device.fault = [first = first](int request, MemoryFru::Answer& answer) {
      if (request >= first) answer = {0xFF, {}};
    };
    EXPECT_EQ(Load(FullImage()), status) << first;
    EXPECT_FALSE(fru->IsImageInvalid()) << first;
  }
}

TEST_F(FruReading, NoAnswerThatIsShortYieldsAnImage) {
  ASSERT_EQ(Load(FullImage()), kSuccess);
  const int requests = static_cast<int>(device.log.size());
  for (int shortened = 1; shortened <= requests; ++shortened) {
    device.fault = [shortened](int request, MemoryFru::Answer& answer) {
      if (request == shortened) answer.data.pop_back();
    };
    EXPECT_NE(Load(FullImage()), kSuccess) << shortened;
  }
}

TEST_F(FruReading, BoundsTheInternalAreaByTheFirstPresentAreaByNumber) {
  Bytes image = FullImage();
  auto withHeader = [&](const Bytes& offsets) {
    Bytes header = Header(offsets);
    std::copy(header.begin(), header.end(), image.begin());
    return image;
  };
  EXPECT_EQ(Load(withHeader({1, 0, 0, 0, 19})), kSuccess) << LastFruError();
  EXPECT_EQ(fru->InternalUse().GetLength(), 144u);
  EXPECT_EQ(Load(withHeader({1, 0, 0, 0, 0})), kSuccess);
  EXPECT_EQ(fru->InternalUse().GetLength(), 0u);
  EXPECT_EQ(Load(withHeader({0, 0, 0, 0, 0})), kSuccess);
  EXPECT_EQ(device.log.size(), 1u);
  image[0] = 0x09;
  image[7] = static_cast<std::uint8_t>(image[7] - 8);
  EXPECT_EQ(Load(image), kSuccess) << "low three bits of the version count";
}

TEST_F(FruReading, RecordsEndAtLengthZeroTheEndBitOrTheLastOffset) {
  Bytes image = Header({0, 0, 0, 0, 1});
  EXPECT_EQ(Load(Join({image, Bytes(16, 0)})), kSuccess);
  EXPECT_TRUE(fru->MultiRecords().IsEmpty());
  EXPECT_EQ(fru->MultiRecLength(), 0u);
  EXPECT_EQ(Load(Join({image, Record(1, {1}, false), Bytes(16, 0)})), kSuccess);
  EXPECT_EQ(fru->MultiRecords().size(), 1u);
  // Records without an end, on a device of 64 KiB.
  Bytes endless = image;
  while (endless.size() < 0x10000) endless = Join({endless, Record(1, Bytes(200, 7), false)});
  EXPECT_EQ(Load(endless), fru_status::kMultiRecordArea);
  EXPECT_LT(device.log.size(), 10000u);
}

TEST_F(FruReading, ReportsMemoryThatRunsOutInTheRecords) {
  machine.FailPoolAllocation(0);
  Bytes image = Join({Header({0, 0, 0, 0, 1}), Record(1, {1}, true)});
  machine.FailPoolAllocation(1);
  EXPECT_EQ(Load(image), fru_status::kOutOfMemory);
  EXPECT_EQ(LastFruError(), "There is not enough memory to complete FRU updates.");
}

TEST_F(FruReading, AReservedBusLeadsToTheBmcOnly) {
  for (std::uint8_t bus : Bytes{0xFE, 0xFF}) {
    fru = std::make_unique<CFru>();
    EXPECT_EQ(fru->LoadFromSystem({.deviceAddress = 0xC0, .bus = bus, .displayName = {}}),
              fru_status::kReadFailed);
    EXPECT_EQ(LastFruError(), "Invalid BMC Address found.");
  }
  EXPECT_TRUE(device.log.empty());
}

}  // namespace
}  // namespace varnok
