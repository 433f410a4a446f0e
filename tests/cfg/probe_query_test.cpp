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

struct Query {
  std::uint8_t netFunction, command;
  Bytes data;
};
Bytes Identity(std::uint8_t low, std::uint8_t high) {
  return {0x20, 0x81, 0x01, 0x05, 0x02, 0xBF, 0x40, 0xE2, 0x01, low, high, 0x01, 0x12, 0x02, 0x07};
}
Bytes Text(const std::string& text) {
  return Bytes(text.begin(), text.end());
}

TEST_F(ProbeQuery, FoundSetsOneTagOrTheOther) {
  ScriptedIpmi bmc(machine);
  for (std::uint8_t revision : Bytes{3, 4, 3, 3}) bmc.Expect(kOem, 0x94).Reply({revision});
  EXPECT_EQ(Run("SET a\nIFSET a\nPROBE BASEBOARD_REVID 3\nFOUND A B\nPROBE BASEBOARD_REVID 3\nFOUND C D\n"
                "PROBE BASEBOARD_REVID 3\nPROBE BASEBOARD_REVID 3\nFOUND E\nENDIF"),
            kSuccess);
  EXPECT_EQ(Tags(), "[a D E]");
}

TEST_F(ProbeQuery, OneRequest) {
  const Bytes sound = {8, 1, 0, 0, 0, 0, 0, 0, 0xFF}, damaged = {8, 1, 0, 0, 0, 0, 0, 0, 0xFE};
  ScriptedIpmi bmc(machine);
  ASSERT_EQ(FruData::Initialize(), kSuccess);
  struct {
    const char* probe;
    Query query;
    Bytes yes, no;
    std::string failure;  ///< "no", or the message behind the transport's result as the status
  } const cases[] = {
      {"BASEBOARD_PRODID 2E", {kOem, 0x93, {}}, {0x2E}, {0x2F}, ""},
      {"BASEBOARD_REVID 3", {kOem, 0x94, {}}, {3}, {4}, ""},
      {"FAN_SIGNAL 5 0", {kOem, 0x14, {15, 5, 0}}, {1}, {2}, " Invalid value returned by the BMC.\n"},
      {"FAN_SIGNAL 5 1", {kOem, 0x14, {15, 5, 0}}, {2}, {1}, " Invalid value returned by the BMC.\n"},
      {"DISCRETE_SENSOR 60 81 F 80 2", {4, 0x2D, {0x60}}, {0, 0xC0, 0x82, 0x12}, {0, 0xC0, 0x83, 0x12}, ""},
      {"BMCCONFIG Region EU", {0x32, 0x10, Text("Region")}, Text("eu"), Text("us"), "no"},
      {"K410V_SYS", {kApp, 0x52, {0x15, 0xD0, 0}}, {1, 1, 0}, {0, 0, 1}, "no"},
      {"QRX_TYPE", {0x0C, 0x02, {3, 0xC3, 0, 0}}, {0x11, 0xCC, 0x01}, {0x11, 0x00, 0xCC}, "no"},
      {"DEVICE_ID 20 6 4311", {kApp, kDeviceId, {}}, Identity(0x11, 0x43), Identity(0x43, 0x11), "no"},
      {"IMBDEVICE 7", {0x0A, 0x11, {7, 0, 0, 8}}, sound, damaged, "no"},
  };
  for (const auto& [probe, query, yes, no, failure] : cases) {
    SCOPED_TRACE(probe);
    bmc.Expect(query.netFunction, query.command, query.data).Reply(yes);
    EXPECT_EQ(Ask(probe), "yes");
    bmc.Expect(query.netFunction, query.command, query.data).Reply(no);
    EXPECT_EQ(Ask(probe), "no");
    bmc.ExpectFailing(query.netFunction, query.command, 0x83, query.data);
    EXPECT_EQ(Ask(probe), failure == "no" ? failure : "FFFFFE05" + failure);
    for (int i = 0; i < 4; ++i) bmc.ExpectRefused(query.netFunction, query.command, query.data);
    EXPECT_EQ(Ask(probe), failure == "no" ? failure : "FFFFFE09" + failure);
  }
  const char16_t* text = nullptr;
  Discard(FruData::GetLastErrorMessage(text));
  EXPECT_TRUE(text == nullptr || *text == 0) << "no message for a later failure";
}

TEST_F(ProbeQuery, UnusualAnswers) {
  const Query revision{kOem, 0x94, {}}, sensor{4, 0x2D, {0x60}}, region{0x32, 0x10, Text("Region")};
  const std::string bad = "C00000000009000C";
  struct {
    const char* probe;
    Query query;
    Bytes answer;
    std::string expected;
  } const cases[] = {
      {"BASEBOARD_PRODID 0",
       {kOem, 0x93, {}},
       {0},
       "C000000000090026 Invalid Base board product ID '0' detected."},
      {"BASEBOARD_REVID 103", revision, {3}, "yes"},  // a number is cut to its byte
      {"BASEBOARD_REVID 0", revision, {0}, bad},
      {"BASEBOARD_REVID 3", revision, {}, bad},
      {"FAN_SIGNAL 1 2", {kOem, 0x14, {15, 1, 0}}, {0xFF}, bad},
      {"DISCRETE_SENSOR 60 80 0 80 0", sensor, {0, 0x80, 0x80, 0}, "no"},  // not scanned
      {"DISCRETE_SENSOR 60 80 0 80 0", sensor, {0, 0xE0, 0x80, 0}, "no"},  // not available
      {"DISCRETE_SENSOR 60 80 80 80 80", sensor, {0, 0xC0, 0x80}, "no"},   // no second state byte
      {"DISCRETE_SENSOR 60 80 F 80 2", sensor, {0, 0xC0, 0x80, 3}, "no"},
      // A value is compared over the answer's length; with a NUL at its end it is whole.
      {"BMCCONFIG Region Europe", region, Text("EUR"), "yes"},
      {"BMCCONFIG Region Europe", region, {}, "yes"},
      {"BMCCONFIG Region Europe", region, Text("Europes"), "no"},
      {"BMCCONFIG Region Europe", region, {'E', 'u', 'r', 'o', 'p', 'e', 0, 0xFF}, "yes"},
      {"BMCCONFIG Region Europe", region, {'E', 'u', 'r', 0}, "no"},
      {"BMCCONFIG ABCDEFGHIJKL x", {0x32, 0x10, Text("ABCDEFGHIJKL")}, Text("x"), "yes"},
      {"K410V_SYS", {kApp, 0x52, {0x15, 0xD0, 0}}, {}, "yes"},  // nothing was asked to be read
      {"DEVICE_ID 20 0", {kApp, kDeviceId, {}}, Identity(0x11, 0x43), "yes"},
      {"DEVICE_ID 20 0 14311", {kApp, kDeviceId, {}}, Identity(0x11, 0x43), "no"},  // 32 bits are compared
  };
  for (const auto& [probe, query, answer, expected] : cases) {
    SCOPED_TRACE(probe + ::testing::PrintToString(answer));
    ScriptedIpmi bmc(machine);
    bmc.Expect(query.netFunction, query.command, query.data).Reply(answer);
    EXPECT_EQ(Ask(probe), expected);
  }
}

TEST_F(ProbeQuery, KeyAndValueHaveTheirLengths) {
  EXPECT_EQ(
      Ask("BMCCONFIG ABCDEFGHIJKLM x"),
      "C00000000009000C The probe key's 'ABCDEFGHIJKLM' length (13) is not with the range of (0 - 12).");
  EXPECT_EQ(Ask("BMCCONFIG \"\" x"),
            "C00000000009000C The probe key's '' length (0) is not with the range of (0 - 12).");
  EXPECT_EQ(Ask("BMCCONFIG Key \"\""), "C00000000009000C The probe value's length (3) is not valid.");
  ASSERT_EQ(Load("PROBE HWID x"), kSuccess);
  bool isFound = true;
  EXPECT_EQ(static_cast<CCfgProbe&>(parser.Commands().front()).ProbeKeyValue({}, "x", isFound),
            cfg_status::kBadValue);
  EXPECT_EQ(Message(), "Unrecoverable internal error: Probe key/value input is invalid.");
}

TEST_F(ProbeQuery, DeviceThatDoesNotAnswerIsAskedAgain) {
  const Bytes ping = {0x03, 0xA0, 0x00};
  ScriptedIpmi bmc(machine);
  bmc.ExpectFailing(kApp, 0x52, 0x83, ping);
  bmc.Expect(kApp, 0x52, ping).Reply({});
  EXPECT_EQ(Ask("PING 03 A0"), "yes");
  for (int i = 0; i < 10; ++i) bmc.ExpectFailing(kApp, 0x52, 0x83, ping);
  EXPECT_EQ(Ask("PING 03 A0"), "no");
  bmc.ExpectFailing(kApp, 0x52, 0x81, ping);
  EXPECT_EQ(Ask("PING 03 A0"), "no") << "any other code is an answer";
  for (int i = 0; i < 4; ++i) bmc.ExpectRefused(kApp, 0x52, ping);
  EXPECT_EQ(Ask("PING 03 A0"), "no");
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
  bmc.ExpectFailing(kApp, kDeviceId, 0xC1, {});
  EXPECT_NE(CfgMain::Initialize(), kSuccess);
  EXPECT_EQ(Ask("BMC_TYPE"), "no");
}

TEST_F(ProbeQuery, FirmwareVersion) {
  // HSCVER asks the BMC, too.
  for (std::string keyword : {"BMCVER ", "HSCVER "}) {
    ScriptedIpmi bmc(machine);
    for (int i = 0; i < 2; ++i) bmc.Expect(kApp, kDeviceId).Reply(Identity(0x11, 0x43));
    ASSERT_EQ(FwUpdate::Initialize(), kSuccess);
    const std::pair<const char*, const char*> answers[] = {
        {"01.00-01.04 01.05", "yes"},
        {"01.06+", "no"},
        {"boot 01.12", "yes"},
        {"01.05 x", "C0000000000A000C Format of version string \"x\" is invalid."},
    };
    for (auto [specs, answer] : answers) {
      bmc.Expect(kApp, kDeviceId).Reply(Identity(0x11, 0x43));
      EXPECT_EQ(Ask(keyword + specs), answer) << keyword << specs;
    }
    bmc.ExpectFailing(kApp, kDeviceId, 0xC1, {});
    EXPECT_EQ(Ask(keyword + "01.05"), "C0000000000A0019 Unable to read FW version from the BMC.");
    Discard(FwUpdate::DeInitialize());
    EXPECT_EQ(Ask(keyword + "01.05"), "C0000000000A0008");
  }
}

TEST_F(ProbeQuery, ControllerBehindABridge) {
  ScriptedIpmi bmc(machine);
  // The transport's own.
  bmc.ExpectSend(6, 0x2C, 1, kApp, kDeviceId).Reply({});
  bmc.ExpectFetch().ReplyBridged(0x2C, 1, kApp, kDeviceId, Identity(0x01, 0x0B));
  EXPECT_EQ(Ask("DEVICE_ID 2C 0 B01"), "yes");
  // One BMC that shows everything: a NAK, an empty queue, a busy fetch, a stale and a short answer.
  bmc.ExpectFailing(kApp, kSend, 0x83, {3, 0x30, 0x18, 0xB8, 0x20, 0x06, 0x01, 0xD9});
  bmc.ExpectSend(3, 0x30, 1, kApp, kDeviceId).Reply({});
  bmc.ExpectFailing(kApp, kFetch, 0x80, {});
  bmc.ExpectSend(3, 0x30, 1, kApp, kDeviceId).Reply({});
  bmc.ExpectFailing(kApp, kFetch, 0x83, {});
  bmc.ExpectFetch().ReplyBridged(0x30, 9, kApp, kDeviceId, Identity(0xFF, 0xFF));
  bmc.ExpectFetch().Reply({0x03, 0x1C, 0x00, 0x30, 0x04});
  bmc.ExpectFetch().ReplyBridged(0x30, 1, kApp, kDeviceId, Identity(0x34, 0x12));
  EXPECT_EQ(Ask("DEVICE_ID 30 3 1234"), "yes");
  // The bridged controller's own completion code.
  bmc.ExpectSend(3, 0x30, 2, kApp, kDeviceId).Reply({});
  bmc.ExpectFetch().ReplyBridged(0x30, 2, kApp, kDeviceId, {}, 0xC1);
  EXPECT_EQ(Ask("DEVICE_ID 30 3"), "no");
  // A known controller on another channel is bridged as well; a code that is no NAK ends it.
  bmc.ExpectFailing(kApp, kSend, 0xCC, {1, 0xC0, 0x18, 0x28, 0x20, 0x0E, 0x01, 0xD1});
  EXPECT_EQ(Ask("DEVICE_ID C0 1"), "no");
  bmc.ExpectSend(3, 0x30, 4, kApp, kDeviceId).Reply({});
  bmc.ExpectFailing(kApp, kFetch, 0xC1, {});
  EXPECT_EQ(Ask("DEVICE_ID 30 3"), "no");
}

TEST_F(ProbeQuery, BridgeGivesUp) {
  ScriptedIpmi bmc(machine);
  ASSERT_EQ(Load("PROBE HWID x"), kSuccess);
  auto& probe = static_cast<CCfgProbe&>(parser.Commands().front());
  IpmiMessage request, response;
  request.netFunction = kApp;
  request.command = kDeviceId;
  for (int i = 0; i < 50; ++i) {
    bmc.ExpectSend(3, 0x30, 1, kApp, kDeviceId).Reply({});
    bmc.ExpectFailing(kApp, kFetch, 0x80, {});
  }
  EXPECT_EQ(probe.ProcessSendMessage(request, response, 3, 0x30), 0xC000000000090004);
  bmc.ExpectSend(3, 0x30, 2, kApp, kDeviceId).Reply({});
  for (int i = 0; i < 256; ++i) bmc.ExpectFetch().ReplyBridged(0x30, 1, kApp, kDeviceId, {});
  EXPECT_EQ(probe.ProcessSendMessage(request, response, 3, 0x30), 0xFFFFFE08) << "answers of others for ever";
  for (std::uint32_t length : {57, 65}) {
    request.dataLength = length;
    EXPECT_EQ(probe.ProcessSendMessage(request, response, 3, 0x30), cfg_status::kBadValue);
  }
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

}  // namespace
}  // namespace varnok
