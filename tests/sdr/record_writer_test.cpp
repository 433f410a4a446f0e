// Records written as SDR files, and read back.
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "sdr/read_file.h"
#include "sdr/record_lists.h"
#include "tests/sdr/file_text.h"
#include "tests/sdr/records.h"
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

struct RecordWriter : ::testing::Test {
  FullDisk machine;
  std::string& text = machine.files["OUT.SDR"];

  Status Write(const Bytes& bytes, const SdrTagList& tags = {}) {
    PoolPtr<CSdr> record;
    EXPECT_EQ(SdrUtility::CreateSDRTypeObject(bytes[3], record), kSuccess);
    EXPECT_EQ(record->DecodeSDR(bytes), kSuccess);
    EXPECT_EQ(record->AddTags(tags), kSuccess);
    return record->WriteRecordToFile(u"OUT.SDR");
  }

  /// The only record of the written file.
  Bytes ReadBack() {
    text = SdrFile(text);
    std::unique_ptr<File> file;
    EXPECT_EQ(machine.OpenFile(u"OUT.SDR", FileMode::Read, file), kSuccess);
    SdrFileLines lines(*file);
    SdrTypeList lists;
    EXPECT_EQ(SdrReadFile::ReadSdrRecordsFromFile(lines, lists), kSuccess) << text;
    for (const auto& list : lists)
      if (!list.empty()) return Bytes(list.front()->Raw().begin(), list.front()->Raw().end());
    return {};
  }
};

TEST_F(RecordWriter, EntityAssociation) {
  ASSERT_EQ(Write(AssociationRecord(), {"CPU1", "A tag of more than 17 characters"}), kSuccess);
  EXPECT_EQ(text,
            "\n"
            "_SDR_TYPE 08\n"
            "_SDR_TAG 'CPU1'\n"
            "_SDR_TAG 'A tag of more tha'\n"
            "_REC_LEN 0010\n"
            "\n"
            "   // Sensor Record Header\n"
            "   0012               // Record ID\n"
            "   51                 // SDR File\n"
            "   08                 // Record Type\n"
            "   0b                 // Record Length\n"
            "\n"
            "   // Record Key Bytes\n"
            "   17                 // Container Entity ID\n"
            "   01                 // Container Entity Instance\n"
            "   80                 // Flags\n"
            "   03                 // Contained Entity 1 / Range 1 entity\n"
            "   01                 // Contained Entity 1 Instance / Range 1 first entity instance\n"
            "\n"
            "   // Record Body Bytes\n"
            "   03                 // Contained Entity 2 / Range 1 entity\n"
            "   02                 // Contained Entity 2 Instance / Range 1 last entity instance\n"
            "   08                 // Contained Entity 3 / Range 2 entity\n"
            "   01                 // Contained Entity 3 Instance / Range 2 first entity instance\n"
            "   08                 // Contained Entity 4 / Range 2 entity\n"
            "   10                 // Contained Entity 4 Instance / Range 2 last entity instance\n");
}

TEST_F(RecordWriter, LinesOfTheOtherTypes) {
  // Stands behind the last key byte.
  const std::string body = "\n   // Record Body Bytes\n";
  const std::pair<Bytes, std::vector<std::string>> cases[] = {
      {TemperatureRecord(),
       {"   21                 // Sensor Owner ID\n", "// Sensor Number\n" + body,
        "   fa95               // Lower Threshold Reading Mask\n",
        // A byte that fields share names them all.
        "   01                 // M\n   aa                 // M, Tolerance\n",
        "   02                 // B\n   85                 // B, Accuracy\n",
        "   4b                 // Accuracy, Accuracy exponent\n",
        "   a1                 // R exponent, B exponent\n",
        "   ca                 // ID String Type / Length Code\n   'Inlet Temp'     // ID String Bytes\n"}},
      {TemperatureRecord("20\xB0 C"), {"   '20\xB0 C'     // ID String Bytes\n"}},
      {Record(0x02, Bytes(27)), {"// Sensor Number\n" + body}},
      // Its list names the type twice.
      {Record(0x03, Bytes(12, 0xC0)), {"Sensor Number\n" + body, "   c0                 // Sensor Type\n"}},
      {Record(0x09, Bytes(27)), {"// Contained Entity 1 Instance / Range 1 first entity instance\n" + body}},
      {Record(0x10, Bytes(11)), {"// Access LUN / Bus ID\n" + body}},
      {Record(0x11, Bytes(11)), {"// Channel Number\n" + body}},
      {Record(0x12, Bytes(11)), {"// Channel Number\n" + body}},
      {Record(0x13, Bytes(27, 0xAB)),
       {"// Device Revision\n" + body,
        "   ababab             // Manufacturer ID\n   abab               // Product ID\n",
        "   ab ab ab ab ab ab ab ab ab ab ab ab ab ab ab ab        // Device GUID\n"}},
      {Record(0xC0, {0x40, 0xE2, 0x01, 0x02, 0x41}),
       {"   01e240             // Manufacturer ID\n" + body + "   02 41        // OEM Data\n"}},
      // The first byte decides whether OEM data are text.
      {Record(0xC0, {0x40, 0xE2, 0x01, 'T', 0x02}), {"   'T\x02'     // OEM Data\n"}},
      {Record(0xC0, {0x40, 0xE2, 0x01, 0xB0, 'C'}), {"   b0 43        // OEM Data\n"}},
      {Record(0xC0, {0x40, 0xE2, 0x01, 'T', '\''}), {"   54 27        // OEM Data\n"}},
      {Record(0x14, Bytes(11, 0x01)),
       {"// Record Length\n" + body + "   01                 // Message Channel 0 info\n"}},
  };
  for (const auto& [bytes, lines] : cases) {
    text.clear();
    ASSERT_EQ(Write(bytes), kSuccess);
    for (const std::string& line : lines) EXPECT_NE(text.find(line), std::string::npos) << line << text;
  }
}

TEST_F(RecordWriter, EveryRecordReadsBackWithItsWordsReversed) {
  // Type -> places (first byte, count) that are written most significant digit first.
  const std::map<int, std::vector<std::pair<int, int>>> reversed{{0x01, {{15, 2}, {17, 2}, {19, 2}}},
                                                                 {0x02, {{15, 2}, {17, 2}, {19, 2}, {24, 2}}},
                                                                 {0x03, {{13, 2}}},
                                                                 {0x13, {{12, 3}, {15, 2}}},
                                                                 {0xC0, {{6, 3}}}};
  std::mt19937 random(43);
  for (std::uint8_t type : kAllTypes) {
    for (int round = 0; round < 100; ++round) {
      Bytes expected = RandomRecord(type, random);
      text.clear();
      ASSERT_EQ(Write(expected), kSuccess);
      std::swap(expected[0], expected[1]);
      if (auto places = reversed.find(type); places != reversed.end())
        for (auto [first, count] : places->second)
          std::reverse(expected.begin() + first - 1, expected.begin() + first - 1 + count);
      ASSERT_EQ(ReadBack(), expected) << text;
    }
  }
}

TEST_F(RecordWriter, AFileThatCannotBeWritten) {
  const std::string trace = "CSdrType08::WriteRecordToFile - Error Writing File";
  machine.isFull = true;
  EXPECT_EQ(Write(AssociationRecord()), sdr_status::kCannotWriteFile);
  EXPECT_EQ(machine.TraceLines(), (std::vector<std::string>{"CSdr::wfprintf - Error Writing File", trace}));
  machine.isFull = false;
  machine.fileFailures["OUT.SDR"] = uefi_status::kWriteProtected;
  EXPECT_EQ(Write(AssociationRecord()), sdr_status::kCannotWriteFile);
  EXPECT_EQ(machine.TraceLines().back(), trace);
}

}  // namespace
}  // namespace varnok::testing
