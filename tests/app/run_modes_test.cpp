// Every run mode over a simulated board with a fault: exit status, message, and what the trace log says at
// level 1.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "app/app_status.h"
#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "app/usage.h"
#include "app/varnok.h"
#include "tests/app/arguments.h"
#include "tests/support/board_machine.h"
#include "tests/support/expectations.h"
#include "tests/support/rows.h"

namespace varnok::testing {
namespace {

class RunModes : public ::testing::Test {
 protected:
  RunModes() {
    machine.environment["TAG"] = u"X1";
    for (const char* name : {"minimal.FRU", "minimal.SDR"})
      machine.files[name] = machine.files[std::string(".\\") + name] =
          ContentOf(std::filesystem::path(VARNOK_SAMPLES) / ToLower(name));
  }

  /// The default board with these faults.
  void OpenBoard(const std::string& faults) {
    machine.board = nullptr;
    std::filesystem::remove_all(Folder());
    std::string error;
    ASSERT_TRUE(sim::Board::CreateDefault(Folder(), error)) << error;
    std::string description = ContentOf(Folder() / "board.json");
    description.insert(description.find('{') + 1, "\"faults\": [" + faults + "],");
    std::ofstream(Folder() / "board.json") << description;
    machine.Install(sim::Board::Open(Folder(), error));
    machine.console.clear();
    machine.errors.clear();
  }
  /// One run of the program's object behind the reading of its command line.
  std::string Execute(const std::string& line, bool isMirrored = false) {
    ForgetProgramState();
    host::ArgumentList arguments = Arguments(line);
    const char* const traced[] = {"VARNOK", level};
    TraceSelectLevel(2, traced);
    CVarnok program;
    int status = program.Initialize();
    if (status == 0) status = program.ParseCommandLine(arguments.Count(), arguments.Pointers());
    SetTemporaryFile(isMirrored);
    SetPaging(isMirrored);
    if (status == 0) status = program.Execute();
    return std::to_string(status) + (status == 2 ? " " + Narrow(program.LastErrorMessage()) : "");
  }
  /// The log's lines that name a way of the program's own.
  std::vector<std::string> TraceOf(const std::string& line) {
    Execute(line);
    std::vector<std::string> lines = machine.TraceLines();
    std::erase_if(lines, [](const std::string& each) { return !each.starts_with("CVarnok::"); });
    return lines;
  }
  void WriteScript(const std::string& text) { machine.files[".\\t.CFG"] = machine.files["t.CFG"] = text; }

  const char* level = "-debug1";
  BoardMachine machine;

 private:
  static std::string ToLower(std::string text) {
    std::ranges::transform(text, text.begin(), [](char each) { return std::tolower(each); });
    return text;
  }
  std::filesystem::path Folder() const { return folder_.Path() / "board"; }

  TemporaryFolder folder_;
};

TEST_F(RunModes, EndWithStatusTextAndTrace) {
  for (const WireStep& row : WireSteps(Expectations("app/run_modes.txt").front().second)) {
    SCOPED_TRACE(row.operation + " with " + row.wire);
    auto given = [&row](const std::string& key) {
      const std::size_t at = row.wire.find(key);
      return at == std::string::npos ? "" : Split(row.wire.substr(at + key.size()), "\n").front();
    };
    WriteScript(Unescape(given("script ")));
    OpenBoard(given("faults "));
    const std::vector<std::string> wanted = Split(row.outcome, "\n");
    const int status = std::stoi(wanted[0]);
    std::string text = Unescape(wanted[0].substr(wanted[0].find(' ') + 1));
    if (text == "<SHORT USAGE>") text = kShortUsage;
    EXPECT_EQ(RunMain(row.operation), status);
    EXPECT_TRUE(machine.console.ends_with(status > 1 ? "\nERROR:" + text + "\n\n" : text)) << machine.console;
    OpenBoard(given("faults "));
    const std::vector<std::string> lines = TraceOf(row.operation);
    EXPECT_EQ(lines.empty() ? "" : lines.back(), wanted[1]);
    EXPECT_LE(lines.size(), 1u);
  }
}

TEST_F(RunModes, EachWayIsTracedFromItsEntryToItsExit) {
  OpenBoard("");
  WriteScript("DISPLAY \"x\"\n");
  const std::string start = "+Initialize +SetCtrl_C_Enable -SetCtrl_C_Enable +IsAlreadyRunning -Initialize ";
  const std::string reading = "+AddDefaultExtension -AddDefaultExtension ";
  level = "-debug3";
  // clang-format off
  const std::pair<std::string, std::string> rows[] = {
      {"/?", "DisplayUsage"}, {"/d fru", "DisplaySystemInformation"}, {"/d sdr", "DisplaySystemInformation"}, {"/d smb", "DisplaySystemInformation"}, {"/fru minimal", "FruExecutive"}, {"/sdr minimal", "SdrExecutive"}, {"/cfg t", "CfgFileExecutive"}};
  for (const auto& [line, way] : rows) {
    std::string shown;
    for (std::string each : TraceOf(line)) {
      each.erase(0, each.rfind(':') + 1);
      shown += (each.ends_with("[ENTRY]") ? '+' : '-') + each.substr(0, each.find(' ')) + ' ';
    }
    EXPECT_EQ(shown, start + "+ParseCommandLine " + (way.ends_with("ive") ? reading : "") +
                         "-ParseCommandLine +Execute +" + way + " -" + way + " -Execute ");
  }
  // clang-format on
}

TEST_F(RunModes, ProgramWithoutModeIsUnknown) {
  SetPaging(true);
  SetTemporaryFile(true);
  CVarnok program;
  EXPECT_EQ(program.ParseCommandLine(1, Arguments("").Pointers()), 1);
  EXPECT_FALSE(IsPagingOn() || IsTemporaryFileOn()) << "no option sets them";
  machine.files.clear();
  EXPECT_EQ(program.Execute(), 11);
  EXPECT_EQ(program.DisplaySystemInformation(), 11);
  EXPECT_EQ(machine.TraceLines(),
            (std::vector<std::string>{"CVarnok::Execute - Unknown mode",
                                      "CVarnok::DisplaySystemInformation - Unknown mode"}));
}

// Most failures bring a message of their own, which hides these.
TEST(AppStatus, TextsOfAllStatuses) {
  std::string texts;
  for (int status = 0; status <= 12; ++status) texts += std::string(StatusMessage(status)) + "|";
  const std::string unknown = "Unknown Error.|";
  EXPECT_EQ(texts, unknown +
                       "Command Line Error.|File IO Error.|Error communicating with BMC.|"
                       "Error Updating/Validating/Comparing FRU / SDR.|Error Loading FRU / SDR Information|"
                       "Error Parsing Configuration File|Error Processing Configuration File|"
                       "SMBIOS Interface Error|Error Initalizing Protocol Interfaces.|" +
                       unknown + unknown + unknown);
}

TEST_F(RunModes, SdrFileThatIsTooLargeIsToldOf) {
  OpenBoard("");
  machine.files["big.SDR"] = std::string((64 << 20) + 1, 'x');
  EXPECT_EQ(RunMain("/sdr big"), 5);
  EXPECT_EQ(machine.errors, "varnok: big.SDR is larger than 64 MiB\n");
}

TEST_F(RunModes, KeyOfAnEarlierRunAnswersNothing) {
  OpenBoard("");
  WriteScript("PROMPT \"Go?\"\nYES go\nIFSET go\nERRORLEVEL 6\nENDIF\n");
  GetKey(u'y');
  machine.keys = u"n";
  EXPECT_EQ(RunMain("/cfg t"), 0);
  EXPECT_EQ(machine.keys, u"");
}

TEST_F(RunModes, ManagersThatGetNoMemoryAreNamed) {
  std::set<std::string> lines;
  OpenBoard("");
  for (int allocation = 1; allocation <= 40; ++allocation) {
    machine.FailPoolAllocation(allocation);
    for (const std::string& line : TraceOf("/?")) lines.insert(line);
  }
  machine.FailPoolAllocation(0);
  for (const char* what :
       {"Failed to load IPMI protocol", "Initialize for FwUpdate failed", "Initialize for CfgFile failed",
        "Initialize for Frudata failed", "Initialize for Sdrdata failed"})
    EXPECT_TRUE(lines.contains(std::string("CVarnok::Initialize - ") + what)) << what;
}

TEST_F(RunModes, PoolThatRunsOutIsSaidAndNothingIsLeftHalfWrittenOrTaken) {
  const std::string script = "FRUNAME SYSTEM\nFRUAREA Product\nFRUFIELD AT X1\nSDRNAME minimal.SDR\n";
  using Images = std::vector<sim::Bytes>;
  auto run = [&](const std::string& line, int failing, bool fromThereOn) {
    OpenBoard("");
    WriteScript(script);
    machine.FailPoolAllocation(failing, fromThereOn);
    const int status = RunMain(line);
    machine.FailPoolAllocation(0);
    ForgetProgramState();
    EXPECT_EQ(machine.poolBlocks, 0u) << line << failing;
    return status;
  };
  auto images = [&] {
    Images contents;
    for (const char* name : {"board.bin", "sdr.bin"}) {
      const auto content = machine.board->Images().Find(name)->Content();
      contents.emplace_back(content.begin(), content.end());
    }
    return contents;
  };
  for (const char* line : {"/?", "/d fru", "/d sdr", "/d smb", "/fru minimal", "/sdr minimal", "/cfg t"}) {
    OpenBoard("");
    const Images before = images();
    ASSERT_EQ(run(line, 0, false), 0) << line;
    const Images after = images();
    const std::string shown = machine.console;
    int failures = 0;
    for (int failing = 1;; failing += 1 + failing / 16) {
      const int status = run(line, failing, true);
      if (status == 0 && machine.errors.empty() && machine.console == shown) break;
      ++failures;
      EXPECT_TRUE(machine.console.find("\nERROR:") != std::string::npos ||
                  machine.errors.find("out of memory") != std::string::npos)
          << line << failing << machine.console;
      const Images now = images();
      for (std::size_t i = 0; i < now.size(); ++i)
        EXPECT_TRUE(now[i] == before[i] || now[i] == after[i] || status == 0) << line << failing;
      run(line, failing, false);
    }
    EXPECT_GT(failures, 5) << line;
  }
}

// Nobody but their readers compares the pages, so that a change of theirs must be made here as well.
TEST_F(RunModes, UsagePagesStayAsTheyAreAndStopAtThePrompt) {
  auto checksum = [](std::string_view text) {
    std::uint32_t sum = 2166136261;
    for (char each : text) sum = (sum ^ static_cast<unsigned char>(each)) * 16777619;
    return sum;
  };
  EXPECT_EQ(checksum(kShortUsage), 2379090042u);
  EXPECT_EQ(checksum(kFruAddressUsage), 2607765042u);
  EXPECT_EQ(checksum(kExamplesUsage), 3626581818u);
  const std::string prompt = "\n[S]top, [N]on-stop, or [M]ore";
  const std::string pages[] = {kShortUsage, kFruAddressUsage, kExamplesUsage};
  const std::pair<std::u16string, std::string> rows[] = {
      {u"s", pages[0] + prompt},
      {u"x\rms", pages[0] + prompt + "\n\n" + pages[1] + prompt},
      {u"n", pages[0] + prompt + "\n\n" + pages[1] + pages[2]},
  };
  CVarnok program;
  for (const auto& [keys, shown] : rows) {
    machine.keys = keys;
    machine.console.clear();
    SetPaging(true);
    EXPECT_EQ(program.DisplayUsage(), 0);
    EXPECT_EQ(machine.console, shown);
    EXPECT_EQ(machine.keys, u"");
    EXPECT_EQ(IsPagingOn(), keys != u"n");
  }
}

TEST_F(RunModes, TemporaryFileIsMadeWhereItsFlagIsSet) {
  struct Mirror {
    std::string line, name;
    bool isPaged;
    std::string text;
  } const rows[] = {
      {"/d fru", "FRU.TMP", true, ""},
      {"/d sdr", "SDR.TMP", true, "Displaying SDR Record #1\n\n 01 00 51 01 "},
      {"/d smb", "SMB.TMP", false, " Manufacturer      = Varnok Works\n"},
      {"/fru minimal", "FRU.TMP", false, "\n 01 00 00 01 00 00 00 FE "},
      {"/sdr minimal", "SDR.TMP", false, "Writing SDR Record # 1\n 00 00 51 C0 "},
      {"/cfg t", "CFG.TMP", false, "DISPLAY \"x\""},
  };
  WriteScript("DISPLAY \"x\"\n");
  OpenBoard("");
  for (const auto& [line, name, isPaged, text] : rows) {
    machine.files.erase(name);
    machine.keys = u"n";
    EXPECT_EQ(Execute(line, true), "0") << line;
    EXPECT_EQ(machine.files[name].substr(0, 2), "\xFF\xFE") << line;
    EXPECT_EQ(machine.keys.empty(), isPaged) << line;
    EXPECT_NE(machine.TextOf(name).find(text), std::string::npos) << line;
    machine.fileFailures[name] = machine.fileFailures[""] = uefi_status::kWriteProtected;
    EXPECT_EQ(Execute(line, true), "2 Failed to create temporary file:C:\\" + name + "\n") << line;
    machine.fileFailures.clear();
  }
}

}  // namespace
}  // namespace varnok::testing
