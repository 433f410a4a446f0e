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
  Bytes fields = {1,    3,    family, 0, 0,      0,       0,    0,    0,    0,    0,    0,    0, 0x80, 100, 0,
                  0x0E, 0x0B, 0,      0, status, upgrade, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0,    0};
  for (std::size_t i = 0; i < 4; ++i) fields[4 + i] = static_cast<std::uint8_t>(signature >> (8 * i));
  if (cores >= 0) fields.insert(fields.end(), {static_cast<std::uint8_t>(cores), 0, 0});
  return fields;
}

TEST_F(ProbeSmbios, MissingRecordIsANo) {
  for (const std::string& probe : testing::Split(
           "SYSTEM a; BOARD_ID a; DIMM 0; BIOSVER abc; PROCESSOR 1; PROCESSOR_FAMILY_MODEL 1 6 3F; "
           "PROCESSOR_CORES 1 8; PROCESSOR_TDC 8 5A")) {
    EXPECT_EQ(Ask(probe), "no") << probe;
    EXPECT_EQ(Message(), "") << "the look-up leaves no words";
  }
}

TEST_F(ProbeSmbios, BoardProduct) {
  struct {
    const char *product, *yes, *no;
  } const cases[] = {
      {"Hearth S2 Server Board", "SYSTEM hearth", "SYSTEM \"Hearth S2\""},
      {"HEARTH-2", "SYSTEM HEARTH", "SYSTEM HEARTH-2"},
      {"-HEARTH 2", "SYSTEM -hearth; BOARD_ID 2", "SYSTEM hearth"},
      {"Hearth S2b", "BOARD_ID b; BOARD_ID bcd", "BOARD_ID B"},
      {"", "SYSTEM \"\"", "SYSTEM x; BOARD_ID b"},
  };
  for (const auto& [product, yes, no] : cases) {
    SCOPED_TRACE(product);
    SmbiosBuilder table;
    table.Add(2, {1, 2, 0, 0}, {"Maker", product});
    Install(table);
    ExpectAnswers(yes, "yes");
    ExpectAnswers(no, "no");
  }
}

TEST_F(ProbeSmbios, LargestMemoryModule) {
  SmbiosBuilder table;
  table.Add(16, {3, 3, 6, 0, 0, 0, 0, 0xFE, 0xFF, 2, 0});
  for (std::uint8_t high : Bytes{0x10, 0x40})
    table.Add(17, {0, 1, 0xFE, 0xFF, 72, 0, 64, 0, 0x00, high, 9, 0});
  Install(table);
  ExpectAnswers("DIMM 0; DIMM 16384x", "yes");
  ExpectAnswers("DIMM 16385", "no");
}

TEST_F(ProbeSmbios, BiosVersion) {
  const std::string version = "A.B.C.D.E.0045.x", bad = "C00000000009000C ",
                    invalid = " is not a valid input for the PROBE command.";
  struct {
    std::string version;
    const char* probes;
    std::string answer;
  } const cases[] = {
      {version, "BIOSVER 45; BIOSVER 40-50; BIOSVER 45-45; BIOSVER 45+; BIOSVER 1 0045; BIOSVER 45 44",
       "yes"},
      {version, "BIOSVER 44; BIOSVER 46-50; BIOSVER 50-40; BIOSVER 46+; BIOSVER 1-2 3 50+", "no"},
      {version, "BIOSVER 45a", "yes"},        // begins with digits
      {"A.B.C.D.E.45", "BIOSVER 45", "yes"},  // no sixth dot
      {version, "BIOSVER abc", bad + "abc" + invalid},
      {version, "BIOSVER 45 4-", bad + "4-" + invalid},  // every spec is read
      {"A.B.C.D.E.R45", "BIOSVER 45", bad + "R45" + invalid},
      {"A.B.C.D.45", "BIOSVER 45", bad + invalid},  // no fifth dot
  };
  for (const auto& each : cases) {
    SmbiosBuilder table;
    table.Add(0, {1, 2}, {"Maker", each.version});
    Install(table);
    ExpectAnswers(each.probes, each.answer);
  }
}

TEST_F(ProbeSmbios, ProcessorSignature) {
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

TEST_F(ProbeSmbios, SignatureOfTwoProcessorsIsToldApartByTheRecord) {
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

TEST_F(ProbeSmbios, ProcessorTdcAsksTheBmcToo) {
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
