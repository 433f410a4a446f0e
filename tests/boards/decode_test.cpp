// Images, records and tables by the standards: every encoding and conversion with a value that others give,
// and damage by its place.
#include <gmock/gmock.h>

#include <map>

#include "boards/field_text.h"
#include "boards/fru_image.h"
#include "boards/sdr_record.h"
#include "boards/sensor_conversion.h"
#include "boards/show_text.h"
#include "boards/smbios_tables.h"
#include "sim/default_board.h"
#include "tests/boards/generated.h"

namespace varnok::testing {
namespace {

using namespace boards;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Pair;

TEST(FieldText, EncodingsAndDates) {
  struct Row {
    std::uint8_t typeLength;
    Bytes data;
    TextRules rules;
    const char* text;
  };
  const Row kRows[] = {
      {0x03, {0x00, 0x7F, 0xFF}, TextRules::FruEnglish, "00 7F FF"},
      {0x44, {0x12, 0xAB, 0xCD, 0xEF}, TextRules::FruEnglish, "12 -.:,_"},
      {0x83, {0x64, 0xC9, 0xB2}, TextRules::FruEnglish, "DELL"},  // as a real module has it
      {0x82, {0x64, 0xC9}, TextRules::FruEnglish, "DE"},
      {0xC4, {'a', 0xE9, 0x1B, 0}, TextRules::FruEnglish, "a\u00E9\\x1B"},
      {0xC4, {0x41, 0x30, 0x3D, 0xD8}, TextRules::FruOtherLanguage, "\u3041\\uD83D"},
      {0xC4, {0x3D, 0xD8, 0x00, 0xDE}, TextRules::FruOtherLanguage, "\U0001F600"},
      {0x02, {0x41, 0x00}, TextRules::RecordId, "A"},
      {0xC2, {0xC2, 0x9B}, TextRules::FruEnglish, "\u00C2\\x9B"},
  };
  for (const Row& row : kRows) EXPECT_EQ(TextOfField(row.typeLength, row.data, row.rules).text, row.text);
  EXPECT_EQ(Printable("a\xC3\xA9\xC2\x9B\xFFz\u202E"), "a\u00E9\\x9B\\xFFz\\u202E");
  EXPECT_EQ(DateFromMinutes(0), "not given");
  EXPECT_EQ(DateFromMinutes(0xAF362C), "2017-10-31 01:48");
  EXPECT_EQ(DateFromMinutes(0xFFFFFF), "2027-11-24 20:15");
}

std::map<std::string, std::string> ValuesOf(const Section& section) {
  std::map<std::string, std::string> values;
  for (const Field& field : section.fields) values[field.label] = field.value;
  return values;
}

TEST(DecodeFru, MultiRecordsInTheirUnits) {
  struct Row {
    std::uint8_t type;
    Bytes data;
    const char* label;
    const char* value;
  };
  const Bytes supply = {0x20, 0x03, 0xFF, 0xFF, 0x37, 0x05, 0x28, 0x23, 0xB0, 0x36, 0x50, 0x46,
                        0x20, 0x67, 0x2F, 0x3F, 0x0C, 0x1F, 0x52, 0x23, 0x02, 0x2C, 0x01, 0x64};
  const Bytes load = {0x01, 0xB0, 0x04, 0x74, 0x04, 0xEC, 0x04, 0x78, 0x00, 0x00, 0x00, 0x40, 0x9C};
  const Bytes output = {0x81, 0x50, 0xFB, 0xC4, 0xFA, 0xDC, 0xFB, 0x78, 0x00, 0x00, 0x00, 0xE8, 0x03};
  const Row kRows[] = {
      {0x00, supply, "Overall Capacity", "800 W"},
      {0x00, supply, "Peak VA", "not given"},
      {0x00, supply, "Low End Input Voltage 1", "90 V"},
      {0x00, supply, "Peak Capacity", "850 W for 2 s"},
      {0x00, supply, "Combined Wattage", "300 W on 12 V and 5 V"},
      {0x00, supply, "Flags",
       "predictive fail pin, power factor correction, autoswitch, hot swap, failure asserts high"},
      {0x01, output, "Output Number", "1, standby"},
      {0x01, output, "Nominal Voltage", "-12 V"},
      {0x02, load, "Maximum Current Load", "40 A"},
      {0x02, load, "Minimum Voltage", "11.4 V"},
      {0x03, {0x01, 'u', 'r', 'l'}, "Access Data", "url"},
      {0x04, {0x40, 0xE2, 0x01, 0x0A, 2, 3, 0x7F}, "Code Range Mask", "7F"},
      {0xC5, {0x40, 0xE2, 0x01, 'h', 'i'}, "OEM Data", "hi"},
      {0x00, {1, 2}, "Data", "01 02"},  // too short for its type
      {0x0B, {9}, "Data", "09"},
  };
  for (const Row& row : kRows) {
    sim::FruLayout layout;
    layout.records = {{row.type, row.data}};
    const Decoded decoded = DecodeFru(sim::BuildFruImage(layout, 64));
    const Section* section = decoded.Find("multi-record 1");
    ASSERT_NE(section, nullptr);
    EXPECT_THAT(ValuesOf(*section), Contains(Pair(row.label, row.value)));
    EXPECT_TRUE(decoded.problems.empty());
  }
}

TEST(DecodeFru, DamageIsNamedByItsPlaceAndTheRestIsRead) {
  sim::FruLayout layout;
  layout.chassis = {"", ""};
  layout.board = {"Works", "Board", "123", "456", ""};
  layout.records = {{0xC0, {1, 2, 3, 4}}, {0xC0, {1, 2, 3, 5}}};
  const Bytes good =
      sim::BuildFruImage(layout, 128);  // chassis at 8, board at 16 to 47, records at 48 and 57
  EXPECT_TRUE(DecodeFru(good).problems.empty());
  struct Row {
    std::size_t offset;
    std::uint8_t value;
    std::size_t place;
    const char* problem;
  };
  const Row kRows[] = {
      {7, 0, 7, "Common Header: checksum 00h"},
      {4, 0x40, 4, "Product Info Area at byte 512, behind the end of the image (128 bytes)"},
      {9, 0, 9, "its length is 0"},
      {9, 0x3F, 9, "its length is 504, the image ends 120 bytes behind its start"},
      {9, 2, 16, "Board Info Area begins inside Chassis Info Area, which ends at byte 24"},
      {16, 2, 16, "format version 02h instead of 01h"},
      {22, 0xFF, 22, "Board Manufacturer has 63 bytes, 24 left"},
      {28, 0xC1, 28, "the fields end before the Board Product Name"},
      {45, 1, 45, "its padding is not zero"},
      {47, 0, 47, "Board Info Area: checksum 00h"},
      {52, 0, 52, "Multi-Record 1: header checksum 00h"},
      {53, 9, 51, "Multi-Record 1: data checksum"},
      {58, 2, 66, "no record is marked as the last"},
  };
  for (const Row& row : kRows) {
    Bytes image = good;
    image[row.offset] = row.value;
    const Decoded decoded = DecodeFru(image);
    const bool isFound =
        std::any_of(decoded.problems.begin(), decoded.problems.end(), [&](const Problem& problem) {
          return problem.offset == row.place && problem.text.find(row.problem) != std::string::npos;
        });
    EXPECT_TRUE(isFound) << row.problem;
    EXPECT_NE(decoded.Find("multi-record 2"), nullptr) << row.problem;
  }
  // Bytes that are no area at all are not read as fields.
  Bytes image = good;
  std::fill(image.begin() + 16, image.begin() + 24, std::uint8_t{0xB8});
  EXPECT_EQ(DecodeFru(image).Find("board"), nullptr);
}

TEST(Sensor, ReadingsInRealUnits) {
  struct Row {
    std::uint8_t units1;
    std::uint8_t linearization;
    int m;
    int b;
    int bExponent;
    int rExponent;
    std::uint8_t raw;
    double value;
  };
  // IPMI v2.0, section 36.3: y = L[(M x + B * 10^K1) * 10^K2].
  const Row kRows[] = {
      {0x00, 0, 1, 0, 0, 0, 0xFF, 255},  {0x00, 0, 63, 0, 0, -3, 200, 12.6}, {0x80, 0, 1, 0, 0, 0, 0xF6, -10},
      {0x40, 0, 1, 0, 0, 0, 0xF5, -10},  {0x40, 0, 1, 0, 0, 0, 0xFF, 0},     {0x00, 0, -2, 5, 2, -1, 10, 48},
      {0x00, 0, 1, -512, 0, 0, 0, -512}, {0x00, 7, 4, 0, 0, -2, 5, 5},       {0x00, 8, 2, 0, 0, 0, 3, 36},
      {0x00, 10, 1, 0, 0, 0, 81, 9},     {0x00, 11, 1, 0, 0, 0, 27, 3},      {0x00, 9, 1, 0, 0, 0, 3, 27},
      {0x00, 3, 1, 0, 0, 0, 8, 3},       {0x00, 2, 1, 0, 0, 0, 100, 2},      {0x00, 6, 1, 0, 0, 0, 10, 1024},
  };
  for (const Row& row : kRows) {
    Bytes record(48);
    record[20] = row.units1;
    record[23] = row.linearization;
    record[24] = static_cast<std::uint8_t>(row.m);
    record[25] = static_cast<std::uint8_t>((row.m >> 8 & 3) << 6);
    record[26] = static_cast<std::uint8_t>(row.b);
    record[27] = static_cast<std::uint8_t>((row.b >> 8 & 3) << 6);
    record[29] = static_cast<std::uint8_t>((row.rExponent & 0xF) << 4 | (row.bExponent & 0xF));
    EXPECT_NEAR(SensorConversion(record).Convert(row.raw).value_or(1e9), row.value, 1e-9);
  }
  Bytes record(48);
  record[20] = 0xC0;
  EXPECT_FALSE(SensorConversion(record).Convert(1));
  record[20] = 0;
  record[23] = 0x70;
  EXPECT_FALSE(SensorConversion(record).Convert(1));
  EXPECT_EQ(UnitName(0x01, 0, 0), "%");
  EXPECT_EQ(UnitName(0x18, 0x11, 0), "CFM per s");
  EXPECT_EQ(UnitName(0x02, 0x06, 0x18), "Watts/hour");
}

TEST(DecodeSdr, DefaultBoardsSensorsInOneLineEach) {
  Bytes dump = sim::DefaultSdrs();
  std::vector<Bytes> records;
  EXPECT_TRUE(SplitRecords(dump, records).empty());
  std::string lines;
  for (const Bytes& record : records)
    lines += HeadOf(record).name + ": " + SummaryOf(record, DecodeSdr(record)) + "\n";
  EXPECT_THAT(lines, HasSubstr("Inlet Temp: Full Sensor, sensor 20h, Temperature, Front Panel Board 1, "
                               "lcr 2, lnc 5, unc 40, ucr 45 degrees C\n"));
}

TEST(Decode, AnyBytesAreCoveredByFieldsAndNoneOutside) {
  Generator generator(9);
  for (int i = 0; i < 1000; ++i) {
    Bytes record = generator.Record();
    if (i % 2 == 0) generator.Damage(record);
    const Decoded decoded = DecodeSdr(record);
    std::vector<bool> isCovered(record.size());
    for (const Field& field : decoded.sections.front().fields) {
      ASSERT_LE(field.offset + field.length, record.size()) << field.label;
      for (std::size_t at = 0; at < field.length; ++at) isCovered[field.offset + at] = true;
    }
    EXPECT_EQ(std::count(isCovered.begin(), isCovered.end(), false), 0);
    Bytes tables = sim::DefaultSmbiosDump();
    generator.Damage(tables);
    for (const Section& section : DecodeSmbios(tables).sections) ASSERT_LE(section.End(), tables.size());
  }
}

}  // namespace
}  // namespace varnok::testing
