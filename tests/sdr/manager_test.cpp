// The SDR manager on a simulated board: loads, displays, commits and their console texts.
#include <gmock/gmock.h>

#include <fstream>

#include "app/services/console.h"
#include "app/services/text.h"
#include "platform/ipmi.h"
#include "sdr/read_system.h"
#include "sdr/sdr_data.h"
#include "sdr/utility.h"
#include "tests/sdr/file_text.h"
#include "tests/sdr/records.h"
#include "tests/sim/board_fixture.h"
#include "tests/support/test_firmware.h"

namespace varnok::testing {
namespace {

using ::testing::HasSubstr;

/// A test machine whose BMC and clock are the simulated board's.
class BoardMachine : public TestFirmware {
 public:
  sim::Board* board = nullptr;
  void Stall(std::uint64_t microseconds, StallKind kind) override {
    TestFirmware::Stall(microseconds, kind);
    if (board != nullptr) board->Stall(microseconds, kind);
  }
};

Bytes Joined(Bytes head, const Bytes& tail) {
  head.insert(head.end(), tail.begin(), tail.end());
  return head;
}

class Manager : public BoardTest {
 protected:
  void SetUp() override {
    BoardTest::SetUp();
    StartBoard({});
    StartManager();
  }
  void TearDown() override {
    (void)SdrData::DeInitialize();
    TheSdr().isDisplaying = false;
    SdrData::SetPaging(false);
    IpmiReset();
    BoardTest::TearDown();
  }

  /// A board whose repository holds these bytes.
  void StartBoard(const Bytes& records, const std::string& keys = "", const std::string& faults = "") {
    WriteFile("sdr.bin", std::string(records.begin(), records.end()));
    OpenWith(R"({"smbios": "", "bmc": {"sdrs": {)" + keys + R"(}}, "faults": [)" + faults + "]}");
    machine.board = board.get();
    machine.protocol = board->InstalledIpmi();
    IpmiReset();
    ASSERT_EQ(IpmiLoadProtocol(), ipmi_result::kSuccess);
  }
  void StartManager() {
    ASSERT_EQ(SdrData::Initialize(), kSuccess);
    ASSERT_EQ(SdrData::SetProgressCallback(Dornquist::DisplayProgress), kSuccess);
    ASSERT_EQ(SdrData::SetDisplayHexCallback(DisplayHex), kSuccess);
  }
  Status Load(const std::string& text) {
    machine.files["BOARD.SDR"] = text;
    return SdrData::LoadConfigurationFromFile(u"BOARD.SDR");
  }
  std::string Message() {
    const char16_t* text = nullptr;
    EXPECT_EQ(SdrData::GetLastErrorMessage(text), kSuccess);
    return Narrow(text);
  }
  bool IsLoaded() {
    bool isLoaded = false;
    EXPECT_EQ(SdrData::IsLoaded(isLoaded), kSuccess);
    return isLoaded;
  }
  /// Record IDs of the board's records.
  Bytes Repository() { return ReadFile("sdr.bin"); }

  BoardMachine machine;
};

const std::string kWipe = "\r" + std::string(79, ' ') + "\r";
const std::string kFile = SdrFile(kAssociationLines + kLocatorLines + kAssociationLines);
const std::string kUntagged = SdrFile(kAssociationLines);

std::string Reading(int record, int total) {
  return "Reading SDRs from system......" + std::to_string(record) + " of " + std::to_string(total) + ".\r";
}
std::string Updating(int record, int total) {
  return "   Updating the SDRs.........." + std::to_string(record) + " of " + std::to_string(total) + ".\r";
}
const std::string kClearing = "\n\nClearing SDR repository\n\n";
const std::string kPleaseWait = "Processing SDR Update.........Please wait\n";

TEST_F(Manager, CommitWritesInTypeOrderAndVerifies) {
  StartBoard(TemperatureRecord());
  ASSERT_EQ(Load(SdrFile(kLocatorLines + kAssociationLines)), kSuccess);
  EXPECT_TRUE(IsLoaded());
  EXPECT_EQ(machine.console, "");
  ASSERT_EQ(SdrData::SetTag(u"rIsEr"), kSuccess);
  EXPECT_EQ(SdrData::CommitConfigurationToSystem(), kSuccess);
  EXPECT_EQ(machine.console, kClearing + kPleaseWait + Updating(1, 2) + Updating(2, 2) + "\n" +
                                 Reading(1, 2) + Reading(2, 2) + "\n\nSDRs written successfully.\n");
  EXPECT_EQ(Repository(), Joined(AssociationRecord(1), FruLocatorRecord("Riser", 2)));
  EXPECT_EQ(Message(), "Unable to update SDRs");
}

TEST_F(Manager, TaggedRecordsNeedTheirTag) {
  ASSERT_EQ(Load(SdrFile(kLocatorLines)), kSuccess);
  EXPECT_EQ(SdrData::CommitConfigurationToSystem(), kSuccess);
  // The read-back asks for a first record and is told that there is none.
  EXPECT_EQ(machine.console,
            kClearing + kPleaseWait + "\n" + Reading(1, 0) + "\n\nSDRs written successfully.\n");
  EXPECT_EQ(Repository(), Bytes{});
  // Tags add up over the run, and a further load does not clear them.
  ASSERT_EQ(SdrData::SetTag(u"OTHER"), kSuccess);
  ASSERT_EQ(SdrData::SetTag(u"RISER"), kSuccess);
  ASSERT_EQ(SdrData::SetTag(u"MORE"), kSuccess);
  ASSERT_EQ(Load(SdrFile(kLocatorLines)), kSuccess);
  EXPECT_EQ(SdrData::CommitConfigurationToSystem(), kSuccess);
  EXPECT_EQ(Repository(), FruLocatorRecord("Riser", 1));
}

TEST_F(Manager, CompareOnlyTouchesNothing) {
  const Bytes held = Joined(AssociationRecord(7), TemperatureRecord("Inlet", 9));
  StartBoard(held);
  ASSERT_EQ(Load(kUntagged), kSuccess);
  ASSERT_EQ(SdrData::SetCompareOnly(true), kSuccess);
  EXPECT_EQ(SdrData::CommitConfigurationToSystem(), kSuccess);
  EXPECT_EQ(machine.console,
            kPleaseWait + "\n" + Reading(1, 2) + Reading(2, 2) + "\n\nSDR file was compared successfully!\n");
  machine.console.clear();
  ASSERT_EQ(Load(SdrFile(kAssociationLines + kAssociationLines)), kSuccess);
  EXPECT_EQ(SdrData::CommitConfigurationToSystem(), sdr_status::kDifferent);
  EXPECT_EQ(machine.console, kPleaseWait + "\n" + Reading(1, 2) + Reading(2, 2) +
                                 "\n\nSDR file does not match with what was programmed in the memory.\n\n\n");
  EXPECT_EQ(Message(), "Unable to update SDRs");
  EXPECT_EQ(Repository(), held);
}

TEST_F(Manager, ADifferentByteFailsTheVerification) {
  // A bit rots between the write and the read-back: in the record ID, which is the BMC's own, and in the last
  // byte.
  for (auto [offset, status] : {std::pair("0", kSuccess), std::pair("15", sdr_status::kDifferent)}) {
    StartBoard(
        AssociationRecord(), "",
        R"({"netFunction": 10, "command": "0x20", "nth": 3, "fault": "flip", "file": "sdr.bin", "offset": )" +
            std::string(offset) + "}");
    ASSERT_EQ(Load(kUntagged), kSuccess);
    EXPECT_EQ(SdrData::CommitConfigurationToSystem(), status) << offset;
  }
  EXPECT_THAT(machine.console, HasSubstr(Reading(1, 1) + "\n\nSDR Verification failed\n\n\n"));
}

TEST_F(Manager, ARecordThatIsNotWrittenFailsTheVerification) {
  StartBoard({}, R"("capacity": 20)");
  ASSERT_EQ(Load(SdrFile(kAssociationLines + kAssociationLines)), kSuccess);
  EXPECT_EQ(SdrData::CommitConfigurationToSystem(), sdr_status::kDifferent);
  EXPECT_EQ(machine.console, kClearing + kPleaseWait + Updating(1, 2) + "\n SendRecordToBMC failed\n" +
                                 Updating(2, 2) + "\n" + Reading(1, 1) + "\n\nSDR Verification failed\n\n\n");
}

TEST_F(Manager, AClearThatFailsIsReportedAndTheCommitGoesOn) {
  StartBoard({}, "", R"({"netFunction": 10, "command": "0x27", "fault": "completion-code", "code": "0xD4"})");
  ASSERT_EQ(Load(kUntagged), kSuccess);
  EXPECT_EQ(SdrData::CommitConfigurationToSystem(), kSuccess);
  EXPECT_EQ(machine.console, kClearing + "\n\nClearSDR repository failed\n\n\n" + kPleaseWait +
                                 Updating(1, 1) + "\n" + Reading(1, 1) + "\n\nSDRs written successfully.\n");
}

TEST_F(Manager, RecordsTakeTheirExchanges) {
  // Requests of a record of n bytes: 1 + ceil(n / 16) to write, 2 + ceil((n - 5) / 16) to read.
  const std::filesystem::path log = folder / "traffic.log";
  auto requests = [&] {
    std::ifstream file(log);
    std::string line;
    std::size_t count = 0;
    while (std::getline(file, line)) count += line.find(" > 20 ") != std::string::npos;
    return count;
  };
  for (std::size_t n = 6; n <= 255; ++n) {
    StartBoard({});
    Bytes bytes = Record(0xC0, Bytes(n - 5, 0x41), 1);
    ASSERT_TRUE(board->OpenTrafficLog(log.string()));
    ASSERT_EQ(SdrReadSystem::SendRecordToBMC(bytes), kSuccess);
    ASSERT_EQ(requests(), 1 + (n + 15) / 16) << n;
    ASSERT_EQ(Repository(), bytes);
    ASSERT_TRUE(board->OpenTrafficLog(log.string()));
    std::array<std::uint8_t, SdrReadSystem::kRecordCapacity> read{};
    std::uint16_t recordId = 0;
    ASSERT_EQ(SdrReadSystem::ReadRecFromBMC(read, recordId), kSuccess);
    ASSERT_EQ(requests(), 2 + (n - 5 + 15) / 16) << n;
    ASSERT_TRUE(std::equal(bytes.begin(), bytes.end(), read.begin()));
  }
}

TEST_F(Manager, DisplayShowsEveryRecord) {
  StartBoard(Joined(AssociationRecord(7), FruLocatorRecord("Riser", 9)));
  EXPECT_EQ(SdrData::DisplaySdrArea(), kSuccess);
  // The second record goes under its ID.
  EXPECT_EQ(machine.console,
            "Displaying SDR area ...\n"
            "\nDisplaying SDR Record #1\n\n"
            " 07 00 51 08 0B 17 01 80 03 01 03 02 08 01 08 10   ..Q.............\n"
            "\nDisplaying SDR Record #9\n\n"
            " 09 00 51 11 10 20 02 80 00 00 10 00 11 01 00 C5   ..Q.............\n"
            " 52 69 73 65 72" +
                std::string(33, ' ') + "   Riser" + std::string(33, ' ') + "\n" + kWipe);
}

TEST_F(Manager, AnEmptyRepositoryIsReported) {
  EXPECT_EQ(SdrData::DisplaySdrArea(), sdr_status::kRepositoryEmpty);
  EXPECT_EQ(machine.console, "Displaying SDR area ...\n\nNo Sensor Data Records found in this server.\n");
  EXPECT_EQ(machine.TraceLines().back(), "SdrData::LoadConfigurationFromSystem - No SDRs available");
  // The system set stays the current one.
  EXPECT_EQ(TheSdr().current, TheSdr().systemSet.get());
}

TEST_F(Manager, ALoadFromTheBmcFillsTheSystemSetAlone) {
  StartBoard(
      Joined(TemperatureRecord("Inlet"), AssociationRecord(7)), "",
      R"({"netFunction": 10, "command": "0x20", "nth": 2, "fault": "flip", "file": "sdr.bin", "offset": 3})");
  ASSERT_EQ(SdrData::LoadConfigurationFromSystem(), kSuccess);
  EXPECT_EQ(machine.console, Reading(1, 2) + Reading(2, 2) + kWipe);
  EXPECT_EQ(TheSdr().current, TheSdr().fileSet.get());
  EXPECT_FALSE(IsLoaded());
  ASSERT_EQ(SdrData::SelectSysData(), kSuccess);
  EXPECT_TRUE(IsLoaded());
  EXPECT_EQ(TheSdr().systemSet->recordBytes, 53 + 16);
  // A type that is not supported ends the next load; what was loaded before does not count any more.
  ASSERT_EQ(SdrData::SelectFileData(), kSuccess);
  EXPECT_EQ(SdrData::LoadConfigurationFromSystem(), sdr_status::kTypeNotSupported);
  EXPECT_EQ(TheSdr().current, TheSdr().fileSet.get());
  ASSERT_EQ(SdrData::SelectSysData(), kSuccess);
  EXPECT_FALSE(IsLoaded());
}

TEST_F(Manager, PagingAsksAfterEveryThirdRecord) {
  Bytes records;
  for (std::uint16_t id = 1; id <= 7; ++id) records = Joined(records, AssociationRecord(id));
  StartBoard(records);
  const std::string prompt = "\n[S]top, [N]on-stop, or [M]ore";
  auto shown = [&] {
    std::size_t count = 0;
    for (std::size_t at = 0; (at = machine.console.find("Displaying SDR Record", at)) != std::string::npos;
         ++at)
      ++count;
    return count;
  };
  SdrData::SetPaging(true);
  machine.keys = u"xmS";
  EXPECT_EQ(SdrData::DisplaySdrArea(), kSuccess);
  EXPECT_EQ(shown(), 6U);
  EXPECT_THAT(machine.console, HasSubstr(prompt + "\n\n\nDisplaying SDR Record #4"));
  EXPECT_TRUE(machine.console.ends_with(prompt + kWipe));
  machine.console.clear();
  machine.keys = u"n";
  EXPECT_EQ(SdrData::DisplaySdrArea(), kSuccess);
  EXPECT_EQ(shown(), 7U);
  EXPECT_THAT(machine.console, HasSubstr(prompt + "\nDisplaying SDR Record #4"));
  EXPECT_FALSE(TheSdr().isPaging);
}

TEST_F(Manager, OutputFileMirrorsDisplayAndCommit) {
  StartBoard(AssociationRecord(7));
  ASSERT_EQ(SdrData::SetOutputFile("SDR.TMP"), kSuccess);
  EXPECT_EQ(SdrData::DisplaySdrArea(), kSuccess);
  const std::string dump = " 07 00 51 08 0B 17 01 80 03 01 03 02 08 01 08 10   ..Q.............\n";
  EXPECT_EQ(machine.TextOf("SDR.TMP"), "Displaying SDR area ...\n\nDisplaying SDR Record #1\n\n" + dump);
  machine.files.erase("SDR.TMP");
  ASSERT_EQ(Load(kUntagged), kSuccess);
  EXPECT_EQ(SdrData::CommitConfigurationToSystem(), kSuccess);
  EXPECT_EQ(
      machine.TextOf("SDR.TMP"),
      kClearing +
          "Writing SDR Record # 1\n 12 00 51 08 0B 17 01 80 03 01 03 02 08 01 08 10   ..Q.............\n" +
          "Reading SDR information ...\n\nSDRs written successfully.\n");
  machine.fileFailures["SDR.TMP"] = uefi_status::kWriteProtected;
  EXPECT_EQ(SdrData::DisplaySdrArea(), sdr_status::kCannotOpenFile);
  EXPECT_EQ(SdrData::CommitConfigurationToSystem(), sdr_status::kCannotOpenFile);
  machine.FailPoolAllocation(1);
  EXPECT_EQ(SdrData::SetOutputFile("OTHER.TMP"), sdr_status::kOutOfMemory);
}

TEST_F(Manager, AFailedDisplayLeavesDisplayModeOn) {
  StartBoard(AssociationRecord(7), "",
             R"({"netFunction": 10, "command": "0x22", "fault": "completion-code", "code": "0xC1"})");
  EXPECT_EQ(SdrData::DisplaySdrArea(), sdr_status::kCompletionCode);
  EXPECT_TRUE(TheSdr().isDisplaying);
  // What did not arrive shows as zeros.
  EXPECT_EQ(machine.console, "Displaying SDR area ...\n\nDisplaying SDR Record #1\n\n 00 00 00 00 00" +
                                 std::string(33, ' ') + "   ....." + std::string(33, ' ') + "\n");
}

TEST_F(Manager, LoadsFailWithTheirStatusAndMessage) {
  EXPECT_EQ(SdrData::LoadConfigurationFromFile(u"NONE.SDR"), sdr_status::kCannotOpenFile);
  EXPECT_EQ(Message(), "Could not open file NONE.SDR");
  EXPECT_EQ(machine.TraceLines().back(), "SdrData::LoadConfigurationFromFile - Error Writing File");
  EXPECT_EQ(Load(kUntagged), kSuccess);
  EXPECT_EQ(Load("_LF_NAME\n"), sdr_status::kHeaderKeyMissing);
  EXPECT_EQ(Message(), "Invalid file: Token _LF_VERSION not found.\n");
  // Lines count from the start of each file.
  EXPECT_EQ(Load(SdrFile("_SDR_TYPE 04\n")), sdr_status::kFileTypeNotSupported);
  EXPECT_EQ(Message(), "Invalid file: Unsupported record type line #11.\n");
  EXPECT_FALSE(IsLoaded());
  EXPECT_EQ(SdrData::CommitConfigurationToSystem(), sdr_status::kNotLoaded);
  EXPECT_EQ(machine.console, "");
}

TEST_F(Manager, AFileLoadNeedsARepository) {
  StartBoard({}, R"("file": "")");
  EXPECT_EQ(Load(kUntagged), sdr_status::kCompletionCode);
  EXPECT_FALSE(IsLoaded());
  EXPECT_EQ(Message(), "");
}

TEST_F(Manager, WithoutMemory) {
  machine.FailPoolAllocation(1);
  EXPECT_EQ(SdrData::LoadConfigurationFromSystem(), sdr_status::kNotInitialized);
  EXPECT_EQ(Message(), "Unable to initialize SDR list");
  machine.FailPoolAllocation(1);
  EXPECT_EQ(Load(kUntagged), sdr_status::kOutOfMemory);
  EXPECT_EQ(Message(), "Unable to initialize SDR list");
  ASSERT_EQ(Load(kUntagged), kSuccess);
  for (int allocation : {1, 2}) {
    machine.FailPoolAllocation(allocation);  // the temporary set, its lists
    EXPECT_EQ(SdrData::CommitConfigurationToSystem(), sdr_status::kOutOfMemory);
  }
  EXPECT_EQ(Message(), "Unable to initialize SDR list");
  for (int allocation : {1, 2}) {
    machine.FailPoolAllocation(allocation);
    EXPECT_EQ(SdrData::Initialize(), sdr_status::kNoDataSet);
    EXPECT_EQ(machine.TraceLines().back(), "SdrData::Initialize - Error Loading SDRDATA");
  }
  StartManager();
}

TEST_F(Manager, NothingWorksUninitialised) {
  ASSERT_EQ(SdrData::DeInitialize(), kSuccess);
  bool isLoaded = false;
  const char16_t* text = u"";
  EXPECT_EQ(SdrData::DeInitialize(), sdr_status::kNotInitialized);
  EXPECT_EQ(machine.TraceLines().back(), "SdrData::DeInitialize - Uninitialized");
  EXPECT_EQ(SdrData::IsLoaded(isLoaded), sdr_status::kNotInitialized);
  EXPECT_EQ(SdrData::SetProgressCallback(nullptr), sdr_status::kNotInitialized);
  EXPECT_EQ(SdrData::SetDisplayHexCallback(nullptr), sdr_status::kNotInitialized);
  EXPECT_EQ(SdrData::GetLastErrorMessage(text), sdr_status::kNotInitialized);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(SdrData::SelectSysData(), sdr_status::kNotInitialized);
  EXPECT_EQ(SdrData::SelectFileData(), sdr_status::kNotInitialized);
  EXPECT_EQ(SdrData::SetCompareOnly(true), sdr_status::kNotInitialized);
  EXPECT_EQ(SdrData::SetTag(u"A"), sdr_status::kNotInitialized);
  EXPECT_EQ(SdrData::LoadConfigurationFromSystem(), sdr_status::kNotInitialized);
  EXPECT_EQ(SdrData::LoadConfigurationFromFile(u"BOARD.SDR"), sdr_status::kNotInitialized);
  EXPECT_EQ(SdrData::CommitConfigurationToSystem(), sdr_status::kNotInitialized);
  EXPECT_EQ(SdrData::SetPaging(false), kSuccess);
  EXPECT_EQ(SdrData::SetOutputFile(""), kSuccess);
  EXPECT_EQ(SdrData::ClearRepository(), kSuccess);
  // A second start forgets the tags of the first.
  StartManager();
  ASSERT_EQ(Load(SdrFile(kLocatorLines)), kSuccess);
  EXPECT_TRUE(TheSdr().fileSet->selectedTags.empty());
  EXPECT_EQ(Message(), "");
}

}  // namespace
}  // namespace varnok::testing
