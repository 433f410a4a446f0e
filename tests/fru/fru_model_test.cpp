#include "fru/fru.h"
#include "fru/fru_encoding.h"
#include "tests/fru/memory_fru.h"

namespace varnok {
namespace {

using namespace testing;

class FruModel : public FruTest {
 protected:
  CFru fru;
};

TEST_F(FruModel, UnpacksSixBitAsciiMostSignificantBitFirst) {
  EXPECT_EQ(UnpackSixBitAscii(Bytes{0x86, 0x28, 0xE4}), "ABCD");
  EXPECT_EQ(UnpackSixBitAscii(Bytes{0x86, 0x28}), "AB@");
  EXPECT_EQ(UnpackSixBitAscii(Bytes{0x86}), "A@");
  EXPECT_EQ(UnpackSixBitAscii(Bytes{0x86, 0x00, 0xE4}), "A@");
  EXPECT_EQ(UnpackSixBitAscii({}), "");
}

TEST_F(FruModel, HeaderKeepsItsBytesAndTellsItsChecksum) {
  const Bytes bytes{1, 1, 2, 3, 4, 5, 0xEE, 0x00};
  EXPECT_EQ(Decode(fru, bytes), kHeaderChecksum);
  EXPECT_EQ(Decode(fru, Changed(bytes, {{7, 2}})), kSuccess);
  Bytes out(8);
  EXPECT_EQ(fru.SerializeCommonHeader(out.data()), kSuccess);
  EXPECT_EQ(out, Changed(bytes, {{7, 2}}));
  EXPECT_EQ(fru.SerializeCommonHeader(nullptr), kUnexpected);
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

TEST_F(FruModel, RecordsThatCannotBeHeldFail) {
  Bytes record = Record(1, {9, 9}, false);
  machine.FailPoolAllocation(2);
  ExpectFailure(fru.SetMultiRecArea(Join({record, record}), false, kAllMultiRecords), kMultiRecordMemory);
  machine.FailPoolAllocation(0);
  // An area filled up with one to four bytes ends in one more header.
  for (const Bytes& fill : {Bytes{0}, {1, 2, 3, 4}}) {
    EXPECT_EQ(fru.SetMultiRecArea(Join({record, fill}), false, kAllMultiRecords), kSuccess);
    ASSERT_EQ(fru.MultiRecords().size(), 2u);
    const MultiRecord& last = *fru.MultiRecords().At(1);
    EXPECT_EQ(AsText(last.header), AsText(Join({fill, Bytes(5 - fill.size(), 0)})));
    EXPECT_EQ(AsText(last.Data()), std::string(fill.size() < 3 ? 0 : 3, '\0'));
  }
  record.pop_back();
  ExpectFailure(fru.SetMultiRecArea(record, false, kAllMultiRecords), kMultiRecordArea);
}

TEST_F(FruModel, DerivesLengthsFromTheLastAreaToTheFirst) {
  ASSERT_EQ(Decode(fru, Header({1, 2, 4, 0, 9})), kSuccess);
  fru.ComputeAreaLengths(100);
  EXPECT_EQ(fru.MultiRecLength(), 28u);
  EXPECT_EQ(fru.Board().GetLength(), 40u);
  EXPECT_EQ(fru.Chassis().GetLength(), 16u);
  EXPECT_EQ(fru.Product().GetLength(), 0u);
  EXPECT_TRUE(fru.Chassis().IsModified() && fru.Board().IsModified() && fru.Product().IsModified());
}

TEST_F(FruModel, NamesItselfByTitleOrAddress) {
  std::array<char16_t, 50> buffer;
  FruDeviceAddress address = Device(nvs_type::kAt24c02, 5, 3, 0xA0);
  EXPECT_EQ(Narrow(CFru::GetFriendlyFruIdentifier(&address, buffer)), "ID(5) Addr(20) SlaveAddr(A0) Bus(3)");
  address.displayName.emplace(60, u'x');
  EXPECT_EQ(CFru::GetFriendlyFruIdentifier(&address, buffer), std::u16string(49, u'x'));
  EXPECT_EQ(CFru::GetFriendlyFruIdentifier(&address, std::span(buffer).first(49)), u"");
  EXPECT_EQ(CFru::GetFriendlyFruIdentifier(nullptr, buffer), u"");
}

using FruResize = FruDeviceTest;

TEST_F(FruResize, MovesTheAreasBehindInTheHeaderOrSaysWhyNot) {
  ASSERT_EQ(Load(FullImage()), kSuccess);
  const std::string maker(5 + static_cast<std::size_t>(fru->Board().GetPadLength()), 'x');
  ASSERT_TRUE(fru->Board().SetManufacturer(AsBytes(maker), 0xC0));
  const char* fields = "The FRU fields don't fit into the requested FRU AREA size.\n";
  const char* areas = "The FRU areas don't fit into the FRU inventory area.\n";
  const Bytes unmoved{1, 2, 7, 13, 19};
  struct Step {
    FruAreaId area;
    std::uint32_t length;
    std::size_t deviceSize;
    Status status;
    const char* text;
    Bytes offsets;
    std::size_t kept;  ///< the area's length behind it
  };
  const Step steps[] = {
      {BoardInfoArea, 64, 256, kSuccess, "", {1, 2, 7, 15, 21}, 64},
      {BoardInfoArea, 48, 256, kSuccess, "", unmoved, 48},  // the fields fit to the byte
      {BoardInfoArea, 40, 256, kFieldsTooBig, fields, unmoved, 48},
      // 169 bytes are in use. An area that is too long keeps its length all the same, and moves nothing
      // later.
      {ProductInfoArea, 48 + 88, 256, kAreasTooBig, areas, unmoved, 136},
      {ProductInfoArea, 48 + 88, 257, kSuccess, "", unmoved, 136},
      {ProductInfoArea, 512, 2048, kSuccess, "", {1, 2, 7, 13, 66}, 512},
      {ProductInfoArea, 520, 2048, kAreasTooBig, areas, {1, 2, 7, 13, 66}, 520},
  };
  for (const Step& step : steps) {
    SCOPED_TRACE(step.length);
    device.image.resize(step.deviceSize, 0xFF);
    SetFruError(u"");
    ExpectFailure(fru->ResizeFruArea(step.area, step.length), step.status, step.text);
    EXPECT_EQ(AsText(fru->Header().GetData()), AsText(Header(step.offsets)));
    EXPECT_EQ(fru->FindInfoArea(step.area)->GetLength(), step.kept);
    EXPECT_TRUE(fru->FindInfoArea(step.area)->IsValid());
  }
}

TEST_F(FruResize, NeedsAnInfoAreaAndTheDevicesSize) {
  ASSERT_EQ(Load(FullImage()), kSuccess);
  for (FruAreaId area : {CommonHeaderArea, InternalUseArea, MultiRecordArea})
    ExpectFailure(fru->ResizeFruArea(area, 64), kUnsupported, kUnsupportedText);
  for (const MemoryFru::Answer& answer : {MemoryFru::Answer{0, {64}}, {0xCB, {0, 1, 0}}}) {
    device.fault = [&](int, MemoryFru::Answer& changed) { changed = answer; };
    EXPECT_EQ(fru->ResizeFruArea(BoardInfoArea, 64), kReadFailed);
  }
  fru->Address().nvsType = nvs_type::kAt24c02;
  std::size_t requests = device.log.size();
  EXPECT_EQ(fru->ResizeFruArea(BoardInfoArea, 64), kReadFailed);
  EXPECT_EQ(device.log.size(), requests);
}

}  // namespace
}  // namespace varnok
