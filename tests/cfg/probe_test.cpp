// Probes in scripts: what FOUND makes of them in front of a scripted BMC and a built SMBIOS table.
#include "cfg/probe.h"

#include "cfg/cfg_main.h"
#include "fru/fru_data.h"
#include "platform/fw_update.h"
#include "platform/smbios.h"
#include "tests/cfg/script_test.h"
#include "tests/support/expectations.h"
#include "tests/support/scripted_ipmi.h"
#include "tests/support/smbios_builder.h"

namespace varnok {
namespace {

using testing::ScriptedIpmi;
using testing::SmbiosBuilder;
using Bytes = ScriptedIpmi::Bytes;

constexpr std::uint8_t kApp = 0x06;
constexpr std::uint8_t kOem = 0x30;
constexpr std::uint8_t kFetch = 0x33;
constexpr std::uint8_t kDeviceId = 0x01;

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

TEST_F(Probe, BmcAnswersAsWritten) {
  for (const auto& [name, text] : testing::Expectations("cfg/fixtures/bmc.txt")) {
    SCOPED_TRACE(name);
    ScriptedIpmi bmc(machine);
    ASSERT_EQ(FruData::Initialize(), kSuccess);
    for (const testing::WireStep& step : testing::WireSteps(text)) {
      bmc.Play(step.wire);
      EXPECT_EQ(Ask(step.operation) + "\n", testing::Unescape(step.outcome)) << step.operation;
    }
    const char16_t* left = nullptr;
    Discard(FruData::GetLastErrorMessage(left));
    EXPECT_TRUE(left == nullptr || *left == 0) << "no message for a later failure";
  }
}

TEST_F(Probe, KeyIsNotEmpty) {
  ASSERT_EQ(Load("PROBE HWID x"), kSuccess);
  bool isFound = true;
  EXPECT_EQ(static_cast<CCfgProbe&>(parser.Commands().front()).ProbeKeyValue({}, "x", isFound),
            cfg_status::kBadValue);
  EXPECT_EQ(Message(), "Unrecoverable internal error: Probe key/value input is invalid.");
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
