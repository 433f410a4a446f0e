// PROBE and FOUND while a script is read: keywords, parameters, places.
#include "tests/cfg/probe_script_test.h"

namespace varnok {
namespace {

class ProbeSyntax : public testing::ProbeScript {
 protected:
  /// Expects each probe of a list to be refused; '#' in the message stands for its keyword.
  void ExpectProbes(const std::string& probes, Status status, const std::string& message) {
    for (const std::string& probe : testing::Split(probes)) {
      std::string expected = message;
      if (std::size_t mark = expected.find('#'); mark != expected.npos)
        expected.replace(mark, 1, probe.substr(0, probe.find(' ')));
      ExpectRefused("SET a\nPROBE " + probe, 2, status, expected);
    }
  }
};

TEST_F(ProbeSyntax, CountOfParameters) {
  // Too few are reported as too many.
  ExpectProbes(
      "SYSTEM; BOARD_ID; BMCCONFIG a; PING 3; DS1624S 3; AT24C02 3; PROCESSOR_FAMILY_MODEL 1; "
      "PROCESSOR_CORES 1; PROCESSOR_TDC 1; DISCRETE_SENSOR 1 2 3 4; BASEBOARD_PRODID; BASEBOARD_REVID; "
      "FRUFIELD PN; FAN_SIGNAL 1; "
      "SYSTEM a b; BOARD_ID a b; BMCCONFIG a b c; PING 3 A0 1; DS1624S 3 A0 1; AT24C02 3 A0 1; BMC_TYPE 1; "
      "K410V_SYS 1; QRX_TYPE 1; PROCESSOR_CORES 1 2 3; PROCESSOR_TDC 1 2 3; DISCRETE_SENSOR 1 2 3 4 5 6; "
      "BASEBOARD_PRODID 1 2; BASEBOARD_REVID 1 2; FRUFIELD PN a b; FAN_SIGNAL 1 2 3; HWID a b; DIMM 1 2; "
      "DEVICE_ID 20 0 1 2; IMBDEVICE 0 FF 20 1; PROCESSOR 1 2 3 4 5 6 7",
      kTooMany, "Too many parameters for the # command.");
  const std::string first = Missing("PROBE #");
  ExpectProbes("HWID; DIMM; DEVICE_ID; IMBDEVICE; DS1624S; AT24C02; PROCESSOR", kTooMany, first);
  ExpectProbes("BIOSVER; BMCVER; HSCVER; BMCVER boot", kBadValue, first);
  ExpectProbes("DEVICE_ID 20", kTooMany, Missing("PROBE #", "second"));
}

TEST_F(ProbeSyntax, NumberThatIsNotHexadecimal) {
  ExpectProbes(
      "PING x 20; PING 3 x; DEVICE_ID x 0; DEVICE_ID 20 x; DEVICE_ID 20 0 x; IMBDEVICE x; IMBDEVICE FF x; "
      "DS1624S x 90; AT24C02 x A0; PROCESSOR x; PROCESSOR 1 2 x 4; PROCESSOR 1 2 3 4 5 x; "
      "PROCESSOR_FAMILY_MODEL x 6; PROCESSOR_FAMILY_MODEL 1 x 6; PROCESSOR_CORES 1 x; PROCESSOR_TDC x 1; "
      "DISCRETE_SENSOR 1 2 3 4 x; BASEBOARD_PRODID x; BASEBOARD_REVID x; FAN_SIGNAL x 0; DIMM x",
      kBadValue, NotHex("x", "PROBE"));
  // Between the valid counts the number that would have to be read is missing.
  ExpectProbes("PROCESSOR 1 2; PROCESSOR 1 2 3; PROCESSOR 1 2 3 4 5", kBadValue, NotHex("", "PROBE"));
  EXPECT_EQ(Load("PROBE PROCESSOR_FAMILY_MODEL 1 6 x"), kSuccess) << "read as two parameters";
}

TEST_F(ProbeSyntax, ValueOutOfItsRange) {
  for (std::string number : {"0", "9"})
    for (std::string probe : {"PROCESSOR ", "PROCESSOR_FAMILY_MODEL ", "PROCESSOR_CORES ", "PROCESSOR_TDC "})
      ExpectProbes(probe + number + (probe == "PROCESSOR " ? "" : " 6"), kBadValue,
                   "Invalid processor probe number " + number + ", the value must be in the range 1 - 8.");
  for (std::string probe : {"PING", "IMBDEVICE", "DS1624S", "AT24C02", "IMBDEVICE 1"}) {
    ExpectProbes(probe + " FF 22", kBadValue, "The bus address FF is not valid with the slave address 22.");
    ExpectProbes(probe + " 03 21", kBadValue, "The device address 21 is not even.");
    EXPECT_EQ(Load("PROBE " + probe + " FF 20"), kSuccess);
  }
  for (auto [character, code] : {std::pair{"~", "7E"}, {"\" \"", "20"}, {"\"\xE9\"", "E9"}, {"\"\"", "0"}})
    ExpectProbes(std::string("BOARD_ID ") + character, kBadValue,
                 std::string("The input character '") + code + "' must be printable.");
  ExpectProbes("DIMM -1", kBadValue, "Invalid value for PROBE (-1), the value must be greater than zero.");
  for (std::string code : {"PNX", "P"})
    ExpectProbes("FRUFIELD " + code + " a", kBadValue,
                 "\nThe input '" + code + "' is invalid, the string cannot be longer than 2 characters.\n");
  EXPECT_EQ(Load("PROBE FRUFIELD XY abc"), kSuccess) << "an unknown field loads with its message";
  EXPECT_EQ(Message(), "XY is not a valid FRU field.");
}

TEST_F(ProbeSyntax, Keyword) {
  constexpr Status kBadType = 0xC000000000090010;
  ExpectRefused("PROBE", 1, kTooMany, Missing("PROBE"));
  ExpectRefused("PROBE PING", 1, kTooMany, "Too many parameters for the PING command.");
  EXPECT_THAT(machine.TraceLines(),
              ::testing::Contains("CCfgProbePing::ValidateParams - Invalid parameters"));
  ExpectRefused("PROBE FOO", 1, kBadType, "'FOO' is not a valid probe type.");
  ExpectRefused("PROBE HWID a\"", 1, kBadLine, "Invalid number of quotes in line.");
  ExpectRefused("PROBE HWID \xE9", 1, kBadLine, Extra("PROBE", "\xE9"));
  // A line of 16-bit text, or with a NUL in it: the message keeps its words.
  ExpectRefused(std::string("PROBE HWID a\nP\0R\0O\0B\0E\0\n\0", 25), 2, kUnknown,
                "P is not a valid command.");
  ExpectRefused(std::string("PROBE HW\0ID a", 13), 1, kBadType, "'HW' is not a valid probe type.");
  ExpectRefused(std::string("PROBE HWID a\0b", 14), 1, kBadLine, Extra("PROBE", ""));
  EXPECT_EQ(Load("probe PiNg 03 a0"), kSuccess);
  machine.FailPoolAllocation(1);
  ExpectRefused("PROBE HWID a", 1, kBadType, "Unrecoverable internal error: Failed to create PROBE command.");
}

TEST_F(ProbeSyntax, FoundFollowsItsProbe) {
  EXPECT_EQ(Load("PROBE HWID a"), kSuccess);
  EXPECT_EQ(Load("IFSET a\nPROBE HWID a\nFOUND A\nELSE\nPROBE HWID a\nFOUND A\nPROBE HWID b\nENDIF"),
            kSuccess);
  // The line looked at is read as a command.
  for (const char* script :
       {"PROBE HWID a\n\n  // a comment\n\nfound A\nDISPLAY b", "PROBE HWID a\nDISPLAY b\n"}) {
    EXPECT_EQ(Load(script), kSuccess);
    EXPECT_EQ(std::ranges::distance(parser.Commands()), 2) << script;
  }
  const std::pair<const char*, int> misplaced[] = {
      {"FOUND A", 1},
      {"PROBE HWID a\nDISPLAY b\nFOUND A", 3},
      {"PROBE HWID a\nFOUND A\nFOUND A", 3},
      {"IFSET a\nFOUND A\nENDIF", 2},
      {"IFSET a\nELSE\nPROBE HWID a\nFOUND A\nFOUND A\nENDIF", 5},
  };
  for (const auto& [script, line] : misplaced)
    ExpectRefused(script, line, kOutOfPlace,
                  "Command FOUND can not be used here, it must directly follow a PROBE command.");
  ExpectRefused("PROBE HWID a\n" + std::string(256, 'x'), 2, kBadLine, "");
}

TEST_F(ProbeSyntax, FoundPrintsItsTags) {
  // Whether or not a script could contain it where it stands.
  for (auto [line, printed] :
       {std::pair{"FOUND A B", "FOUND:\tA\tB\n"}, {"FOUND A", "FOUND:\tA\n"}, {"FOUND", "FOUND\n"}}) {
    machine.files[".\\F.CFG"] = line;
    CFileCfg file(".\\F.CFG");
    PoolPtr<CCfgCommand> found;
    EXPECT_EQ(CCfgCommand::MakeCommand(&file, found, &parser), kSuccess);
    Discard(found->ReadFromFile(file));
    machine.console.clear();
    found->DebugPrint();
    EXPECT_EQ(machine.console, printed);
  }
}

}  // namespace
}  // namespace varnok
