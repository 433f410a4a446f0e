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

using ::testing::Contains;
using testing::ScriptedIpmi;
using testing::TestFirmware;

constexpr char kInTransferMode[] = "BMC is in FW Transfer Mode. Unable to continue with the operation.";
constexpr char kNotInTransferMode[] =
    "BMC is not in FW Transfer Mode. Unable to continue with the operation.";
constexpr char kNoVersion[] = "Unable to read FW version from the BMC.";
constexpr char kEnterFailed[] = "\nEnter Fw Transfer Mode Failed..\n";

ScriptedIpmi::Bytes DeviceId(std::uint16_t product, std::uint8_t revision = 0x02) {
  return {0x20,
          0x01,
          revision,
          0x45,
          0x02,
          0xBF,
          0x57,
          0x01,
          0x00,
          static_cast<std::uint8_t>(product & 0xFF),
          static_cast<std::uint8_t>(product >> 8),
          0x10,
          0x03,
          0x0A,
          0xBC};
}

/// The program with the first trace level, a BMC that answers, and the module initialised.
struct Fw : ::testing::Test {
  TestFirmware machine;
  ScriptedIpmi bmc{machine};
  bool isFlag = false;

  void SetUp() override {
    const char* arguments[] = {"varnok", "-debug1"};
    TraceSelectLevel(2, arguments);
    for (int i = 0; i < 2; ++i) bmc.Expect(6, 1).Reply(DeviceId(0x4311));
    ASSERT_EQ(FwUpdate::Initialize(), kSuccess);
  }
  void TearDown() override {
    FwUpdate::DeInitialize();
    TraceSelectLevel(0, nullptr);
  }

  std::string Message() {
    const char16_t* text = nullptr;
    FwUpdate::GetLastErrorMessage(text);
    return text == nullptr ? "(none)" : Narrow(text);
  }
  std::string LastTrace() {
    auto lines = machine.TraceLines();
    return lines.empty() ? "" : lines.back();
  }
  void ExpectSilence(std::uint8_t netFunction, std::uint8_t command, ScriptedIpmi::Bytes data = {}) {
    for (int i = 0; i < 11; ++i) bmc.Expect(netFunction, command, data).Lost();
  }
  void ExpectDeviceId(std::uint16_t product, std::uint8_t revision = 0x02) {
    bmc.Expect(6, 1).Reply(DeviceId(product, revision));
  }
};

const ScriptedIpmi::Bytes kKey = {'O', 'K', 'A', 'P', 'I'};

TEST_F(Fw, UninitialisedModuleRefusesEverything) {
  EXPECT_EQ(FwUpdate::DeInitialize(), kSuccess);
  const char16_t* text = u"";
  struct Case {
    Status status;
    const char* name;
  } const cases[] = {
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
  for (const Case& one : cases) {
    EXPECT_EQ(one.status, fw_status::kNotInitialized) << one.name;
    EXPECT_THAT(machine.TraceLines(),
                Contains(std::string("FwUpdate::") + one.name + " - FwUpdate not initialized"));
  }
  EXPECT_EQ(text, nullptr);
}

TEST_F(Fw, InitialisationWithoutMemory) {
  machine.FailPoolAllocation(1);
  EXPECT_EQ(FwUpdate::Initialize(), fw_status::kOutOfMemory);
  EXPECT_EQ(LastTrace(), "FwUpdate::Initialize - Memory allocation failed");
  EXPECT_EQ(FwUpdate::SelectDeviceArea(1), fw_status::kNotInitialized);
}

TEST_F(Fw, InitialisationWithoutAnswer) {
  IpmiReset();
  IpmiLoadProtocol();
  ExpectSilence(6, 1);
  EXPECT_EQ(FwUpdate::Initialize(), fw_status::kNoBmcIdentity);
  EXPECT_EQ(Message(), kNoVersion);
  EXPECT_TRUE(machine.TraceLines().empty());
  EXPECT_EQ(FwUpdate::SelectDeviceArea(1), kSuccess) << "the module can be asked for its message";
}

TEST_F(Fw, VersionOfEachArea) {
  FwUpdate::SelectDeviceAddress(0x20);
  ExpectDeviceId(0x4311);
  EXPECT_EQ(FwUpdate::LoadConfigurationFromSystem(), kSuccess);
  const char16_t* expected[] = {u"2.45", u"A.BC", u"10.03"};
  const char16_t* text = nullptr;
  for (std::uint32_t area = 1; area <= 3; ++area) {
    FwUpdate::SelectDeviceArea(area);
    ASSERT_EQ(FwUpdate::GetVersionFromSystem(text), kSuccess);
    EXPECT_EQ(std::u16string(text), expected[area - 1]);
  }
  FwUpdate::SelectDeviceArea(4);
  EXPECT_EQ(FwUpdate::GetVersionFromSystem(text), kSuccess);
  EXPECT_EQ(text, nullptr);
}

TEST_F(Fw, AnswerWithoutAuxiliaryRevision) {
  FwUpdate::SelectDeviceAddress(0x20);
  FwUpdate::SelectDeviceArea(3);
  bmc.Expect(6, 1).Reply({0x20, 0x01, 0x02, 0x45, 0x02});
  EXPECT_EQ(FwUpdate::LoadConfigurationFromSystem(), kSuccess);
  const char16_t* text = nullptr;
  EXPECT_EQ(FwUpdate::GetVersionFromSystem(text), kSuccess);
  EXPECT_EQ(std::u16string(text), u"0.00");
}

TEST_F(Fw, AnswerThatEndsBeforeTheRevisionIsNoAnswer) {
  FwUpdate::SelectDeviceAddress(0x20);
  for (const ScriptedIpmi::Bytes& answer : {ScriptedIpmi::Bytes{}, ScriptedIpmi::Bytes{0x20, 0x01, 0x82}}) {
    bmc.Expect(6, 1).Reply(answer);
    EXPECT_EQ(FwUpdate::IsBmcInFwTransferMode(isFlag), fw_status::kExchangeFailed);
    EXPECT_EQ(Message(), kNoVersion);
    bmc.Expect(6, 1).Reply(answer);
    EXPECT_EQ(FwUpdate::LoadConfigurationFromSystem(), fw_status::kExchangeFailed);
  }
}

TEST_F(Fw, VersionsNeedDeviceThenLoadThenArea) {
  EXPECT_EQ(FwUpdate::LoadConfigurationFromSystem(), fw_status::kNothingSelected);
  EXPECT_EQ(LastTrace(), "FwUpdate::LoadConfigurationFromSystem - No device selected");
  FwUpdate::SelectDeviceAddress(0x20);
  ExpectSilence(6, 1);
  EXPECT_EQ(FwUpdate::LoadConfigurationFromSystem(), fw_status::kExchangeFailed);
  EXPECT_EQ(LastTrace(), "CfwUpdate::ReadVersionFromSystem - ProcessMessage failed");
  EXPECT_EQ(Message(), kNoVersion);
  const char16_t* text = nullptr;
  EXPECT_EQ(FwUpdate::GetVersionFromSystem(text), fw_status::kNotLoaded);
  EXPECT_EQ(LastTrace(), "FwUpdate::GetVersionFromSystem - COnfiguration not loaded");
  ExpectDeviceId(0x4311);
  EXPECT_EQ(FwUpdate::LoadConfigurationFromSystem(), kSuccess);
  EXPECT_EQ(FwUpdate::GetVersionFromSystem(text), fw_status::kNothingSelected);
  EXPECT_EQ(LastTrace(), "FwUpdate::GetVersionFromSystem - Device area not selected");
}

TEST_F(Fw, SecondInitialisationForgetsSelectionVersionsAndMessage) {
  FwUpdate::SelectDeviceAddress(0xC0);
  FwUpdate::SelectDeviceArea(1);
  FwUpdate::IsVersionSupported(u"A", {}, isFlag);
  EXPECT_EQ(FwUpdate::Initialize(), kSuccess) << "without traffic: the BMC is known";
  EXPECT_EQ(Message(), "");
  EXPECT_EQ(FwUpdate::LoadConfigurationFromSystem(), fw_status::kNothingSelected);
  FwUpdate::SelectDeviceAddress(0x20);
  ExpectDeviceId(0x4311);
  EXPECT_EQ(FwUpdate::LoadConfigurationFromSystem(), kSuccess);
  const char16_t* text = u"left over";
  EXPECT_EQ(FwUpdate::GetVersionFromSystem(text), fw_status::kNothingSelected);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(FwUpdate::Initialize(), kSuccess);
  FwUpdate::SelectDeviceArea(1);
  EXPECT_EQ(FwUpdate::GetVersionFromSystem(text), fw_status::kNotLoaded);
}

TEST_F(Fw, VersionOfAnotherController) {
  FwUpdate::SelectDeviceAddress(0xC0);
  bmc.ExpectSend(0, 0xC0, 1, 6, 1).Reply({});
  bmc.ExpectFetch().ReplyBridged(0xC0, 1, 6, 1, DeviceId(0x0001));
  EXPECT_EQ(FwUpdate::LoadConfigurationFromSystem(), kSuccess);
}

TEST_F(Fw, VersionPatterns) {
  struct Case {
    const char16_t* version;
    std::u16string pattern;
    bool isSupported;
  } const cases[] = {
      {u"1.5", u"01.05", true},        {u"1.5", u"01.04+", true},   {u"1.5", u"01.04", false},
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
  ExpectDeviceId(0x4311, 0x81);
  EXPECT_EQ(FwUpdate::IsBmcInFwTransferMode(isFlag), kSuccess);
  EXPECT_TRUE(isFlag);
  EXPECT_EQ(Message(), kInTransferMode);
  ExpectDeviceId(0x4311, 0x7F);
  EXPECT_EQ(FwUpdate::IsBmcInFwTransferMode(isFlag), kSuccess);
  EXPECT_FALSE(isFlag);
  ExpectSilence(6, 1);
  isFlag = true;
  EXPECT_EQ(FwUpdate::IsBmcInFwTransferMode(isFlag), fw_status::kExchangeFailed);
  EXPECT_FALSE(isFlag);
  EXPECT_EQ(Message(), kNoVersion);
  EXPECT_EQ(LastTrace(), "CfwUpdate::IsBmcInFwTransferMode - ProcessMessage failed");
}

/// The refresh of the product that passes through transfer mode.
struct FwTransferRefresh : Fw {
  void SetUp() override {
    Fw::SetUp();
    ExpectDeviceId(0x0107);  // the version read that every refresh begins with
  }
  /// `failure` is the trace line that names the step that failed, empty when none did.
  void Refresh(Status status, const std::string& console, const std::string& message,
               const std::string& failure) {
    EXPECT_EQ(FwUpdate::BmcRefresh(), status);
    std::vector<std::string> lines = machine.TraceLines();
    EXPECT_EQ(lines.size() < 2 ? "" : lines[lines.size() - 2], failure);
    EXPECT_EQ(machine.console, "Refreshing BMC...\n" + console);
    EXPECT_EQ(Message(), message);
    EXPECT_EQ(machine.flushes, 1);
  }
};

TEST_F(FwTransferRefresh, ThroughTransferMode) {
  ExpectDeviceId(0x0107);
  bmc.Expect(8, 0, kKey).Reply({});
  ExpectDeviceId(0x0107, 0x82);
  ExpectDeviceId(0x0107, 0x82);
  bmc.Expect(8, 4).Reply({});
  ExpectDeviceId(0x0107);
  Refresh(kSuccess, "", kInTransferMode, "");
  EXPECT_EQ(machine.waitedMicroseconds, 80'000'000u);
}

TEST_F(FwTransferRefresh, AlreadyInTransferMode) {
  ExpectDeviceId(0x0107, 0x82);
  Refresh(fw_status::kExchangeFailed, "\nController at address 20  Already in FwTransfer mode..\n",
          kInTransferMode, "CfwUpdate::EnterFwTransferMode - BMC is in FW Transfer mode");
}

TEST_F(FwTransferRefresh, KeyRefused) {
  ExpectDeviceId(0x0107);
  for (int i = 0; i < 11; ++i) bmc.Expect(8, 0, kKey).Reply({}, 0xC1);
  Refresh(fw_status::kExchangeFailed, kEnterFailed, "",
          "CfwUpdate::EnterFwTransferMode - ProcessMessage failed");
}

TEST_F(FwTransferRefresh, KeyWithoutEffect) {
  ExpectDeviceId(0x0107);
  bmc.Expect(8, 0, kKey).Reply({});
  ExpectDeviceId(0x0107);
  Refresh(fw_status::kExchangeFailed, kEnterFailed, kNotInTransferMode,
          "CfwUpdate::EnterFwTransferMode - BMC is not in FW Transfer mode");
}

TEST_F(FwTransferRefresh, TransferModeLostBeforeTheExit) {
  ExpectDeviceId(0x0107);
  bmc.Expect(8, 0, kKey).Reply({});
  ExpectDeviceId(0x0107, 0x82);
  ExpectDeviceId(0x0107);
  Refresh(fw_status::kExchangeFailed, "", kNotInTransferMode,
          "CfwUpdate::ExitFwTransferMode - BMC is not in FW Transfer mode");
}

TEST_F(FwTransferRefresh, ExitRefused) {
  ExpectDeviceId(0x0107);
  bmc.Expect(8, 0, kKey).Reply({});
  ExpectDeviceId(0x0107, 0x82);
  ExpectDeviceId(0x0107, 0x82);
  for (int i = 0; i < 11; ++i) bmc.Expect(8, 4).Reply({}, 0xFF);
  Refresh(fw_status::kExchangeFailed, "\nExitFwTransferMode:: Error in Process Message Function..\n",
          kInTransferMode, "CfwUpdate::ExitFwTransferMode - ProcessMessage failed");
  EXPECT_EQ(machine.waitedMicroseconds, 0u);
}

TEST_F(FwTransferRefresh, ExitWithoutEffect) {
  ExpectDeviceId(0x0107);
  bmc.Expect(8, 0, kKey).Reply({});
  ExpectDeviceId(0x0107, 0x82);
  ExpectDeviceId(0x0107, 0x82);
  bmc.Expect(8, 4).Reply({});
  ExpectDeviceId(0x0107, 0x82);
  Refresh(fw_status::kExchangeFailed, "\nExit Firmware Transfer Mode failed..\n", kInTransferMode,
          "CfwUpdate::ExitFwTransferMode - BMC is in FW Transfer mode");
}

TEST_F(FwTransferRefresh, BmcFallsSilentBeforeAnyOfItsFourTests) {
  for (int answered = 0; answered < 4; ++answered) {
    machine.console.clear();
    machine.flushes = 0;
    if (answered > 0) {
      ExpectDeviceId(0x0107);  // this refresh's version read
      ExpectDeviceId(0x0107);
      bmc.Expect(8, 0, kKey).Reply({});
    }
    if (answered > 1) ExpectDeviceId(0x0107, 0x82);
    if (answered > 2) {
      ExpectDeviceId(0x0107, 0x82);
      bmc.Expect(8, 4).Reply({});
    }
    ExpectSilence(6, 1);
    Refresh(fw_status::kExchangeFailed, "", kNoVersion,
            "CfwUpdate::IsBmcInFwTransferMode - ProcessMessage failed");
  }
}

TEST_F(Fw, OtherTargetsAreLeftAlone) {
  std::u16string message;
  CfwUpdate update(message);
  EXPECT_EQ(update.EnterFwTransferMode(0x2C, "OKAPI"), kSuccess);
  EXPECT_EQ(update.ExitFwTransferMode(0x2C), kSuccess);
  EXPECT_EQ(machine.waitedMicroseconds, 0u);
}

constexpr char kResetText[] = "Refreshing BMC...\nThis operation will take around 50 seconds to complete\n";

TEST_F(Fw, RefreshByColdResetPollsUntilTheBmcIsBack) {
  ExpectDeviceId(0x4311);
  bmc.Expect(6, 2);
  ExpectSilence(6, 1);
  bmc.Expect(6, 1).Reply({});  // booting: it answers, but with nothing yet
  ExpectDeviceId(0x4311, 0x82);
  ExpectDeviceId(0x4311);
  EXPECT_EQ(FwUpdate::BmcRefresh(), kSuccess);
  EXPECT_EQ(machine.console, kResetText);
  EXPECT_EQ(machine.waitedMicroseconds, 4 * 5'000'000u);
}

TEST_F(Fw, ColdResetOfABmcThatNeverComesBack) {
  ExpectSilence(6, 1);  // the version read is not checked
  bmc.Expect(6, 2);
  for (int i = 0; i < 10; ++i) ExpectSilence(6, 1);
  EXPECT_EQ(FwUpdate::BmcRefresh(), fw_status::kExchangeFailed);
  EXPECT_EQ(machine.console, std::string(kResetText) + "BMC Refresh failure\n");
  EXPECT_EQ(LastTrace(), "CfwUpdate::ResetBmc - ProcessMessage failed");
  EXPECT_EQ(machine.waitedMicroseconds, 10 * 5'000'000u);
}

TEST_F(Fw, ColdResetThatStaysInTransferModeCounts) {
  ExpectDeviceId(0x4311);
  bmc.Expect(6, 2);
  for (int i = 0; i < 10; ++i) ExpectDeviceId(0x4311, 0x82);
  EXPECT_EQ(FwUpdate::BmcRefresh(), kSuccess);
  EXPECT_EQ(machine.console, kResetText);
}

}  // namespace
}  // namespace varnok
