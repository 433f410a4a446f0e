// Decoding, field queries, names and titles of every record type.
#include "sdr/record.h"

#include <gtest/gtest.h>

#include <map>

#include "app/services/text.h"
#include "sdr/utility.h"
#include "tests/sdr/records.h"
#include "tests/support/test_firmware.h"

namespace varnok {
namespace {

using testing::AssociationRecord;
using testing::Bytes;
using testing::FruLocatorRecord;
using testing::kAllTypes;
using testing::NamedRecord;
using testing::Record;
using testing::TemperatureRecord;
using testing::TestFirmware;

std::string Narrowed(const char16_t* text) {
  return Narrow(text);
}

struct Records : ::testing::Test {
  TestFirmware machine;
  PoolPtr<CSdr> record;

  Status Decode(const Bytes& bytes) {
    EXPECT_EQ(SdrUtility::CreateSDRTypeObject(bytes[3], record), kSuccess);
    return record->DecodeSDR(bytes);
  }
  std::string Value(std::int64_t field) {
    const char16_t* text = u"";
    record->SelectField(field);
    EXPECT_EQ(record->GetFieldValue(text), kSuccess);
    return Narrowed(text);
  }
  std::string Title(std::int64_t field) {
    const char16_t* text = u"";
    record->SelectField(field);
    EXPECT_EQ(record->GetFieldTitle(text), kSuccess);
    return Narrowed(text);
  }
  std::string Location(std::int64_t field) {
    const char16_t* text = u"";
    record->SelectField(field);
    EXPECT_EQ(record->GetFieldLocation(text), kSuccess);
    return Narrowed(text);
  }
  std::string Name() {
    const char16_t* text = u"";
    EXPECT_EQ(record->GetName(text), kSuccess);
    return Narrowed(text);
  }
  std::string SdrTitle() {
    const char16_t* text = u"";
    EXPECT_EQ(record->GetSdrTitle(text), kSuccess);
    return Narrowed(text);
  }
  /// Field number -> value text, for the fields given.
  void ExpectValues(const std::map<int, std::string>& values) {
    for (const auto& [field, text] : values) EXPECT_EQ(Value(field), text) << field;
  }
  void ExpectNameAndTitle(std::string_view name, std::string_view title) {
    EXPECT_EQ(Name(), name);
    EXPECT_EQ(SdrTitle(), title);
  }
};

TEST_F(Records, FullSensorShowsEveryField) {
  ASSERT_EQ(Decode(TemperatureRecord()), kSuccess);
  ExpectValues({{0, "0012h"},
                {1, "51h"},
                {2, "01h"},
                {3, "35h"},
                {4, "20h"},
                {5, "03h"},
                {6, "30h"},
                {7, "7 - System Board"},
                {8, "81h"},
                {9, "7fh"},
                {10, "68h"},
                {11, "01h - Temperature"},
                {12, "01h - Threshold"},
                {13, "7a95h"},
                {14, "7a95h"},
                {15, "3f3fh"},
                {16, "80h"},
                {17, "1 - degrees C"},
                {18, "0 - unspecified"},
                {19, "07h"},
                {20, "10 0000 0001b"},
                {21, "10 1010b"},
                {22, "10 0000 0010b"},
                {23, "01 0000 0101b"},
                {24, "10b"},
                {25, "XX"},
                {26, "1010b"},
                {27, "0001b"},
                {28, "07h"},
                {29, "18h"},
                {30, "28h"},
                {31, "0ah"},
                {32, "ffh"},
                {33, "00h"},
                {34, "5fh"},
                {35, "55h"},
                {36, "50h"},
                {37, "01h"},
                {38, "05h"},
                {39, "0ah"},
                {40, "02h"},
                {41, "03h"},
                {42, "XX"},
                {43, "XX"},
                {44, "5ah"},
                {45, "cah"},
                {46, "Inlet Temp"},
                {47, "*INTERNAL SDR MANAGER DECODING ERROR*"},
                {-1, "*INTERNAL SDR MANAGER DECODING ERROR*"}});
  EXPECT_EQ(Title(13), "Lower Threshold Reading Mask");
  EXPECT_EQ(Location(23), "28(5:0):29(7:4)");
  ExpectNameAndTitle(" 01h - Temperature (Inlet Temp)(0012h)(Sensor #30h)", "SDR Type01h - Inlet Temp");
}

TEST_F(Records, DiscreteSensorChangesTitlesAndMask) {
  Bytes bytes = TemperatureRecord();
  bytes[11] &= 0xF3;  // no threshold access
  ASSERT_EQ(Decode(bytes), kSuccess);
  EXPECT_EQ(Title(13), "Assertion Event Mask");
  EXPECT_EQ(Title(14), "Deassertion Event Mask");
  EXPECT_EQ(Title(15), "Discrete Reading Mask");
  EXPECT_EQ(Location(15), "19:20");
  EXPECT_EQ(Value(15), "7f3fh");
}

TEST_F(Records, ThresholdsOfASensorThatDoesNotInitialiseThemAreEmpty) {
  Bytes bytes = TemperatureRecord();
  bytes[10] &= 0xEF;
  ASSERT_EQ(Decode(bytes), kSuccess);
  ExpectValues({{33, "00h"}, {34, ""}, {39, ""}, {40, "02h"}});
}

TEST_F(Records, SensorNumberFFAndEntitiesAround25) {
  Bytes bytes = TemperatureRecord("");
  bytes[7] = 0xFF;
  bytes[8] = 0x25;
  ASSERT_EQ(Decode(bytes), kSuccess);
  ExpectValues({{6, "%04xh"}, {7, "37 - Group"}});
  ExpectNameAndTitle(" 01h - Temperature (0012h)(Sensor #%04xh)", "SDR Type01h");
  bytes[8] = 0x26;
  ASSERT_EQ(Decode(bytes), kSuccess);
  EXPECT_EQ(Value(7), "26h - Reserved");
}

TEST_F(Records, CompactSensor) {
  Bytes body = TemperatureRecord();
  body.assign(body.begin() + 5, body.begin() + 23);
  body[2] = 0xFF;
  for (int byte : {0x34, 0x12, 0x01, 0x02, 0xEE, 0xEE, 0xEE, 0x77})
    body.push_back(static_cast<std::uint8_t>(byte));
  ASSERT_EQ(Decode(NamedRecord(0x02, body, "Fan 1")), kSuccess);
  ExpectValues({{6, "Reserved"},
                {11, "01h - Temperature"},
                {15, "3f3fh"},
                {18, "0 - unspecified"},
                {19, "1234h"},
                {20, "01h"},
                {21, "02h"},
                {22, "XX"},
                {24, "XX"},
                {25, "77h"},
                {26, "c5h"},
                {27, "Fan 1"},
                {28, "*INTERNAL SDR MANAGER DECODING ERROR*"}});
  EXPECT_EQ(Location(27), "33 + N");
  ExpectNameAndTitle(" 01h - Temperature (Fan 1)(0012h)(Sensor #Reserved)", "SDR Type02h - Fan 1");
}

TEST_F(Records, EventOnlySensorKeepsItsCrookedList) {
  ASSERT_EQ(
      Decode(NamedRecord(0x03, {0x20, 0x00, 0x44, 0x07, 0x01, 0x12, 0x6F, 0x34, 0x12, 0xEE, 0x77}, "Event")),
      kSuccess);
  ExpectValues({{9, "12h - System Event"},
                {10, "6fh - Sensor-specific"},
                {11, "12h - System Event"},
                {12, "6fh - Sensor-specific"},
                {13, "1234h"},
                {14, "XX"},
                {15, "77h"},
                {16, "*INTERNAL SDR MANAGER DECODING ERROR*"}});
  EXPECT_EQ(Title(11), "Sensor Type");
  EXPECT_EQ(Location(13), "15:16");
  EXPECT_EQ(Location(15), "18");
  ExpectNameAndTitle(" 12h - System Event (Event)(0012h)(Sensor #44h)", "SDR Type02h - Event");
}

TEST_F(Records, EntityAssociations) {
  ASSERT_EQ(Decode(AssociationRecord()), kSuccess);
  ExpectValues({{4, "23 - System Chassis"}, {5, "01h"}, {6, "80h"}, {7, "3 - Processor"}, {14, "10h"}});
  EXPECT_EQ(Title(12), "Contained Entity 3 Instance / Range 2 first entity instance");
  ExpectNameAndTitle(" Entity Association Record (0012h)", "SDR Type08h - 0012h");
  Bytes body(27, 0x07);
  ASSERT_EQ(Decode(Record(0x09, body)), kSuccess);
  EXPECT_EQ(Title(21), "Contained Entity 4 Device Address");
  EXPECT_EQ(Location(21), "23");
  ExpectValues({{23, "7 - System Board"}, {24, "07h"}, {30, "XX"}});
  ExpectNameAndTitle(" Device-Relative Entity Association Record (0012h)", "SDR Type09h - 0012h");
}

TEST_F(Records, DeviceLocators) {
  const Bytes body{0x20, 0xA0, 0x01, 0x02, 0xEE, 0x08, 0x01, 0x20, 0x03, 0x44};
  ASSERT_EQ(Decode(NamedRecord(0x10, body, "DIMM A1")), kSuccess);
  ExpectValues({{4, "20h"},
                {8, "XX"},
                {9, "08h - EEPROM, 24C01 or equivalent"},
                {10, "01h - DIMM Memory ID"},
                {11, "32 - Memory Device"},
                {14, "c7h"},
                {15, "DIMM A1"}});
  ExpectNameAndTitle(" 08h - EEPROM, 24C01 or equivalent (DIMM A1)(0012h)", "SDR Type10h - DIMM A1");
  ASSERT_EQ(Decode(FruLocatorRecord("")), kSuccess);
  EXPECT_EQ(Title(15), "Device String");
  EXPECT_EQ(Value(10), "00h - n/a");
  ExpectNameAndTitle(" 10h - FRU Inventory Device (0012h)", "SDR Type11h - ");
  ASSERT_EQ(Decode(NamedRecord(0x12, body, "BMC")), kSuccess);
  ExpectValues({{7, "02h"}, {8, "XX"}, {11, "32 - Memory Device"}, {15, "BMC"}});
  ExpectNameAndTitle(" 32 - Memory Device (BMC)(0012h)", "SDR Type12h - BMC");
}

TEST_F(Records, ControllerConfirmationChannelsAndOem) {
  Bytes body{0x20, 0x01, 0x02, 0x03, 0x04, 0x51, 0x40, 0xE2, 0x01, 0x11, 0x43};
  for (std::uint8_t i = 0; i < 16; ++i) body.push_back(static_cast<std::uint8_t>(0xF0 + i));
  const std::string guid = "f0 f1 f2 f3 f4 f5 f6 f7 f8 f9 fa fb fc fd fe ff ";
  ASSERT_EQ(Decode(Record(0x13, body)), kSuccess);
  ExpectValues({{9, "51h"}, {10, "01e240h"}, {11, "1143h"}, {12, guid}});
  ExpectNameAndTitle(" " + guid + " (0012h)", "SDR Type13h - " + guid);
  ASSERT_EQ(Decode(Record(0x14, {1, 2, 3, 4, 5, 6, 7, 0x88, 0x0A, 0x16, 0})), kSuccess);
  ExpectValues({{11, "88h"}, {12, "0Ah - IRQ 10"}, {13, "Unknown"}, {14, "XX"}});
  ExpectNameAndTitle(" BMC Message Channel Info (0012h)", "SDR Type14h");
  ASSERT_EQ(Decode(Record(0xC0, {0x40, 0xE2, 0x01, 'R', 'e', 'v', ' ', '2'})), kSuccess);
  ExpectValues({{4, "01e240h"}, {5, "Rev 2"}});
  ExpectNameAndTitle(" OEM SDR Record (0012h)", "SDR TypeC0h");
  ASSERT_EQ(Decode(Record(0xC0, {0x40, 0xE2, 0x01, 0x01, 'A'})), kSuccess);
  EXPECT_EQ(Value(5), "01 41 ");
}

TEST_F(Records, OemDataIsKeptUpToSixteenBytes) {
  std::span<const std::uint8_t> data;
  Bytes body{0x40, 0xE2, 0x01};
  for (std::uint8_t i = 0; i < 20; ++i) body.push_back(static_cast<std::uint8_t>(0x41 + i));
  ASSERT_EQ(Decode(Record(0xC0, body)), kSuccess);
  ASSERT_EQ(record->GetOEMData(data), kSuccess);
  EXPECT_EQ(Bytes(data.begin(), data.end()), Bytes(body.begin() + 3, body.begin() + 19));
  EXPECT_EQ(Value(5), "ABCDEFGHIJKLMNOP");
  // Other types have none and say nothing.
  ASSERT_EQ(Decode(AssociationRecord()), kSuccess);
  data = {};
  EXPECT_EQ(record->GetOEMData(data), kSuccess);
  EXPECT_TRUE(data.empty());
}

TEST_F(Records, NamesPastSixteenCharactersAreCutForDisplayOnly) {
  const Bytes bytes = TemperatureRecord("A name of 24 characters.");
  ASSERT_EQ(Decode(bytes), kSuccess);
  EXPECT_EQ(Value(46), "A name of 24 cha");
  ASSERT_EQ(record->CopyrawSDR(bytes), kSuccess);
  EXPECT_EQ(Bytes(record->Raw().begin(), record->Raw().end()), bytes);
}

struct LengthRule {
  const char* what;
  Bytes bytes;
  bool isHeaderRead;  ///< the header is decoded before the length is judged
};

TEST_F(Records, LengthRulesRefuseARecordAByteLongerOrShorter) {
  auto changed = [](Bytes bytes, int difference) {
    bytes[4] = static_cast<std::uint8_t>(bytes[4] + difference);
    if (difference > 0)
      bytes.push_back(0);
    else
      bytes.pop_back();
    return bytes;
  };
  const Bytes named31 = [] {
    Bytes bytes = TemperatureRecord(std::string(31, 'x'));
    return bytes;
  }();
  const LengthRule cases[] = {
      {"full sensor, a byte more", changed(TemperatureRecord(), 1), true},
      {"full sensor, a byte less", changed(TemperatureRecord(), -1), true},
      {"a name of 31 characters", named31, true},
      {"locator, a byte more", changed(FruLocatorRecord(), 1), true},
      {"association, a byte more", changed(AssociationRecord(), 1), false},
      {"association, a byte less", changed(AssociationRecord(), -1), false},
      {"an OEM record of 65 bytes", Record(0xC0, Bytes(60, 0x41)), true},
      {"confirmation of 31 bytes", Record(0x13, Bytes(26)), false},
      {"channel info of 17 bytes", Record(0x14, Bytes(12)), false},
      {"record length 4", Record(0xC0, Bytes(4)), true},
      {"fewer bytes than the header says",
       [] {
         Bytes b = TemperatureRecord();
         b.pop_back();
         return b;
       }(),
       true},
  };
  for (const LengthRule& rule : cases) {
    SCOPED_TRACE(rule.what);
    LastFailingRecordId = 0;
    EXPECT_EQ(Decode(rule.bytes), sdr_status::kBadRecordLength);
    EXPECT_EQ(LastFailingRecordId, 0x1200U);
    const char16_t* text = nullptr;
    record->SelectField(0);
    EXPECT_EQ(record->GetFieldValue(text), sdr_status::kNotDecoded);
  }
  EXPECT_EQ(Decode(Record(0xC0, Bytes(59, 0x41))), kSuccess);
}

TEST_F(Records, LengthCode31CountsAsNoName) {
  Bytes bytes = TemperatureRecord("");
  bytes[47] = 0xDF;
  ASSERT_EQ(Decode(bytes), kSuccess);
  EXPECT_EQ(Value(46), "");
  EXPECT_EQ(SdrTitle(), "SDR Type01h");
}

TEST_F(Records, HeaderFailureIsNamedBeforeTheTypesOwn) {
  EXPECT_EQ(Decode(Record(0x01, Bytes(4))), sdr_status::kBadRecordLength);
  EXPECT_EQ(machine.TraceLines(), (std::vector<std::string>{"CSdr::DecodeHeader - Bad Record Length",
                                                            "CSdrType01::DecodeSDR - Bad Record Length"}));
  machine.files.clear();
  EXPECT_EQ(Decode(Record(0x08, Bytes(4))), sdr_status::kBadRecordLength);
  EXPECT_EQ(machine.TraceLines(), (std::vector<std::string>{"CSdrType08::DecodeSDR - Bad Record Length"}));
}

TEST_F(Records, QueriesBeforeADecodeAndWithoutASelection) {
  ASSERT_EQ(SdrUtility::CreateSDRTypeObject(0x01, record), kSuccess);
  CSdr& full = *record;
  const char16_t* text = nullptr;
  std::int64_t count = 0;
  std::uint32_t code = 0;
  full.SelectField(0);
  EXPECT_EQ(full.GetNumberOfFields(count), sdr_status::kNotDecoded);
  EXPECT_EQ(full.GetFieldTitle(text), sdr_status::kNotDecoded);
  EXPECT_EQ(full.GetFieldLocation(text), sdr_status::kNotDecoded);
  EXPECT_EQ(full.GetName(text), sdr_status::kNotDecoded);
  EXPECT_EQ(full.GetSdrTitle(text), sdr_status::kNotDecoded);
  EXPECT_EQ(full.GetTypeAsInteger(code), sdr_status::kNotDecoded);
  EXPECT_EQ(full.WriteRecordToFile(u"OUT.SDR"), sdr_status::kNotDecoded);
  EXPECT_EQ(machine.TraceLines().back(), "CSdrType01::WriteRecordToFile - SDR Type Not Decoded");
  ASSERT_EQ(full.DecodeSDR(TemperatureRecord()), kSuccess);
  full.SelectField(CSdr::FieldNotSelected);
  EXPECT_EQ(full.GetFieldTitle(text), sdr_status::kFieldNotSelected);
  EXPECT_EQ(full.GetFieldValue(text), sdr_status::kFieldNotSelected);
  EXPECT_EQ(full.GetFieldLocation(text), sdr_status::kFieldNotSelected);
  EXPECT_EQ(machine.TraceLines().back(), "CSdrType01::GetFieldLocation - SDR Type Field Not Selected");
}

TEST_F(Records, BinaryFormat) {
  std::u16string text;
  EXPECT_EQ(CSdr::BinaryFormat(0x3FF, 10, text), kSuccess);
  EXPECT_EQ(text, u"11 1111 1111b");
  EXPECT_EQ(CSdr::BinaryFormat(1, 2, text), kSuccess);
  EXPECT_EQ(text, u"01b");
  EXPECT_EQ(CSdr::BinaryFormat(0x5A, 4, text), sdr_status::kValueTooWide);
  EXPECT_EQ(text, u"1010b");
  // A value too wide is no failure to trace.
  EXPECT_TRUE(machine.TraceLines().empty());
}

TEST_F(Records, DecodeTables) {
  struct Case {
    std::uint32_t table;
    std::uint8_t code;
    std::u16string_view text;
    std::uint8_t deviceType = 0;
  };
  const Case cases[] = {{0, 0x27, u"LAN"},
                        {0, 0x28, u"Reserved"},
                        {0, 0xC0, u"OEM RESERVED"},
                        {1, 0x23, u"Combo Management ASCI, specific device not specified"},
                        {1, 0xBF, u"Other / unspecified device"},
                        {2, 0x02, u"LM80", 0x05},
                        {2, 0x06, u"Unknown", 0x05},
                        {2, 0x04, u"reserved", 0x0F},
                        {2, 0x04, u" ", 0x10},
                        {2, 0x05, u"Unknown", 0x10},
                        {2, 0xBF, u"00h", 0xBF},
                        {3, 0x8F, u"Reserved"},
                        {3, 0x90, u"Chassis-specific Entities"},
                        {4, 0x00, u"Unspecified"},
                        {4, 0x01, u"Unknown"},
                        {5, 0x0C, u"Unknown"},
                        {5, 0x7F, u"OEM"},
                        {6, 18, u"RPM"},
                        {6, 90, u"uncorrectable error"},
                        {6, 91, u"Unknown"},
                        {7, 0x0F, u"0Fh - IRQ 15"},
                        {7, 0x1F, u"Unknown"},
                        {7, 0x60, u"60h - Assigned by ACPI/Plug'n Play BIOS"},
                        {8, 0x00, u"Unknown"}};
  for (const Case& each : cases) {
    std::u16string text;
    CSdr::DecodeType(each.table, each.code, text, each.deviceType);
    EXPECT_EQ(text, each.text) << each.table << " " << int{each.code};
  }
}

TEST_F(Records, FactoryKnowsElevenTypes) {
  const std::map<int, std::int64_t> fieldCounts{{0x01, 47}, {0x02, 28}, {0x03, 16}, {0x08, 15},
                                                {0x09, 31}, {0x10, 16}, {0x11, 16}, {0x12, 16},
                                                {0x13, 13}, {0x14, 15}, {0xC0, 6}};
  std::mt19937 random(4);
  for (unsigned type = 0; type < 0x100; ++type) {
    Status status = SdrUtility::CreateSDRTypeObject(static_cast<std::uint8_t>(type), record);
    auto known = fieldCounts.find(static_cast<int>(type));
    ASSERT_EQ(status, known == fieldCounts.end() ? sdr_status::kTypeNotSupported : kSuccess) << type;
    ASSERT_EQ(record == nullptr, known == fieldCounts.end());
    if (record == nullptr) continue;
    std::int64_t count = 0;
    std::uint32_t code = 0;
    ASSERT_EQ(record->DecodeSDR(testing::RandomRecord(static_cast<std::uint8_t>(type), random)), kSuccess);
    EXPECT_EQ(record->GetNumberOfFields(count), kSuccess);
    EXPECT_EQ(record->GetTypeAsInteger(code), kSuccess);
    EXPECT_EQ(count, known->second) << type;
    EXPECT_EQ(code, type);
  }
  EXPECT_EQ(machine.TraceLines().back(), "SdrUtility::CreateSDRTypeObject - SDR Type Not Supported");
  machine.FailPoolAllocation(1);
  EXPECT_EQ(SdrUtility::CreateSDRTypeObject(0x01, record), sdr_status::kOutOfMemory);
  EXPECT_EQ(record, nullptr);
}

TEST_F(Records, RandomRecordsAreDecodedWithinTheirBytes) {
  std::mt19937 random(20261122);
  for (std::uint8_t type : kAllTypes) {
    for (int round = 0; round < 200; ++round) {
      // The bytes end exactly where the record does, so that a sanitizer sees any step past them.
      const Bytes bytes = testing::RandomRecord(type, random);
      ASSERT_EQ(Decode(bytes), kSuccess);
      std::int64_t count = 0;
      ASSERT_EQ(record->GetNumberOfFields(count), kSuccess);
      for (std::int64_t field = 0; field < count; ++field) Title(field), Value(field), Location(field);
      Name(), SdrTitle();
      Bytes hostile = bytes;
      hostile.resize(random() % hostile.size());
      EXPECT_EQ(record->DecodeSDR(hostile), sdr_status::kBadRecordLength);
    }
  }
}

}  // namespace
}  // namespace varnok
