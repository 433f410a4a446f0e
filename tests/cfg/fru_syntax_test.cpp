// What FRUNAME, FRUADDRESS, FRUAREA and FRUFIELD take and refuse while a script is read.
#include "cfg/fru_address_command.h"
#include "cfg/fru_area_command.h"
#include "tests/cfg/script_test.h"

namespace varnok {
namespace {

constexpr Status kBadArea = 0xC000000000090019;
constexpr Status kBadField = 0xC00000000009001A;

class FruSyntax : public testing::ScriptTest {
 protected:
  /// Expects a line behind a FRUNAME to be refused.
  void ExpectLine(const std::string& line, Status status, const std::string& message) {
    ExpectRefused("FRUNAME SYSTEM\n" + line, 2, status, message);
  }
  /// Expects the parameters of a FRUFIELD of the chassis area to be refused.
  void ExpectField(const std::string& parameters, Status status, const std::string& message) {
    ExpectRefused("FRUNAME SYSTEM\nFRUAREA Chassis\nFRUFIELD " + parameters, 3, status, message);
  }
  bool IsAddress(const std::string& parameters, const FruDeviceAddress& expected) {
    EXPECT_EQ(Load("FRUNAME SYSTEM\nFRUADDRESS " + parameters), kSuccess) << parameters << Message();
    return static_cast<const CCfgFruAddress&>(parser.Commands().back()).GetAddress().IsSameDevice(expected);
  }
};

TEST_F(FruSyntax, InputFilesAreCountedWhenLoaded) {
  ASSERT_EQ(Load("SDRNAME a.sdr\nSDRNAME b.sdr\nFRUNAME a.fru\nFRUNAME system"), kSuccess);
  EXPECT_EQ(parser.UpdateFileCount(), 3u);
  for (const char* script : {"SET a", "SDRNAME b.sdr\nNOSUCH"}) {
    Discard(Load(script));
    EXPECT_EQ(parser.UpdateFileCount(), 0u) << script;
  }
}

TEST_F(FruSyntax, AddressHasThreeForms) {
  FruDeviceAddress expected;
  expected.deviceId = 0x1F;
  EXPECT_TRUE(IsAddress("1F", expected));
  expected.bus = 3;
  expected.deviceAddress = 0xA0;
  EXPECT_TRUE(IsAddress("imbdevice 1f 3 A0", expected));
  expected.deviceId = 0;
  EXPECT_TRUE(IsAddress("IMBDEVICE 3 A0", expected));
  expected.nvsType = 0;
  EXPECT_TRUE(IsAddress("AT24C02 3 A0", expected));
  expected.nvsType = 1;
  EXPECT_TRUE(IsAddress("DS1624S 3 A0", expected));
}

TEST_F(FruSyntax, AddressIsRefused) {
  const std::string name = "FRUADDRESS";
  ExpectLine(name, kTooMany, Missing(name));
  ExpectLine(name + " IMBDEVICE 1", kTooMany, Missing(name, "third"));
  for (const char* parameters : {" 1 2", " AT24C02 0 3 A0", " IMBDEVICE 0 3 A0 1"})
    ExpectLine(name + parameters, kTooMany, "Too many parameters for the FRUADDRESS command.");
  ExpectLine(name + " AT24CO2 3 A0", 0xC000000000090018, "AT24CO2 is not a valid NVS type.");
  ExpectLine(name + " IMBDEVICE", kBadLine, Invalid("IMBDEVICE", name));
  ExpectLine(name + " AT24C02 3 G0", kBadLine, Invalid("G0", name));
  ExpectLine(name + " AT24C02 FF A0", kBadValue,
             "The bus address FF is not valid with the slave address A0.");
  ExpectRefused("FRUADDRESS 0", 1, kOutOfBlock, "FRUAREA command found without matching FRUNAME.");
  ExpectRefused("FRUNAME a\nFRUADDRESS 0\nIFSET x\nFRUADDRESS 1\nENDIF", 4, 0xC000000000090035,
                "Multiple 'FRUADDRESS' commands cannot be given after 'FRUNAME'.\n");
  EXPECT_EQ(Load("FRUNAME a\nFRUADDRESS 0\nFRUNAME b\nFRUADDRESS 1"), kSuccess);
}

TEST_F(FruSyntax, AreaIsRefused) {
  const std::string noName = "FRUAREA command found without matching FRUNAME.";
  ExpectRefused("FRUAREA Board", 1, kOutOfPlace, noName);
  ExpectRefused("FRUAREA Board VALIDATE t", 1, kOutOfBlock, noName);
  ExpectLine("FRUAREA Boards", kBadArea, "Boards is not a valid FRU area.");
  ExpectLine("FRUAREA MultiRec", kTooMany, Missing("FRUAREA", "second"));
  ExpectLine("FRUAREA MultiRec x", kBadLine, NotHex("x", "FRUAREA"));
  for (std::string number : {"0", "A"})
    ExpectLine("FRUAREA MultiRec " + number, kBadValue,
               "Invalid multi record selection: " + number + ".  The value must be in the range 1 - 9.");
  ExpectLine("FRUAREA Board VALIDATE", kOutOfBlock,
             "Validate command should be followed by one parameter.\n");
  for (std::string size : {"Board size=6x", "Board size=", "Header size=64"})
    ExpectLine("FRUAREA " + size, kBadValue, Invalid(size.substr(size.find(' ') + 1), "FRUAREA"));
  EXPECT_EQ(Load("FRUNAME a\nfruarea multirec 9\nFRUAREA product compare SIZE=96 validate t compare"),
            kSuccess);
}

TEST_F(FruSyntax, FieldIsRefused) {
  ExpectLine("FRUFIELD S#", kOutOfBlock, "FRUFIELD command found without matching FRUAREA.");
  ExpectField("XY", kBadField, "XY is not a valid FRU field.");
  ExpectField("AMx", kBadLine, "");
  for (const char* number : {"AM0", "AM10"}) ExpectField(number, kBadValue, "");
  ExpectField("MD x", kTooMany, "The FRUFIELD MD is not allowed to have any parameters.");
  ExpectField("S# a b", kTooMany, Extra("FRUFIELD", "b"));
  ExpectField("pv x", kBadField, "PV is not a valid FRU field for the Chassis FRU area.");
  ExpectRefused("FRUNAME SYSTEM\nFRUAREA Header\nFRUFIELD AM1 x", 3, kBadField,
                "AMx is not a valid FRU field for the Header FRU area.");
  EXPECT_EQ(Load("FRUNAME a\nFRUAREA Board\nFRUFIELD md\nFRUFIELD am9 x\nFRUFIELD ID \"\"\nFRUFIELD mnx"),
            kSuccess);
}

TEST_F(FruSyntax, RedirectionIsRefused) {
  const std::string unable = "Unable to determine ";
  ExpectField("S# @ENV", kBadLine, unable + "FRU field redirection type from string:\n   '@ENV'.");
  ExpectField("S# @FOO:ASCII", kBadLine, "FOO is not a valid FRU redirection type.");
  ExpectField("S# @ENV:ASCII", kBadLine, unable + "FRU field input type from string:\n'@ENV:ASCII'.");
  ExpectField("S# @ENV:TEXT:SN", kBadLine, "TEXT is not a valid FRU input type.");
  ExpectField("S# @STDIN:BCD", kBadField, "BCD is an unsupported FRU input type.");
  ExpectField("S# @FILE:ASCII:SN.TXT", kBadLine,
              unable + "environment variable name from string: '@FILE:ASCII:SN.TXT'.");
  ExpectField(
      "S# @ENVFILE:ASCII:SN:x", kBadLine,
      "Unable to read the FRU field file redirection line number from string:\n   '@ENVFILE:ASCII:SN:x'");
  ExpectField("S# @FILE:ASCII:SN.TXT:0", kBadLine,
              "The FRU field file redirection line number: 0 is not valid.");
  EXPECT_EQ(Load("FRUNAME a\nFRUAREA Board\nFRUFIELD S# @stdin:ascii\nFRUFIELD S# @Env:Ascii:SN\n"
                 "FRUFIELD S# @ENV:ASCII:SN:1\nFRUFIELD S# @FILE:ASCII:SN.TXT:2"),
            kSuccess);
}

TEST_F(FruSyntax, DebugPrintNamesWhatIsProgrammed) {
  ASSERT_EQ(Load("FRUNAME a.fru\nFRUAREA board\nFRUFIELD am3 x\nSDRNAME b.sdr"), kSuccess);
  parser.DebugPrint();
  EXPECT_EQ(machine.console, "a.fru\nFRU Area: Board\nFRU Field: AMx\nb.sdr\n");
}

TEST_F(FruSyntax, BlockBelongsToTheLastFruNameThatWasRead) {
  ASSERT_EQ(Load("IFSET a\nFRUNAME x.fru\nENDIF\nFRUAREA Board\nFRUFIELD PN y"), kSuccess);
  EXPECT_NE(parser.CurrentFruName(), nullptr);
  ASSERT_EQ(Load("SET a"), kSuccess);
  EXPECT_EQ(parser.CurrentFruName(), nullptr);
}

}  // namespace
}  // namespace varnok
