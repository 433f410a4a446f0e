// Records of every type: what is shown and written of them, and what is refused.
#include "sdr/record.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>
#include <utility>

#include "app/services/format.h"
#include "app/services/text.h"
#include "sdr/read_file.h"
#include "sdr/record_lists.h"
#include "tests/sdr/file_text.h"
#include "tests/sdr/records.h"
#include "tests/support/expectations.h"
#include "tests/support/test_firmware.h"

namespace varnok::testing {
namespace {

/// A machine whose disk can be full: files open and take no byte.
struct FullDisk : TestFirmware {
  struct FullFile : File {
    Status Read(std::span<std::uint8_t>, std::size_t&) override { return uefi_status::kDeviceError; }
    Status Write(std::span<const std::uint8_t>) override { return uefi_status::kDeviceError; }
  };
  bool isFull = false;
  Status OpenFile(std::u16string_view path, FileMode mode, std::unique_ptr<File>& file) override {
    if (!isFull || path != u"OUT.SDR") return TestFirmware::OpenFile(path, mode, file);
    file = std::make_unique<FullFile>();
    return kSuccess;
  }
};

struct Records : ::testing::Test {
  FullDisk machine;
  PoolPtr<CSdr> record;
  std::string& written = machine.files["OUT.SDR"];

  Status Decode(const Bytes& bytes) {
    EXPECT_EQ(SdrUtility::CreateSDRTypeObject(bytes[3], record), kSuccess);
    return record->DecodeSDR(bytes);
  }
  std::string Text(Status (CSdr::*query)(const char16_t*&)) {
    const char16_t* text = u"";
    EXPECT_EQ(((*record).*query)(text), kSuccess);
    return Narrow(text);
  }
  /// Name, title, OEM data, every field with the one behind the last, and the record in a file.
  std::string Shown(const Bytes& bytes) {
    if (Decode(bytes) != kSuccess) return "does not decode\n";
    std::string shown = Text(&CSdr::GetName) + "\n" + Text(&CSdr::GetSdrTitle) + "\n";
    std::span<const std::uint8_t> oem;
    std::int64_t count = 0;
    std::uint32_t type = 0;
    EXPECT_EQ(record->GetOEMData(oem), kSuccess);
    EXPECT_EQ(record->GetNumberOfFields(count), kSuccess);
    EXPECT_EQ(record->GetTypeAsInteger(type), kSuccess);
    EXPECT_EQ(type, bytes[3]);
    if (!oem.empty()) shown += "OEM " + std::string(oem.begin(), oem.end()) + "\n";
    for (std::int64_t field = -1; field <= count; ++field) {
      record->SelectField(field);
      // All three are held at once.
      const char16_t *title = u"", *location = u"", *value = u"";
      EXPECT_EQ(record->GetFieldTitle(title), kSuccess);
      EXPECT_EQ(record->GetFieldLocation(location), kSuccess);
      EXPECT_EQ(record->GetFieldValue(value), kSuccess);
      shown += Format("%2d | %s | %s | %s\n", field, title, location, value);
    }
    written.clear();
    EXPECT_EQ(record->AddTags({"CPU1", "A tag of more than 17 characters"}), kSuccess);
    EXPECT_EQ(record->WriteRecordToFile(u"OUT.SDR"), kSuccess);
    return Escaped(shown + written);
  }
};

TEST_F(Records, EverythingShownAndWrittenOfARecord) {
  for (const auto& [what, wanted] : Expectations("sdr/records.expected")) {
    const Bytes bytes = BytesOf(what.substr(0, what.find('(')));
    EXPECT_EQ(Shown(bytes), wanted) << what;
  }
}

TEST_F(Records, DecodeTables) {
  // Each line is a code with which a text begins; the number in front is the table's, with the device type.
  for (const auto& [table, wanted] : Expectations("sdr/tables.expected")) {
    const Bytes numbers = BytesOf(table);
    std::string shown, last;
    for (unsigned code = 0; code < 0x100; ++code) {
      std::u16string text;
      CSdr::DecodeType(numbers[0], static_cast<std::uint8_t>(code), text, numbers[1]);
      if (const std::string now = Narrow(text); now != std::exchange(last, now))
        shown += Format("%02X %s\n", code, now);
    }
    EXPECT_EQ(shown, wanted) << table;
  }
}

TEST_F(Records, LengthRulesRefuseARecordAByteLongerOrShorter) {
  for (const SdrType& each : kSdrTypes) {
    auto sized = [&each](std::size_t size) { return Record(each.type, Bytes(size - 5)); };
    SCOPED_TRACE(each.rows.className);
    EXPECT_EQ(Decode(sized(each.rows.size)), kSuccess);
    for (std::size_t size :
         {each.rows.size + 1, each.rows.lengthRule == SdrLength::AtMost ? 9 : each.rows.size - 1}) {
      TheSdr().LastFailingRecordId = 0;
      EXPECT_EQ(Decode(sized(size)), sdr_status::kBadRecordLength) << size;
      EXPECT_EQ(TheSdr().LastFailingRecordId, 0x1200U);
      std::int64_t count = 0;
      EXPECT_EQ(record->GetNumberOfFields(count), sdr_status::kNotDecoded);
    }
  }
  // The header's failure is named before the type's own, where the header is read first.
  machine.files.clear();
  EXPECT_EQ(Decode(Record(0x01, Bytes(4))), sdr_status::kBadRecordLength);
  EXPECT_EQ(Decode(Record(0x08, Bytes(4))), sdr_status::kBadRecordLength);
  EXPECT_EQ(machine.TraceLines(), (std::vector<std::string>{"CSdr::DecodeHeader - Bad Record Length",
                                                            "CSdrType01::DecodeSDR - Bad Record Length",
                                                            "CSdrType08::DecodeSDR - Bad Record Length"}));
}

TEST_F(Records, QueriesBeforeADecodeAndWithoutASelection) {
  ASSERT_EQ(SdrUtility::CreateSDRTypeObject(0xC0, record), kSuccess);
  const char16_t* text = nullptr;
  std::int64_t count = 0;
  std::uint32_t code = 0;
  std::span<const std::uint8_t> data;
  record->SelectField(0);
  // Titles and places that no record changes are known without one.
  EXPECT_EQ(record->GetFieldTitle(text), kSuccess);
  EXPECT_EQ(record->GetFieldLocation(text), kSuccess);
  EXPECT_EQ(record->GetOEMData(data), sdr_status::kNotDecoded);
  ASSERT_EQ(SdrUtility::CreateSDRTypeObject(0x01, record), kSuccess);
  record->SelectField(0);
  for (Status status :
       {record->GetNumberOfFields(count), record->GetFieldTitle(text), record->GetFieldValue(text),
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

TEST_F(Records, FactoryRefusesWhatItDoesNotKnow) {
  EXPECT_EQ(kSdrTypeOrder, (SdrTypeOrder{0x01, 0x02, 0x03, 0x08, 0x09, 0x10, 0x11, 0x12, 0x13, 0x14, 0xC0}));
  ASSERT_EQ(SdrUtility::CreateSDRTypeObject(0xC0, record), kSuccess);
  EXPECT_EQ(SdrUtility::CreateSDRTypeObject(0x04, record), sdr_status::kTypeNotSupported);
  EXPECT_EQ(record, nullptr);
  EXPECT_EQ(machine.TraceLines().back(), "SdrUtility::CreateSDRTypeObject - SDR Type Not Supported");
  machine.FailPoolAllocation(1);
  EXPECT_EQ(SdrUtility::CreateSDRTypeObject(0x01, record), sdr_status::kOutOfMemory);
  EXPECT_EQ(record, nullptr);
}

TEST_F(Records, RandomRecordsAreShownWithinTheirBytesAndReadBackWithTheirWordsReversed) {
  // Type -> places (first byte, count) that are written most significant digit first.
  const std::map<int, std::vector<std::pair<int, int>>> reversed{{0x01, {{15, 2}, {17, 2}, {19, 2}}},
                                                                 {0x02, {{15, 2}, {17, 2}, {19, 2}, {24, 2}}},
                                                                 {0x03, {{13, 2}}},
                                                                 {0x13, {{12, 3}, {15, 2}}},
                                                                 {0xC0, {{6, 3}}}};
  std::mt19937 random(20261122);
  for (const SdrType& each : kSdrTypes) {
    for (int round = 0; round < 100; ++round) {
      // The bytes end exactly where the record does, so that a sanitizer sees any step past them.
      Bytes bytes = RandomRecord(each, random);
      Shown(bytes);
      machine.files["IN.SDR"] = SdrFile(written);
      std::unique_ptr<File> file;
      ASSERT_EQ(machine.OpenFile(u"IN.SDR", FileMode::Read, file), kSuccess);
      SdrFileLines lines(*file, "A.SDR");
      SdrTypeList lists;
      ASSERT_EQ(SdrReadFile::ReadSdrRecordsFromFile(lines, lists), kSuccess) << written;
      std::swap(bytes[0], bytes[1]);
      if (auto places = reversed.find(each.type); places != reversed.end())
        for (auto [first, count] : places->second)
          std::reverse(bytes.begin() + first - 1, bytes.begin() + first - 1 + count);
      EXPECT_TRUE(std::ranges::equal(lists[SdrUtility::PositionOfType(each.type)].front()->Raw(), bytes))
          << written;
      bytes.resize(random() % bytes.size());
      EXPECT_EQ(record->DecodeSDR(bytes), sdr_status::kBadRecordLength);
    }
  }
}

TEST_F(Records, AFileThatCannotBeWritten) {
  const std::string trace = "CSdrType08::WriteRecordToFile - Error Writing File";
  ASSERT_EQ(Decode(AssociationRecord()), kSuccess);
  machine.isFull = true;
  EXPECT_EQ(record->WriteRecordToFile(u"OUT.SDR"), sdr_status::kCannotWriteFile);
  EXPECT_EQ(machine.TraceLines(), (std::vector<std::string>{"CSdr::wfprintf - Error Writing File", trace}));
  machine.isFull = false;
  machine.fileFailures["OUT.SDR"] = uefi_status::kWriteProtected;
  EXPECT_EQ(record->WriteRecordToFile(u"OUT.SDR"), sdr_status::kCannotWriteFile);
  EXPECT_EQ(machine.TraceLines().back(), trace);
}

}  // namespace
}  // namespace varnok::testing
