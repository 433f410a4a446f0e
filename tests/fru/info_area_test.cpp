#include <gtest/gtest.h>

#include "fru/board_info_area.h"
#include "fru/chassis_info_area.h"
#include "fru/fru_session.h"
#include "fru/fru_status.h"
#include "fru/product_info_area.h"
#include "tests/fru/images.h"

namespace varnok {
namespace {

using namespace testing;

constexpr std::uint8_t kText = 0xC0;

class InfoAreas : public ::testing::Test {
 protected:
  void SetUp() override { SetFruError(u""); }
  TestFirmware machine;
  CChassisInfoArea chassis;
  CBoardInfoArea board;
  CProductInfoArea product;
};

TEST_F(InfoAreas, ParsesAndSerializesEachArea) {
  Bytes bytes = Area(6, BoardContent());
  ASSERT_TRUE(board.SetData(bytes));
  EXPECT_EQ(AsText(board.GetData()), AsText(bytes) + std::string(512 - 48, '\0'));
  EXPECT_EQ(AsText(board.GetManufacturer()) + AsText(board.GetProductName()) +
                AsText(board.GetSerialNumber()) + AsText(board.GetPartNumber()) + AsText(board.GetFileId()),
            "MakerBoardSN-2PN-2b.fru");
  EXPECT_EQ(AsText(board.GetMfgDateTime()), "\x03\x02\x01");
  EXPECT_EQ(board.GetManufacturerTL(), 0xC5);
  EXPECT_EQ(board.GetNumberOfFields(), 7u);
  EXPECT_FALSE(board.IsModified());
  ASSERT_TRUE(chassis.SetData(Area(5, ChassisContent())));
  EXPECT_EQ(chassis.GetType(), 0x17);
  EXPECT_EQ(chassis.GetNumberOfCustomFields(), 3u);
  ASSERT_TRUE(product.SetData(Area(6, ProductContent())));
  EXPECT_EQ(product.GetLanguageCode(), 0x19);
  EXPECT_EQ(AsText(product.GetVersion()), "R1");
  EXPECT_EQ(AsText(product.GetAssetTag()), "");
}

TEST_F(InfoAreas, CompletesAnAreaThatStopsAtItsEndMarker) {
  EXPECT_TRUE(product.SetData(OpenArea(6, ProductContent())));
  EXPECT_EQ(AsText(product.GetData().first(48)), AsText(Area(6, ProductContent())));
  Bytes full = Join({{1, 2, 0x17}, Field("1234"), Field("12345"), {0xC1}});
  full.resize(16, 0xEE);
  full = Join({{1, 2, 0x17}, Field("12345"), Field("12345"), {0xC1}});
  ASSERT_EQ(full.size(), 16u);
  EXPECT_FALSE(chassis.SetData(full)) << "no room for a checksum";
  full[1] = 3;
  EXPECT_TRUE(chassis.SetData(full));
}

TEST_F(InfoAreas, RefusesAreasThatBreakOneRule) {
  const Bytes good = Area(6, BoardContent());
  struct Case {
    const char* rule;
    std::function<void(Bytes&)> breakIt;
  };
  const Case cases[] = {
      {"empty", [](Bytes& b) { b.clear(); }},
      {"version alone", [](Bytes& b) { b.resize(1); }},
      {"shorter than its fixed bytes", [](Bytes& b) { b.resize(6); }},
      {"more bytes than its length",
       [](Bytes& b) {
         b = Seal(b, 6);
         b.push_back(0);
       }},
      {"length past 512", [](Bytes& b) { b[1] = 65; }},
      {"field past the end", [](Bytes& b) { b[6] = 0xFF; }},
      {"no end marker",
       [](Bytes& b) {
         b = Join({{1, 2, 0, 0, 0, 0},
                   Field("a"),
                   Field(""),
                   Field(""),
                   Field(""),
                   Field(""),
                   {0xC3, 'x', 'y', 'z'}});
       }},
      {"padding not zero",
       [](Bytes& b) {
         b[45] = 1;
         b[47] = static_cast<std::uint8_t>(b[47] - 1);
       }},
      {"padded short of its length",
       [](Bytes& b) {
         b = Seal(b, 6);
         b[1] = 7;
         b[47] = static_cast<std::uint8_t>(b[47] - 1);
       }},
      {"checksum", [](Bytes& b) { ++b[47]; }},
  };
  for (const Case& broken : cases) {
    Bytes bytes = good;
    broken.breakIt(bytes);
    EXPECT_FALSE(board.SetData(bytes)) << broken.rule;
  }
  for (int allocation = 1; allocation <= 6; ++allocation) {
    machine.FailPoolAllocation(allocation);
    EXPECT_FALSE(board.SetData(good)) << allocation;
  }
  machine.FailPoolAllocation(0);
  EXPECT_TRUE(board.SetData(good));
}

TEST_F(InfoAreas, SetsFieldsWithinTheRoomThatTheAreaHas) {
  ASSERT_TRUE(product.SetData(OpenArea(16, ProductContent())));
  auto room = static_cast<std::size_t>(product.GetPadLength());
  EXPECT_FALSE(product.SetAssetTag(AsBytes(std::string(64, 'x')), kText)) << "64 is never a length";
  EXPECT_TRUE(product.SetAssetTag(AsBytes(std::string(63, 'x')), kText));
  EXPECT_TRUE(product.SetFileId(AsBytes(std::string(5 + room - 63, 'y')), kText));
  EXPECT_EQ(product.GetPadLength(), 0);
  EXPECT_TRUE(product.IsValid());
  EXPECT_EQ(product.GetData()[126], 0xC1);
  EXPECT_FALSE(product.SetVersion(AsBytes("R10"), kText));
  EXPECT_EQ(
      LastFruError(),
      "Could not assign new data to the Product Version because the data was too long to fit in the field or area.");
  EXPECT_EQ(AsText(product.GetVersion()), "R1");
}

TEST_F(InfoAreas, SettersSayWhyTheyFailExceptOnTheChassis) {
  ASSERT_TRUE(chassis.SetData(Area(5, ChassisContent())));
  ASSERT_TRUE(board.SetData(Area(6, BoardContent())));
  auto errorOf = [&](bool isSet) {
    EXPECT_FALSE(isSet);
    std::string error = LastFruError();
    SetFruError(u"");
    return error;
  };
  const std::string tooLong(60, 'x');
  EXPECT_EQ(errorOf(chassis.SetPartNumber(AsBytes(tooLong), kText)), "");
  EXPECT_EQ(errorOf(chassis.SetCustomField(9, AsBytes("x"), kText)), "");
  EXPECT_EQ(errorOf(board.SetManufacturer({}, kText)), "An unexpected error occurred while accessing FRUs.");
  EXPECT_EQ(
      errorOf(board.SetManufacturer(AsBytes(tooLong), kText)),
      "Could not assign new data to the Board Manufacturer Name because the data was too long to fit in the field or area.");
  EXPECT_EQ(machine.TraceLines().back(), "CBoardInfoArea::SetManufacturer - FRU Data too long");
  EXPECT_EQ(
      errorOf(board.SetCustomField(0, AsBytes(tooLong), kText)),
      "Could not assign new data to the Board Custom Field because the data was too long to fit in the field or area.");
  EXPECT_EQ(errorOf(board.SetCustomField(1, AsBytes("x"), kText)), "No such FRU field.");
  EXPECT_EQ(errorOf(board.SetFieldData(7, AsBytes("x"), kText)), "No such FRU field.");
  machine.FailPoolAllocation(1);
  EXPECT_EQ(errorOf(board.SetManufacturer(AsBytes("x"), kText)),
            "There is not enough memory to complete FRU updates.");
  EXPECT_EQ(AsText(board.GetManufacturer()), "Maker");
}

TEST_F(InfoAreas, SetsByIndexAndMarksAllButTheBoardDate) {
  ASSERT_TRUE(board.SetData(Area(6, BoardContent())));
  Bytes date{1, 2, 3};
  EXPECT_TRUE(board.SetFieldData(0, date, kText));
  EXPECT_FALSE(board.IsModified());
  EXPECT_FALSE(board.SetFieldData(0, std::span(date).first(2), kText));
  EXPECT_EQ(LastFruError(), "Invalid Manufacturing Date/Time.");
  EXPECT_TRUE(board.SetFieldData(6, AsBytes("new"), 0xFF));
  EXPECT_TRUE(board.IsModified());
  EXPECT_EQ(board.CustomFields().At(0)->typeLength, 0xC3) << "only bits 7-6 are type bits";
  EXPECT_TRUE(board.IsValid());

  ASSERT_TRUE(chassis.SetData(Area(5, ChassisContent())));
  for (auto [type, isTaken] : {std::pair{0, false}, {1, true}, {29, true}, {30, false}}) {
    Bytes value{static_cast<std::uint8_t>(type)};
    EXPECT_EQ(chassis.SetFieldData(0, value, kText), isTaken) << type;
  }
  EXPECT_TRUE(chassis.IsModified());
  EXPECT_FALSE(chassis.SetFieldData(0, date, kText));
  EXPECT_TRUE(chassis.SetFieldData(5, AsBytes("3"), kText));
  EXPECT_FALSE(chassis.SetFieldData(6, AsBytes("4"), kText));
}

TEST_F(InfoAreas, EveryCustomIndexPastTheFirstReadsTheSecondField) {
  ASSERT_TRUE(chassis.SetData(Area(5, ChassisContent())));
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
  EXPECT_EQ(chassis.GetCustomField(3, text), fru_status::kUnexpected);
  EXPECT_EQ(LastFruError(), "An unexpected error occurred while accessing FRUs.");
  EXPECT_EQ(chassis.GetCustomField(4, text), fru_status::kNoSuchItem);
  EXPECT_EQ(LastFruError(), "No such FRU field.");
  machine.FailPoolAllocation(1);
  EXPECT_EQ(chassis.GetCustomField(0, text), fru_status::kOutOfMemory);
  EXPECT_EQ(LastFruError(), "There is not enough memory to complete FRU updates.");
}

TEST_F(InfoAreas, MapFieldNumbersOfTheirOwnOnly) {
  EXPECT_EQ(chassis.GetFieldIndexFromEnum(FruFieldId::ChassisSerialNumber), 2u);
  EXPECT_EQ(board.GetFieldIndexFromEnum(FruFieldId::BoardMfgDateTime), 0u);
  EXPECT_EQ(board.GetFieldIndexFromEnum(FruFieldId::BoardFruFileId), 5u);
  EXPECT_EQ(product.GetFieldIndexFromEnum(FruFieldId::ProductManufacturer), 0u);
  EXPECT_EQ(product.GetFieldIndexFromEnum(FruFieldId::ProductFruFileId), 6u);
  EXPECT_EQ(product.GetFieldIndexFromEnum(FruFieldId::BoardManufacturer), kInvalidFieldIndex);
  EXPECT_TRUE(machine.TraceLines().empty());
  EXPECT_EQ(board.GetFieldIndexFromEnum(FruFieldId::ProductName), kInvalidFieldIndex);
  EXPECT_EQ(machine.TraceLines().back(), "CBoardInfoArea::GetFieldIndexFromEnum - Invalid Selection");
}

TEST_F(InfoAreas, LengthsStayInsideTheBuffer) {
  ASSERT_TRUE(product.SetData(OpenArea(64, ProductContent())));
  EXPECT_FALSE(product.SetLength(43));
  EXPECT_TRUE(product.SetLength(2040));
  for (std::uint32_t index = 0; index < 7; ++index)
    EXPECT_TRUE(product.SetFieldData(index, AsBytes(std::string(63, 'z')), kText));
  EXPECT_EQ(product.GetData().size(), 512u);
  EXPECT_EQ(product.GetData()[511], product.GetChecksum());
  EXPECT_TRUE(product.SetLength(0));
  EXPECT_LT(product.GetPadLength(), 0);
  EXPECT_EQ(product.GetData()[0], 1);
}

}  // namespace
}  // namespace varnok
