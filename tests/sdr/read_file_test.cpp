// SDR files: their grammar, and every rule broken once.
#include "sdr/read_file.h"

#include <gtest/gtest.h>

#include "app/services/text.h"
#include "tests/sdr/file_text.h"
#include "tests/sdr/records.h"
#include "tests/support/test_firmware.h"

namespace varnok {
namespace {

using testing::Bytes;
using testing::kAssociationLines;
using testing::kLocatorLines;
using testing::kSdrFileEnd;
using testing::kSdrFileHeader;
using testing::SdrFile;
using testing::TestFirmware;

/// A file in memory that fails after its last byte.
class BrokenFile : public File {
 public:
  explicit BrokenFile(std::string text) : text_(std::move(text)) {}
  Status Read(std::span<std::uint8_t> buffer, std::size_t& count) override {
    count = std::min(buffer.size(), text_.size());
    if (count == 0) return uefi_status::kDeviceError;
    std::copy_n(text_.begin(), count, buffer.begin());
    text_.erase(0, count);
    return kSuccess;
  }
  Status Write(std::span<const std::uint8_t>) override { return uefi_status::kWriteProtected; }

 private:
  std::string text_;
};

struct SdrFiles : ::testing::Test {
  TestFirmware machine;
  SdrTypeList lists;

  void SetUp() override {
    TheSdr().lineCounter = 0;
    TheSdr().SetLastError(u"");
  }

  Status Read(const std::string& text) {
    machine.files["IN.SDR"] = text;
    std::unique_ptr<File> file;
    EXPECT_EQ(machine.OpenFile(u"IN.SDR", FileMode::Read, file), kSuccess);
    SdrFileLines lines(*file);
    return SdrReadFile::ReadSdrRecordsFromFile(lines, lists);
  }
  std::string Message() { return Narrow(TheSdr().lastError.data()); }
  std::size_t Count() {
    std::size_t count = 0;
    for (const auto& list : lists) count += list.size();
    return count;
  }
  /// The bytes that the lines give to an association record whose first 13 bytes precede them.
  Bytes LastBytes(const std::string& lines) {
    for (auto& list : lists) list.clear();
    EXPECT_EQ(Read(SdrFile("_SDR_TYPE 08\n_REC_LEN 10\n12 00 51 08 0B 17 01 80 03 01 03 02 08\n" + lines)),
              kSuccess)
        << Message();
    if (lists[3].empty()) return {};
    return Bytes(lists[3].front()->Raw().begin() + 13, lists[3].front()->Raw().end());
  }
};

TEST_F(SdrFiles, RecordsGoIntoTheListsOfTheirTypes) {
  ASSERT_EQ(Read(SdrFile(kLocatorLines + kAssociationLines + kLocatorLines)), kSuccess);
  EXPECT_EQ(Count(), 3U);
  ASSERT_EQ(lists[3].size(), 1U);
  ASSERT_EQ(lists[6].size(), 2U);
  EXPECT_EQ(Bytes(lists[3].front()->Raw().begin(), lists[3].front()->Raw().end()),
            testing::AssociationRecord());
  EXPECT_TRUE(lists[3].front()->Tags().empty());
  EXPECT_EQ(lists[6].front()->Tags(), SdrTagList{"RISER"});
  EXPECT_EQ(Message(), "");
}

TEST_F(SdrFiles, LineEndsCommentsAndTextOutsideTheBlockDoNotMatter) {
  std::string text = "_LF_NAME // _SDR (\n" + SdrFile(kAssociationLines) + "_SDR_TYPE 77 of another day\n";
  for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2) text.insert(at, "\r");
  EXPECT_EQ(Read(text), kSuccess);
  EXPECT_EQ(Count(), 1U);
}

TEST_F(SdrFiles, AHeaderWithoutRecordsIsAFile) {
  EXPECT_EQ(Read(SdrFile("")), kSuccess);
  EXPECT_EQ(Count(), 0U);
}

TEST_F(SdrFiles, BytesAreWrittenInManyWays) {
  const Bytes abc{0x41, 0x42, 0x43};
  EXPECT_EQ(LastBytes("01 02 03\n"), (Bytes{1, 2, 3}));
  EXPECT_EQ(LastBytes("010203\n"), (Bytes{1, 2, 3}));
  EXPECT_EQ(LastBytes("1 2 3\n"), (Bytes{1, 2, 3}));
  EXPECT_EQ(LastBytes("1,2;\tzz3\n"), (Bytes{1, 2, 3}));
  EXPECT_EQ(LastBytes("'ABC' 44 45\n"), abc);
  EXPECT_EQ(LastBytes("\n  \t 'ABC'\n"), abc);
  EXPECT_EQ(LastBytes("0x12 FF // 01\n"), (Bytes{0x00, 0x12, 0xFF}));
  EXPECT_EQ(LastBytes("//1\n0A // )\n\r\n0b0C\n"), (Bytes{0x0A, 0x0B, 0x0C}));
}

TEST_F(SdrFiles, ValuesBehindBlanks) {
  auto valueOf = [&](const std::string& line) {
    machine.files["IN.SDR"] = line + "\n";
    std::unique_ptr<File> file;
    EXPECT_EQ(machine.OpenFile(u"IN.SDR", FileMode::Read, file), kSuccess);
    SdrFileLines lines(*file);
    std::string value;
    EXPECT_EQ(SdrReadFile::FIL_SearchForToken(lines, "_REC_LEN", value), kSuccess);
    return value;
  };
  EXPECT_EQ(valueOf("_REC_LEN     0040"), "0040\n");
  EXPECT_EQ(valueOf("_REC_LEN=0040 // size"), "0040 ");
  // Behind an indented key only the separator is skipped.
  EXPECT_EQ(valueOf("   _REC_LEN 0040"), "0040\n");
  EXPECT_EQ(valueOf("   _REC_LEN  0040"), " 0040\n");
  EXPECT_EQ(valueOf("_REC_LEN"), "");
}

TEST_F(SdrFiles, AnIndentedKeyWithTwoBlanksReadsAsZero) {
  std::string lines = kAssociationLines;
  lines.replace(lines.find("_REC_LEN 0010"), 13, "  _REC_LEN  0010");
  EXPECT_EQ(Read(SdrFile(lines)), sdr_status::kBadRecordInFile);
  EXPECT_EQ(Message(), "");
}

TEST_F(SdrFiles, TagsAreTakenUpToTheirClosingQuote) {
  ASSERT_EQ(
      Read(SdrFile("_SDR_TYPE 08\n_SDR_TAG 'CPU (A)' x\n_SDR_TAG \"B'\n" + kAssociationLines.substr(13))),
      kSuccess);
  EXPECT_EQ(lists[3].front()->Tags(), (SdrTagList{"CPU (A)", "B"}));
}

TEST_F(SdrFiles, LongLinesAreReadInPieces) {
  // The comment of the first piece does not reach into the second.
  std::string comment = "//" + std::string(253, 'x') + " 10";
  std::string lines = kAssociationLines;
  lines.replace(lines.rfind(" 10\n"), 4, "\n" + comment + "\n");
  ASSERT_EQ(Read(SdrFile(lines)), kSuccess) << Message();
  EXPECT_EQ(lists[3].front()->Raw().back(), 0x10);
}

struct Fault {
  const char* what;
  std::string text;
  Status status;
  std::string message;
  std::string trace;
};

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  return text.replace(text.find(from), from.size(), to);
}

TEST_F(SdrFiles, EveryBrokenRuleHasItsStatusAndMessage) {
  const std::string good = SdrFile(kAssociationLines);
  const std::string swapped =
      Replaced(Replaced(good, "_DEV_BUS     FF\n", ""), "_NVS_TYPE", "_DEV_BUS FF\n_NVS_TYPE");
  const Fault faults[] = {
      {"no line at all", "", sdr_status::kHeaderKeyMissing, "Invalid file: Token _LF_NAME not found.\n", ""},
      {"a header key missing", Replaced(good, "_LF_FMT_VER", "_FORMAT"), sdr_status::kHeaderKeyMissing,
       "Invalid file: Token _LF_FMT_VER not found.\n", ""},
      {"header keys in another order", swapped, sdr_status::kHeaderKeyMissing,
       "Invalid file: Token _DEV_BUS not found.\n", ""},
      {"the block not closed", kSdrFileHeader + kAssociationLines, sdr_status::kHeaderKeyMissing, "", ""},
      {"an unsupported type in the second record", SdrFile(kAssociationLines + "\n_SDR_TYPE 04\n"),
       sdr_status::kFileTypeNotSupported, "Invalid file: Unsupported record type line #12.\n",
       "SdrReadFile::FIL_CountIPMI10SDRTypes - SDR Type Not Supported"},
      {"a size of 0", Replaced(good, "0010", "0000"), sdr_status::kBadRecordInFile, "",
       "SdrReadFile::ReadRecFromFile - Invalid SDR File"},
      {"no size", Replaced(good, "_REC_LEN", "_LENGTH"), sdr_status::kBadRecordInFile,
       "Invalid file: Token _REC_LEN not found.\n", "SdrReadFile::ReadSdrRecordsFromFile - Invalid SDR File"},
      {"no size before the next record", SdrFile("_SDR_TYPE 08\n" + kAssociationLines),
       sdr_status::kBadRecordInFile, "Invalid file: Token _REC_LEN not found.\n",
       "SdrReadFile::ReadSdrRecordsFromFile - Invalid SDR File"},
      {"another type than the record's", Replaced(good, "_SDR_TYPE 08", "_SDR_TYPE 02"),
       sdr_status::kFileType, "Invalid file: SDR Record type incorrect line #4.\n",
       "SdrReadFile::ReadRecFromFile - Record Types don't match"},
      {"a record without a type byte", SdrFile("_SDR_TYPE 08\n_REC_LEN 2\n12 00\n"), sdr_status::kFileType,
       "Invalid file: SDR Record type incorrect line #1.\n",
       "SdrReadFile::ReadRecFromFile - Record Types don't match"},
      {"more bytes than the size says", Replaced(good, "0010", "000F"), sdr_status::kFileLength,
       "Invalid file: SDR Record length incorrect line #4.\n",
       "SdrReadFile::ReadRecFromFile - Bad Record Length"},
      {"fewer bytes than the size says", Replaced(good, "0010", "0100"), sdr_status::kCannotReadFile,
       "Invalid file: Unable to read line #5.\n", "SdrReadFile::ReadRecFromFile - Error Reading File"},
      {"quoted bytes without the closing quote", Replaced(SdrFile(kLocatorLines), "'Riser' ", "'Riser "),
       sdr_status::kUnterminatedText, "Invalid file: Missing terminator line #3.\n",
       "SdrReadFile::ReadRecFromFile - Error - Unterminated String"},
      {"a comment in a quoted text", Replaced(SdrFile(kLocatorLines), "'Riser'", "'Ri//r'"),
       sdr_status::kUnterminatedText, "Invalid file: Missing terminator line #3.\n",
       "SdrReadFile::ReadRecFromFile - Error - Unterminated String"},
      {"a record that breaks its type's rule", Replaced(SdrFile(kLocatorLines), " C5", " C6"),
       sdr_status::kBadRecordLength, "", "CSdrType11::DecodeSDR - Bad Record Length"},
  };
  for (const Fault& fault : faults) {
    SCOPED_TRACE(fault.what);
    SetUp();
    machine.files.clear();
    EXPECT_EQ(Read(fault.text), fault.status);
    EXPECT_EQ(Message(), fault.message);
    std::vector<std::string> trace = machine.TraceLines();
    EXPECT_EQ(trace.empty() ? "" : trace.back(), fault.trace);
  }
}

TEST_F(SdrFiles, AFileThatFailsHalfWay) {
  BrokenFile inHeader(kSdrFileHeader.substr(0, 40));
  SdrFileLines header(inHeader);
  EXPECT_EQ(SdrReadFile::ReadSdrRecordsFromFile(header, lists), sdr_status::kCannotReadFile);
  EXPECT_EQ(Message(), "Invalid file: Unable to read line #1.\n");
  EXPECT_EQ(machine.TraceLines().back(), "SdrReadFile::FIL_SearchForToken - Error Reading File");
  BrokenFile inRecord("_SDR_TYPE 08\n");
  SdrFileLines record(inRecord);
  std::string value;
  EXPECT_EQ(SdrReadFile::FIL_SearchForTokenWithinRecord(record, "_SDR_TYPE", value), kSuccess);
  EXPECT_EQ(SdrReadFile::FIL_SearchForTokenWithinRecord(record, "_REC_LEN", value),
            sdr_status::kCannotReadFile);
  EXPECT_EQ(machine.TraceLines().back(), "SdrReadFile::FIL_SearchForTokenWithinRecord - Error Reading File");
}

TEST_F(SdrFiles, SearchesEndAtTheBlockTheRecordAndTheFile) {
  auto search = [&](const std::string& text, bool withinRecord) {
    machine.files["IN.SDR"] = text;
    std::unique_ptr<File> file;
    EXPECT_EQ(machine.OpenFile(u"IN.SDR", FileMode::Read, file), kSuccess);
    SdrFileLines lines(*file);
    std::string value;
    return withinRecord ? SdrReadFile::FIL_SearchForTokenWithinRecord(lines, "_SDR_TAG", value)
                        : SdrReadFile::FIL_SearchForToken(lines, "_SDR_TAG", value);
  };
  EXPECT_EQ(search("_SDR_TYPE 01\n_SDR_TAG 'A'\n", false), kSuccess);
  EXPECT_EQ(search("_SDR_TYPE 01\n_SDR_TAG 'A'\n", true), sdr_status::kTokenNotFound);
  EXPECT_EQ(search("01\n)\n_SDR_TAG 'A'\n", true), sdr_status::kTokenNotFound);
  EXPECT_EQ(search("01\n)\n_SDR_TAG 'A'\n", false), sdr_status::kTokenNotFound);
  EXPECT_EQ(search("'a)'\n_SDR_TAG 'A'\n", false), kSuccess);
  EXPECT_EQ(search("01\n", true), sdr_status::kHeaderKeyMissing);
  EXPECT_EQ(search("01\n", false), sdr_status::kHeaderKeyMissing);
}

TEST_F(SdrFiles, RecordsInFrontOfAFaultStay) {
  EXPECT_EQ(Read(SdrFile(kAssociationLines + Replaced(kLocatorLines, " C5", " C6"))),
            sdr_status::kBadRecordLength);
  EXPECT_EQ(Count(), 1U);
}

}  // namespace
}  // namespace varnok
