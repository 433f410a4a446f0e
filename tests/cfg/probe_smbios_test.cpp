// Probes of the SMBIOS table.
#include "tests/cfg/probe_script_test.h"

namespace varnok {
namespace {

using testing::ScriptedIpmi;
using testing::SmbiosBuilder;
using ProbeSmbios = testing::ProbeScript;
using Bytes = SmbiosBuilder::Bytes;

constexpr std::uint8_t kPopulated = 0x41;

/// Processor Information (SMBIOS 3.5, section 7.5) up to the thread count, or up to the part number.
Bytes Processor(std::uint32_t signature, std::uint8_t status, int cores, std::uint8_t family = 0xB3,
                std::uint8_t upgrade = 0x2B) {
  auto byte = [signature](int shift) { return static_cast<std::uint8_t>(signature >> shift); };
  Bytes fields = {1,    3,    family, 0,    byte(0), byte(8), byte(16), byte(24), 0, 0,      0,
                  0,    0,    0x80,   100,  0,       0x0E,    0x0B,     0,        0, status, upgrade,
                  0xFF, 0xFF, 0xFF,   0xFF, 0xFF,    0xFF,    0,        0,        0};
  if (cores >= 0) fields.insert(fields.end(), {static_cast<std::uint8_t>(cores), 0, 0});
  return fields;
}

TEST_F(ProbeSmbios, MissingRecordIsANo) {
  for (const char* probe : {"SYSTEM a", "BOARD_ID a", "DIMM 0", "BIOSVER abc", "PROCESSOR 1",
                            "PROCESSOR_FAMILY_MODEL 1 6 3F", "PROCESSOR_CORES 1 8", "PROCESSOR_TDC 1 5A"}) {
    EXPECT_EQ(Ask(probe), "no") << probe;
    EXPECT_EQ(Message(), "") << "the look-up leaves no words";
  }
}

TEST_F(ProbeSmbios, BoardProduct) {
  struct {
    const char* product;
    const char* probe;
    const char* answer;
  } const cases[] = {
      {"Hearth S2 Server Board", "SYSTEM hearth", "yes"},
      {"HEARTH-2", "SYSTEM HEARTH", "yes"},
      {"HEARTH-2", "SYSTEM HEARTH-2", "no"},
      {"-HEARTH 2", "SYSTEM -hearth", "yes"},
      {"", "SYSTEM x", "no"},
      {"Hearth S2b", "BOARD_ID b", "yes"},
      {"Hearth S2b", "BOARD_ID B", "no"},
      {"Hearth S2b", "BOARD_ID bcd", "yes"},
      {"", "BOARD_ID b", "no"},
  };
  for (const auto& each : cases) {
    SmbiosBuilder table;
    table.Add(2, {1, 2, 0, 0}, {"Maker", each.product});
    Install(table);
    EXPECT_EQ(Ask(each.probe), each.answer) << each.product << " " << each.probe;
  }
}

TEST_F(ProbeSmbios, LargestMemoryModule) {
  SmbiosBuilder table;
  table.Add(16, {3, 3, 6, 0, 0, 0, 0, 0xFE, 0xFF, 2, 0});
  for (std::uint8_t high : Bytes{0x10, 0x40})
    table.Add(17, {0, 1, 0xFE, 0xFF, 72, 0, 64, 0, 0x00, high, 9, 0});
  Install(table);
  EXPECT_EQ(Ask("DIMM 0"), "yes");
  EXPECT_EQ(Ask("DIMM 16384x"), "yes") << "a decimal number begins the text";
  EXPECT_EQ(Ask("DIMM 16385"), "no");
}

TEST_F(ProbeSmbios, BiosVersion) {
  auto ask = [this](const std::string& version, const std::string& specs) {
    SmbiosBuilder table;
    table.Add(0, {1, 2}, {"Maker", version});
    Install(table);
    return Ask("BIOSVER " + specs);
  };
  const std::string version = "A.B.C.D.E.0045.x";
  for (const char* specs : {"45", "40-50", "45-45", "45+", "1 0045", "45 44"})
    EXPECT_EQ(ask(version, specs), "yes") << specs;
  for (const char* specs : {"44", "46-50", "50-40", "46+", "1-2 3 50+"})
    EXPECT_EQ(ask(version, specs), "no") << specs;
  EXPECT_EQ(ask("A.B.C.D.E.45", "45"), "yes") << "no sixth dot";
  EXPECT_EQ(ask(version, "45a"), "yes") << "begins with digits";
  const std::string refused = " is not a valid input for the PROBE command.";
  EXPECT_EQ(ask(version, "abc"), "C00000000009000C abc" + refused);
  EXPECT_EQ(ask(version, "45 4-"), "C00000000009000C 4-" + refused) << "every spec is read";
  EXPECT_EQ(ask("A.B.C.D.E.R45", "45"), "C00000000009000C R45" + refused);
  EXPECT_EQ(ask("A.B.C.D.45", "45"), "C00000000009000C " + refused) << "no fifth dot";
}

TEST_F(ProbeSmbios, ProcessorSignature) {
  SmbiosBuilder table;
  table.Add(4, Processor(0x000206D7, kPopulated, 8), {"CPU 1"});
  table.Add(4, Processor(0x0A206140, 0, 8), {"CPU 2"});
  Install(table);
  EXPECT_EQ(Ask("PROCESSOR 1"), "yes");
  EXPECT_EQ(parser.TargetPlatformInfo(), u"P1_17943") << "family B3h, upgrade 2Bh; the first text stays";
  EXPECT_EQ(Ask("PROCESSOR 2"), "no") << "not populated";
  EXPECT_EQ(parser.TargetPlatformInfo(), u"");
  EXPECT_EQ(Ask("PROCESSOR 3"), "no") << "no such record";
  EXPECT_EQ(Ask("PROCESSOR 1 0 06 D7"), "yes");
  EXPECT_EQ(Ask("PROCESSOR 1 0 06 D6"), "no");
  EXPECT_EQ(Ask("PROCESSOR 2 7 61 40"), "yes") << "populated or not";
  EXPECT_EQ(Ask("PROCESSOR 2 0 0A 20 61 40"), "yes");
  EXPECT_EQ(Ask("PROCESSOR 2 0 0B 20 61 40"), "no");
  EXPECT_EQ(Ask("PROCESSOR_FAMILY_MODEL 1 6 2D"), "yes") << "extended model in front";
  EXPECT_EQ(Ask("PROCESSOR_FAMILY_MODEL 1 6 D"), "no");
  EXPECT_EQ(Ask("PROCESSOR_FAMILY_MODEL 2 A201 4"), "yes") << "extended family A2h, family 1";
  EXPECT_EQ(Ask("PROCESSOR_FAMILY_MODEL 2 A3 4"), "no") << "the two are not added";
  EXPECT_EQ(Ask("PROCESSOR_CORES 1 8"), "yes");
  EXPECT_EQ(Ask("PROCESSOR_CORES 1 9"), "no");
}

TEST_F(ProbeSmbios, FamilyAndModelInOneNumber) {
  SmbiosBuilder table;
  table.Add(4, Processor(0x00000F48, kPopulated, -1), {"CPU 1"});
  Install(table);
  EXPECT_EQ(Ask("PROCESSOR_FAMILY_MODEL 1 F4"), "yes");
  EXPECT_EQ(Ask("PROCESSOR_FAMILY_MODEL 1 F4 x"), "yes") << "the third does not read";
  EXPECT_EQ(Ask("PROCESSOR_FAMILY_MODEL 1 F5"), "no");
  EXPECT_EQ(
      Ask("PROCESSOR_CORES 1 1"),
      "C000000000090016 PROBE PROCESSOR_CORE : This command requires SMBIOS table version 2.5 and above to "
      "work.");
}

TEST_F(ProbeSmbios, SignatureOfTwoProcessorsIsToldApartByTheRecord) {
  SmbiosBuilder table;
  table.Add(4, Processor(0xF41, kPopulated, 1, 0xB3, 0x13), {"CPU 1"});
  table.Add(4, Processor(0xF48, kPopulated, 1, 0xB5, 0x15), {"CPU 2"});
  Install(table);
  EXPECT_EQ(Ask("PROCESSOR 1 0 F 41"), "yes");
  EXPECT_EQ(Ask("PROCESSOR 1 1 F 41"), "no");
  EXPECT_EQ(Ask("PROCESSOR 1 1 B3 13"), "yes");
  EXPECT_EQ(Ask("PROCESSOR 1 2 B5 15"), "yes") << "the second record";
  EXPECT_EQ(Ask("PROCESSOR 1 3 B5 15"), "no") << "there is no third";
}

TEST_F(ProbeSmbios, ProcessorTdcAsksTheBmcToo) {
  SmbiosBuilder table;
  table.Add(4, Processor(0x206D7, kPopulated, 8), {"CPU 1"});
  table.Add(4, Processor(0x206D7, 0, 8), {"CPU 2"});
  Install(table);
  ScriptedIpmi bmc(machine);
  bmc.Expect(0x30, 0x97, {1}).Reply({0x5A});
  EXPECT_EQ(Ask("PROCESSOR_TDC 1 5A"), "yes");
  bmc.Expect(0x30, 0x97, {1}).Reply({0x5B});
  EXPECT_EQ(Ask("PROCESSOR_TDC 1 5A"), "no");
  bmc.Expect(0x30, 0x97, {2}).Reply({0x5A});
  EXPECT_EQ(Ask("PROCESSOR_TDC 2 5A"), "no") << "not populated";
  Refuse(bmc, 0x30, 0x97, {1}, 0xC1);
  EXPECT_EQ(Ask("PROCESSOR_TDC 1 5A"), "FFFFFE05");
  EXPECT_EQ(Ask("PROCESSOR_TDC 3 5A"), "no") << "nothing is asked for a socket without a record";
}

}  // namespace
}  // namespace varnok
