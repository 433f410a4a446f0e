#include "fru/info_area.h"

#include "tests/fru/fru_test.h"

namespace varnok {
namespace {

using namespace testing;

constexpr std::uint8_t kText = 0xC0;

/// Each area holds what FullImage() has of it.
class InfoAreas : public FruTest {
 protected:
  InfoAreas() {
    EXPECT_TRUE(chassis.SetData(Area(5, kChassisContent)));
    EXPECT_TRUE(board.SetData(Area(6, kBoardContent)));
    EXPECT_TRUE(product.SetData(Area(6, kProductContent)));
  }
  static void ExpectRefused(bool isSet, const std::string& text) {
    EXPECT_FALSE(isSet) << text;
    EXPECT_EQ(LastFruError(), text);
    SetFruError(u"");
  }
  static std::string TooLong(const std::string& field) {
    return "Could not assign new data to the " + field +
           " because the data was too long to fit in the field or area.";
  }

  CChassisInfoArea chassis;
  CBoardInfoArea board;
  CProductInfoArea product;
};

TEST_F(InfoAreas, ParsesAndSerializesEachArea) {
  EXPECT_EQ(AsText(board.GetData()), AsText(Area(6, kBoardContent)) + std::string(512 - 48, '\0'));
  EXPECT_EQ(AsText(board.GetManufacturer()) + AsText(board.GetProductName()) +
                AsText(board.GetSerialNumber()) + AsText(board.GetPartNumber()) + AsText(board.GetFileId()),
            "MakerBoardSN-2PN-2b.fru");
  EXPECT_EQ(AsText(board.GetMfgDateTime()), "\x03\x02\x01");
  EXPECT_FALSE(board.IsModified());
}

TEST_F(InfoAreas, CompletesAnAreaThatStopsAtItsEndMarker) {
  EXPECT_TRUE(product.SetData(OpenArea(6, kProductContent)));
  EXPECT_EQ(AsText(product.GetData().first(48)), AsText(Area(6, kProductContent)));
  Bytes full = OpenArea(2, Join({{0x17}, Fields({"12345", "12345"})}));
  ASSERT_EQ(full.size(), 16u);
  EXPECT_FALSE(chassis.SetData(full)) << "no room for a checksum";
  full[1] = 3;
  EXPECT_TRUE(chassis.SetData(full));
}

TEST_F(InfoAreas, RefusesAreasThatBreakOneRule) {
  const Bytes good = Area(6, kBoardContent);
  const std::pair<const char*, Bytes> cases[] = {
      {"empty", {}},
      {"version alone", {1}},
      {"shorter than its fixed bytes", Bytes(good.begin(), good.begin() + 6)},
      {"more bytes than its length", Join({good, {0}})},
      {"length past 512", Changed(good, {{1, 65}})},
      {"field past the end", Changed(good, {{6, 0xFF}})},
      {"no end marker", Join({{1, 2, 0, 0, 0, 0}, Fields({"a", "", "", "", "", "xyz"})})},
      {"padding not zero", Changed(good, {{45, 1}, {46, 255}})},
      {"padded short of its length", Changed(good, {{1, 7}, {47, good[47] - 1}})},
      {"checksum", Changed(good, {{47, good[47] + 1}})},
  };
  for (const auto& [rule, bytes] : cases) EXPECT_FALSE(board.SetData(bytes)) << rule;
  for (int allocation = 1; allocation <= 6; ++allocation) {
    machine.FailPoolAllocation(allocation);
    EXPECT_FALSE(board.SetData(good)) << allocation;
  }
  machine.FailPoolAllocation(0);
  EXPECT_TRUE(board.SetData(good));
}

TEST_F(InfoAreas, SetsFieldsWithinTheRoomThatTheAreaHas) {
  ASSERT_TRUE(product.SetData(OpenArea(16, kProductContent)));
  auto room = static_cast<std::size_t>(product.GetPadLength());
  EXPECT_FALSE(product.SetAssetTag(AsBytes(std::string(64, 'x')), kText)) << "64 is never a length";
  EXPECT_TRUE(product.SetAssetTag(AsBytes(std::string(63, 'x')), kText));
  EXPECT_TRUE(product.SetFileId(AsBytes(std::string(5 + room - 63, 'y')), kText));
  EXPECT_EQ(product.GetPadLength(), 0);
  EXPECT_TRUE(product.IsValid());
  EXPECT_EQ(product.GetData()[126], 0xC1);
  ExpectRefused(product.SetVersion(AsBytes("R10"), kText), TooLong("Product Version"));
  EXPECT_EQ(AsText(product.GetVersion()), "R1");
}

TEST_F(InfoAreas, SettersSayWhyTheyFailExceptOnTheChassis) {
  const std::string text(60, 'x');
  ExpectRefused(chassis.SetPartNumber(AsBytes(text), kText), "");
  ExpectRefused(chassis.SetCustomField(9, AsBytes("x"), kText), "");
  ExpectRefused(board.SetManufacturer({}, kText), std::string(kUnexpectedText));
  ExpectRefused(board.SetManufacturer(AsBytes(text), kText), TooLong("Board Manufacturer Name"));
  EXPECT_EQ(machine.TraceLines().back(), "CBoardInfoArea::SetManufacturer - FRU Data too long");
  ExpectRefused(board.SetCustomField(0, AsBytes(text), kText), TooLong("Board Custom Field"));
  ExpectRefused(board.SetCustomField(1, AsBytes("x"), kText), "No such FRU field.");
  ExpectRefused(board.SetFieldData(7, AsBytes("x"), kText), "No such FRU field.");
  machine.FailPoolAllocation(1);
  ExpectRefused(board.SetManufacturer(AsBytes("x"), kText), std::string(kNoMemoryText));
  EXPECT_EQ(AsText(board.GetManufacturer()), "Maker");
}

TEST_F(InfoAreas, SetsByIndexAndMarksAllButTheBoardDate) {
  const Bytes date{1, 2, 3};
  EXPECT_TRUE(board.SetFieldData(0, date, kText));
  EXPECT_FALSE(board.IsModified());
  ExpectRefused(board.SetFieldData(0, std::span(date).first(2), kText), "Invalid Manufacturing Date/Time.");
  EXPECT_TRUE(board.SetFieldData(6, AsBytes("new"), 0xFF));
  EXPECT_TRUE(board.IsModified());
  EXPECT_EQ(board.CustomFields().At(0)->typeLength, 0xC3) << "only bits 7-6 are type bits";
  EXPECT_TRUE(board.IsValid());

  for (auto [type, isTaken] : {std::pair{'\0', false}, {'\1', true}, {'\x1D', true}, {'\x1E', false}})
    EXPECT_EQ(chassis.SetFieldData(0, AsBytes({&type, 1}), kText), isTaken) << int{type};
  EXPECT_TRUE(chassis.IsModified());
  EXPECT_FALSE(chassis.SetFieldData(0, date, kText));
  EXPECT_TRUE(chassis.SetFieldData(5, AsBytes("3"), kText));
  EXPECT_FALSE(chassis.SetFieldData(6, AsBytes("4"), kText));
}

TEST_F(InfoAreas, EveryCustomIndexPastTheFirstReadsTheSecondField) {
  std::span<const std::uint8_t> data;
  for (auto [index, text] : {std::pair{3u, "one"}, {4u, "two"}, {5u, "two"}}) {
    EXPECT_TRUE(chassis.GetFieldData(index, data));
    EXPECT_EQ(AsText(data), text) << index;
  }
  EXPECT_FALSE(chassis.GetFieldData(6, data));
  EXPECT_EQ(data.data(), nullptr);
  PoolText text;
  EXPECT_EQ(chassis.GetCustomField(2, text), kSuccess);
  EXPECT_EQ(text.View(), u"three");
  ExpectFailure(chassis.GetCustomField(3, text), kUnexpected);
  ExpectFailure(chassis.GetCustomField(4, text), kNoSuchItem, "No such FRU field.");
  machine.FailPoolAllocation(1);
  ExpectFailure(chassis.GetCustomField(0, text), kOutOfMemory, kNoMemoryText);
}

TEST_F(InfoAreas, MapFieldNumbersOfTheirOwnOnly) {
  EXPECT_EQ(chassis.GetFieldIndexFromEnum(FruFieldId::ChassisSerialNumber), 2u);
  EXPECT_EQ(board.GetFieldIndexFromEnum(FruFieldId::BoardMfgDateTime), 0u);
  EXPECT_EQ(product.GetFieldIndexFromEnum(FruFieldId::ProductFruFileId), 6u);
  for (const InfoArea* area : {static_cast<InfoArea*>(&product), static_cast<InfoArea*>(&board)}) {
    EXPECT_EQ(machine.TraceLines().size(), 0u);  // only the board area says so
    EXPECT_EQ(area->GetFieldIndexFromEnum(FruFieldId::ChassisType), kInvalidFieldIndex);
  }
  EXPECT_EQ(machine.TraceLines().back(), "CBoardInfoArea::GetFieldIndexFromEnum - Invalid Selection");
}

TEST_F(InfoAreas, LengthsStayInsideTheBuffer) {
  ASSERT_TRUE(product.SetData(OpenArea(64, Join({kProductContent, Fields({"aa", "bb"})}))));
  EXPECT_FALSE(product.SetLength(43));
  EXPECT_TRUE(product.SetLength(2040));
  for (std::uint32_t index = 0; index < 9; ++index)
    EXPECT_TRUE(product.SetFieldData(index, AsBytes(std::string(63, 'z')), kText));
  EXPECT_EQ(product.GetData().size(), 512u);
  EXPECT_EQ(product.GetData()[511], product.GetChecksum());
  EXPECT_TRUE(product.SetLength(0));
  EXPECT_LT(product.GetPadLength(), 0);
  EXPECT_EQ(product.GetData()[0], 1);
}

}  // namespace
}  // namespace varnok
