// PROBE and FOUND while a script is read: keywords, parameters, places.
#include "cfg/found_command.h"
#include "tests/cfg/probe_script_test.h"

namespace varnok {
namespace {

using ProbeSyntax = testing::ProbeScript;

constexpr Status kCount = 0xC00000000009000B;
constexpr Status kValue = 0xC00000000009000C;
constexpr Status kBadLine = 0xC00000000009000D;
constexpr Status kOutOfPlace = 0xC000000000090015;

std::string TooMany(const std::string& keyword) {
  return "Too many parameters for the " + keyword + " command.";
}
std::string Missing(const std::string& keyword, const std::string& which = "first") {
  return "The PROBE " + keyword + " command is missing its " + which + " parameter.";
}
std::string NotHex(const std::string& token) {
  return token +
         " is not a valid input for the PROBE command.  The value must be a valid hexidecimal number.";
}

TEST_F(ProbeSyntax, CountOfParameters) {
  struct {
    const char* keyword;
    const char* few;   ///< parameters, one too few; null where none is asked for
    const char* many;  ///< one too many; null where there is no limit
  } const cases[] = {
      {"SYSTEM", "", "a b"},
      {"BOARD_ID", "", "a b"},
      {"BMCCONFIG", "a", "a b c"},
      {"PING", "3", "3 A0 1"},
      {"DS1624S", "3", "3 A0 1"},
      {"AT24C02", "3", "3 A0 1"},
      {"BMC_TYPE", nullptr, "1"},
      {"K410V_SYS", nullptr, "1"},
      {"QRX_TYPE", nullptr, "1"},
      {"PROCESSOR_FAMILY_MODEL", "1", nullptr},
      {"PROCESSOR_CORES", "1", "1 2 3"},
      {"PROCESSOR_TDC", "1", "1 2 3"},
      {"DISCRETE_SENSOR", "1 2 3 4", "1 2 3 4 5 6"},
      {"BASEBOARD_PRODID", "", "1 2"},
      {"BASEBOARD_REVID", "", "1 2"},
      {"FRUFIELD", "PN", "PN a b"},
      {"FAN_SIGNAL", "1", "1 2 3"},
      {"HWID", nullptr, "a b"},
      {"DIMM", nullptr, "1 2"},
      {"DEVICE_ID", nullptr, "20 0 1 2"},
      {"IMBDEVICE", nullptr, "0 FF 20 1"},
      {"PROCESSOR", nullptr, "1 2 3 4 5 6 7"},
  };
  for (const auto& each : cases) {
    std::string line = std::string("SET a\nPROBE ") + each.keyword + " ";
    if (each.few != nullptr) ExpectRefused(line + each.few, 2, kCount, TooMany(each.keyword));
    if (each.many != nullptr) ExpectRefused(line + each.many, 2, kCount, TooMany(each.keyword));
  }
}

TEST_F(ProbeSyntax, MissingParameter) {
  for (std::string keyword : {"HWID", "DIMM", "DEVICE_ID", "IMBDEVICE", "DS1624S", "AT24C02", "PROCESSOR"})
    ExpectRefused("PROBE " + keyword, 1, kCount, Missing(keyword));
  for (std::string keyword : {"BIOSVER", "BMCVER", "HSCVER"})
    ExpectRefused("PROBE " + keyword, 1, kValue, Missing(keyword));
  ExpectRefused("PROBE BMCVER boot", 1, kValue, Missing("BMCVER"));
  ExpectRefused("PROBE DEVICE_ID 20", 1, kCount, Missing("DEVICE_ID", "second"));
}

TEST_F(ProbeSyntax, NumberThatIsNotHexadecimal) {
  for (std::string probe : {"PING x 20",
                            "PING 3 x",
                            "DEVICE_ID x 0",
                            "DEVICE_ID 20 x",
                            "DEVICE_ID 20 0 x",
                            "IMBDEVICE x",
                            "IMBDEVICE FF x",
                            "AT24C02 x A0",
                            "PROCESSOR x",
                            "PROCESSOR 1 2 x 4",
                            "PROCESSOR 1 2 3 4 5 x",
                            "PROCESSOR_FAMILY_MODEL x 6",
                            "PROCESSOR_FAMILY_MODEL 1 x 6",
                            "PROCESSOR_CORES 1 x",
                            "PROCESSOR_TDC x 1",
                            "DISCRETE_SENSOR 1 2 3 4 x",
                            "BASEBOARD_PRODID x",
                            "BASEBOARD_REVID x",
                            "FAN_SIGNAL x 0",
                            "DIMM x"})
    ExpectRefused("PROBE " + probe, 1, kValue, NotHex("x"));
  // Between the valid counts the number that would have to be read is missing.
  for (std::string probe : {"PROCESSOR 1 2", "PROCESSOR 1 2 3", "PROCESSOR 1 2 3 4 5"})
    ExpectRefused("PROBE " + probe, 1, kValue, NotHex(""));
  EXPECT_EQ(Load("PROBE PROCESSOR_FAMILY_MODEL 1 6 x"), kSuccess) << "read as two parameters";
}

TEST_F(ProbeSyntax, ValueOutOfItsRange) {
  for (std::string keyword :
       {"PROCESSOR %", "PROCESSOR_FAMILY_MODEL % 6", "PROCESSOR_CORES % 1", "PROCESSOR_TDC % 1"}) {
    for (std::string number : {"0", "9"}) {
      std::string line = "PROBE " + keyword;
      ExpectRefused(line.replace(line.find('%'), 1, number), 1, kValue,
                    "Invalid processor probe number " + number + ", the value must be in the range 1 - 8.");
    }
  }
  for (std::string keyword : {"PING", "IMBDEVICE", "DS1624S", "AT24C02", "IMBDEVICE 1"}) {
    ExpectRefused("PROBE " + keyword + " FF 22", 1, kValue,
                  "The bus address FF is not valid with the slave address 22.");
    ExpectRefused("PROBE " + keyword + " 03 21", 1, kValue, "The device address 21 is not even.");
    EXPECT_EQ(Load("PROBE " + keyword + " FF 20"), kSuccess);
  }
  ExpectRefused("PROBE BOARD_ID ~", 1, kValue, "The input character '7E' must be printable.");
  ExpectRefused("PROBE BOARD_ID \" \"", 1, kValue, "The input character '20' must be printable.");
  ExpectRefused("PROBE BOARD_ID \"\xE9\"", 1, kValue, "The input character 'E9' must be printable.");
  ExpectRefused("PROBE BOARD_ID \"\"", 1, kValue, "The input character '0' must be printable.");
  ExpectRefused("PROBE DIMM -1", 1, kValue,
                "Invalid value for PROBE (-1), the value must be greater than zero.");
  for (std::string code : {"PNX", "P"})
    ExpectRefused("PROBE FRUFIELD " + code + " a", 1, kValue,
                  "\nThe input '" + code + "' is invalid, the string cannot be longer than 2 characters.\n");
}

TEST_F(ProbeSyntax, UnknownFieldLoadsWithItsMessage) {
  EXPECT_EQ(Load("PROBE FRUFIELD XY abc"), kSuccess);
  EXPECT_EQ(Message(), "XY is not a valid FRU field.");
}

TEST_F(ProbeSyntax, Keyword) {
  ExpectRefused("PROBE", 1, kCount, "The PROBE command is missing its first parameter.");
  ExpectRefused("PROBE FOO", 1, 0xC000000000090010, "'FOO' is not a valid probe type.");
  ExpectRefused("PROBE HWID a\"", 1, kBadLine, "Invalid number of quotes in line.");
  ExpectRefused("PROBE HWID \xE9", 1, kBadLine,
                "Too many parameters for the PROBE command.\n   The parameters '\xE9' were not accepted.");
  // A line of 16-bit text, or with a NUL in it: the message keeps its words.
  ExpectRefused(std::string("PROBE HWID a\nP\0R\0O\0B\0E\0\n\0", 25), 2, 0xC000000000090016,
                "P is not a valid command.");
  ExpectRefused(std::string("PROBE HW\0ID a", 13), 1, 0xC000000000090010, "'HW' is not a valid probe type.");
  ExpectRefused(std::string("PROBE HWID a\0b", 14), 1, kBadLine,
                "Too many parameters for the PROBE command.\n   The parameters '' were not accepted.");
  EXPECT_EQ(Load("probe PiNg 03 a0"), kSuccess);
  machine.FailPoolAllocation(1);
  ExpectRefused("PROBE HWID a", 1, 0xC000000000090010,
                "Unrecoverable internal error: Failed to create PROBE command.");
}

TEST_F(ProbeSyntax, FoundFollowsItsProbe) {
  const std::string misplaced =
      "Command FOUND can not be used here, it must directly follow a PROBE command.";
  EXPECT_EQ(Load("PROBE HWID a\n\n  // a comment\n\nfound A\nDISPLAY b"), kSuccess);
  EXPECT_EQ(parser.Commands().size(), 2u);
  EXPECT_EQ(Load("PROBE HWID a"), kSuccess);
  EXPECT_EQ(Load("PROBE HWID a\nDISPLAY b\n"), kSuccess);
  EXPECT_EQ(parser.Commands().size(), 2u) << "the line looked at is read as a command";
  EXPECT_EQ(Load("IFSET a\nPROBE HWID a\nFOUND A\nELSE\nPROBE HWID a\nFOUND A\nPROBE HWID b\nENDIF"),
            kSuccess);
  ExpectRefused("FOUND A", 1, kOutOfPlace, misplaced);
  ExpectRefused("PROBE HWID a\nDISPLAY b\nFOUND A", 3, kOutOfPlace, misplaced);
  ExpectRefused("PROBE HWID a\nFOUND A\nFOUND A", 3, kOutOfPlace, misplaced);
  ExpectRefused("IFSET a\nFOUND A\nENDIF", 2, kOutOfPlace, misplaced);
  ExpectRefused("IFSET a\nELSE\nPROBE HWID a\nFOUND A\nFOUND A\nENDIF", 5, kOutOfPlace, misplaced);
  ExpectRefused("PROBE HWID a\n" + std::string(256, 'x'), 2, kBadLine, "");
}

TEST_F(ProbeSyntax, TagsOfFound) {
  ExpectRefused("PROBE HWID a\nFOUND", 2, kBadLine, "The FOUND command is missing its first parameter.");
  ExpectRefused("PROBE HWID a\nFOUND A B C", 2, kCount,
                "Too many parameters for the FOUND command.\n   The parameters 'C' were not accepted.");
  // It prints its tags, whether or not a script could contain it where it stands.
  for (auto [line, printed] : {std::pair{" A B", "FOUND:\tA\tB\n"}, {" A", "FOUND:\tA\n"}, {"", "FOUND\n"}}) {
    machine.files[".\\F.CFG"] = std::string("FOUND") + line;
    CFileCfg file(".\\F.CFG");
    std::string keyword;
    file.GetFirstInput(keyword, 256);
    CCfgFound found;
    found.SetParser(&parser);
    found.ReadFromFile(file);
    machine.console.clear();
    found.DebugPrint();
    EXPECT_EQ(machine.console, printed);
  }
}

}  // namespace
}  // namespace varnok
