// The requests that reach a FRU device, to the byte, and what is made of its answers.
#include <map>

#include "tests/fru/memory_fru.h"
#include "tests/support/expectations.h"
#include "tests/support/scripted_ipmi.h"
#include "tests/support/split.h"

namespace varnok {
namespace {

using namespace testing;

const std::map<std::string, FruDeviceAddress> kDevices = {
    {"bmc", {}},
    {"eeprom", Device(nvs_type::kAt24c02, 0, 3, 0xA0, 0x20, 1)},
    {"thermometer", Device(nvs_type::kDs1624s, 0, 5, 0x90)},
    {"other", Device(7, 0, 3, 0xA0, 0x20, 1)},
    {"bridged", Device(nvs_type::kImbDevice, 0, 3, 0xC0)},
    {"refused", Device(nvs_type::kRefused)},
};

/// "read DEVICE OFFSET COUNT" or "write DEVICE OFFSET BYTES", and what came of it.
std::string Outcome(const std::string& line) {
  const std::vector<std::string> words = Split(line, " ");
  const FruDeviceAddress& device = kDevices.at(words[1]);
  const auto offset = static_cast<std::uint32_t>(std::stoul(words[2], nullptr, 16));
  Bytes bytes;
  for (std::size_t i = 3; i < words.size(); ++i) bytes.push_back(BytesOf(words[i])[0]);
  if (words[0] == "write")
    return Format("%X\n", CFru::WriteFruDataToBmc(device, offset, bytes).value & 0xFFFF);
  Bytes read(bytes[0], 0xEE);
  std::string shown = Format("%X:", CFru::ReadDataFromFRU(device, offset, read).value & 0xFFFF);
  for (std::uint8_t byte : read) shown += Format(" %02X", byte);
  return shown + "\n";
}

TEST(FruRequests, AreAnsweredAsWritten) {
  for (const auto& [name, text] : Expectations("fru/requests.txt")) {
    SCOPED_TRACE(name);
    TestFirmware machine;
    ScriptedIpmi bmc(machine);
    if (text.starts_with("clock 86397")) machine.clockMicroseconds = 86'397'000'000;
    for (const WireStep& step : WireSteps(text)) {
      bmc.Play(step.wire);
      machine.errors.clear();
      const std::string outcome = Outcome(step.operation);
      EXPECT_EQ(outcome + machine.errors, step.outcome) << step.operation;
    }
  }
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
