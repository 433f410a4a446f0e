// The requests that reach a FRU device, to the byte, and what is made of its answers.
#include "tests/fru/memory_fru.h"
#include "tests/support/scripted_ipmi.h"

namespace varnok {
namespace {

using namespace testing;

const FruDeviceAddress kBmcFru{};
const FruDeviceAddress kEeprom = Device(nvs_type::kAt24c02, 0, 3, 0xA0, 0x20, 1);
const FruDeviceAddress kThermometer = Device(nvs_type::kDs1624s, 0, 5, 0x90);
/// Reached by bridging on channel 3, where completion codes are seen one by one.
const FruDeviceAddress kBridged = Device(nvs_type::kImbDevice, 0, 3, 0xC0);

class FruRequests : public FruTest {
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

  static Status Write(const FruDeviceAddress& address, std::uint32_t offset, const Bytes& bytes) {
    return CFru::WriteFruDataToBmc(address, offset, bytes);
  }

  ScriptedIpmi bmc{machine};
  Bytes read;
};

TEST_F(FruRequests, ReadAndWritePrivateBusStorage) {
  bmc.Expect(0x06, 0x52, {3, 0xA0, 2, 0x01, 0x02}, 1).Reply({7, 8});
  EXPECT_EQ(Read(kEeprom, 0x102, 2), kSuccess);
  bmc.Expect(0x06, 0x52, {5, 0x90, 2, 0x17, 0x02}).Reply({7, 8});
  EXPECT_EQ(Read(kThermometer, 2, 2), kSuccess);
  bmc.Expect(0x06, 0x52, {3, 0xA0, 0, 0x00, 0x10, 1, 2, 3, 4, 5, 6, 7, 8}, 1).Reply({});
  bmc.Expect(0x06, 0x52, {3, 0xA0, 0, 0x00, 0x18, 9}, 1).Reply({});
  EXPECT_EQ(Write(kEeprom, 0x10, {1, 2, 3, 4, 5, 6, 7, 8, 9}), kSuccess);
  bmc.Expect(0x06, 0x52, {5, 0x90, 0, 0x17, 0x10, 1}).Reply({});
  EXPECT_EQ(Write(kThermometer, 0x10, {1}), kSuccess);
}

TEST_F(FruRequests, ShrinkReadsTo8And4And0And1) {
  Bridge(1, 0x11, {0, 0, 0, 8}, {}, 0xC8);
  Bridge(2, 0x11, {0, 0, 0, 4}, {}, 0xCA);
  Bridge(3, 0x11, {0, 0, 0, 0}, {}, 0xC8);
  Bridge(4, 0x11, {0, 0, 0, 1}, {}, 0xC8);
  EXPECT_EQ(Read(kBridged, 0, 8), kReadFailed);
  // An accepted 0 goes on with 1 too; a busy device is asked again.
  Bridge(5, 0x11, {0, 0, 0, 2}, {}, 0xC0);
  Bridge(6, 0x11, {0, 0, 0, 2}, {2, 7, 8});
  EXPECT_EQ(Read(kBridged, 0, 2), kSuccess);
  Bridge(7, 0x11, {0, 0, 0, 4}, {}, 0xC8);
  Bridge(8, 0x11, {0, 0, 0, 0}, {0});
  for (std::uint8_t i = 0; i < 4; ++i) Bridge(static_cast<std::uint8_t>(9 + i), 0x11, {0, i, 0, 1}, {1, i});
  EXPECT_EQ(Read(kBridged, 0, 4), kSuccess);
  EXPECT_EQ(read, (Bytes{0, 1, 2, 3}));
  Bridge(13, 0x11, {0, 0, 0, 4}, {}, 0xC8);
  Bridge(14, 0x11, {0, 0, 0, 0}, {1, 7});
  EXPECT_EQ(Read(kBridged, 0, 4), kReadFailed) << "none were asked for";
  Bridge(15, 0x11, {0, 0, 0, 2}, {}, 0xFF);
  EXPECT_EQ(Read(kBridged, 0, 2), kReadFailed);
}

TEST_F(FruRequests, ADeviceBusyForMoreThanTenSecondsIsToldOnce) {
  machine.clockMicroseconds = 86'397'000'000;  // three seconds before midnight
  auto busy = [&, sequence = std::uint8_t{0}](std::uint8_t code) mutable {
    Bridge(++sequence, 0x11, {0, 0, 0, 1}, {1, 7}, code);
  };
  busy(0xC0), bmc.Pass(9), busy(0xC0), busy(0);
  EXPECT_EQ(Read(kBridged, 0, 1), kSuccess);
  bmc.Pass(30), busy(0xC0), busy(0);  // each answer starts the wait anew
  EXPECT_EQ(Read(kBridged, 0, 1), kSuccess);
  EXPECT_EQ(machine.errors, "");
  for (int time = 0; time < 2; ++time) {
    busy(0xC0), bmc.Pass(12), busy(0xC0), bmc.Pass(20), busy(0xC0), busy(0);
    EXPECT_EQ(Read(kBridged, 0, 1), kSuccess);
    EXPECT_EQ(
        machine.errors,
        "varnok: FRU ID(0) Addr(20) SlaveAddr(C0) Bus(3) has been busy for 10 seconds; it is asked until it "
        "answers\n");
  }
}

TEST_F(FruRequests, ShrinkWritesTo8And4And0AndEnd) {
  Bridge(1, 0x12, {0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8}, {}, 0xC7);
  Bridge(2, 0x12, {0, 0, 0, 1, 2, 3, 4}, {}, 0xC7);
  Bridge(3, 0x12, {0, 0, 0}, {}, 0xC7);
  EXPECT_EQ(Write(kBridged, 0, {1, 2, 3, 4, 5, 6, 7, 8}), kWriteFailed);
  Bridge(4, 0x12, {0, 0, 0, 1, 2, 3, 4, 5}, {}, 0xC7);
  Bridge(5, 0x12, {0, 0, 0, 1}, {}, 0xC7);
  EXPECT_EQ(Write(kBridged, 0, {1, 2, 3, 4, 5}), kWriteFailed);
  Bridge(6, 0x12, {0, 0, 0, 1, 2}, {}, 0xC0);
  Bridge(7, 0x12, {0, 0, 0, 1, 2}, {0});  // a count of 0 in a good answer is not believed
  EXPECT_EQ(Write(kBridged, 0, {1, 2}), kSuccess);
  Bridge(8, 0x12, {0, 0, 0, 1, 2}, {}, 0x80);
  EXPECT_EQ(Write(kBridged, 0, {1, 2}), kWriteFailed);
}

TEST_F(FruRequests, AnswersThatDeliverAnotherCountThanAskedAreRefused) {
  for (const Bytes& answer : {Bytes{}, Bytes{4}, Bytes{4, 1, 2, 3}, Bytes{3, 1, 2, 3, 4},
                              Bytes{0, 0, 0, 0, 0}, Bytes{5, 1, 2, 3, 4, 5}}) {
    bmc.Expect(0x0A, 0x11, {0, 0, 0, 4}).Reply(answer);
    EXPECT_EQ(Read(kBmcFru, 0, 4), kReadFailed) << answer.size();
    EXPECT_EQ(read, Bytes(4, 0xEE)) << "nothing is invented";
  }
  bmc.Expect(0x06, 0x52, {3, 0xA0, 2, 0, 0}, 1).Reply({7});
  EXPECT_EQ(Read(kEeprom, 0, 2), kReadFailed);
  bmc.Expect(0x0A, 0x11, {0, 0xFC, 0x01, 4}).Reply({4, 1, 2, 3, 4, 5});
  EXPECT_EQ(Read(kBmcFru, 0x1FC, 4), kSuccess) << "bytes behind those counted";
  EXPECT_EQ(read, (Bytes{1, 2, 3, 4}));
  // Answers to another command, three times: the transport gives up without an error, but nothing was read.
  bmc.ExpectSend(3, 0xC0, 1, 0x0A, 0x11, {0, 0, 0, 4}).Reply({});
  for (int i = 0; i < 3; ++i) bmc.ExpectFetch().ReplyBridged(0xC0, 1, 0x0A, 0x12, {4, 1, 2, 3, 4});
  EXPECT_EQ(Read(kBridged, 0, 4), kReadFailed);
  bmc.ExpectSend(3, 0xC0, 2, 0x0A, 0x12, {0, 0, 0, 1}).Reply({});
  for (int i = 0; i < 3; ++i) bmc.ExpectFetch().ReplyBridged(0xC0, 2, 0x0A, 0x11, {1});
  EXPECT_EQ(Write(kBridged, 0, {1}), kWriteFailed);
}

TEST_F(FruRequests, RefusedKindsAndOffsetsSendNothing) {
  for (auto [address, offset] : {std::pair{Device(nvs_type::kRefused), 0u}, {kBmcFru, 0xFFFFu}}) {
    EXPECT_EQ(Read(address, offset, 2), kReadFailed) << offset;
    EXPECT_EQ(Write(address, offset, {1, 2}), kWriteFailed) << offset;
  }
  bmc.Expect(0x0A, 0x11, {0, 0xFE, 0xFF, 2}).Reply({2, 7, 8});
  EXPECT_EQ(Read(kBmcFru, 0xFFFE, 2), kSuccess);
  bmc.Expect(0x06, 0x52, {3, 0xA0, 2, 0, 0}, 1).Reply({7, 8});
  EXPECT_EQ(Read(Device(7, 0, 3, 0xA0, 0x20, 1), 0, 2), kSuccess) << "an unknown kind is like an EEPROM";
}

using FruReading = FruDeviceTest;

TEST_F(FruReading, ReadsHeaderBoardProductChassisInternalAndRecordsInThisOrder) {
  ASSERT_EQ(Load(FullImage()), kSuccess) << LastFruError();
  // The length of each info area and record, then all of it.
  const std::pair<std::size_t, std::string> requests[] = {
      {0, "00 00 00 08"},  {1, "00 38 00 02"},  {2, "00 38 00 08"},  {8, "00 68 00 02"},  {9, "00 68 00 08"},
      {15, "00 10 00 02"}, {16, "00 10 00 08"}, {21, "00 08 00 08"}, {22, "00 98 00 03"}, {23, "00 98 00 08"},
      {24, "00 A0 00 03"}, {25, "00 A0 00 08"}, {26, "00 A8 00 01"}};
  ASSERT_EQ(device.log.size(), 27u);
  for (const auto& [index, request] : requests) EXPECT_EQ(device.log[index], "0A/11: " + request) << index;
  EXPECT_EQ(fru->InternalUse().GetLength(), 8u);
  EXPECT_EQ(fru->MultiRecLength(), 17u);
  EXPECT_FALSE(fru->IsImageInvalid());
}

TEST_F(FruReading, EachInvalidAreaHasItsStatusTextAndFlag) {
  auto damaged = [](std::size_t offset, int value) { return Changed(FullImage(), {{offset, value}}); };
  auto invalid = [](const std::string& area) {
    return "Invalid FRU " + area + " area in system FRU ID(0) Addr(20) SlaveAddr(20) Bus(FF).";
  };
  const std::string records = invalid("multi-record");
  struct Case {
    const char* rule;
    Bytes image;
    Status status;
    std::string message;
    bool isImageInvalid = true;
  };
  const Case cases[] = {
      {"version", damaged(0, 2), kNotIpmiFru, "The selected FRU is not an IPMI FRU.", false},
      {"header checksum", damaged(7, 0), kInvalidHeader, invalid("header")},
      {"board checksum", damaged(103, 0), kBoardInfoArea, invalid("board")},
      {"board length", damaged(57, 65), uefi_status::kBadBufferSize, invalid("board")},
      {"product checksum", damaged(151, 0), kProductInfoArea, ""},
      {"product length", damaged(105, 0xFF), uefi_status::kBadBufferSize, ""},
      {"chassis checksum", damaged(55, 0), kChassisInfoArea, invalid("chassis")},
      {"internal past 512", FullImage({1, 0, 0, 0, 66}), kInternalUseArea, invalid("internal")},
      {"record header checksum", damaged(160, 9), kMultiRecordArea, records},
      {"record data checksum", damaged(157, 9), kMultiRecordArea, records},
      {"record past the device", damaged(162, 0xFF), kMultiRecordArea, records, false},
  };
  for (const Case& broken : cases) {
    SCOPED_TRACE(broken.rule);
    ExpectFailure(Load(broken.image), broken.status, broken.message);
    EXPECT_EQ(fru->IsImageInvalid(), broken.isImageInvalid);
  }
  // By the number of the first request of each area.
  const Status transport = static_cast<Status>(std::int64_t{ipmi_result::kCompletionCode});
  for (auto [first, status] : {std::pair{1, transport},
                               {2, kBoardInfoArea},
                               {9, transport},
                               {16, kChassisInfoArea},
                               {22, kInternalUseArea},
                               {23, kMultiRecordArea}}) {
    device.fault = [first = first](int request, MemoryFru::Answer& answer) {
      if (request >= first) answer = {0xFF, {}};
    };
    EXPECT_EQ(Load(FullImage()), status) << first;
    EXPECT_FALSE(fru->IsImageInvalid()) << first;
  }
}

TEST_F(FruReading, BoundsTheInternalAreaByTheFirstPresentAreaByNumber) {
  EXPECT_EQ(Load(FullImage({1, 0, 0, 0, 19})), kSuccess) << LastFruError();
  EXPECT_EQ(fru->InternalUse().GetLength(), 144u);
  for (const Bytes& offsets :
       {Bytes{1, 0, 0, 0, 0}, {20, 2, 7, 13, 19}}) {  // nothing behind it, or only before it
    EXPECT_EQ(Load(FullImage(offsets)), kSuccess) << LastFruError();
    EXPECT_EQ(fru->InternalUse().GetLength(), 0u);
  }
  Bytes image = FullImage({0, 0, 0, 0, 0});
  EXPECT_EQ(Load(image), kSuccess);
  EXPECT_EQ(device.log.size(), 1u);
  EXPECT_EQ(Load(Changed(image, {{0, 0x09}, {7, image[7] - 8}})), kSuccess)
      << "low three bits of the version count";
}

TEST_F(FruReading, RecordsEndAtLengthZeroTheEndBitOrTheLastOffset) {
  Bytes image = Header({0, 0, 0, 0, 1});
  EXPECT_EQ(Load(Join({image, Bytes(16, 0)})), kSuccess);
  EXPECT_TRUE(fru->MultiRecords().IsEmpty());
  EXPECT_EQ(fru->MultiRecLength(), 0u);
  EXPECT_EQ(Load(Join({image, Record(1, {1}, false), Bytes(16, 0)})), kSuccess);
  EXPECT_EQ(fru->MultiRecords().size(), 1u);
  machine.FailPoolAllocation(1);
  ExpectFailure(Load(Join({image, Record(1, {1}, true)})), kOutOfMemory, kNoMemoryText);
  // Records without an end, on a device of 64 KiB.
  Bytes endless = image;
  while (endless.size() < 0x10000) endless = Join({endless, Record(1, Bytes(200, 7), false)});
  EXPECT_EQ(Load(endless), kMultiRecordArea);
  EXPECT_LT(device.log.size(), 10000u);
}

TEST_F(FruReading, AReservedBusLeadsToTheBmcOnly) {
  for (std::uint8_t bus : Bytes{0xFE, 0xFF}) {
    SetFruError(u"");
    ExpectFailure(CFru().LoadFromSystem(Device(nvs_type::kImbDevice, 0, bus, 0xC0)), kReadFailed,
                  "Invalid BMC Address found.");
  }
  EXPECT_TRUE(device.log.empty());
}

}  // namespace
}  // namespace varnok
