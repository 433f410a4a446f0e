#include "platform/fw_update.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/services/text.h"
#include "app/services/trace.h"
#include "platform/cfw_update.h"
#include "platform/ipmi.h"
#include "tests/support/scripted_ipmi.h"

namespace varnok {
namespace {

using namespace testing;
using ::testing::Contains;
using ::testing::IsEmpty;

constexpr char kInTransferMode[] = "BMC is in FW Transfer Mode. Unable to continue with the operation.";
constexpr char kNotInTransferMode[] =
    "BMC is not in FW Transfer Mode. Unable to continue with the operation.";
constexpr char kNoVersion[] = "Unable to read FW version from the BMC.";

/// The program with the first trace level, a BMC that answers, and the module initialised.
struct Fw : ::testing::Test {
  TestFirmware machine;
  ScriptedIpmi bmc{machine};
  bool isFlag = false;

  void SetUp() override {
    const char* arguments[] = {"varnok", "-debug1"};
    TraceSelectLevel(2, arguments);
    for (int i = 0; i < 2; ++i) ExpectDeviceId();
    ASSERT_EQ(FwUpdate::Initialize(), kSuccess);
  }
  void TearDown() override {
    Discard(FwUpdate::DeInitialize());
    TraceSelectLevel(0, nullptr);
  }

  std::string Message() {
    const char16_t* text = nullptr;
    Discard(FwUpdate::GetLastErrorMessage(text));
    return text == nullptr ? "(none)" : Narrow(text);
  }
  std::string LastTrace() {
    auto lines = machine.TraceLines();
    return lines.empty() ? "" : lines.back();
  }
  std::string Version(std::uint32_t area) {
    const char16_t* text = nullptr;
    Discard(FwUpdate::SelectDeviceArea(area));
    EXPECT_EQ(FwUpdate::GetVersionFromSystem(text), kSuccess);
    return text == nullptr ? "(none)" : Narrow(text);
  }
  void ExpectDeviceId(std::uint8_t revision = 0x02) { bmc.Expect(6, 1).Reply(DeviceId(0x4311, revision)); }
};

TEST_F(Fw, UninitialisedModuleRefusesEverything) {
  EXPECT_EQ(FwUpdate::DeInitialize(), kSuccess);
  const char16_t* text = u"";
  const std::pair<Status, std::string> cases[] = {
      {FwUpdate::DeInitialize(), "DeInitialize"},
      {FwUpdate::SetProgressCallback(nullptr), "SetProgressCallback"},
      {FwUpdate::GetLastErrorMessage(text), "GetLastErrorMessage"},
      {FwUpdate::SelectDeviceAddress(0x20), "SelectDeviceAddress"},
      {FwUpdate::SelectDeviceArea(1), "SelectDeviceArea"},
      {FwUpdate::LoadConfigurationFromSystem(), "LoadConfigurationFromSystem"},
      {FwUpdate::GetVersionFromSystem(text), "GetVersionFromSystem"},
      {FwUpdate::IsVersionSupported(u"1.0", {}, isFlag), "IsVersionSupported"},
      {FwUpdate::IsBmcInFwTransferMode(isFlag), "IsBmcInFwTransferMode"},
      {FwUpdate::BmcRefresh(), "BmcRefresh"},
  };
  for (const auto& [status, name] : cases) {
    EXPECT_EQ(status, fw_status::kNotInitialized) << name;
    EXPECT_THAT(machine.TraceLines(), Contains("FwUpdate::" + name + " - FwUpdate not initialized"));
  }
  EXPECT_EQ(text, nullptr);
}

TEST_F(Fw, InitialisationWithoutMemoryOrAnswer) {
  machine.FailPoolAllocation(1);
  EXPECT_EQ(FwUpdate::Initialize(), fw_status::kOutOfMemory);
  EXPECT_EQ(LastTrace(), "FwUpdate::Initialize - Memory allocation failed");
  EXPECT_EQ(FwUpdate::SelectDeviceArea(1), fw_status::kNotInitialized);
  ForgetProgramState();
  machine.files.clear();
  ASSERT_EQ(IpmiLoadProtocol(), ipmi_result::kSuccess);
  bmc.ExpectSilence(6, 1);
  EXPECT_EQ(FwUpdate::Initialize(), fw_status::kNoBmcIdentity);
  EXPECT_EQ(Message(), kNoVersion);
  EXPECT_TRUE(machine.TraceLines().empty());
  EXPECT_EQ(FwUpdate::SelectDeviceArea(1), kSuccess) << "the module can be asked for its message";
}

TEST_F(Fw, VersionOfEachArea) {
  Discard(FwUpdate::SelectDeviceAddress(0x20));
  ExpectDeviceId();
  EXPECT_EQ(FwUpdate::LoadConfigurationFromSystem(), kSuccess);
  EXPECT_EQ(Version(1), "2.45");
  EXPECT_EQ(Version(2), "A.BC");
  EXPECT_EQ(Version(3), "10.03");
  EXPECT_EQ(Version(4), "(none)");
  bmc.Expect(6, 1).Reply({0x20, 0x01, 0x02, 0x45, 0x02});
  EXPECT_EQ(FwUpdate::LoadConfigurationFromSystem(), kSuccess);
  EXPECT_EQ(Version(3), "0.00") << "the auxiliary revision may be left out";
}

TEST_F(Fw, VersionsNeedDeviceThenLoadThenArea) {
  for (int initialisation = 1; initialisation <= 2; ++initialisation) {
    SCOPED_TRACE(initialisation);
    EXPECT_EQ(Message(), "");
    EXPECT_EQ(FwUpdate::LoadConfigurationFromSystem(), fw_status::kNothingSelected);
    EXPECT_EQ(LastTrace(), "FwUpdate::LoadConfigurationFromSystem - No device selected");
    Discard(FwUpdate::SelectDeviceAddress(0x20));
    bmc.ExpectSilence(6, 1);
    EXPECT_EQ(FwUpdate::LoadConfigurationFromSystem(), fw_status::kExchangeFailed);
    EXPECT_EQ(LastTrace(), "CfwUpdate::ReadVersionFromSystem - ProcessMessage failed");
    EXPECT_EQ(Message(), kNoVersion);
    const char16_t* text = u"left over";
    EXPECT_EQ(FwUpdate::GetVersionFromSystem(text), fw_status::kNotLoaded);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(LastTrace(), "FwUpdate::GetVersionFromSystem - COnfiguration not loaded");
    ExpectDeviceId();
    EXPECT_EQ(FwUpdate::LoadConfigurationFromSystem(), kSuccess);
    EXPECT_EQ(FwUpdate::GetVersionFromSystem(text), fw_status::kNothingSelected);
    EXPECT_EQ(LastTrace(), "FwUpdate::GetVersionFromSystem - Device area not selected");
    EXPECT_EQ(Version(1), "2.45");
    EXPECT_EQ(FwUpdate::Initialize(), kSuccess) << "without traffic: the BMC is known";
  }
}

TEST_F(Fw, VersionOfAnotherController) {
  Discard(FwUpdate::SelectDeviceAddress(0xC0));
  bmc.ExpectSend(0, 0xC0, 1, 6, 1).Reply({});
  bmc.ExpectFetch().ReplyBridged(0xC0, 1, 6, 1, DeviceId());
  EXPECT_EQ(FwUpdate::LoadConfigurationFromSystem(), kSuccess);
}

TEST_F(Fw, VersionPatterns) {
  struct Case {
    const char16_t* version;
    std::u16string pattern;
    bool isSupported;
  } const cases[] = {
      {u"1.5", u"01.05", true},        {u"1.5", u"01.05+", true},   {u"1.5", u"01.04", false},
      {u"1.5", u"01.00-01.04", false}, {u"1.5", u"1.5-1.5", true},  {u"1.5x", u"1.5", true},
      {u"1.5", u"1.6+", false},        {u"1.10", u"2.06", true},  // sixteen tenths are one and six
      {u"A.0", u"9.0A", true},         {u"1.5", u"1.0-2.0+", true}, {u"1.5", u"1.6-9.0", false},
  };
  for (const Case& one : cases) {
    EXPECT_EQ(FwUpdate::IsVersionSupported(one.version, std::span(&one.pattern, 1), isFlag), kSuccess);
    EXPECT_EQ(isFlag, one.isSupported) << Narrow(one.version) << " by " << Narrow(one.pattern);
  }
  const std::u16string several[] = {u"1.5", u"1.6"};
  EXPECT_EQ(FwUpdate::IsVersionSupported(u"1.5", several, isFlag), kSuccess);
  EXPECT_TRUE(isFlag) << "a later pattern does not take a match away";
}

TEST_F(Fw, MalformedVersionsAndPatterns) {
  EXPECT_EQ(FwUpdate::IsVersionSupported(u"A", {}, isFlag), fw_status::kInvalidVersion);
  EXPECT_EQ(Message(), "Format of version string \"A\" is invalid.");
  EXPECT_EQ(LastTrace(), "CfwUpdate::IsVersionSupported - Invalid version string");
  EXPECT_EQ(FwUpdate::IsVersionSupported(nullptr, {}, isFlag), fw_status::kInvalidVersion);

  const std::u16string malformed[] = {u"1.0-2", u"1+", u"x", std::u16string(300, u'y')};
  for (const std::u16string& pattern : malformed) {
    const std::u16string patterns[] = {u"1.5", pattern, u"1.6"};
    EXPECT_EQ(FwUpdate::IsVersionSupported(u"1.5", patterns, isFlag), fw_status::kInvalidVersion);
    EXPECT_TRUE(isFlag);
    EXPECT_EQ(Message(), ("Format of version string \"" + Narrow(pattern) + "\" is invalid.").substr(0, 256));
  }
}

TEST_F(Fw, TransferModeIsBit7OfTheRevision) {
  ExpectDeviceId(0x81);
  EXPECT_EQ(FwUpdate::IsBmcInFwTransferMode(isFlag), kSuccess);
  EXPECT_TRUE(isFlag);
  EXPECT_EQ(Message(), kInTransferMode);
  ExpectDeviceId(0x7F);
  EXPECT_EQ(FwUpdate::IsBmcInFwTransferMode(isFlag), kSuccess);
  EXPECT_FALSE(isFlag);
  bmc.ExpectSilence(6, 1);
  isFlag = true;
  EXPECT_EQ(FwUpdate::IsBmcInFwTransferMode(isFlag), fw_status::kExchangeFailed);
  EXPECT_FALSE(isFlag);
}

TEST_F(Fw, OtherTargetsAreLeftAlone) {
  std::u16string message;
  CfwUpdate update(message);
  EXPECT_EQ(update.EnterFwTransferMode(0x2C, "OKAPI"), kSuccess);
  EXPECT_EQ(update.ExitFwTransferMode(0x2C), kSuccess);
  EXPECT_EQ(machine.waitedMicroseconds, 0u);
}

/// What the BMC does in a refresh, one letter for each exchange. Get Device ID: (n)ormal operation,
/// (t)ransfer mode, (b)ooting, with an answer that ends before the revision, (s)ilence. Transfer mode: (k)ey
/// or e(x)it, in capitals when refused. Cold (r)eset.
void ExpectRefresh(ScriptedIpmi& bmc, std::uint16_t product, std::string_view exchanges) {
  const ScriptedIpmi::Bytes key = {'O', 'K', 'A', 'P', 'I'};
  for (char exchange : exchanges) {
    if (exchange == 'n') bmc.Expect(6, 1).Reply(DeviceId(product));
    if (exchange == 't') bmc.Expect(6, 1).Reply(DeviceId(product, 0x82));
    if (exchange == 'b') bmc.Expect(6, 1).Reply({0x20, 0x01, 0x02});
    if (exchange == 's') bmc.ExpectSilence(6, 1);
    if (exchange == 'k') bmc.Expect(8, 0, key).Reply({});
    if (exchange == 'K') bmc.ExpectFailing(8, 0, 0xC1, key);
    if (exchange == 'x') bmc.Expect(8, 4).Reply({});
    if (exchange == 'X') bmc.ExpectFailing(8, 4, 0xFF);
    if (exchange == 'r') bmc.Expect(6, 2);
  }
}

TEST_F(Fw, RefreshByProduct) {
  const std::string alreadyIn = "\nController at address 20  Already in FwTransfer mode..\n";
  const std::string enterFailed = "\nEnter Fw Transfer Mode Failed..\n";
  const std::string exitRefused = "\nExitFwTransferMode:: Error in Process Message Function..\n";
  const std::string exitFailed = "\nExit Firmware Transfer Mode failed..\n";
  const std::string reset = "This operation will take around 50 seconds to complete\n";
  const char* silent = "IsBmcInFwTransferMode - ProcessMessage failed";
  struct Case {
    std::uint16_t product;
    const char* exchanges;  // the version read is the first
    std::string console;
    const char* message;
    const char* failure;  // the trace line of the step that failed
    std::uint64_t seconds;
  } const cases[] = {
      {0x0107, "n nkt txn", "", kInTransferMode, "", 80},
      {0x0107, "n t", alreadyIn, kInTransferMode, "EnterFwTransferMode - BMC is in FW Transfer mode", 0},
      {0x0107, "n nK", enterFailed, "", "EnterFwTransferMode - ProcessMessage failed", 0},
      {0x0107, "n nkn", enterFailed, kNotInTransferMode,
       "EnterFwTransferMode - BMC is not in FW Transfer mode", 0},
      {0x0107, "n nkt n", "", kNotInTransferMode, "ExitFwTransferMode - BMC is not in FW Transfer mode", 0},
      {0x0107, "n nkt tX", exitRefused, kInTransferMode, "ExitFwTransferMode - ProcessMessage failed", 0},
      {0x0107, "n nkt txt", exitFailed, kInTransferMode, "ExitFwTransferMode - BMC is in FW Transfer mode",
       30},
      {0x0107, "n s", "", kNoVersion, silent, 0},
      {0x0107, "n nks", "", kNoVersion, silent, 0},
      {0x0107, "n nkt s", "", kNoVersion, silent, 0},
      {0x0107, "n nkt txs", "", kNoVersion, silent, 30},
      {0x4311, "n r sbtn", reset, "", "", 20},
      {0x4311, "n r tttttttttt", reset, "", "", 50},  // a BMC that stays in transfer mode is back
      // The version read is not checked.
      {0x4311, "s r ssssssssss", reset + "BMC Refresh failure\n", kNoVersion,
       "ResetBmc - ProcessMessage failed", 50},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.exchanges);
    machine.console.clear();
    machine.files.clear();
    machine.flushes = 0;
    machine.waitedMicroseconds = 0;
    EXPECT_EQ(FwUpdate::Initialize(), kSuccess);
    ExpectRefresh(bmc, one.product, one.exchanges);
    const bool isRefreshed = std::string_view(one.failure).empty();
    EXPECT_EQ(FwUpdate::BmcRefresh(), isRefreshed ? kSuccess : fw_status::kExchangeFailed);
    if (isRefreshed)
      EXPECT_THAT(machine.TraceLines(), IsEmpty());
    else
      EXPECT_THAT(machine.TraceLines(), Contains("CfwUpdate::" + std::string(one.failure)));
    EXPECT_EQ(machine.console, "Refreshing BMC...\n" + one.console);
    EXPECT_EQ(Message(), one.message);
    EXPECT_EQ(machine.waitedMicroseconds, one.seconds * 1'000'000);
    EXPECT_EQ(machine.flushes, 1);
  }
}

}  // namespace
}  // namespace varnok
