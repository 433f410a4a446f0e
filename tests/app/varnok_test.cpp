// The program from its arguments to its exit status, over a scripted BMC.
#include "app/varnok.h"

#include <gtest/gtest.h>

#include "app/services/text.h"
#include "app/usage.h"
#include "firmware/entry.h"
#include "platform/ipmi.h"
#include "tests/support/scripted_ipmi.h"
#include "tests/support/smbios_builder.h"

namespace varnok {
namespace {

using testing::ScriptedIpmi;
using testing::TestFirmware;
using Arguments = std::vector<std::string>;

const std::string kBanner = "\nVARNOK Load Utility Version 2.0.1 Build 18 \n\n";
const std::string kInvalid = "\nInvalid command line arguments.\n\n\n";

// Get Device ID of an IPMI 2.0 BMC in normal operation.
const ScriptedIpmi::Bytes kDeviceId{0x20, 0x01, 0x02, 0x10, 0x02, 0xBF, 0x57, 0x01,
                                    0x00, 0x11, 0x43, 0,    0,    0,    0};

class Program : public ::testing::Test {
 protected:
  Program() { table.Add(1, {1, 2, 0, 0}, {"Maker", "Product"}).Install(machine); }

  int Run(Arguments arguments) {
    arguments.insert(arguments.begin(), "VARNOK");
    std::vector<char*> vector;
    for (std::string& argument : arguments) vector.push_back(argument.data());
    vector.push_back(nullptr);
    return Main(static_cast<int>(arguments.size()), vector.data());
  }

  void ExpectStart(ScriptedIpmi::Bytes lastDeviceId = kDeviceId) {
    bmc.Expect(0x06, 0x30, {0x01}).Reply({});
    for (int i = 0; i < 2; ++i) bmc.Expect(0x06, 0x01).Reply(kDeviceId);
    bmc.Expect(0x06, 0x01).Reply(std::move(lastDeviceId));
  }

  TestFirmware machine;
  testing::SmbiosBuilder table;
  ScriptedIpmi bmc{machine, false};
};

TEST_F(Program, UsageOfOnePageWithoutArguments) {
  ExpectStart();
  EXPECT_EQ(Run({}), 1);
  EXPECT_EQ(machine.console, kBanner + kShortUsage);
}

TEST_F(Program, HelpShowsThreePages) {
  for (const char* option : {"/?", "-?", "/h", "-H"}) {
    machine.console.clear();
    IpmiReset();
    ExpectStart();
    EXPECT_EQ(Run({option}), 0) << option;
    EXPECT_EQ(machine.console, kBanner + kShortUsage + kFruAddressUsage + kExamplesUsage);
  }
}

TEST_F(Program, InvalidLinesShowTheShortUsage) {
  const std::string longName(256, 'n');
  for (const Arguments& line : std::vector<Arguments>{{"/d"},
                                                      {"/d", "xyz"},
                                                      {"/fru"},
                                                      {"/sdr"},
                                                      {"/?", "/h"},
                                                      {"/cfgx"},
                                                      {"/d", "sdr", "extra"},
                                                      {"/cfg", "-x"},
                                                      {"/d", "fru", "-x"},
                                                      {"d"},
                                                      {"?"},
                                                      {"/"},
                                                      {""},
                                                      {"-debug1", "/?"},
                                                      {"/?", "-debug1"},
                                                      {"/d", "fru", "IMBDEVICE"},
                                                      {"/d", "fru", "IMBDEVICE", "00", "-x"},
                                                      {"/cfg", "a", "b"},
                                                      {"/fru", longName}}) {
    machine.console.clear();
    IpmiReset();
    ExpectStart();
    EXPECT_EQ(Run(line), 1) << ::testing::PrintToString(line);
    EXPECT_EQ(machine.console, kBanner + kInvalid + kShortUsage) << ::testing::PrintToString(line);
  }
}

TEST_F(Program, DriverThatCannotBeLoadedIsSaid) {
  machine.protocol = nullptr;
  EXPECT_EQ(Run({"/?"}), 9);
  EXPECT_EQ(machine.console, kBanner + "\nERROR:Failed to load IPMI protocol.\n\n");
}

TEST_F(Program, BmcInTransferModeStopsEveryMode) {
  ScriptedIpmi::Bytes inTransfer = kDeviceId;
  inTransfer[2] |= 0x80;
  for (const Arguments& line : std::vector<Arguments>{{}, {"/?"}, {"/d", "smb"}, {"/fru", "x"}}) {
    machine.console.clear();
    IpmiReset();
    ExpectStart(inTransfer);
    EXPECT_EQ(Run(line), 3);
    EXPECT_EQ(machine.console,
              kBanner + "\nERROR:BMC is in FW Transfer Mode. Unable to continue with the operation.\n\n");
  }
}

TEST_F(Program, MissingSmbiosTableStopsTheStart) {
  machine.smbiosEntryPoint = nullptr;
  bmc.Expect(0x06, 0x30, {0x01}).Reply({});
  EXPECT_EQ(Run({"/?"}), 8);
  EXPECT_EQ(machine.console, kBanner + "\nERROR:SMBIOS Interface Error\n\n");
}

TEST_F(Program, MissingBoardRecordEndsTheSmbiosDisplay) {
  ExpectStart();
  EXPECT_EQ(Run({"/D", "SMB"}), 8);
  EXPECT_TRUE(machine.console.ends_with("\nERROR:The requested SMBIOS structure was not found.\n\n"))
      << machine.console;
}

TEST_F(Program, FruFileThatIsMissingNamesIt) {
  ExpectStart();
  EXPECT_EQ(Run({"-FRU", "boards\\main"}), 5);
  EXPECT_EQ(machine.console, kBanner + "\nERROR:Could not open FRU file \"boards\\main.FRU\".\n\n");
}

TEST_F(Program, TraceNamesTheWayThroughTheStart) {
  ExpectStart();
  EXPECT_EQ(Run({"/?", "-debug3"}), 1);
  std::vector<std::string> lines = machine.TraceLines();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "VARNOK::main [ENTRY]"), 0)
      << "written before the level is known";
  ASSERT_GE(lines.size(), 6u);
  lines.resize(6);
  EXPECT_EQ(lines,
            (std::vector<std::string>{"VARNOK Main:: Got Debug Level 3", "CVarnok::Initialize [ENTRY]",
                                      "CVarnok::SetCtrl_C_Enable [ENTRY]", "CVarnok::SetCtrl_C_Enable [EXIT]",
                                      "CVarnok::IsAlreadyRunning [ENTRY]", lines[5]}));
  lines = machine.TraceLines();
  std::vector<std::string> end(lines.end() - 4, lines.end());
  EXPECT_EQ(end,
            (std::vector<std::string>{"CVarnok::SetCtrl_C_Enable [ENTRY]", "CVarnok::SetCtrl_C_Enable [EXIT]",
                                      "CVarnok::DeInitialize [EXIT]", "Dornquist::main [EXIT]"}));
}

TEST_F(Program, TemporaryFileNameFallsBackToTheOutputName) {
  CVarnok application;
  std::u16string name = u"FRU.TMP";
  std::u16string outName;
  EXPECT_EQ(application.ValidateTmpFileName(nullptr, &name), 11);
  EXPECT_EQ(application.ValidateTmpFileName(&outName, nullptr), 11);
  EXPECT_EQ(application.ValidateTmpFileName(&outName, &name), 0);
  EXPECT_EQ(outName, u"FRU.TMP");
  EXPECT_EQ(machine.files["FRU.TMP"], "\xFF\xFE");
  machine.fileFailures["FRU.TMP"] = uefi_status::kWriteProtected;
  outName = u"OTHER.TMP";
  EXPECT_EQ(application.ValidateTmpFileName(&outName, &name), 0);
  EXPECT_EQ(name, u"C:\\FRU.TMP");
  EXPECT_TRUE(machine.files.contains("OTHER.TMP")) << "not the rewritten name";
  name = outName = u"FRU.TMP";
  EXPECT_EQ(application.ValidateTmpFileName(&outName, &name), 2);
}

}  // namespace
}  // namespace varnok
