// SDR files: their grammar, and every rule broken once.
#include "sdr/read_file.h"

#include <gtest/gtest.h>

#include <numeric>
#include <tuple>

#include "app/services/text.h"
#include "tests/sdr/file_text.h"
#include "tests/sdr/records.h"
#include "tests/support/expectations.h"
#include "tests/support/split.h"
#include "tests/support/test_firmware.h"

namespace varnok::testing {
namespace {

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  return text.replace(text.find(from), from.size(), to);
}

struct SdrFiles : ::testing::Test {
  TestFirmware machine;
  SdrTypeList lists;
  std::string value;  ///< behind the token that Search found

  SdrFileLines Lines(const std::string& text) {
    machine.files["IN.SDR"] = text;
    std::unique_ptr<File> file;
    EXPECT_EQ(machine.OpenFile(u"IN.SDR", FileMode::Read, file), kSuccess);
    return SdrFileLines(*file, "A.SDR");
  }
  Status Read(const std::string& text) {
    TheSdr().lineCounter = 0;
    TheSdr().SetLastError(u"");
    for (auto& list : lists) list.clear();
    SdrFileLines lines = Lines(text);
    return SdrReadFile::ReadSdrRecordsFromFile(lines, lists);
  }
  Status Search(const std::string& text, std::string_view token, bool withinRecord) {
    SdrFileLines lines = Lines(text);
    return withinRecord ? SdrReadFile::FIL_SearchForTokenWithinRecord(lines, token, value)
                        : SdrReadFile::FIL_SearchForToken(lines, token, value);
  }
  std::string Message() { return Narrow(TheSdr().lastError.data()); }
  std::size_t Count() {
    return std::accumulate(lists.begin(), lists.end(), std::size_t{0},
                           [](std::size_t count, const auto& list) { return count + list.size(); });
  }
  static Bytes RawOf(const PoolPtr<CSdr>& record) { return {record->Raw().begin(), record->Raw().end()}; }
};

TEST_F(SdrFiles, RecordsGoIntoTheListsOfTheirTypes) {
  ASSERT_EQ(Read(SdrFile(kLocatorLines + kAssociationLines + kLocatorLines)), kSuccess);
  EXPECT_EQ(Count(), 3U);
  ASSERT_EQ(lists[3].size(), 1U);
  ASSERT_EQ(lists[6].size(), 2U);
  EXPECT_EQ(RawOf(lists[3].front()), AssociationRecord());
  EXPECT_TRUE(lists[3].front()->Tags().empty());
  EXPECT_EQ(lists[6].front()->Tags(), SdrTagList{"RISER"});
  EXPECT_EQ(Message(), "");
  EXPECT_EQ(Read(SdrFile(kAssociationLines + Replaced(kLocatorLines, " C5", " C6"))),
            sdr_status::kBadRecordLength);
  EXPECT_EQ(Count(), 1U) << "records in front of a fault stay";
}

TEST_F(SdrFiles, WholeFiles) {
  std::string crooked = "_LF_NAME // _SDR (\n" + SdrFile(kAssociationLines) + "_SDR_TYPE 77 of another day\n";
  for (std::size_t at = 0; (at = crooked.find('\n', at)) != std::string::npos; at += 2)
    crooked.insert(at, "\r");
  auto sample = [](const char* name) { return ContentOf(std::string(VARNOK_SOURCE_DIR "/samples/") + name); };
  const std::tuple<const char*, std::string, std::size_t> cases[] = {
      {"a header without records", SdrFile(""), 0},
      {"line ends, comments and text outside the block", crooked, 1},
      {"the minimal sample", sample("minimal.sdr"), 1},
      {"the sample of a server board", sample("server-board.sdr"), 10},
  };
  for (const auto& [what, text, count] : cases) {
    EXPECT_EQ(Read(text), kSuccess) << what << Message();
    EXPECT_EQ(Count(), count) << what;
  }
}

TEST_F(SdrFiles, BytesAreWrittenInManyWays) {
  const Bytes digits{1, 2, 3}, abc{0x41, 0x42, 0x43};
  const std::pair<std::string, Bytes> cases[] = {
      {"01 02 03\n", digits},
      {"010203\n", digits},
      {"1 2 3\n", digits},
      {"1,2;\tzz3\n", digits},
      {"'ABC' 44 45\n", abc},
      {"\n  \t 'ABC'\n", abc},
      {"0x12 FF // 01\n", {0x00, 0x12, 0xFF}},
      {"//1\n0A // )\n\r\n0b0C\n", {0x0A, 0x0B, 0x0C}},
      // A long line is read in pieces: the comment of the first one does not reach into the second.
      {"01 02\n//" + std::string(253, 'x') + " 03\n", digits},
  };
  for (const auto& [lines, bytes] : cases) {
    const std::string start = "_SDR_TYPE 08\n_REC_LEN 10\n12 00 51 08 0B 17 01 80 03 01 03 02 08\n";
    ASSERT_EQ(Read(SdrFile(start + lines)), kSuccess) << lines << Message();
    ASSERT_EQ(lists[3].size(), 1U) << lines;
    const Bytes raw = RawOf(lists[3].front());
    EXPECT_EQ(Bytes(raw.begin() + 13, raw.end()), bytes) << lines;
  }
}

TEST_F(SdrFiles, ValuesBehindBlanks) {
  for (const auto& [line, wanted] :
       {std::pair("_REC_LEN     0040\n", "0040\n"),
        {"_REC_LEN=0040 // size\n", "0040 "},
        // Behind an indented key a blank is skipped where the line's start has one.
        {" _REC_LEN '40'\n", "'40'\n"},
        {" _REC_LEN  0040\n", "0040\n"},
        {"   _REC_LEN  0040\n", " 0040\n"},
        {"            _REC_LEN 0040\n", "0040\n"},
        {"            _REC_LEN     0040\n", " 0040\n"},
        {"_REC_LEN\n", ""}}) {
    EXPECT_EQ(Search(line, "_REC_LEN", false), kSuccess) << line;
    EXPECT_EQ(value, wanted) << line;
  }
}

TEST_F(SdrFiles, TagsAreTakenUpToTheirClosingQuote) {
  ASSERT_EQ(
      Read(SdrFile("_SDR_TYPE 08\n_SDR_TAG 'CPU (A)' x\n_SDR_TAG \"B'\n" + kAssociationLines.substr(13))),
      kSuccess);
  EXPECT_EQ(lists[3].front()->Tags(), (SdrTagList{"CPU (A)", "B"}));
}

TEST_F(SdrFiles, EveryBrokenRuleHasItsStatusAndMessage) {
  const std::string good = SdrFile(kAssociationLines + kLocatorLines);
  for (const auto& [what, lines] : Expectations("sdr/faults.expected")) {
    SCOPED_TRACE(what);
    machine.files.clear();
    // From, to, and the last status digits, message and trace line.
    const std::vector<std::string> parts = Split(lines.substr(0, lines.size() - 1), "\n");
    const Status status{0xC000000000060000 + std::stoul(parts[2], nullptr, 16)};
    EXPECT_EQ(Read(Replaced(good, parts[0], parts[1])), status);
    EXPECT_EQ(Message(), parts[3].empty() ? "" : "Invalid file: " + parts[3] + "\n");
    const std::vector<std::string> trace = machine.TraceLines();
    EXPECT_EQ(trace.empty() ? "" : trace.back(), parts[4].empty() ? "" : "SdrReadFile::" + parts[4]);
  }
  EXPECT_EQ(Read(""), sdr_status::kHeaderKeyMissing);
  EXPECT_EQ(Message(), "Invalid file: Token _LF_NAME not found.\n");
  EXPECT_EQ(Read(Replaced(Replaced(good, "_DEV_BUS     FF\n", ""), "_NVS_TYPE", "_DEV_BUS FF\n_NVS_TYPE")),
            sdr_status::kHeaderKeyMissing);
  EXPECT_EQ(Message(), "Invalid file: Token _DEV_BUS not found.\n");
  EXPECT_EQ(Read(SdrFile("_SDR_TYPE 08\n_REC_LEN 2\n12 00\n")), sdr_status::kFileType) << "no type byte";
  EXPECT_EQ(Message(), "Invalid file: SDR Record type incorrect line #1.\n");
  EXPECT_EQ(Read(kSdrFileHeader + kAssociationLines), sdr_status::kHeaderKeyMissing)
      << "the block not closed";
  EXPECT_EQ(Read(SdrFile(kAssociationLines + "\n_SDR_TYPE 04\n")), sdr_status::kFileTypeNotSupported);
  EXPECT_EQ(Message(), "Invalid file: Unsupported record type line #12.\n");
  EXPECT_EQ(machine.TraceLines().back(), "SdrReadFile::FIL_CountIPMI10SDRTypes - SDR Type Not Supported");
}

TEST_F(SdrFiles, AFileThatFailsHalfWay) {
  machine.readFailures["IN.SDR"] = uefi_status::kDeviceError;
  SdrFileLines header = Lines(kSdrFileHeader.substr(0, 40));
  TheSdr().lineCounter = 0;
  EXPECT_EQ(SdrReadFile::ReadSdrRecordsFromFile(header, lists), sdr_status::kCannotReadFile);
  EXPECT_EQ(Message(), "Invalid file: Unable to read line #1.\n");
  EXPECT_EQ(machine.TraceLines().back(), "SdrReadFile::FIL_SearchForToken - Error Reading File");
  SdrFileLines record = Lines("_SDR_TYPE 08\n");
  EXPECT_EQ(SdrReadFile::FIL_SearchForTokenWithinRecord(record, "_SDR_TYPE", value), kSuccess);
  EXPECT_EQ(SdrReadFile::FIL_SearchForTokenWithinRecord(record, "_REC_LEN", value),
            sdr_status::kCannotReadFile);
  EXPECT_EQ(machine.TraceLines().back(), "SdrReadFile::FIL_SearchForTokenWithinRecord - Error Reading File");
}

TEST_F(SdrFiles, SearchesEndAtTheBlockTheRecordAndTheFile) {
  const std::tuple<const char*, bool, Status> cases[] = {
      {"_SDR_TYPE 01\n_SDR_TAG 'A'\n", false, kSuccess},
      {"_SDR_TYPE 01\n_SDR_TAG 'A'\n", true, sdr_status::kTokenNotFound},
      {"01\n)\n_SDR_TAG 'A'\n", true, sdr_status::kTokenNotFound},
      {"01\n)\n_SDR_TAG 'A'\n", false, sdr_status::kTokenNotFound},
      {"'a)'\n_SDR_TAG 'A'\n", false, kSuccess},
      {"01\n", true, sdr_status::kHeaderKeyMissing},
      {"01\n", false, sdr_status::kHeaderKeyMissing},
  };
  for (const auto& [text, withinRecord, status] : cases)
    EXPECT_EQ(Search(text, "_SDR_TAG", withinRecord), status) << text << withinRecord;
}

}  // namespace
}  // namespace varnok::testing
