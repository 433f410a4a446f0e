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

class FruResize : public FruDeviceTest {
 protected:
  FruResize() { EXPECT_EQ(Load(FullImage()), kSuccess); }
  void ExpectHeader(const Bytes& offsets) {
    EXPECT_EQ(AsText(fru->Header().GetData()), AsText(Header(offsets)));
  }
};

TEST_F(FruResize, MovesTheAreasBehindInTheHeader) {
  EXPECT_EQ(fru->ResizeFruArea(BoardInfoArea, 64), kSuccess);
  ExpectHeader({1, 2, 7, 15, 21});
  EXPECT_EQ(fru->Board().GetLength(), 64u);
  EXPECT_TRUE(fru->Board().IsValid());
  EXPECT_EQ(fru->ResizeFruArea(BoardInfoArea, 48), kSuccess);
  ExpectHeader({1, 2, 7, 13, 19});
}

TEST_F(FruResize, RefusesFieldsThatDoNotFitAndChangesNothing) {
  const std::string maker(5 + static_cast<std::size_t>(fru->Board().GetPadLength()), 'x');
  ASSERT_TRUE(fru->Board().SetManufacturer(AsBytes(maker), 0xC0));
  EXPECT_EQ(fru->ResizeFruArea(BoardInfoArea, 48), kSuccess) << "to the byte";
  ExpectFailure(fru->ResizeFruArea(BoardInfoArea, 40), kFieldsTooBig,
                "The FRU fields don't fit into the requested FRU AREA size.\n");
  EXPECT_EQ(fru->Board().GetLength(), 48u);
}

TEST_F(FruResize, RefusesAreasThatDoNotFitButKeepsTheNewLength) {
  // 169 bytes of 256 are in use; the device's size is the limit.
  ExpectFailure(fru->ResizeFruArea(ProductInfoArea, 48 + 88), kAreasTooBig,
                "The FRU areas don't fit into the FRU inventory area.\n");
  EXPECT_EQ(fru->Product().GetLength(), 136u);
  ExpectHeader({1, 2, 7, 13, 19});
  device.image.resize(169 + 88, 0xFF);
  EXPECT_EQ(fru->ResizeFruArea(ProductInfoArea, 48 + 88), kSuccess);
  device.image.resize(2048, 0xFF);
  EXPECT_EQ(fru->ResizeFruArea(ProductInfoArea, 512), kSuccess);
  EXPECT_EQ(fru->ResizeFruArea(ProductInfoArea, 520), kAreasTooBig);
}

TEST_F(FruResize, NeedsAnInfoAreaAndTheDevicesSize) {
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
