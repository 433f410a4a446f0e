// Decoding, field queries, names and titles of every record type.
#include "sdr/record.h"

#include <gtest/gtest.h>

#include <map>
#include <tuple>

#include "app/services/text.h"
#include "sdr/record_lists.h"
#include "tests/sdr/records.h"
#include "tests/support/test_firmware.h"

namespace varnok::testing {
namespace {

constexpr const char* kNoSuchField = "*INTERNAL SDR MANAGER DECODING ERROR*";

struct Records : ::testing::Test {
  TestFirmware machine;
  PoolPtr<CSdr> record;

  Status Decode(const Bytes& bytes) {
    EXPECT_EQ(SdrUtility::CreateSDRTypeObject(bytes[3], record), kSuccess);
    return record->DecodeSDR(bytes);
  }
  std::string Text(Status (CSdr::*query)(const char16_t*&)) {
    const char16_t* text = u"";
    EXPECT_EQ(((*record).*query)(text), kSuccess);
    return Narrow(text);
  }
  std::string Field(std::int64_t field, Status (CSdr::*query)(const char16_t*&)) {
    record->SelectField(field);
    return Text(query);
  }
  std::string Value(std::int64_t field) { return Field(field, &CSdr::GetFieldValue); }
};

struct Shown {
  Bytes bytes;
  std::string name;
  std::string title;
  /// Runs of values, by the number of their first field; the last one ends behind the last field.
  std::map<int, std::vector<std::string>> values;
};

TEST_F(Records, EveryTypeShowsItsValuesNameAndTitle) {
  const Bytes temperature = TemperatureRecord();
  Bytes compact(temperature.begin() + 5, temperature.begin() + 23);
  compact[2] = 0xFF;
  compact = Joined(compact, {0x34, 0x12, 0x01, 0x02, 0xEE, 0xEE, 0xEE, 0x77});
  const Bytes event{0x20, 0x00, 0x44, 0x07, 0x01, 0x12, 0x6F, 0x34, 0x12, 0xEE, 0x77};
  const Bytes device{0x20, 0xA0, 0x01, 0x02, 0xEE, 0x08, 0x01, 0x20, 0x03, 0x44};
  Bytes controller{0x20, 0x01, 0x02, 0x03, 0x04, 0x51, 0x40, 0xE2, 0x01, 0x11, 0x43};
  for (std::uint8_t byte = 0xF0; byte != 0; ++byte) controller.push_back(byte);
  const std::string guid = "f0 f1 f2 f3 f4 f5 f6 f7 f8 f9 fa fb fc fd fe ff ";
  const Shown cases[] = {
      {temperature, " 01h - Temperature (Inlet Temp)(0012h)(Sensor #30h)", "SDR Type01h - Inlet Temp",
       {{-1, {kNoSuchField}},
        {0, {"0012h", "51h", "01h", "35h", "20h", "03h", "30h", "7 - System Board", "81h", "7fh", "68h"}},
        {11, {"01h - Temperature", "01h - Threshold", "7a95h", "7a95h", "3f3fh", "80h", "1 - degrees C"}},
        {18, {"0 - unspecified", "07h", "10 0000 0001b", "10 1010b", "10 0000 0010b", "01 0000 0101b"}},
        {24, {"10b", "XX", "1010b", "0001b", "07h", "18h", "28h", "0ah", "ffh", "00h", "5fh", "55h", "50h"}},
        {37, {"01h", "05h", "0ah", "02h", "03h", "XX", "XX", "5ah", "cah", "Inlet Temp", kNoSuchField}}}},
      {NamedRecord(0x02, compact, "Fan 1"), " 01h - Temperature (Fan 1)(0012h)(Sensor #Reserved)",
       "SDR Type02h - Fan 1",
       {{6, {"Reserved"}},
        {11, {"01h - Temperature"}},
        {15, {"3f3fh"}},
        {18, {"0 - unspecified", "1234h", "01h", "02h", "XX"}},
        {24, {"XX", "77h", "c5h", "Fan 1", kNoSuchField}}}},
      // The list names type and event type twice.
      {NamedRecord(0x03, event, "Event"), " 12h - System Event (Event)(0012h)(Sensor #44h)",
       "SDR Type02h - Event",
       {{9, {"12h - System Event", "6fh - Sensor-specific"}},
        {11, {"12h - System Event", "6fh - Sensor-specific", "1234h", "XX", "77h", kNoSuchField}}}},
      {AssociationRecord(), " Entity Association Record (0012h)", "SDR Type08h - 0012h",
       {{4, {"23 - System Chassis", "01h", "80h", "3 - Processor"}}, {14, {"10h", kNoSuchField}}}},
      {Record(0x09, Bytes(27, 0x07)), " Device-Relative Entity Association Record (0012h)",
       "SDR Type09h - 0012h",
       {{23, {"7 - System Board", "07h"}}, {30, {"XX", kNoSuchField}}}},
      {NamedRecord(0x10, device, "DIMM A1"), " 08h - EEPROM, 24C01 or equivalent (DIMM A1)(0012h)",
       "SDR Type10h - DIMM A1",
       {{4, {"20h"}},
        {8, {"XX", "08h - EEPROM, 24C01 or equivalent", "01h - DIMM Memory ID", "32 - Memory Device"}},
        {14, {"c7h", "DIMM A1", kNoSuchField}}}},
      {FruLocatorRecord(""), " 10h - FRU Inventory Device (0012h)", "SDR Type11h - ",
       {{10, {"00h - n/a"}}, {15, {"", kNoSuchField}}}},
      {NamedRecord(0x12, device, "BMC"), " 32 - Memory Device (BMC)(0012h)", "SDR Type12h - BMC",
       {{7, {"02h", "XX"}}, {11, {"32 - Memory Device"}}, {15, {"BMC", kNoSuchField}}}},
      {Record(0x13, controller), " " + guid + " (0012h)", "SDR Type13h - " + guid,
       {{9, {"51h", "01e240h", "1143h", guid, kNoSuchField}}}},
      {Record(0x14, {1, 2, 3, 4, 5, 6, 7, 0x88, 0x0A, 0x16, 0}), " BMC Message Channel Info (0012h)",
       "SDR Type14h",
       {{11, {"88h", "0Ah - IRQ 10", "Unknown", "XX", kNoSuchField}}}},
      {Record(0xC0, {0x40, 0xE2, 0x01, 'R', 'e', 'v', ' ', '2'}), " OEM SDR Record (0012h)", "SDR TypeC0h",
       {{4, {"01e240h", "Rev 2", kNoSuchField}}}},
  };
  for (const Shown& each : cases) {
    SCOPED_TRACE(each.name);
    ASSERT_EQ(Decode(each.bytes), kSuccess);
    EXPECT_EQ(Text(&CSdr::GetName), each.name);
    EXPECT_EQ(Text(&CSdr::GetSdrTitle), each.title);
    std::int64_t field = 0, count = 0;
    for (const auto& [first, values] : each.values) {
      field = first;
      for (const std::string& value : values) EXPECT_EQ(Value(field++), value) << field - 1;
    }
    std::uint32_t code = 0;
    EXPECT_EQ(record->GetNumberOfFields(count), kSuccess);
    EXPECT_EQ(count, field - 1);
    EXPECT_EQ(record->GetTypeAsInteger(code), kSuccess);
    EXPECT_EQ(code, each.bytes[3]);
  }
}

TEST_F(Records, ValuesThatDependOnOtherBytes) {
  auto temperature = [](std::size_t byte, std::uint8_t value, const char* name = "Inlet Temp") {
    Bytes bytes = TemperatureRecord(name);
    bytes[byte - 1] = value;
    return bytes;
  };
  Bytes longOem{0x40, 0xE2, 0x01};
  for (std::uint8_t letter = 'A'; letter < 'U'; ++letter) longOem.push_back(letter);
  const std::tuple<const char*, Bytes, std::int64_t, const char*> cases[] = {
      {"a sensor that does not initialise its thresholds: one", temperature(11, 0x6F), 34, ""},
      {"the last one", temperature(11, 0x6F), 39, ""},
      {"its minimum, which is none", temperature(11, 0x6F), 33, "00h"},
      {"no threshold access", temperature(12, 0x60), 15, "7f3fh"},
      {"sensor number FFh", temperature(8, 0xFF), 6, "%04xh"},
      {"entity 25h", temperature(9, 0x25), 7, "37 - Group"},
      {"entity 26h", temperature(9, 0x26), 7, "26h - Reserved"},
      {"length 31, which counts as no name", temperature(48, 0xDF, ""), 46, ""},
      {"more than 16 characters", TemperatureRecord("A name of 24 characters."), 46, "A name of 24 cha"},
      {"OEM data past 16 bytes", Record(0xC0, longOem), 5, "ABCDEFGHIJKLMNOP"},
      {"OEM data that are no text", Record(0xC0, {0x40, 0xE2, 0x01, 0x01, 'A'}), 5, "01 41 "},
  };
  for (const auto& [what, bytes, field, value] : cases) {
    ASSERT_EQ(Decode(bytes), kSuccess) << what;
    EXPECT_EQ(Value(field), value) << what;
  }
  ASSERT_EQ(Decode(temperature(48, 0xC0, "")), kSuccess);
  EXPECT_EQ(Text(&CSdr::GetName), " 01h - Temperature (0012h)(Sensor #30h)");
  EXPECT_EQ(Text(&CSdr::GetSdrTitle), "SDR Type01h");
  // Other types have no OEM data and say nothing.
  std::span<const std::uint8_t> data;
  EXPECT_EQ(record->GetOEMData(data), kSuccess);
  EXPECT_TRUE(data.empty());
  ASSERT_EQ(Decode(Record(0xC0, longOem)), kSuccess);
  ASSERT_EQ(record->GetOEMData(data), kSuccess);
  EXPECT_EQ(std::string(data.begin(), data.end()), "ABCDEFGHIJKLMNOP");
}

TEST_F(Records, FieldsHaveTitlesAndPlaces) {
  Bytes discrete = TemperatureRecord();
  discrete[11] &= 0xF3;  // no threshold access
  const Bytes event = NamedRecord(0x03, Bytes(11), "Event");
  const std::tuple<Bytes, std::int64_t, const char*, const char*> cases[] = {
      {TemperatureRecord(), 13, "Lower Threshold Reading Mask", "15:16"},
      {TemperatureRecord(), 23, "Accuracy", "28(5:0):29(7:4)"},
      {discrete, 13, "Assertion Event Mask", "15:16"},
      {discrete, 14, "Deassertion Event Mask", "17:18"},
      {discrete, 15, "Discrete Reading Mask", "19:20"},
      {NamedRecord(0x02, Bytes(26), "Fan"), 27, "ID String Bytes", "33 + N"},
      {event, 11, "Sensor Type", "13"},
      {event, 13, "Sensor Record Sharing", "15:16"},
      {event, 15, "OEM", "18"},
      {AssociationRecord(), 12, "Contained Entity 3 Instance / Range 2 first entity instance", "14"},
      {Record(0x09, Bytes(27)), 21, "Contained Entity 4 Device Address", "23"},
      {FruLocatorRecord(), 15, "Device String", "17 + N"},
  };
  for (const auto& [bytes, field, wantedTitle, wantedLocation] : cases) {
    ASSERT_EQ(Decode(bytes), kSuccess);
    record->SelectField(field);
    const char16_t *title = u"", *location = u"", *value = u"";
    ASSERT_EQ(record->GetFieldTitle(title), kSuccess);
    ASSERT_EQ(record->GetFieldLocation(location), kSuccess);
    ASSERT_EQ(record->GetFieldValue(value), kSuccess);
    EXPECT_EQ(Narrow(title), wantedTitle) << "held beside the others";
    EXPECT_EQ(Narrow(location), wantedLocation) << wantedTitle;
  }
}

TEST_F(Records, LengthRulesRefuseARecordAByteLongerOrShorter) {
  const std::pair<const char*, Bytes> cases[] = {
      {"full sensor, a byte more", Record(0x01, Bytes(44))},
      {"full sensor, a byte less", Record(0x01, Bytes(42))},
      {"a name of 31 characters", TemperatureRecord(std::string(31, 'x'))},
      {"locator, a byte more", Record(0x11, Bytes(12))},
      {"association, a byte more", Record(0x08, Bytes(12))},
      {"association, a byte less", Record(0x08, Bytes(10))},
      {"an OEM record of 65 bytes", Record(0xC0, Bytes(60, 0x41))},
      {"confirmation of 31 bytes", Record(0x13, Bytes(26))},
      {"channel info of 17 bytes", Record(0x14, Bytes(12))},
      {"record length 4", Record(0xC0, Bytes(4))},
  };
  for (const auto& [what, bytes] : cases) {
    SCOPED_TRACE(what);
    LastFailingRecordId = 0;
    EXPECT_EQ(Decode(bytes), sdr_status::kBadRecordLength);
    EXPECT_EQ(LastFailingRecordId, 0x1200U);
    const char16_t* text = nullptr;
    record->SelectField(0);
    EXPECT_EQ(record->GetFieldValue(text), sdr_status::kNotDecoded);
  }
  EXPECT_EQ(Decode(Record(0xC0, Bytes(59, 0x41))), kSuccess);
  // The header's failure is named before the type's own, where the header is read first.
  machine.files.clear();
  EXPECT_EQ(Decode(Record(0x01, Bytes(4))), sdr_status::kBadRecordLength);
  EXPECT_EQ(Decode(Record(0x08, Bytes(4))), sdr_status::kBadRecordLength);
  EXPECT_EQ(machine.TraceLines(), (std::vector<std::string>{"CSdr::DecodeHeader - Bad Record Length",
                                                            "CSdrType01::DecodeSDR - Bad Record Length",
                                                            "CSdrType08::DecodeSDR - Bad Record Length"}));
}

TEST_F(Records, QueriesBeforeADecodeAndWithoutASelection) {
  ASSERT_EQ(SdrUtility::CreateSDRTypeObject(0x01, record), kSuccess);
  const char16_t* text = nullptr;
  std::int64_t count = 0;
  std::uint32_t code = 0;
  record->SelectField(0);
  for (Status status : {record->GetNumberOfFields(count), record->GetFieldTitle(text),
                        record->GetFieldLocation(text), record->GetName(text), record->GetSdrTitle(text),
                        record->GetTypeAsInteger(code), record->WriteRecordToFile(u"OUT.SDR")})
    EXPECT_EQ(status, sdr_status::kNotDecoded);
  EXPECT_EQ(machine.TraceLines().back(), "CSdrType01::WriteRecordToFile - SDR Type Not Decoded");
  ASSERT_EQ(record->DecodeSDR(TemperatureRecord()), kSuccess);
  record->SelectField(CSdr::FieldNotSelected);
  for (Status status :
       {record->GetFieldTitle(text), record->GetFieldValue(text), record->GetFieldLocation(text)})
    EXPECT_EQ(status, sdr_status::kFieldNotSelected);
  EXPECT_EQ(machine.TraceLines().back(), "CSdrType01::GetFieldLocation - SDR Type Field Not Selected");
}

TEST_F(Records, BinaryFormat) {
  std::u16string text;
  EXPECT_EQ(CSdr::BinaryFormat(0x3FF, 10, text), kSuccess);
  EXPECT_EQ(text, u"11 1111 1111b");
  EXPECT_EQ(CSdr::BinaryFormat(0x5A, 4, text), sdr_status::kValueTooWide);
  EXPECT_EQ(text, u"1010b");
  // A value too wide is no failure to trace.
  EXPECT_TRUE(machine.TraceLines().empty());
}

TEST_F(Records, DecodeTablesAtTheEndsOfTheirRanges) {
  // By table and device type.
  const std::tuple<std::uint32_t, std::uint8_t, std::map<int, std::string>> tables[] = {
      {0, 0, {{0x27, "LAN"}, {0x28, "Reserved"}, {0xBF, "Reserved"}, {0xC0, "OEM RESERVED"}}},
      {1, 0, {{0xBE, "Reserved"}, {0xBF, "Other / unspecified device"}, {0xC0, "OEM specified device"}}},
      {2, 0x05, {{0x02, "LM80"}, {0x06, "Unknown"}}},
      {2, 0x0F, {{0x04, "reserved"}}},
      {2, 0x10, {{0x04, " "}, {0x05, "Unknown"}}},
      {2, 0xBF, {{0xBF, "00h"}}},
      {3, 0, {{0x8F, "Reserved"}, {0x90, "Chassis-specific Entities"}}},
      {4, 0, {{0x00, "Unspecified"}, {0x01, "Unknown"}}},
      {5, 0, {{0x0B, "Generic"}, {0x0C, "Unknown"}, {0x7F, "OEM"}}},
      {6, 0, {{18, "RPM"}, {90, "uncorrectable error"}, {91, "Unknown"}}},
      {7, 0, {{0x0F, "0Fh - IRQ 15"}, {0x1F, "Unknown"}, {0x60, "60h - Assigned by ACPI/Plug'n Play BIOS"}}},
      {8, 0, {{0x00, "Unknown"}}},
  };
  for (const auto& [table, deviceType, texts] : tables) {
    for (const auto& [code, wanted] : texts) {
      std::u16string text;
      CSdr::DecodeType(table, static_cast<std::uint8_t>(code), text, deviceType);
      EXPECT_EQ(Narrow(text), wanted) << table << " " << code;
    }
  }
}

TEST_F(Records, FactoryKnowsElevenTypes) {
  for (unsigned type = 0; type < 0x100; ++type) {
    const bool isKnown = std::count(std::begin(kAllTypes), std::end(kAllTypes), type) != 0;
    Status status = SdrUtility::CreateSDRTypeObject(static_cast<std::uint8_t>(type), record);
    EXPECT_EQ(status, isKnown ? kSuccess : sdr_status::kTypeNotSupported) << type;
    EXPECT_EQ(record != nullptr, isKnown) << type;
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
      const Bytes bytes = RandomRecord(type, random);
      ASSERT_EQ(Decode(bytes), kSuccess);
      std::int64_t count = 0;
      ASSERT_EQ(record->GetNumberOfFields(count), kSuccess);
      for (std::int64_t field = 0; field < count; ++field)
        for (auto query : {&CSdr::GetFieldTitle, &CSdr::GetFieldValue, &CSdr::GetFieldLocation})
          Field(field, query);
      Text(&CSdr::GetName);
      Text(&CSdr::GetSdrTitle);
      Bytes hostile = bytes;
      hostile.resize(random() % hostile.size());
      EXPECT_EQ(record->DecodeSDR(hostile), sdr_status::kBadRecordLength);
    }
  }
}

}  // namespace
}  // namespace varnok::testing
