// The program from its arguments to its exit status, over a scripted BMC.
#include "app/varnok.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/services/trace.h"
#include "app/usage.h"
#include "platform/ipmi.h"
#include "tests/app/arguments.h"
#include "tests/support/scripted_ipmi.h"
#include "tests/support/smbios_builder.h"

namespace varnok {
namespace {

using namespace testing;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

const std::string kBanner = "\nVARNOK Load Utility Version 2.0.1 Build 18 \n\n";
const std::string kInvalid = "\nInvalid command line arguments.\n\n\n";

class Program : public ::testing::Test {
 protected:
  Program() { table.Add(1, {1, 2, 0, 0}, {"Maker", "Product"}).Install(machine); }

  /// Starts over: a blank console, and a BMC of this firmware revision that answers the start's requests.
  void ExpectStart(std::uint8_t revision = 0x02) {
    machine.console.clear();
    ForgetProgramState();
    bmc.Expect(0x06, 0x30, {0x01}).Reply({});
    for (int i = 0; i < 3; ++i) bmc.Expect(0x06, 0x01).Reply(DeviceId(0x4311, revision));
  }

  TestFirmware machine;
  testing::SmbiosBuilder table;
  ScriptedIpmi bmc{machine, false};
};

TEST_F(Program, UsageOfOnePageOrThree) {
  auto expect = [this](const std::string& line, int status, const std::string& text) {
    ExpectStart();
    EXPECT_EQ(RunMain(line), status) << line;
    EXPECT_EQ(machine.console, kBanner + text) << line;
  };
  for (const char* line : {"/?", "-?", "/h", "-H"})
    expect(line, 0, std::string(kShortUsage) + kFruAddressUsage + kExamplesUsage);
  for (const char* line : {"/d", "/d xyz", "/fru", "/sdr", "/? /h", "/cfgx", "/d sdr extra", "/cfg -x",
                           "/d fru -x", "d", "?", "/", " ", "-debug1 /?", "/? -debug1", "/d fru IMBDEVICE",
                           "/d fru imbdevice 00", "/d fru IMBDEVICE 00 -x", "/cfg a b"})
    expect(line, 1, kInvalid + kShortUsage);
  expect("/fru " + std::string(256, 'n'), 1, kInvalid + kShortUsage);
  expect("", 1, kShortUsage);
}

TEST_F(Program, DriverThatCannotBeLoadedIsSaid) {
  machine.protocol = nullptr;
  EXPECT_EQ(RunMain("/?"), 9);
  EXPECT_EQ(machine.console, kBanner + "\nERROR:Failed to load IPMI protocol.\n\n");
}

TEST_F(Program, BmcInTransferModeStopsEveryMode) {
  for (const char* line : {"", "/?", "/d smb", "/fru x"}) {
    ExpectStart(0x82);
    EXPECT_EQ(RunMain(line), 3);
    EXPECT_EQ(machine.console,
              kBanner + "\nERROR:BMC is in FW Transfer Mode. Unable to continue with the operation.\n\n");
  }
  ExpectStart(0x82);
  EXPECT_EQ(RunMain("-debug1"), 3);
  EXPECT_THAT(machine.TraceLines(), ElementsAre("CVarnok::CfgFileExecutive - BMC is in FW Transfer mode"));
}

TEST_F(Program, MissingSmbiosTableStopsTheStart) {
  machine.smbiosEntryPoint = nullptr;
  bmc.Expect(0x06, 0x30, {0x01}).Reply({});
  EXPECT_EQ(RunMain("-debug1"), 8);
  EXPECT_THAT(machine.TraceLines(), Contains("CVarnok::Initialize - Initialize for SMBIOS failed"));
  EXPECT_EQ(machine.console, kBanner + "\nERROR:SMBIOS Interface Error\n\n");
}

TEST_F(Program, MissingBoardRecordEndsTheSmbiosDisplay) {
  ExpectStart();
  EXPECT_EQ(RunMain("/D SMB"), 8);
  EXPECT_TRUE(machine.console.ends_with("\nERROR:The requested SMBIOS structure was not found.\n\n"))
      << machine.console;
}

TEST_F(Program, TraceNamesTheWayThroughTheStart) {
  ExpectStart();
  EXPECT_EQ(RunMain("/? -debug3"), 1);
  std::vector<std::string> lines = machine.TraceLines();
  EXPECT_THAT(lines, Not(Contains("VARNOK::main [ENTRY]"))) << "written before the level is known";
  EXPECT_EQ(lines.front(), "VARNOK Main:: Got Debug Level 3");
  lines.erase(lines.begin(), lines.end() - 4);
  EXPECT_THAT(lines, ElementsAre("CVarnok::SetCtrl_C_Enable [ENTRY]", "CVarnok::SetCtrl_C_Enable [EXIT]",
                                 "CVarnok::DeInitialize [EXIT]", "Dornquist::main [EXIT]"));
}

TEST_F(Program, TemporaryFileNameFallsBackToTheOutputName) {
  const char* const traced[] = {"VARNOK", "-debug3"};
  TraceSelectLevel(2, traced);
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
  outName = u"FRU.TMP";
  name.assign(300, u'n');
  machine.fileFailures[std::string(300, 'n')] = uefi_status::kWriteProtected;
  EXPECT_EQ(application.ValidateTmpFileName(&outName, &name), 2);
  EXPECT_EQ(name.size(), 256u);
  std::vector<std::string> lines = machine.TraceLines();
  const auto isScope = [](const std::string& each) { return each.ends_with("]"); };
  EXPECT_EQ(std::erase_if(lines, isScope), 10u) << "in and out of five calls";
  EXPECT_THAT(lines, ElementsAre("CVarnok::ValidateTmpFileName: Invalid Arguments!!!",
                                 "CVarnok::ValidateTmpFileName: Invalid Arguments!!!",
                                 "CVarnok::ValidateTmpFileName - Unable to open the output file"));
}

}  // namespace
}  // namespace varnok
