// Probes in scripts: what FOUND makes of them in front of a scripted BMC and a built SMBIOS table.
#include "cfg/probe.h"

#include "cfg/cfg_main.h"
#include "fru/fru_data.h"
#include "platform/fw_update.h"
#include "platform/smbios.h"
#include "tests/cfg/script_test.h"
#include "tests/support/scripted_ipmi.h"
#include "tests/support/smbios_builder.h"

namespace varnok {
namespace {

using testing::ScriptedIpmi;
using testing::SmbiosBuilder;
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
Bytes Text(const std::string& text) {
  return Bytes(text.begin(), text.end());
}

class Probe : public testing::ScriptTest {
 protected:
  Probe() { Discard(SmbiosInitialize()); }
  ~Probe() override {
    machine.smbiosEntryPoint = nullptr;
    Discard(SmbiosInitialize());
  }

  void Install(testing::SmbiosBuilder& table) {
    table.Install(machine);
    Discard(SmbiosInitialize());
  }

  /// The answer as FOUND's tags tell it: "yes" or "no"; else the status that stopped the script, with the
  /// message behind it when there is one.
  std::string Ask(const std::string& probe) {
    Status status = Run("PROBE " + probe + "\nFOUND YES NO\n");
    bool isYes = parser.IsTagSet("YES"), isNo = parser.IsTagSet("NO");
    if (status == kSuccess) return isYes == isNo ? "neither or both" : isYes ? "yes" : "no";
    EXPECT_FALSE(isYes || isNo) << "a failed query must not change a tag";
    return Format("%X", status) + (Message().empty() ? "" : " " + Message());
  }
  /// Expects the same answer of each probe of a list ("a; b; c").
  void ExpectAnswers(const std::string& probes, const std::string& answer) {
    for (const std::string& probe : testing::Split(probes)) EXPECT_EQ(Ask(probe), answer) << probe;
  }
};

TEST_F(Probe, FoundSetsOneTagOrTheOther) {
  ScriptedIpmi bmc(machine);
  for (std::uint8_t revision : Bytes{3, 4, 3, 3}) bmc.Expect(kOem, 0x94).Reply({revision});
  EXPECT_EQ(Run("SET a\nIFSET a\nPROBE BASEBOARD_REVID 3\nFOUND A B\nPROBE BASEBOARD_REVID 3\nFOUND C D\n"
                "PROBE BASEBOARD_REVID 3\nPROBE BASEBOARD_REVID 3\nFOUND E\nENDIF"),
            kSuccess);
  EXPECT_EQ(Tags(), "[a D E]");
}

TEST_F(Probe, OneRequest) {
  const Bytes sound = {8, 1, 0, 0, 0, 0, 0, 0, 0xFF}, damaged = {8, 1, 0, 0, 0, 0, 0, 0, 0xFE};
  ScriptedIpmi bmc(machine);
  ASSERT_EQ(FruData::Initialize(), kSuccess);
  struct {
    const char* probe;
    Query query;
    Bytes yes, no;
    std::string failure;  ///< "no", or the message behind the transport's result as the status
    // clang-format off
  } const cases[] = {
      {"BASEBOARD_PRODID 2E", {kOem, 0x93, {}}, {0x2E}, {0x2F}, ""},
      {"BASEBOARD_REVID 3", {kOem, 0x94, {}}, {3}, {4}, ""},
      {"FAN_SIGNAL 5 0", {kOem, 0x14, {15, 5, 0}}, {1}, {2}, " Invalid value returned by the BMC.\n"},
      {"FAN_SIGNAL 5 1", {kOem, 0x14, {15, 5, 0}}, {2}, {1}, " Invalid value returned by the BMC.\n"},
      {"DISCRETE_SENSOR 60 81 F 80 2", {4, 0x2D, {0x60}}, {0, 0xC0, 0x82, 0x12}, {0, 0xC0, 0x83, 0x12}, ""},
      {"BMCCONFIG Region EU", {0x32, 0x10, Text("Region")}, Text("eu"), Text("us"), "no"},
      {"K410V_SYS", {kApp, 0x52, {0x15, 0xD0, 0}}, {1, 1, 0}, {0, 0, 1}, "no"},
      {"QRX_TYPE", {0x0C, 0x02, {3, 0xC3, 0, 0}}, {0x11, 0xCC, 0x01}, {0x11, 0x00, 0xCC}, "no"},
      {"DEVICE_ID 20 6 4311", {kApp, kDeviceId, {}}, testing::DeviceId(0x4311), testing::DeviceId(0x1143), "no"},
      {"IMBDEVICE 7", {0x0A, 0x11, {7, 0, 0, 8}}, sound, damaged, "no"},
  };
  // clang-format on
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

TEST_F(Probe, UnusualAnswers) {
  const Query revision{kOem, 0x94, {}}, sensor{4, 0x2D, {0x60}}, region{0x32, 0x10, Text("Region")};
  const std::string bad = "C00000000009000C";
  struct {
    const char* probe;
    Query query;
    Bytes answer;
    std::string expected;
    // clang-format off
  } const cases[] = {
      {"BASEBOARD_PRODID 0", {kOem, 0x93, {}}, {0}, "C000000000090026 Invalid Base board product ID '0' detected."},
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
      {"DEVICE_ID 20 0", {kApp, kDeviceId, {}}, testing::DeviceId(0x4311), "yes"},
      // 32 bits are compared
      {"DEVICE_ID 20 0 14311", {kApp, kDeviceId, {}}, testing::DeviceId(0x4311), "no"},
  };
  // clang-format on
  for (const auto& [probe, query, answer, expected] : cases) {
    SCOPED_TRACE(probe + ::testing::PrintToString(answer));
    ScriptedIpmi bmc(machine);
    bmc.Expect(query.netFunction, query.command, query.data).Reply(answer);
    EXPECT_EQ(Ask(probe), expected);
  }
}

TEST_F(Probe, KeyIsNotEmpty) {
  ASSERT_EQ(Load("PROBE HWID x"), kSuccess);
  bool isFound = true;
  EXPECT_EQ(static_cast<CCfgProbe&>(parser.Commands().front()).ProbeKeyValue({}, "x", isFound),
            cfg_status::kBadValue);
  EXPECT_EQ(Message(), "Unrecoverable internal error: Probe key/value input is invalid.");
}

TEST_F(Probe, DeviceThatDoesNotAnswerIsAskedAgain) {
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

TEST_F(Probe, BmcTypeIsTheOneReadAtTheStart) {
  for (auto [product, platform] :
       {std::pair<std::uint16_t, const char16_t*>{0x4313, u"BMC_KALVOTE"}, {0x4311, u""}}) {
    ScriptedIpmi bmc(machine);
    for (int i = 0; i < 2; ++i) bmc.Expect(kApp, kDeviceId).Reply(testing::DeviceId(product));
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

TEST_F(Probe, FirmwareVersion) {
  // HSCVER asks the BMC, too.
  for (std::string keyword : {"BMCVER ", "HSCVER "}) {
    ScriptedIpmi bmc(machine);
    for (int i = 0; i < 2; ++i) bmc.Expect(kApp, kDeviceId).Reply(testing::DeviceId(0x4311));
    ASSERT_EQ(FwUpdate::Initialize(), kSuccess);
    const std::pair<const char*, const char*> answers[] = {
        {"02.00-02.44 02.45", "yes"},
        {"02.46+", "no"},
        {"boot 10.03", "yes"},
        {"02.45 x", "C0000000000A000C Format of version string \"x\" is invalid."},
    };
    for (auto [specs, answer] : answers) {
      bmc.Expect(kApp, kDeviceId).Reply(testing::DeviceId(0x4311));
      EXPECT_EQ(Ask(keyword + specs), answer) << keyword << specs;
    }
    bmc.ExpectFailing(kApp, kDeviceId, 0xC1, {});
    EXPECT_EQ(Ask(keyword + "02.45"), "C0000000000A0019 Unable to read FW version from the BMC.");
    Discard(FwUpdate::DeInitialize());
    EXPECT_EQ(Ask(keyword + "02.45"), "C0000000000A0008");
  }
}

TEST_F(Probe, ControllerBehindABridge) {
  ScriptedIpmi bmc(machine);
  // The transport's own.
  bmc.ExpectSend(6, 0x2C, 1, kApp, kDeviceId).Reply({});
  bmc.ExpectFetch().ReplyBridged(0x2C, 1, kApp, kDeviceId, testing::DeviceId(0x0B01));
  EXPECT_EQ(Ask("DEVICE_ID 2C 0 B01"), "yes");
  // One BMC that shows everything: a NAK, an empty queue, a busy fetch, a stale and a short answer.
  bmc.ExpectFailing(kApp, kSend, 0x83, {3, 0x30, 0x18, 0xB8, 0x20, 0x06, 0x01, 0xD9});
  bmc.ExpectSend(3, 0x30, 1, kApp, kDeviceId).Reply({});
  bmc.ExpectFailing(kApp, kFetch, 0x80, {});
  bmc.ExpectSend(3, 0x30, 1, kApp, kDeviceId).Reply({});
  bmc.ExpectFailing(kApp, kFetch, 0x83, {});
  bmc.ExpectFetch().ReplyBridged(0x30, 9, kApp, kDeviceId, testing::DeviceId(0xFFFF));
  bmc.ExpectFetch().Reply({0x03, 0x1C, 0x00, 0x30, 0x04});
  bmc.ExpectFetch().ReplyBridged(0x30, 1, kApp, kDeviceId, testing::DeviceId(0x1234));
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

TEST_F(Probe, BridgeGivesUp) {
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

TEST_F(Probe, BridgedSequenceIsSharedAndRunsTo63) {
  ScriptedIpmi bmc(machine);
  std::string script;
  for (std::uint8_t i = 0; i < 64; ++i) {
    auto sequence = static_cast<std::uint8_t>(i % 63 + 1);
    bmc.ExpectSend(3, 0x30, sequence, kApp, kDeviceId).Reply({});
    bmc.ExpectFetch().ReplyBridged(0x30, sequence, kApp, kDeviceId, testing::DeviceId(1));
    script += "PROBE DEVICE_ID 30 3\n";
  }
  EXPECT_EQ(Run(script), kSuccess);
}

constexpr std::uint8_t kPopulated = 0x41;

/// Processor Information (SMBIOS 3.5, section 7.5) up to the thread count, or up to the part number.
Bytes Processor(std::uint32_t signature, std::uint8_t status, int cores, std::uint8_t family = 0xB3,
                std::uint8_t upgrade = 0x2B) {
  Bytes fields = {1,    3,    family, 0, 0,      0,       0,    0,    0,    0,    0,    0,    0, 0x80, 100, 0,
                  0x0E, 0x0B, 0,      0, status, upgrade, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0,    0};
  for (std::size_t i = 0; i < 4; ++i) fields[4 + i] = static_cast<std::uint8_t>(signature >> (8 * i));
  if (cores >= 0) fields.insert(fields.end(), {static_cast<std::uint8_t>(cores), 0, 0});
  return fields;
}

TEST_F(Probe, MissingRecordIsANo) {
  ExpectAnswers(
      "SYSTEM a; BOARD_ID a; DIMM 0; BIOSVER abc; PROCESSOR 1; PROCESSOR_FAMILY_MODEL 1 6 3F; "
      "PROCESSOR_CORES 1 8; PROCESSOR_TDC 8 5A",
      "no");
  EXPECT_EQ(Message(), "") << "the look-up leaves no words";
}

TEST_F(Probe, TextsOfTheBoardAndItsBios) {
  for (const testing::Row& row : testing::Rows(VARNOK_CFG_FIXTURES "/smbios.txt")) {
    std::size_t mark = row.text.find(" << ");
    SmbiosBuilder table;
    table.Add(static_cast<std::uint8_t>(row.text[0] - '0'), {1, 2, 0, 0},
              {"Maker", row.text.substr(2, mark - 2)});
    Install(table);
    EXPECT_EQ(Ask(row.text.substr(mark + 4)), row.answer) << row.text;
  }
}

TEST_F(Probe, LargestMemoryModule) {
  SmbiosBuilder table;
  table.Add(16, {3, 3, 6, 0, 0, 0, 0, 0xFE, 0xFF, 2, 0});
  for (std::uint8_t high : Bytes{0x10, 0x40})
    table.Add(17, {0, 1, 0xFE, 0xFF, 72, 0, 64, 0, 0x00, high, 9, 0});
  Install(table);
  ExpectAnswers("DIMM 0; DIMM 16384x", "yes");
  ExpectAnswers("DIMM 16385", "no");
}

TEST_F(Probe, ProcessorSignature) {
  SmbiosBuilder table;
  table.Add(4, Processor(0x000206D7, kPopulated, 8), {"CPU 1"});
  table.Add(4, Processor(0x0A206140, 0, 8), {"CPU 2"});
  Install(table);
  ExpectAnswers("PROCESSOR 1", "yes");
  EXPECT_EQ(parser.TargetPlatformInfo(), u"P1_17943") << "family B3h, upgrade 2Bh; the first text stays";
  ExpectAnswers("PROCESSOR 2", "no");
  EXPECT_EQ(parser.TargetPlatformInfo(), u"") << "not populated";
  // A signature is compared whether or not the socket is populated.
  ExpectAnswers("PROCESSOR 1 0 06 D7; PROCESSOR 2 7 61 40; PROCESSOR 2 0 0A 20 61 40", "yes");
  ExpectAnswers("PROCESSOR 3; PROCESSOR 1 0 06 D6; PROCESSOR 2 0 0B 20 61 40", "no");
  // The extended model stands in front of the model, the extended family beside the family.
  ExpectAnswers("PROCESSOR_FAMILY_MODEL 1 6 2D; PROCESSOR_FAMILY_MODEL 2 A201 4; PROCESSOR_CORES 1 8", "yes");
  ExpectAnswers("PROCESSOR_FAMILY_MODEL 1 6 D; PROCESSOR_FAMILY_MODEL 2 A3 4; PROCESSOR_CORES 1 9", "no");
}

TEST_F(Probe, SignatureOfTwoProcessorsIsToldApartByTheRecord) {
  SmbiosBuilder table;
  table.Add(4, Processor(0xF41, kPopulated, 1, 0xB3, 0x13), {"CPU 1"});
  table.Add(4, Processor(0xF48, kPopulated, -1, 0xB5, 0x15), {"CPU 2"});
  Install(table);
  ExpectAnswers("PROCESSOR 1 0 F 41; PROCESSOR 1 1 B3 13; PROCESSOR 1 2 B5 15", "yes");
  ExpectAnswers("PROCESSOR 1 1 F 41; PROCESSOR 1 3 B5 15", "no");
  // Family and model in one number: a third parameter that does not read is none.
  ExpectAnswers("PROCESSOR_FAMILY_MODEL 2 F4; PROCESSOR_FAMILY_MODEL 2 F4 x", "yes");
  ExpectAnswers("PROCESSOR_FAMILY_MODEL 2 F5", "no");
  ExpectAnswers("PROCESSOR_CORES 2 1",
                "C000000000090016 PROBE PROCESSOR_CORE : This command requires SMBIOS table version 2.5 and "
                "above to work.");
}

TEST_F(Probe, ProcessorTdcAsksTheBmcToo) {
  SmbiosBuilder table;
  table.Add(4, Processor(0x206D7, kPopulated, 8), {"CPU 1"});
  table.Add(4, Processor(0x206D7, 0, 8), {"CPU 2"});
  ScriptedIpmi bmc(machine);
  Install(table);
  bmc.Expect(0x30, 0x97, {1}).Reply({0x5A}).Expect(0x30, 0x97, {1}).Reply({0x5B});
  EXPECT_EQ(Ask("PROCESSOR_TDC 1 5A"), "yes");
  EXPECT_EQ(Ask("PROCESSOR_TDC 1 5A"), "no");
  bmc.Expect(0x30, 0x97, {2}).Reply({0x5A});
  EXPECT_EQ(Ask("PROCESSOR_TDC 2 5A"), "no") << "not populated";
  bmc.ExpectFailing(0x30, 0x97, 0xC1, {1});
  EXPECT_EQ(Ask("PROCESSOR_TDC 1 5A"), "FFFFFE05");
  EXPECT_EQ(Ask("PROCESSOR_TDC 3 5A"), "no") << "nothing is asked for a socket without a record";
}

}  // namespace
}  // namespace varnok
