// What FRUNAME, FRUADDRESS, FRUAREA, FRUFIELD, SDRNAME and CLEARSDR refuse while a script is read.
#include "cfg/fru_address_command.h"
#include "cfg/fru_area_command.h"
#include "tests/cfg/script_test.h"

namespace varnok {
namespace {

constexpr Status kTooMany = 0xC00000000009000B;
constexpr Status kBadValue = 0xC00000000009000C;
constexpr Status kBadLine = 0xC00000000009000D;
constexpr Status kOutOfBlock = 0xC000000000090017;
constexpr Status kBadArea = 0xC000000000090019;
constexpr Status kBadField = 0xC00000000009001A;

class FruSyntax : public testing::ScriptTest {
 protected:
  /// Expects the last line, behind a FRUNAME, to be refused.
  void ExpectLine(const std::string& line, Status status, const std::string& message) {
    ExpectRefused("FRUNAME SYSTEM\n" + line, 2, status, message);
  }
  void ExpectField(const std::string& line, Status status, const std::string& message) {
    ExpectRefused("FRUNAME SYSTEM\nFRUAREA Chassis\n" + line, 3, status, message);
  }
  FruDeviceAddress AddressOf(const std::string& parameters) {
    EXPECT_EQ(Load("FRUNAME SYSTEM\nFRUADDRESS " + parameters), kSuccess) << parameters << Message();
    return static_cast<const CCfgFruAddress&>(*parser.Commands().back()).GetAddress();
  }
};

TEST_F(FruSyntax, FileCommandsAreRefused) {
  ExpectRefused("FRUNAME", 1, kBadLine, "The FRUNAME command is missing its first parameter.");
  ExpectRefused("FRUNAME a.fru b", 1, kTooMany,
                "Too many parameters for the FRUNAME command.\n   The parameters 'b' were not accepted.");
  ExpectRefused("SDRNAME", 1, kBadLine, "The SDRNAME command is missing its first parameter.");
  ExpectRefused("SDRNAME a.sdr last COMPARE First NOW x", 1, kTooMany,
                "Too many parameters for the SDRNAME command.\n   The parameters 'NOW x' were not accepted.");
  ExpectRefused("CLEARSDR x", 1, kTooMany,
                "Too many parameters for the CLEARSDR command.\n   The parameters 'x' were not accepted.");
}

TEST_F(FruSyntax, InputFilesAreCountedWhenLoaded) {
  ASSERT_EQ(Load("SDRNAME a.sdr\nSDRNAME b.sdr\nFRUNAME a.fru\nFRUNAME system"), kSuccess);
  EXPECT_EQ(parser.UpdateFileCount(), 3u);
  EXPECT_EQ(parser.UpdateCount(), 4u);
}

TEST_F(FruSyntax, AddressHasThreeForms) {
  FruDeviceAddress expected;
  expected.deviceId = 0x1F;
  EXPECT_TRUE(AddressOf("1F").IsSameDevice(expected));
  expected.bus = 3;
  expected.deviceAddress = 0xA0;
  EXPECT_TRUE(AddressOf("imbdevice 1f 3 A0").IsSameDevice(expected));
  expected.deviceId = 0;
  EXPECT_TRUE(AddressOf("IMBDEVICE 3 A0").IsSameDevice(expected));
  expected.nvsType = 0;
  EXPECT_TRUE(AddressOf("AT24C02 3 A0").IsSameDevice(expected));
  expected.nvsType = 1;
  EXPECT_TRUE(AddressOf("DS1624S 3 A0").IsSameDevice(expected));
}

TEST_F(FruSyntax, AddressIsRefused) {
  const std::string tooMany = "Too many parameters for the FRUADDRESS command.";
  ExpectLine("FRUADDRESS", kTooMany, "The FRUADDRESS command is missing its first parameter.");
  ExpectLine("FRUADDRESS IMBDEVICE 1", kTooMany, "The FRUADDRESS command is missing its third parameter.");
  ExpectLine("FRUADDRESS 1 2", kTooMany, tooMany);
  ExpectLine("FRUADDRESS AT24C02 0 3 A0", kTooMany, tooMany);
  ExpectLine("FRUADDRESS IMBDEVICE 0 3 A0 1", kTooMany, tooMany);
  ExpectLine("FRUADDRESS AT24CO2 3 A0", 0xC000000000090018, "AT24CO2 is not a valid NVS type.");
  ExpectLine("FRUADDRESS IMBDEVICE", kBadLine, "IMBDEVICE is not a valid input for the FRUADDRESS command.");
  ExpectLine("FRUADDRESS AT24C02 3 G0", kBadLine, "G0 is not a valid input for the FRUADDRESS command.");
  ExpectLine("FRUADDRESS AT24C02 FF A0", kBadValue,
             "The bus address FF is not valid with the slave address A0.");
  ExpectRefused("FRUADDRESS 0", 1, kOutOfBlock, "FRUAREA command found without matching FRUNAME.");
  ExpectRefused("FRUNAME a\nFRUADDRESS 0\nIFSET x\nFRUADDRESS 1\nENDIF", 4, 0xC000000000090035,
                "Multiple 'FRUADDRESS' commands cannot be given after 'FRUNAME'.\n");
  EXPECT_EQ(Load("FRUNAME a\nFRUADDRESS 0\nFRUNAME b\nFRUADDRESS 1"), kSuccess);
}

TEST_F(FruSyntax, AreaIsRefused) {
  const std::string missing = "The FRUAREA command is missing its ";
  ExpectRefused("FRUAREA Board", 1, 0xC000000000090015, "FRUAREA command found without matching FRUNAME.");
  ExpectLine("FRUAREA", kBadLine, missing + "first parameter.");
  ExpectLine("FRUAREA Boards", kBadArea, "Boards is not a valid FRU area.");
  ExpectLine("FRUAREA MultiRec", kTooMany, missing + "second parameter.");
  ExpectLine(
      "FRUAREA MultiRec x", kBadLine,
      "x is not a valid input for the FRUAREA command.  The value must be a valid hexidecimal number.");
  ExpectLine("FRUAREA MultiRec 0", kBadValue,
             "Invalid multi record selection: 0.  The value must be in the range 1 - 9.");
  ExpectLine("FRUAREA MultiRec A", kBadValue,
             "Invalid multi record selection: A.  The value must be in the range 1 - 9.");
  ExpectLine("FRUAREA Board VALIDATE", kOutOfBlock,
             "Validate command should be followed by one parameter.\n");
  ExpectRefused("FRUAREA Board VALIDATE t", 1, kOutOfBlock,
                "FRUAREA command found without matching FRUNAME.");
  ExpectLine("FRUAREA Board size=6x", kBadValue, "size=6x is not a valid input for the FRUAREA command.");
  ExpectLine("FRUAREA Board size=", kBadValue, "size= is not a valid input for the FRUAREA command.");
  ExpectLine("FRUAREA Header size=64", kBadValue, "size=64 is not a valid input for the FRUAREA command.");
  ExpectLine("FRUAREA Board COMPARE now", kTooMany,
             "Too many parameters for the FRUAREA command.\n   The parameters 'now' were not accepted.");
  EXPECT_EQ(Load("FRUNAME a\nfruarea multirec 9\nFRUAREA product compare SIZE=96 validate t compare"),
            kSuccess);
}

TEST_F(FruSyntax, FieldIsRefused) {
  ExpectRefused("FRUNAME SYSTEM\nFRUFIELD S#", 2, kOutOfBlock,
                "FRUFIELD command found without matching FRUAREA.");
  ExpectField("FRUFIELD", kBadLine, "The FRUFIELD command is missing its first parameter.");
  ExpectField("FRUFIELD XY", kBadField, "XY is not a valid FRU field.");
  ExpectField("FRUFIELD AMx", kBadLine, "");
  ExpectField("FRUFIELD AM0", kBadValue, "");
  ExpectField("FRUFIELD AM10", kBadValue, "");
  ExpectField("FRUFIELD MD x", kTooMany, "The FRUFIELD MD is not allowed to have any parameters.");
  ExpectField("FRUFIELD S# a b", kTooMany,
              "Too many parameters for the FRUFIELD command.\n   The parameters 'b' were not accepted.");
  ExpectField("FRUFIELD pv x", kBadField, "PV is not a valid FRU field for the Chassis FRU area.");
  ExpectRefused("FRUNAME SYSTEM\nFRUAREA Header\nFRUFIELD AM1 x", 3, kBadField,
                "AMx is not a valid FRU field for the Header FRU area.");
  EXPECT_EQ(Load("FRUNAME a\nFRUAREA Board\nFRUFIELD md\nFRUFIELD am9 x\nFRUFIELD ID \"\"\nFRUFIELD mnx"),
            kSuccess);
}

TEST_F(FruSyntax, RedirectionIsRefused) {
  ExpectField("FRUFIELD S# @ENV", kBadLine,
              "Unable to determine FRU field redirection type from string:\n   '@ENV'.");
  ExpectField("FRUFIELD S# @FOO:ASCII", kBadLine, "FOO is not a valid FRU redirection type.");
  ExpectField("FRUFIELD S# @ENV:ASCII", kBadLine,
              "Unable to determine FRU field input type from string:\n'@ENV:ASCII'.");
  ExpectField("FRUFIELD S# @ENV:TEXT:SN", kBadLine, "TEXT is not a valid FRU input type.");
  ExpectField("FRUFIELD S# @STDIN:BCD", kBadField, "BCD is an unsupported FRU input type.");
  ExpectField("FRUFIELD S# @FILE:ASCII:SN.TXT", kBadLine,
              "Unable to determine environment variable name from string: '@FILE:ASCII:SN.TXT'.");
  ExpectField(
      "FRUFIELD S# @ENVFILE:ASCII:SN:x", kBadLine,
      "Unable to read the FRU field file redirection line number from string:\n   '@ENVFILE:ASCII:SN:x'");
  ExpectField("FRUFIELD S# @FILE:ASCII:SN.TXT:0", kBadLine,
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
