// SDRNAME and CLEARSDR over the simulated default board, whose repository holds 60 records.
#include "tests/cfg/board_script_test.h"

namespace varnok {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using testing::kChange;
using testing::kUpdated;

const std::string kRefreshed = "Refreshing BMC...\nThis operation will take around 50 seconds to complete\n";
const std::string kDiffers = "\n\nSDR file does not match with what was programmed in the memory.\n\n\n";
const std::string kFruWritten = "\nFRU File Area(s) successfully loaded into FRU memory.\n";

class BoardSdr : public testing::BoardScript {
 protected:
  /// The repository's records in order: ID, type, and the end of the record, which holds the names here.
  std::vector<std::string> Records() {
    std::vector<std::string> records;
    std::string bytes = Content("sdr.bin");
    for (std::size_t at = 0; at + 5 <= bytes.size();) {
      std::string record = bytes.substr(at, 5 + static_cast<unsigned char>(bytes[at + 4]));
      std::size_t name = record.find_last_of("\xC3\xC5\xC8\xC9\xCA");
      records.push_back(std::to_string(record[0]) + " " + Format("%02X", record[3]) + " " +
                        record.substr(std::min(name, record.size() - 1) + 1));
      at += record.size();
    }
    return records;
  }
  /// How often the repository was changed: erased, or a record or a piece of one added or deleted.
  int ChangeCount() {
    int count = 0;
    for (const char* request : {"0A/0 24", "0A/0 25", "0A/0 26", "0A/0 27"}) count += RequestCount(request);
    return count;
  }
};

TEST_F(BoardSdr, TagsOfTheScriptSelectTheRecords) {
  EXPECT_EQ(Run("SET Two_Fans\nCLEAR two_fans\nSDRNAME HEARTHS2.SDR\n"), 0) << message;
  EXPECT_THAT(machine.console, EndsWith("\nSDRs written successfully.\n" + kUpdated));
  // In the order of their types, under the BMC's own IDs.
  EXPECT_THAT(Records(), ElementsAre("1 01 Inlet Temp", "2 01 Fan 1", "3 11 Hearth S2", "4 12 BMC"));
  EXPECT_EQ(Run("SET rack\nSDRNAME HEARTHS2.SDR\nSET Two_Fans\n"), 0) << message;
  EXPECT_THAT(Records(), ElementsAre("1 01 Inlet Temp", "2 01 Fan 1", "3 01 Fan 2", "4 11 Hearth S2",
                                     "5 11 Riser", "6 12 BMC", "7 12 Hot-swap"))
      << "tags set behind the SDRNAME count, too";
}

TEST_F(BoardSdr, ComparisonChangesNothing) {
  machine.keys = u"1\rnn";
  ASSERT_EQ(Run(Sample("MASTER.CFG")), 0) << message;
  std::string before = Content("sdr.bin");
  int changes = ChangeCount();
  EXPECT_EQ(Run(Sample("COMPARE.CFG")), 0) << message;
  EXPECT_THAT(machine.console, EndsWith("\nSDR file was compared successfully!\n" + kUpdated));
  EXPECT_EQ(Run("SET TWO_FANS\n" + Sample("COMPARE.CFG")), 4);
  EXPECT_THAT(machine.console, EndsWith(kDiffers));
  EXPECT_EQ(message, "Unable to update SDRs");
  EXPECT_EQ(ChangeCount(), changes);
  EXPECT_EQ(Content("sdr.bin"), before);
}

TEST_F(BoardSdr, RecordsAreWrittenBeforeAllElseOrBehindIt) {
  EXPECT_EQ(Run("BMC_REFRESH\n" + kChange + "SDRNAME HEARTHS2.SDR LAST FIRST\n"), 0) << message;
  EXPECT_THAT(machine.console, HasSubstr("\nSDRs written successfully.\n\nFRU IMBDEVICE"));
  EXPECT_THAT(machine.console, EndsWith(kFruWritten + kRefreshed + kUpdated));
  EXPECT_EQ(Run("SDRNAME HEARTHS2.SDR LAST\nBMC_REFRESH\n" + kChange), 0) << message;
  EXPECT_THAT(machine.console, HasSubstr(kFruWritten + "\n\nClearing SDR repository\n\n"));
  EXPECT_THAT(machine.console, EndsWith("\nSDRs written successfully.\n" + kRefreshed + kUpdated));
}

TEST_F(BoardSdr, LastFileThatIsReachedIsWrittenAlone) {
  machine.files[".\\MINI.SDR"] = Sample("minimal.sdr");
  EXPECT_EQ(Run("SDRNAME HEARTHS2.SDR COMPARE\nSDRNAME MINI.SDR\nIFSET x\nSDRNAME NONE.SDR\nENDIF\n"), 0);
  EXPECT_THAT(Records(), ElementsAre("1 C0 "));
  EXPECT_EQ(RequestCount("0A/0 27"), 2) << "one erase, and one question for its end";
}

TEST_F(BoardSdr, FailureEndsTheCommitButNotARefreshThatWasNoted) {
  std::string before = Content("board.bin");
  EXPECT_EQ(Run("SDRNAME HEARTHS2.SDR COMPARE\nBMC_REFRESH\n" + kChange), 4);
  EXPECT_THAT(machine.console, EndsWith(kDiffers));
  EXPECT_EQ(Content("board.bin"), before);
  EXPECT_EQ(Run("SDRNAME HEARTHS2.SDR COMPARE LAST\nBMC_REFRESH\n" + kChange), 4);
  EXPECT_THAT(machine.console, EndsWith(kDiffers + kRefreshed));
  EXPECT_EQ(message, "Unable to update SDRs");
  EXPECT_THAT(Content("board.bin"), HasSubstr("ASSET-000500")) << "what was written stays";
}

TEST_F(BoardSdr, RepositoryIsClearedAtOnceButOnlyWhenTheScriptWasRead) {
  std::string before = Content("sdr.bin");
  EXPECT_EQ(Run("CLEARSDR\nSDRNAME HEARTHS2.SDR\nIFSET x\n"), 6);
  EXPECT_EQ(ChangeCount(), 0);
  EXPECT_EQ(Run("SDRNAME HEARTHS2.SDR\nSDRNAME NONE.SDR\n"), 2);
  EXPECT_EQ(Run(kChange + "SDRNAME HEARTHS2.SDR\nERRORLEVEL 2A\nCLEARSDR\n"), 0x2A);
  EXPECT_EQ(ChangeCount(), 0);
  EXPECT_EQ(Content("sdr.bin"), before);
  std::string fru = Content("board.bin");
  EXPECT_EQ(Run(kChange + "CLEARSDR\nERRORLEVEL 2A\n"), 0x2A);
  EXPECT_EQ(machine.console, "\n\nClearing SDR repository\n\n");
  EXPECT_EQ(Content("sdr.bin"), "");
  EXPECT_EQ(Content("board.bin"), fru);
}

}  // namespace
}  // namespace varnok
