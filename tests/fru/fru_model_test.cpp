#include <gtest/gtest.h>

#include "fru/fru.h"
#include "fru/fru_encoding.h"
#include "fru/fru_status.h"
#include "tests/fru/images.h"
#include "tests/fru/memory_fru.h"

namespace varnok {
namespace {

using namespace testing;

class FruModel : public ::testing::Test {
 protected:
  void SetUp() override { SetFruError(u""); }
  void LoadRecords(const Bytes& bytes) {
    ASSERT_EQ(fru.SetMultiRecArea(bytes, false, kAllMultiRecords), kSuccess);
  }
  void SetHeader(const Bytes& bytes) {
    ASSERT_EQ(fru.DecodeHeader(std::span<const std::uint8_t, 8>(bytes.data(), 8)), kSuccess);
  }

  TestFirmware machine;
  CFru fru;
};

TEST_F(FruModel, UnpacksSixBitAsciiMostSignificantBitFirst) {
  auto unpack = [](const Bytes& bytes) { return UnpackSixBitAscii(bytes); };
  EXPECT_EQ(unpack({0x86, 0x28, 0xE4}), "ABCD");
  EXPECT_EQ(unpack({0x86, 0x28}), "AB@");
  EXPECT_EQ(unpack({0x86}), "A@");
  EXPECT_EQ(unpack({0x86, 0x00, 0xE4}), "A@");
  EXPECT_EQ(unpack({}), "");
}

TEST_F(FruModel, HeaderKeepsItsBytesAndTellsItsChecksum) {
  SetHeader(Header({0, 0, 0, 0, 0}));
  EXPECT_TRUE(fru.Header().IsValid());
  EXPECT_FALSE(fru.HasInternalArea() || fru.HasChassisArea() || fru.HasBoardArea() || fru.HasProductArea() ||
               fru.HasMultiRecArea());
  Bytes bytes{1, 1, 2, 3, 4, 5, 0xEE, 0x00};
  EXPECT_EQ(fru.DecodeHeader(std::span<const std::uint8_t, 8>(bytes.data(), 8)), fru_status::kHeaderChecksum);
  Bytes out(8);
  EXPECT_EQ(fru.SerializeCommonHeader(out.data()), kSuccess);
  EXPECT_EQ(out, bytes);
  EXPECT_EQ(fru.SerializeCommonHeader(nullptr), fru_status::kUnexpected);
  EXPECT_EQ(CFru::CalculateChecksum(std::span(bytes).first(2)), 0xFE);
  EXPECT_EQ(CFru::CalculateChecksum({}), 0);
}

TEST_F(FruModel, InternalUseAreaHoldsAtMost512Bytes) {
  CInternalUseArea area;
  EXPECT_EQ(area.GetNumberOfFields(), 0u);
  EXPECT_TRUE(area.SetData(Bytes(512, 7), true));
  EXPECT_TRUE(area.IsModified());
  EXPECT_FALSE(area.SetData(Bytes(513, 8), false));
  EXPECT_EQ(AsText(area.GetData()), std::string(512, 7));
  EXPECT_EQ(area.GetNumberOfFields(), 1u);
  EXPECT_EQ(area.GetFieldIndexFromEnum(FruFieldId::InternalUseData), 0u);
  EXPECT_EQ(area.GetFieldIndexFromEnum(FruFieldId::ChassisType), kInvalidFieldIndex);
}

TEST_F(FruModel, SerializesRecordsCountedFromOne) {
  Bytes first = Record(1, {9}, false);
  Bytes second = Record(2, {8, 7}, true);
  LoadRecords(Join({first, second}));
  auto serialize = [&](std::uint32_t room, std::uint32_t number) {
    Bytes out(64);
    std::uint32_t size = room;
    Status status = fru.SerializeMultiRecArea(out.data(), size, number);
    out.resize(size);
    return std::pair(status, out);
  };
  EXPECT_EQ(serialize(64, kAllMultiRecords), std::pair(kSuccess, Join({first, second})));
  EXPECT_EQ(serialize(7, 2), std::pair(kSuccess, second));
  EXPECT_EQ(serialize(64, 3), std::pair(kSuccess, Bytes{}));
  EXPECT_EQ(serialize(6, 2).first, fru_status::kUnexpected);
  EXPECT_EQ(serialize(4, 1).first, fru_status::kUnexpected);
}

TEST_F(FruModel, ReplacesTheHeaderOfTheRecordAfterTheOneNumbered) {
  LoadRecords(Join({Record(1, {9}, false), Record(2, {8}, true)}));
  Bytes other = Record(7, {5}, true);
  EXPECT_EQ(fru.SetMultiRecArea(other, true, 1), kSuccess);
  EXPECT_EQ(fru.MultiRecords().At(0)->Type(), 1);
  EXPECT_EQ(fru.MultiRecords().At(1)->Type(), 7);
  EXPECT_EQ(fru.MultiRecords().At(1)->data[0], 8);
  EXPECT_TRUE(fru.IsMultiRecModified());
  EXPECT_EQ(fru.SetMultiRecArea(other, true, 2), fru_status::kMultiRecordArea);
  EXPECT_EQ(LastFruError(), "An unexpected error occurred while accessing FRUs.");
}

TEST_F(FruModel, RecordsThatCannotBeHeldFail) {
  Bytes record = Record(1, {9, 9}, false);
  machine.FailPoolAllocation(2);
  EXPECT_EQ(fru.SetMultiRecArea(Join({record, record}), false, kAllMultiRecords),
            fru_status::kMultiRecordMemory);
  machine.FailPoolAllocation(0);
  Bytes truncated = record;
  truncated.pop_back();
  EXPECT_EQ(fru.SetMultiRecArea(truncated, false, kAllMultiRecords), fru_status::kMultiRecordArea);
  EXPECT_EQ(fru.SetMultiRecArea(Bytes{1, 2, 0, 0}, false, kAllMultiRecords), fru_status::kMultiRecordArea);
}

TEST_F(FruModel, ChecksBothChecksumsOfEveryRecord) {
  Bytes records = Join({Record(1, {9}, false), Record(2, {8}, true)});
  LoadRecords(records);
  EXPECT_TRUE(fru.CheckMultiRecCheckSum());
  for (std::size_t damaged : {6 + 0, 6 + 5}) {
    Bytes bad = records;
    ++bad[damaged];
    LoadRecords(bad);
    EXPECT_FALSE(fru.CheckMultiRecCheckSum()) << damaged;
  }
}

TEST_F(FruModel, DerivesLengthsFromTheLastAreaToTheFirst) {
  SetHeader(Header({1, 2, 4, 0, 9}));
  fru.ComputeAreaLengths(100);
  EXPECT_EQ(fru.MultiRecLength(), 28u);
  EXPECT_EQ(fru.Board().GetLength(), 40u);
  EXPECT_EQ(fru.Chassis().GetLength(), 16u);
  EXPECT_EQ(fru.Product().GetLength(), 0u);
  EXPECT_TRUE(fru.Chassis().IsModified() && fru.Board().IsModified() && fru.Product().IsModified());
}

TEST_F(FruModel, NamesItselfByTitleOrAddress) {
  std::array<char16_t, 50> buffer;
  FruDeviceAddress address{.deviceAddress = 0xA0,
                           .bus = 3,
                           .deviceId = 5,
                           .controller = 0x20,
                           .lun = 0,
                           .nvsType = 0,
                           .displayName = {}};
  EXPECT_EQ(Narrow(CFru::GetFriendlyFruIdentifier(&address, buffer)), "ID(5) Addr(20) SlaveAddr(A0) Bus(3)");
  address.displayName = std::u16string(60, u'x');
  EXPECT_EQ(CFru::GetFriendlyFruIdentifier(&address, buffer), std::u16string(49, u'x'));
  EXPECT_EQ(CFru::GetFriendlyFruIdentifier(&address, std::span(buffer).first(49)), u"");
  EXPECT_EQ(CFru::GetFriendlyFruIdentifier(nullptr, buffer), u"");
}

class FruResize : public FruModel {
 protected:
  void SetUp() override {
    FruModel::SetUp();
    ASSERT_EQ(fru.LoadFromSystem({}), kSuccess);
  }
  MemoryFru device{machine, FullImage()};
};

TEST_F(FruResize, MovesTheAreasBehindInTheHeader) {
  EXPECT_EQ(fru.ResizeFruArea(FruAreaId::BoardInfoArea, 64), kSuccess);
  EXPECT_EQ(AsText(fru.Header().GetData()), AsText(Header({1, 2, 7, 15, 21})));
  EXPECT_EQ(fru.Board().GetLength(), 64u);
  EXPECT_TRUE(fru.Board().IsValid());
  EXPECT_EQ(fru.ResizeFruArea(FruAreaId::BoardInfoArea, 48), kSuccess);
  EXPECT_EQ(AsText(fru.Header().GetData()), AsText(Header({1, 2, 7, 13, 19})));
}

TEST_F(FruResize, RefusesFieldsThatDoNotFitAndChangesNothing) {
  std::uint32_t used = 48u - static_cast<std::uint32_t>(fru.Board().GetPadLength());
  EXPECT_EQ(fru.ResizeFruArea(FruAreaId::BoardInfoArea, used - 1), fru_status::kFieldsTooBig);
  EXPECT_EQ(LastFruError(), "The FRU fields don't fit into the requested FRU AREA size.\n");
  EXPECT_EQ(fru.Board().GetLength(), 48u);
}

TEST_F(FruResize, RefusesAreasThatDoNotFitButKeepsTheNewLength) {
  // 169 bytes of 256 are in use; the device's size is the limit.
  EXPECT_EQ(fru.ResizeFruArea(FruAreaId::ProductInfoArea, 48 + 88), fru_status::kAreasTooBig);
  EXPECT_EQ(LastFruError(), "The FRU areas don't fit into the FRU inventory area.\n");
  EXPECT_EQ(fru.Product().GetLength(), 136u);
  EXPECT_EQ(AsText(fru.Header().GetData()), AsText(Header({1, 2, 7, 13, 19})));
  device.image.resize(2048, 0xFF);
  EXPECT_EQ(fru.ResizeFruArea(FruAreaId::ProductInfoArea, 512), kSuccess);
  EXPECT_EQ(fru.ResizeFruArea(FruAreaId::ProductInfoArea, 520), fru_status::kAreasTooBig);
}

TEST_F(FruResize, NeedsAnInfoAreaAndTheDevicesSize) {
  for (FruAreaId area : {FruAreaId::CommonHeaderArea, FruAreaId::InternalUseArea, FruAreaId::MultiRecordArea})
    EXPECT_EQ(fru.ResizeFruArea(area, 64), fru_status::kUnsupported);
  EXPECT_EQ(LastFruError(), "A request was made of a unsupported FRU feature.");
  device.fault = [](int, MemoryFru::Answer& answer) { answer.data.resize(1); };
  EXPECT_EQ(fru.ResizeFruArea(FruAreaId::BoardInfoArea, 64), fru_status::kReadFailed);
  device.fault = [](int, MemoryFru::Answer& answer) { answer.completionCode = 0xCB; };
  EXPECT_EQ(fru.ResizeFruArea(FruAreaId::BoardInfoArea, 64), fru_status::kReadFailed);
  fru.Address().nvsType = nvs_type::kAt24c02;
  std::size_t requests = device.log.size();
  EXPECT_EQ(fru.ResizeFruArea(FruAreaId::BoardInfoArea, 64), fru_status::kReadFailed);
  EXPECT_EQ(device.log.size(), requests);
}

}  // namespace
}  // namespace varnok
