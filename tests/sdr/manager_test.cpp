// The SDR manager on a simulated board: loads, displays, commits and their console texts.
#include <gmock/gmock.h>

#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "firmware/ipmi.h"
#include "platform/ipmi.h"
#include "sdr/record_lists.h"
#include "sdr/sdr_data.h"
#include "tests/sdr/file_text.h"
#include "tests/sdr/records.h"
#include "tests/sim/board_fixture.h"
#include "tests/support/heap_count.h"
#include "tests/support/test_firmware.h"

namespace varnok::testing {
namespace {

using ::testing::HasSubstr;

/// A test machine whose BMC and clock are the simulated board's. Once the BMC is told to erase, the pool is
/// exhausted.
class BoardMachine : public TestFirmware {
 public:
  sim::Board* board = nullptr;
  std::size_t heapAtErase = 0;

  void Connect(sim::Board& below) {
    board = &below;
    protocol = &wire_;
  }
  void Stall(std::uint64_t microseconds, StallKind kind) override {
    Uncounted own;
    TestFirmware::Stall(microseconds, kind);
    if (board != nullptr) board->Stall(microseconds, kind);
  }

 private:
  struct Wire : IpmiProtocol {
    BoardMachine* machine;
  };
  static IpmiProtocol* Below(IpmiProtocol* self) {
    return static_cast<Wire*>(self)->machine->board->InstalledIpmi();
  }

  Wire wire_{{kIpmiProtocolRevision,
              [](IpmiProtocol* self, std::uint8_t netFunction, std::uint8_t lun, std::uint8_t command,
                 const std::uint8_t* data, std::uint32_t length) {
                Uncounted own;
                if (command == ipmi_command::kClearSdrRepository && data[5] == 0xAA) {
                  BoardMachine& machine = *static_cast<Wire*>(self)->machine;
                  machine.heapAtErase = HeapAllocations();
                  machine.FailPoolAllocation(1);
                }
                return Below(self)->Send(Below(self), netFunction, lun, command, data, length);
              },
              [](IpmiProtocol* self, auto... answer) {
                Uncounted own;
                return Below(self)->Receive(Below(self), answer...);
              }},
             this};
};

class Manager : public BoardTest {
 protected:
  void SetUp() override { StartBoard({}); }

  /// A board whose repository holds these bytes, and the manager anew.
  void StartBoard(const Bytes& records, const std::string& keys = "", const std::string& faults = "") {
    WriteFile("sdr.bin", std::string(records.begin(), records.end()));
    OpenWith(R"({"smbios": "", "bmc": {"sdrs": {)" + keys + R"(}}, "faults": [)" + faults + "]}");
    ForgetProgramState();
    machine.Connect(*board);
    ASSERT_EQ(IpmiLoadProtocol(), ipmi_result::kSuccess);
    StartManager();
  }
  void StartManager() {
    machine.FailPoolAllocation(0);
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
  Bytes Repository() { return ReadFile("sdr.bin"); }

  BoardMachine machine;
};

const std::string kWipe = "\r" + std::string(79, ' ') + "\r";
const std::string kUntagged = SdrFile(kAssociationLines);

std::string Reading(int record, int total) {
  return "Reading SDRs from system......" + std::to_string(record) + " of " + std::to_string(total) + ".\r";
}
std::string Updating(int record, int total) {
  return "   Updating the SDRs.........." + std::to_string(record) + " of " + std::to_string(total) + ".\r";
}
const std::string kClearing = "\n\nClearing SDR repository\n\n";
const std::string kPleaseWait = "Processing SDR Update.........Please wait\n";

std::string Fault(const std::string& command, const std::string& effect) {
  return R"({"netFunction": 10, "command": ")" + command + R"(", )" + effect + "}";
}
const std::string kRefusal = R"("fault": "completion-code", "code": "0xD4")";
/// A bit that rots when the repository's properties are asked for the nth time.
std::string Rot(int nth, int offset) {
  return Fault("0x20", R"("fault": "flip", "file": "sdr.bin", "nth": )" + std::to_string(nth) +
                           R"(, "offset": )" + std::to_string(offset));
}

TEST_F(Manager, CommitsWriteReadBackAndCompare) {
  const Bytes association = AssociationRecord(1);
  const Bytes held = Joined(AssociationRecord(7), TemperatureRecord("Inlet", 9));
  const std::string two = kAssociationLines + kAssociationLines;
  const std::string start = kClearing + kPleaseWait,
                    writesOne = start + Updating(1, 1) + "\n" + Reading(1, 1) + "\n\n";
  const std::string comparesTwo = kPleaseWait + "\n" + Reading(1, 2) + Reading(2, 2) + "\n\n";
  const std::string written = "SDRs written successfully.\n", failed = "SDR Verification failed\n\n\n";
  const std::string refused =
      start.substr(0, kClearing.size()) + "\n\nClearSDR repository failed\n\n\n" + kPleaseWait;
  const std::string notCleared =
      "varnok: the SDR repository was not cleared: records that it held stay in front of those now written\n";
  Bytes rotten = association;
  rotten[15] ^= 1;
  struct Case {
    const char* what;
    Bytes before;
    std::string keys, faults, records;
    bool isCompareOnly;
    Status status;
    std::string console, warnings;
    Bytes after;
  };
  // clang-format off
  const Case cases[] = {
      // The third question for the properties is the read-back's.
      {"a tag that is not set: nothing to write, and the read-back finds no first record", held, "", "", kLocatorLines, false,
       kSuccess, start + "\n" + Reading(1, 0) + "\n\n" + written, "", {}},
      {"compare alike, with a record more", held, "", "", kAssociationLines, true,
       kSuccess, comparesTwo + "SDR file was compared successfully!\n", "", held},
      {"compare different", held, "", "", two, true,
       sdr_status::kDifferent, comparesTwo + "SDR file does not match with what was programmed in the memory.\n\n\n", "", held},
      {"a bit of the record ID, which is the BMC's own", association, "", Rot(3, 0), kAssociationLines, false,
       kSuccess, writesOne + written, "", AssociationRecord(0)},
      {"a bit of the last byte", association, "", Rot(3, 15), kLocatorLines + kAssociationLines, false,
       sdr_status::kDifferent, writesOne + failed, "", rotten},
      {"no room for the second record", {}, R"("capacity": 20)", "", two, false, sdr_status::kDifferent,
       start + Updating(1, 2) + "\n SendRecordToBMC failed\n" + Updating(2, 2) + "\n" + Reading(1, 1) + "\n\n" + failed,
       "", association},
      {"a clear that fails, of an empty repository", {}, "", Fault("0x27", kRefusal), kAssociationLines, false,
       kSuccess, refused + Updating(1, 1) + "\n" + Reading(1, 1) + "\n\n" + written, notCleared, association},
      {"a clear that fails, of a board programmed before", association, "", Fault("0x27", kRefusal), kAssociationLines, false,
       kSuccess, refused + Updating(1, 1) + "\n" + Reading(1, 2) + Reading(2, 2) + "\n\n" + written,
       notCleared + "varnok: the SDR repository holds 2 records, 1 were written\n", Joined(association, AssociationRecord(2))},
  };
  // clang-format on
  for (const Case& each : cases) {
    for (const char* level : {"-debug1", "-debug3"}) {
      SCOPED_TRACE(std::string(each.what) + level);
      StartBoard(each.before, each.keys, each.faults);
      machine.files["SDR.TMP"].reserve(1 << 20);
      TraceSelectLevel(2, std::array{"", level}.data());
      ASSERT_EQ(SdrData::SetOutputFile(level[6] == '3' ? "SDR.TMP" : ""), kSuccess);
      machine.console = machine.errors = "";
      ASSERT_EQ(Load(SdrFile(each.records)), kSuccess);
      ASSERT_EQ(SdrData::SetCompareOnly(each.isCompareOnly), kSuccess);
      EXPECT_EQ(SdrData::CommitConfigurationToSystem(), each.status);
      EXPECT_TRUE(each.isCompareOnly || HeapAllocations() == machine.heapAtErase)
          << "memory asked for behind the erase";
      machine.FailPoolAllocation(0);
      EXPECT_EQ(machine.console, each.console);
      EXPECT_EQ(machine.errors, each.warnings);
      EXPECT_EQ(Message(), "Unable to update SDRs");
      EXPECT_EQ(Repository(), each.after);
    }
  }
}

TEST_F(Manager, TagsOfAnyCaseAddUpAndOutliveALoad) {
  StartBoard(TemperatureRecord());
  for (const char16_t* tag : {u"OTHER", u"rIsEr", u"MORE"}) ASSERT_EQ(SdrData::SetTag(tag), kSuccess);
  ASSERT_EQ(Load(SdrFile(kLocatorLines + kAssociationLines)), kSuccess);
  EXPECT_TRUE(IsLoaded());
  EXPECT_EQ(machine.console, "");
  EXPECT_EQ(SdrData::CommitConfigurationToSystem(), kSuccess);
  EXPECT_EQ(Repository(), Joined(AssociationRecord(1), FruLocatorRecord("Riser", 2))) << "in type order";
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
  StartBoard(Joined(TemperatureRecord("Inlet"), AssociationRecord(7)), "", Rot(2, 3));
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
  Discard(SdrData::SetPaging(true));
  machine.keys = u"xmS";
  EXPECT_EQ(SdrData::DisplaySdrArea(), kSuccess);
  EXPECT_THAT(machine.console, HasSubstr(prompt + "\n\n\nDisplaying SDR Record #4"));
  EXPECT_THAT(machine.console, HasSubstr("\nDisplaying SDR Record #6"));
  EXPECT_TRUE(machine.console.ends_with(prompt + kWipe));
  machine.console.clear();
  machine.keys = u"n";
  EXPECT_EQ(SdrData::DisplaySdrArea(), kSuccess);
  EXPECT_THAT(machine.console, HasSubstr(prompt + "\nDisplaying SDR Record #4"));
  EXPECT_THAT(machine.console, HasSubstr("\nDisplaying SDR Record #7"));
  EXPECT_FALSE(TheSdr().isPaging);
}

TEST_F(Manager, OutputFileMirrorsDisplayAndCommit) {
  StartBoard(AssociationRecord(7));
  ASSERT_EQ(SdrData::SetOutputFile("SDR.TMP"), kSuccess);
  EXPECT_EQ(SdrData::DisplaySdrArea(), kSuccess);
  const std::string dump = " 00 51 08 0B 17 01 80 03 01 03 02 08 01 08 10   ..Q.............\n";
  EXPECT_EQ(machine.TextOf("SDR.TMP"), "Displaying SDR area ...\n\nDisplaying SDR Record #1\n\n 07" + dump);
  machine.files.erase("SDR.TMP");
  ASSERT_EQ(Load(kUntagged), kSuccess);
  EXPECT_EQ(SdrData::CommitConfigurationToSystem(), kSuccess);
  EXPECT_EQ(machine.TextOf("SDR.TMP"), kClearing + "Writing SDR Record # 1\n 12" + dump +
                                           "Reading SDR information ...\n\nSDRs written successfully.\n");
  machine.fileFailures["SDR.TMP"] = uefi_status::kWriteProtected;
  EXPECT_EQ(SdrData::DisplaySdrArea(), sdr_status::kCannotOpenFile);
  EXPECT_EQ(SdrData::CommitConfigurationToSystem(), sdr_status::kCannotOpenFile);
  machine.FailPoolAllocation(1);
  EXPECT_EQ(SdrData::SetOutputFile("OTHER.TMP"), sdr_status::kOutOfMemory);
}

TEST_F(Manager, AFailedDisplayLeavesDisplayModeOn) {
  StartBoard(AssociationRecord(7), "", Fault("0x22", kRefusal));
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
  // A file that is right needs a repository, too.
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
  StartBoard(AssociationRecord(7));
  ASSERT_EQ(Load(kUntagged), kSuccess);
  for (int allocation = 1; allocation <= 2 + static_cast<int>(kSdrTypeCount); ++allocation) {
    machine.FailPoolAllocation(allocation);  // the temporary set, its lists, their records
    machine.console.clear();
    EXPECT_EQ(SdrData::CommitConfigurationToSystem(), sdr_status::kOutOfMemory);
    EXPECT_EQ(machine.console, "");
    EXPECT_EQ(Message(), allocation == 2 ? "Unable to initialize SDR list" : "Unable to update SDRs");
  }
  EXPECT_EQ(Repository(), AssociationRecord(7)) << "nothing is written without it";
  for (int allocation : {1, 2}) {
    machine.FailPoolAllocation(allocation);
    EXPECT_EQ(SdrData::Initialize(), sdr_status::kNoDataSet);
    EXPECT_EQ(machine.TraceLines().back(), "SdrData::Initialize - Error Loading SDRDATA");
  }
}

TEST_F(Manager, NothingWorksUninitialised) {
  ASSERT_EQ(SdrData::DeInitialize(), kSuccess);
  bool isLoaded = false;
  const char16_t* text = u"";
  EXPECT_EQ(SdrData::DeInitialize(), sdr_status::kNotInitialized);
  EXPECT_EQ(machine.TraceLines().back(), "SdrData::DeInitialize - Uninitialized");
  for (Status status :
       {SdrData::IsLoaded(isLoaded), SdrData::SetProgressCallback(nullptr),
        SdrData::SetDisplayHexCallback(nullptr), SdrData::GetLastErrorMessage(text), SdrData::SelectSysData(),
        SdrData::SelectFileData(), SdrData::SetCompareOnly(true), SdrData::SetTag(u"A"),
        SdrData::LoadConfigurationFromSystem(), SdrData::LoadConfigurationFromFile(u"BOARD.SDR"),
        SdrData::CommitConfigurationToSystem()})
    EXPECT_EQ(status, sdr_status::kNotInitialized);
  EXPECT_EQ(text, nullptr);
  for (Status status : {SdrData::SetPaging(false), SdrData::SetOutputFile(""), SdrData::ClearRepository()})
    EXPECT_EQ(status, kSuccess);
  // A second start forgets the tags of the first.
  StartManager();
  ASSERT_EQ(Load(SdrFile(kLocatorLines)), kSuccess);
  EXPECT_TRUE(TheSdr().fileSet->selectedTags.empty());
  EXPECT_EQ(Message(), "");
}

}  // namespace
}  // namespace varnok::testing
