// What probes ask the BMC, and what they make of its answers.
#include "cfg/cfg_main.h"
#include "cfg/probe.h"
#include "fru/fru_data.h"
#include "platform/fw_update.h"
#include "tests/cfg/probe_script_test.h"

namespace varnok {
namespace {

using testing::ScriptedIpmi;
using ProbeQuery = testing::ProbeScript;
using Bytes = ScriptedIpmi::Bytes;

constexpr std::uint8_t kApp = 0x06;
constexpr std::uint8_t kOem = 0x30;
constexpr std::uint8_t kSend = 0x34;
constexpr std::uint8_t kFetch = 0x33;
constexpr std::uint8_t kDeviceId = 0x01;
/// The transport's "eleven answers with a completion code" as a status: no code of the engine's.
const std::string kRefused = "FFFFFE05";

Bytes Identity(std::uint8_t low, std::uint8_t high) {
  return {0x20, 0x81, 0x01, 0x05, 0x02, 0xBF, 0x40, 0xE2, 0x01, low, high, 0x01, 0x12, 0x02, 0x07};
}
Bytes Text(const std::string& text) {
  return Bytes(text.begin(), text.end());
}

TEST_F(ProbeQuery, FoundSetsOneTagOrTheOther) {
  EXPECT_EQ(Run("PROBE HWID x\nFOUND A B\nPROBE HWID x\nFOUND C\nPROBE HWID x"), kSuccess);
  EXPECT_FALSE(parser.IsTagSet("A"));
  EXPECT_TRUE(parser.IsTagSet("B"));
  EXPECT_EQ(parser.TagCount(), 1u);
  ScriptedIpmi bmc(machine);
  bmc.Expect(kOem, 0x94).Reply({3}).Expect(kOem, 0x94).Reply({4}).Expect(kOem, 0x94).Reply({3});
  EXPECT_EQ(Run("SET a\nIFSET a\nPROBE BASEBOARD_REVID 3\nFOUND A B\nPROBE BASEBOARD_REVID 3\nFOUND C D\n"
                "PROBE BASEBOARD_REVID 3\nENDIF"),
            kSuccess);
  EXPECT_TRUE(parser.IsTagSet("A"));
  EXPECT_TRUE(parser.IsTagSet("D"));
  EXPECT_EQ(parser.TagCount(), 2u);
}

TEST_F(ProbeQuery, OneRequestProbes) {
  struct {
    const char* probe;
    std::uint8_t netFunction, command;
    Bytes data, yes, no;
    const char* message;  ///< of a query that fails
  } const cases[] = {
      {"BASEBOARD_PRODID 2E", kOem, 0x93, {}, {0x2E}, {0x2F}, ""},
      {"BASEBOARD_REVID 3", kOem, 0x94, {}, {0x03}, {0x04}, ""},
      {"FAN_SIGNAL 5 0", kOem, 0x14, {0x0F, 5, 0}, {0x01}, {0x02}, " Invalid value returned by the BMC.\n"},
      {"FAN_SIGNAL 5 1", kOem, 0x14, {0x0F, 5, 0}, {0x02}, {0x01}, " Invalid value returned by the BMC.\n"},
      {"DISCRETE_SENSOR 60 81 F 80 2", 0x04, 0x2D, {0x60}, {0, 0xC0, 0x82, 0x12}, {0, 0xC0, 0x83, 0x12}, ""},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.probe);
    ScriptedIpmi bmc(machine);
    bmc.Expect(each.netFunction, each.command, each.data).Reply(each.yes);
    EXPECT_EQ(Ask(each.probe), "yes");
    bmc.Expect(each.netFunction, each.command, each.data).Reply(each.no);
    EXPECT_EQ(Ask(each.probe), "no");
    Refuse(bmc, each.netFunction, each.command, each.data, 0xC1);
    EXPECT_EQ(Ask(each.probe), kRefused + each.message);
    bmc.ExpectRefused(each.netFunction, each.command, each.data);
    for (int i = 0; i < 3; ++i) bmc.ExpectRefused(each.netFunction, each.command, each.data);
    EXPECT_EQ(Ask(each.probe), std::string("FFFFFE09") + each.message);
  }
}

TEST_F(ProbeQuery, AnswersThatAreNoValues) {
  ScriptedIpmi bmc(machine);
  bmc.Expect(kOem, 0x93).Reply({0});
  EXPECT_EQ(Ask("BASEBOARD_PRODID 0"), "C000000000090026 Invalid Base board product ID '0' detected.");
  bmc.Expect(kOem, 0x94).Reply({0});
  EXPECT_EQ(Ask("BASEBOARD_REVID 0"), "C00000000009000C");
  bmc.Expect(kOem, 0x94).Reply({});
  EXPECT_EQ(Ask("BASEBOARD_REVID 3"), "C00000000009000C") << "an empty answer";
  bmc.Expect(kOem, 0x14, {0x0F, 1, 0}).Reply({0xFF});
  EXPECT_EQ(Ask("FAN_SIGNAL 1 2"), "C00000000009000C");
  for (std::uint8_t flags : Bytes{0x80, 0xE0}) {
    bmc.Expect(0x04, 0x2D, {0x60}).Reply({0, flags, 0x80, 0});
    EXPECT_EQ(Ask("DISCRETE_SENSOR 60 80 0 80 0"), "no") << "not scanned, or not available";
  }
  bmc.Expect(0x04, 0x2D, {0x60}).Reply({0, 0xC0, 0x80});
  EXPECT_EQ(Ask("DISCRETE_SENSOR 60 80 80 80 80"), "no") << "the second state byte is missing";
}

TEST_F(ProbeQuery, KeyAndValue) {
  ScriptedIpmi bmc(machine);
  auto ask = [&](const Bytes& answer) {
    bmc.Expect(0x32, 0x10, Text("Region")).Reply(answer);
    return Ask("BMCCONFIG Region Europe");
  };
  EXPECT_EQ(ask(Text("EUROPE")), "yes");
  EXPECT_EQ(ask(Text("eur")), "yes") << "compared over the answer's length";
  EXPECT_EQ(ask({}), "yes");
  EXPECT_EQ(ask(Text("Europes")), "no");
  EXPECT_EQ(ask(Text("Asia")), "no");
  EXPECT_EQ(ask({'E', 'u', 'r', 'o', 'p', 'e', 0, 0xFF}), "yes") << "padded behind its end";
  EXPECT_EQ(ask({'E', 'u', 'r', 0}), "no");
  Refuse(bmc, 0x32, 0x10, Text("Region"), 0xCB);
  EXPECT_EQ(Ask("BMCCONFIG Region Europe"), "no");
  bmc.Expect(0x32, 0x10, Text("ABCDEFGHIJKL")).Reply(Text("x"));
  EXPECT_EQ(Ask("BMCCONFIG ABCDEFGHIJKL x"), "yes");
  EXPECT_EQ(
      Ask("BMCCONFIG ABCDEFGHIJKLM x"),
      "C00000000009000C The probe key's 'ABCDEFGHIJKLM' length (13) is not with the range of (0 - 12).");
  EXPECT_EQ(Ask("BMCCONFIG \"\" x"),
            "C00000000009000C The probe key's '' length (0) is not with the range of (0 - 12).");
  EXPECT_EQ(Ask("BMCCONFIG Key \"\""), "C00000000009000C The probe value's length (3) is not valid.");
  ASSERT_EQ(Load("PROBE HWID x"), kSuccess);
  bool isFound = true;
  EXPECT_EQ(static_cast<CCfgProbe&>(*parser.Commands()[0]).ProbeKeyValue(nullptr, "x", isFound),
            0xC00000000009000C);
  EXPECT_EQ(Message(), "Unrecoverable internal error: Probe key/value input is invalid.");
}

TEST_F(ProbeQuery, DeviceOnAPrivateBus) {
  ScriptedIpmi bmc(machine);
  const Bytes data = {0x03, 0xA0, 0x00};
  Refuse(bmc, kApp, 0x52, data, 0x83);
  bmc.Expect(kApp, 0x52, data).Reply({});
  EXPECT_EQ(Ask("PING 03 A0"), "yes") << "a NAK is asked again";
  for (int i = 0; i < 10; ++i) Refuse(bmc, kApp, 0x52, data, 0x83);
  EXPECT_EQ(Ask("PING 03 A0"), "no");
  Refuse(bmc, kApp, 0x52, data, 0x81);
  EXPECT_EQ(Ask("PING 03 A0"), "no") << "any other code is an answer";
  for (int i = 0; i < 4; ++i) bmc.ExpectRefused(kApp, 0x52, data);
  EXPECT_EQ(Ask("PING 03 A0"), "no");
}

TEST_F(ProbeQuery, BoardFamilies) {
  ScriptedIpmi bmc(machine);
  auto ask = [&](const char* probe, std::uint8_t netFunction, std::uint8_t command, const Bytes& data,
                 const Bytes& answer) {
    bmc.Expect(netFunction, command, data).Reply(answer);
    return Ask(probe);
  };
  const Bytes k410v = {0x15, 0xD0, 0x00}, lan = {0x03, 0xC3, 0x00, 0x00};
  EXPECT_EQ(ask("K410V_SYS", kApp, 0x52, k410v, {}), "yes") << "nothing was asked to be read";
  EXPECT_EQ(ask("K410V_SYS", kApp, 0x52, k410v, {1, 1, 0}), "yes");
  EXPECT_EQ(ask("K410V_SYS", kApp, 0x52, k410v, {0, 0, 1}), "no");
  EXPECT_EQ(ask("QRX_TYPE", 0x0C, 0x02, lan, {0x11, 0xCC, 0x01}), "yes");
  EXPECT_EQ(ask("QRX_TYPE", 0x0C, 0x02, lan, {0x11, 0x00, 0xCC}), "no");
  Refuse(bmc, kApp, 0x52, k410v, 0x83);
  EXPECT_EQ(Ask("K410V_SYS"), "no");
  Refuse(bmc, 0x0C, 0x02, lan, 0x80);
  EXPECT_EQ(Ask("QRX_TYPE"), "no");
}

TEST_F(ProbeQuery, BmcTypeIsTheOneReadAtTheStart) {
  for (auto [product, platform] : {std::pair{0x13, u"BMC_KALVOTE"}, {0x11, u""}}) {
    ScriptedIpmi bmc(machine);
    for (int i = 0; i < 2; ++i)
      bmc.Expect(kApp, kDeviceId).Reply(Identity(static_cast<std::uint8_t>(product), 0x43));
    ASSERT_EQ(CfgMain::Initialize(), kSuccess);
    CCfgCommand::Callbacks().display = DisplayText;
    EXPECT_EQ(Ask("BMC_TYPE"), "yes");
    EXPECT_EQ(parser.TargetPlatformInfo(), platform);
  }
  ScriptedIpmi bmc(machine);
  Refuse(bmc, kApp, kDeviceId, {}, 0xC1);
  EXPECT_NE(CfgMain::Initialize(), kSuccess);
  EXPECT_EQ(Ask("BMC_TYPE"), "no");
}

TEST_F(ProbeQuery, FirmwareVersion) {
  ScriptedIpmi bmc(machine);
  for (int i = 0; i < 2; ++i) bmc.Expect(kApp, kDeviceId).Reply(Identity(0x11, 0x43));
  ASSERT_EQ(FwUpdate::Initialize(), kSuccess);
  auto ask = [&](const std::string& probe) {
    bmc.Expect(kApp, kDeviceId).Reply(Identity(0x11, 0x43));
    return Ask(probe);
  };
  EXPECT_EQ(ask("BMCVER 01.00-01.04 01.05"), "yes");
  EXPECT_EQ(ask("BMCVER 01.06+"), "no");
  EXPECT_EQ(ask("BMCVER boot 01.12"), "yes");
  EXPECT_EQ(ask("HSCVER 01.05"), "yes") << "asks the BMC";
  EXPECT_EQ(ask("BMCVER 01.05 x"), "C0000000000A000C Format of version string \"x\" is invalid.");
  Refuse(bmc, kApp, kDeviceId, {}, 0xC1);
  EXPECT_EQ(Ask("BMCVER 01.05"), "C0000000000A0019 Unable to read FW version from the BMC.");
  FwUpdate::DeInitialize();
  EXPECT_EQ(Ask("BMCVER 01.05"), "C0000000000A0008");
}

TEST_F(ProbeQuery, ControllerThatTheTransportReaches) {
  ScriptedIpmi bmc(machine);
  bmc.Expect(kApp, kDeviceId).Reply(Identity(0x11, 0x43));
  EXPECT_EQ(Ask("DEVICE_ID 20 0"), "yes");
  bmc.Expect(kApp, kDeviceId).Reply(Identity(0x11, 0x43));
  EXPECT_EQ(Ask("DEVICE_ID 20 6 4311"), "yes");
  bmc.Expect(kApp, kDeviceId).Reply(Identity(0x11, 0x43));
  EXPECT_EQ(Ask("DEVICE_ID 20 0 14311"), "no") << "a product ID of 32 bits";
  Refuse(bmc, kApp, kDeviceId, {}, 0xC1);
  EXPECT_EQ(Ask("DEVICE_ID 20 0"), "no");
  bmc.ExpectSend(6, 0x2C, 1, kApp, kDeviceId).Reply({});
  bmc.ExpectFetch().ReplyBridged(0x2C, 1, kApp, kDeviceId, Identity(0x01, 0x0B));
  EXPECT_EQ(Ask("DEVICE_ID 2C 0 B01"), "yes") << "on the transport's own channel";
}

TEST_F(ProbeQuery, ControllerBehindTheProbesOwnBridge) {
  ScriptedIpmi bmc(machine);
  // One BMC that shows everything: a NAK, an empty queue, a busy fetch, a stale and a short answer.
  Refuse(bmc, kApp, kSend, {3, 0x30, 0x18, 0xB8, 0x20, 0x06, 0x01, 0xD9}, 0x83);
  bmc.ExpectSend(3, 0x30, 1, kApp, kDeviceId).Reply({});
  Refuse(bmc, kApp, kFetch, {}, 0x80);
  bmc.ExpectSend(3, 0x30, 1, kApp, kDeviceId).Reply({});
  Refuse(bmc, kApp, kFetch, {}, 0x83);
  bmc.ExpectFetch().ReplyBridged(0x30, 9, kApp, kDeviceId, Identity(0xFF, 0xFF));
  bmc.ExpectFetch().Reply({0x03, 0x1C, 0x00, 0x30, 0x04});
  bmc.ExpectFetch().ReplyBridged(0x30, 1, kApp, kDeviceId, Identity(0x34, 0x12));
  EXPECT_EQ(Ask("DEVICE_ID 30 3 1234"), "yes");
  // The bridged controller's own completion code.
  bmc.ExpectSend(3, 0x30, 2, kApp, kDeviceId).Reply({});
  bmc.ExpectFetch().ReplyBridged(0x30, 2, kApp, kDeviceId, {}, 0xC1);
  EXPECT_EQ(Ask("DEVICE_ID 30 3"), "no");
  // A known controller on another channel is bridged as well; a code that is no NAK ends it.
  Refuse(bmc, kApp, kSend, {1, 0xC0, 0x18, 0x28, 0x20, 0x0E, 0x01, 0xD1}, 0xCC);
  EXPECT_EQ(Ask("DEVICE_ID C0 1"), "no");
  bmc.ExpectSend(3, 0x30, 4, kApp, kDeviceId).Reply({});
  Refuse(bmc, kApp, kFetch, {}, 0xC1);
  EXPECT_EQ(Ask("DEVICE_ID 30 3"), "no");
}

TEST_F(ProbeQuery, BridgeGivesUp) {
  ScriptedIpmi bmc(machine);
  ASSERT_EQ(Load("PROBE HWID x"), kSuccess);
  auto& probe = static_cast<CCfgProbe&>(*parser.Commands()[0]);
  IpmiMessage request, response;
  request.netFunction = kApp;
  request.command = kDeviceId;
  for (int i = 0; i < 50; ++i) {
    bmc.ExpectSend(3, 0x30, 1, kApp, kDeviceId).Reply({});
    Refuse(bmc, kApp, kFetch, {}, 0x80);
  }
  EXPECT_EQ(probe.ProcessSendMessage(request, response, 3, 0x30), 0xC000000000090004);
  bmc.ExpectSend(3, 0x30, 2, kApp, kDeviceId).Reply({});
  for (int i = 0; i < 256; ++i) bmc.ExpectFetch().ReplyBridged(0x30, 1, kApp, kDeviceId, {});
  EXPECT_EQ(probe.ProcessSendMessage(request, response, 3, 0x30), 0xFFFFFE08) << "answers of others for ever";
  request.dataLength = 57;
  EXPECT_EQ(probe.ProcessSendMessage(request, response, 3, 0x30), 0xC00000000009000C);
}

TEST_F(ProbeQuery, BridgedSequenceIsSharedAndRunsTo63) {
  ScriptedIpmi bmc(machine);
  std::string script;
  for (std::uint8_t i = 0; i < 64; ++i) {
    auto sequence = static_cast<std::uint8_t>(i % 63 + 1);
    bmc.ExpectSend(3, 0x30, sequence, kApp, kDeviceId).Reply({});
    bmc.ExpectFetch().ReplyBridged(0x30, sequence, kApp, kDeviceId, Identity(1, 0));
    script += "PROBE DEVICE_ID 30 3\n";
  }
  EXPECT_EQ(Run(script), kSuccess);
}

TEST_F(ProbeQuery, FruHeader) {
  ASSERT_EQ(FruData::Initialize(), kSuccess);
  ScriptedIpmi bmc(machine);
  const Bytes header = {8, 0x01, 0, 0, 0, 0, 0, 0, 0xFF};
  bmc.Expect(0x0A, 0x11, {0x07, 0x00, 0x00, 0x08}).Reply(header);
  EXPECT_EQ(Ask("IMBDEVICE 7"), "yes");
  Refuse(bmc, 0x0A, 0x11, {0x07, 0x00, 0x00, 0x08}, 0xCB);
  EXPECT_EQ(Ask("IMBDEVICE 7"), "no");
  const char16_t* text = nullptr;
  FruData::GetLastErrorMessage(text);
  EXPECT_TRUE(text == nullptr || *text == 0) << "no message for a later failure";
  FruData::Reset();
}

TEST_F(ProbeQuery, FruFieldNeedsAnArea) {
  ExpectStopped("PROBE FRUFIELD PN abc\nFRUNAME SYSTEM\nFRUAREA Board", 0xC000000000090017,
                "Select an area before performing the probe operation.");
}

}  // namespace
}  // namespace varnok
