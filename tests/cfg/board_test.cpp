// Scripts that change the FRU of the simulated default board.
#include "cfg/cfg_parser.h"
#include "tests/cfg/board_script_test.h"

namespace varnok {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using testing::kAssetTag;
using testing::kChange;
using testing::kUpdated;

const std::string kWritten =
    "\nFRU IMBDEVICE on bus FFh, Device ID 00h, IPMB adresss 20h, Lun 00h\nLoading Common Header Area\n"
    "Loading FRU Internal Use Area\nLoading FRU Chassis Info Area\nLoading FRU Board Info Area\n"
    "Loading FRU Product Info Area\nLoading FRU Multi Record Area\n"
    "\nFRU File Area(s) successfully loaded into FRU memory.\n";
const std::string kRefreshShown =
    "Refreshing BMC...\nThis operation will take around 50 seconds to complete\n";
const std::string kHeaderQuestion =
    "The FRU header area is different from the FRU file you are trying to program.\n"
    "Note: Only the FRU file data is programmed. You will need to re-run the\n"
    "package in order to modify any of the FRU field information.\n"
    "Would you like to program the file data over the existing FRU data? [Y/N]";

class Board : public testing::BoardScript {
 protected:
  /// Expects the script to succeed and the FRU to hold these texts then; a field's text may begin with its
  /// type and length.
  void ExpectProgrammed(const std::string& script, std::initializer_list<std::string> texts) {
    SCOPED_TRACE(script);
    EXPECT_EQ(Run(script), 0) << message;
    for (const std::string& text : texts) EXPECT_THAT(Content("board.bin"), HasSubstr(text));
  }
  /// Expects the script to end with this status and message, and the FRU to be as it was.
  void ExpectFailure(const std::string& script, int status, const std::string& text) {
    SCOPED_TRACE(script);
    std::string before = Content("board.bin");
    EXPECT_EQ(Run(script), status);
    EXPECT_EQ(message, text);
    EXPECT_EQ(Content("board.bin"), before);
  }
};

/// Changes the one place of a text.
void Replace(std::string& text, const std::string& from, const std::string& to) {
  std::size_t at = text.find(from);
  ASSERT_NE(at, std::string::npos) << from;
  text.replace(at, from.size(), to);
}

TEST_F(Board, SystemsOwnFieldsAreChangedAndNothingElse) {
  std::string expected = Content("board.bin");
  EXPECT_EQ(Run(kChange + "FRUFIELD S#\n"), 0);
  EXPECT_EQ(machine.console, kWritten) << "no file was loaded: no word of an update";
  // The area's last byte is its checksum: 417 became 500, a smaller sum by 7.
  Replace(expected, "ASSET-000417", "ASSET-000500");
  expected[0x147] = static_cast<char>(expected[0x147] + ('4' + '1' + '7') - ('5' + '0' + '0'));
  EXPECT_EQ(Content("board.bin"), expected);
}

TEST_F(Board, BlockThatChangesNothingWritesNothing) {
  std::string before = Content("board.bin");
  EXPECT_EQ(Run("FRUNAME HEARTHS2.FRU\nFRUAREA Board\nFRUAREA Chassis\n"), 0);
  EXPECT_EQ(machine.console, "\nProcessing FRU File HEARTHS2.FRU...\n\n" + kUpdated);
  EXPECT_EQ(Content("board.bin"), before);
  EXPECT_GT(RequestCount("0A/0 11"), 0) << "read";
  EXPECT_EQ(RequestCount("0A/0 12"), 0) << "not written";
}

TEST_F(Board, FieldsComeFromFileEnvironmentAndTextFiles) {
  machine.environment["SN"] = u"VWSB26010001";
  machine.environment["STATION"] = u"ST.TXT";
  machine.files[".\\ST.TXT"] = "Plant 2\nLine 7 Shift 1\n";
  // What the script does not name stays.
  ExpectProgrammed(
      "FRUNAME HEARTHS2.FRU\nFRUAREA Chassis\nFRUFIELD CT 11\nFRUAREA Board\nFRUFIELD P#\n"
      "FRUFIELD S# @ENV:ASCII:SN\nFRUFIELD AM2 @FILE:ASCII:ST.TXT:2\nFRUFIELD MN @ENVFILE:ASCII:STATION:1\n",
      {"VW-S2-MB-R4", "VWSB26010001", "\316Line 7 Shift 1", "\307Plant 2", "hearth_s2_r3.fru"});
  EXPECT_EQ(Content("board.bin")[0x1A], 0x11);
}

TEST_F(Board, OperatorIsAskedUntilTheAnswerIsRight) {
  machine.keys = u"x\rASSET-1\rnASSET-2\rqy";
  ExpectProgrammed(kAssetTag + "@STDIN:ASCII\n", {"\307ASSET-2"});
  EXPECT_THAT(machine.console,
              ::testing::StartsWith(
                  "Enter the value for Product Asset Tag  :x\n"
                  "The input 'x' is invalid, the string cannot be of length 1.\n"
                  "Enter the value for Product Asset Tag  :ASSET-1\nIs this correct: 'ASSET-1'? n\n"
                  "Enter the value for Product Asset Tag  :ASSET-2\nIs this correct: 'ASSET-2'? y\n"));
  // The area has 9 free bytes by now and the field 7.
  machine.keys = u"1234567890123456789\ry";
  ExpectProgrammed(kAssetTag + "@STDIN:ASCII\n", {"\3201234567890123456\320"});
  ExpectProgrammed(kAssetTag + "\"\"\n", {"VWS225060417\xC0\xD0hearth"});
  machine.keys = std::u16string(u"\0A\0B\r\0y", 7);
  ExpectProgrammed("FRUNAME SYSTEM\nFRUAREA Chassis\nFRUFIELD AM1 @STDIN:ASCII\n", {"\302AB\317Rail kit"});
  EXPECT_THAT(machine.console, HasSubstr("Enter the value for Chassis Additional Manufacturer Field 1:AB\n"));
}

TEST_F(Board, ChassisTypeOfTheOperatorIsChecked) {
  machine.keys = u"1G\r1E\r17\rn05\ry";
  EXPECT_EQ(Run("FRUNAME SYSTEM\nFRUAREA Chassis\nFRUFIELD CT @STDIN:ASCII\n"), 7);
  EXPECT_THAT(machine.console,
              HasSubstr("The input '1G' is invalid, it must be a valid hexidecimal number from 01 to 1D.\n"));
  EXPECT_THAT(machine.console,
              HasSubstr("The input '1E' is invalid, it must be a hexidecimal number from 01 to "
                        "1D.\nEnter the value for Chassis Type  :17\nIs this correct: '17'? n\n"));
  // The digits reach the field as they are, and it holds one byte.
  EXPECT_THAT(message, ::testing::StartsWith("Could not assign new data to the chassis area."));
}

TEST_F(Board, WholeFileReplacesAnotherLayoutWhenTheOperatorAgrees) {
  std::string file = Sample("HEARTHS2.FRU");
  // One unit more for the chassis area: what follows moves by 8 bytes.
  Replace(file, "01 03 0B 1B 29 ", "01 03 0C 1C 2A ");
  Replace(file, "  AC ", "  A9 ");
  Replace(file, "  08               // length: 64", "  09               // length: 72");
  machine.files[".\\NEW.FRU"] = file;
  const std::string header = "FRUNAME NEW.FRU\nFRUAREA Header\n";
  const std::string areas =
      "FRUAREA InternalUse\nFRUAREA Chassis\nFRUFIELD P# VW-CHN\nFRUAREA Board\nFRUAREA Product\nFRUAREA MultiRec 1\n";

  // A key without an 8-bit character is none.
  machine.keys = std::u16string(u"x\0n", 3);
  ExpectFailure(header, 5,
                "The header in the FRU file 'NEW.FRU' does not match the header in the system FRU.  The FRU "
                "cannot be updated.");
  EXPECT_THAT(machine.console, EndsWith(kHeaderQuestion + "n\n"));
  machine.keys = u"y";
  ExpectFailure("FRUNAME NEW.FRU\n" + areas, 4,
                "The configuration file should update all the FRU ares in the file 'NEW.FRU', to avoid "
                "corrupting the FRU.");
  machine.keys = u"Y";
  ExpectProgrammed(header + areas, {std::string("\x01\x01\x03\x0C\x1C\x2A\x00\xA9", 8), "\306VW-CHN"});
  EXPECT_EQ(machine.console,
            "\nProcessing FRU File NEW.FRU...\n\n" + kHeaderQuestion + "Y\n" + kWritten + kUpdated);
}

TEST_F(Board, AreaIsResizedAndRounded) {
  const std::string chassis = "FRUNAME SYSTEM\nFRUAREA Chassis size=";
  EXPECT_EQ(Run(chassis + "60\n"), 0) << message;
  EXPECT_EQ(machine.console, "\nArea size should be a multiple of 8. Rounding area size to 64..." + kWritten);
  ExpectProgrammed(chassis + "72\nFRUFIELD AM1 \"2U rack, 12 bays, black\"\n",
                   {std::string("\x01\x01\x03\x0C\x1C\x2A\x00\xA9", 8)});
  EXPECT_EQ(Content("board.bin")[0x19], 9);
}

TEST_F(Board, AreasThatHoldNoFieldsAreCopiedWhole) {
  Replace(machine.files[".\\HEARTHS2.FRU"], "10 27 00 00 01", "10 27 00 00 02");
  EXPECT_EQ(Run("FRUNAME HEARTHS2.FRU\nFRUAREA InternalUse\n"), 0) << message;
  EXPECT_EQ(Content("board.bin")[0x11], 2);
  // The first record's header goes over that of the second.
  EXPECT_EQ(Run("FRUNAME HEARTHS2.FRU\nFRUAREA MultiRec 1\n"), 4);
  EXPECT_EQ(Content("board.bin").substr(346, 5), Content("board.bin").substr(328, 5));
  const std::uint8_t last[] = {0x02, 0x82, 0x0D, 0x8F, 0xE0};
  machine.board->Images().Find("board.bin")->Write(328, last);
  EXPECT_EQ(Run("FRUNAME HEARTHS2.FRU\nFRUAREA MultiRec 2\n"), 7);
  EXPECT_THAT(machine.console, HasSubstr("\nInvalid MultiRecord Number.\n"));
}

TEST_F(Board, EachBlockHasItsOwnDevice) {
  const std::string validate = "FRUNAME SYSTEM\nFRUADDRESS 01\nFRUAREA Board VALIDATE OK\n";
  std::string spare = Content("spare.bin");
  ExpectProgrammed(kChange + validate, {"ASSET-000500"});
  ExpectProgrammed(validate + kAssetTag + "ASSET-000600\n", {"ASSET-000600"});
  EXPECT_EQ(Content("spare.bin"), spare);
  ExpectProgrammed("FRUNAME SYSTEM\nFRUADDRESS AT24C02 03 A0\nFRUAREA Product\nFRUFIELD P# VW-PS800-R5\n",
                   {});
  EXPECT_THAT(machine.console,
              HasSubstr("FRU AT24CO2 on bus 03h, Device ID 00h, IPMB adresss A0h, Lun 00h\n"));
  EXPECT_THAT(Content("supply.bin"), HasSubstr("VW-PS800-R5"));
}

TEST_F(Board, ComparedAreaIsNotWritten) {
  ExpectFailure("FRUNAME HEARTHS2.FRU\nFRUAREA Board COMPARE\nFRUFIELD P#\n", 4, "");
  EXPECT_THAT(machine.console, HasSubstr("Board Info Area is different between the file and the memory."));
  ExpectProgrammed("FRUNAME HEARTHS2.FRU\nFRUAREA Board COMPARE\n", {"VW-S2-MB-R3"});
  EXPECT_THAT(machine.console, HasSubstr("Verifying FRU Board Info Area\n"));
}

TEST_F(Board, ScriptThatFailsInProcessingWritesNothing) {
  machine.environment["LONG"] = std::u16string(254, u'x');
  machine.files[".\\SUPPLY.FRU"] = Sample("eeprom.fru");
  Replace(machine.files[".\\SUPPLY.FRU"], "'AT24CO2'", "'IMBDEVICE'");
  Replace(machine.files[".\\SUPPLY.FRU"], "0D 00 F1", "0B 00 F3");  // the device's header
  ExpectRows("failures.txt", kChange);
  EXPECT_EQ(RunFile("NONE.CFG"), 2);
  EXPECT_EQ(message, "The file 'NONE.CFG' was not found.");
}

TEST_F(Board, BmcIsRefreshedOnceAtTheEnd) {
  EXPECT_EQ(Run("bmc_refresh \"any thing\n" + kChange + "BMC_REFRESH\n"), 0) << message;
  EXPECT_EQ(machine.console, kWritten + kRefreshShown);
  EXPECT_EQ(RequestCount("06/0 02"), 1);
}

TEST_F(Board, PackageOfTheSamplesProgramsTheBoard) {
  machine.keys = u"4\r2\ryyVWS226010001\ryASSET-100\ry";
  ExpectProgrammed(Sample("MASTER.CFG"),
                   {"VW-S2-MB-R4", "VWS226010001\311ASSET-100", "hearth_s2_r4.fru", "VWSB25061234"});
  EXPECT_THAT(machine.console,
              HasSubstr("3\tNone of these: leave without any change\n42\n2\n"
                        "Is the second fan fitted? Press Y or N, no Enter: y\n\n"
                        "Enter serial number and asset tag now? Press Y or N, no Enter: y\n\n"
                        "\nProcessing FRU File HEARTHS2.FRU...\n\n"));
  EXPECT_THAT(machine.console,
              EndsWith("\nSDRs written successfully.\n" + kWritten + kRefreshShown + kUpdated));
  EXPECT_EQ(Content("board.bin")[0x1A], 0x11) << "the pedestal's chassis type";
  std::string records = Content("sdr.bin");
  for (const char* name : {"Fan 2", "Riser"}) EXPECT_THAT(records, HasSubstr(name));
  EXPECT_THAT(records, ::testing::Not(HasSubstr("Hot-swap"))) << "the pedestal has no backplane";
  machine.keys = u"3\r";
  EXPECT_EQ(Run(Sample("MASTER.CFG")), 0);
  EXPECT_THAT(machine.console, EndsWith("Nothing was changed.\n"));
}

TEST_F(Board, PackageOfTheSamplesLeavesAnotherBoardAlone) {
  // Another product of SMBIOS, or another word of the BMC for its board.
  const std::string guards[] = {"PROBE SYSTEM HEARTH ", "PROBE BASEBOARD_PRODID 2E "};
  for (const std::string& guard : guards) {
    std::string script = Sample("MASTER.CFG");
    Replace(script, guard, guard.substr(0, guard.size() - 2) + "F ");
    machine.keys = u"";
    EXPECT_EQ(Run(script), 0x20);
    EXPECT_THAT(machine.console, EndsWith("\nThis is not a Hearth S2 server board. Nothing was changed.\n"));
    EXPECT_EQ(RequestCount("0A/0"), 0) << "neither read nor written";
  }
}

TEST_F(Board, SamplesAreRead) {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(VARNOK_SAMPLES)) {
    if (entry.path().extension() != ".CFG") continue;
    ++count;
    std::string name = entry.path().filename().string();
    machine.files[".\\" + name] = Sample(name);
    CCfgParser parser;
    EXPECT_EQ(parser.ParseFile(Widen(name).c_str(), nullptr), kSuccess)
        << name << Narrow(CCfgParser::GetLastError());
  }
  EXPECT_EQ(count, 10);
}

TEST_F(Board, ProbesAnswerAsWritten) {
  const std::uint8_t damage[] = {0x7E};
  machine.board->Images().Find("riser.bin")->Write(20, damage);
  ExpectRows("answers.txt", "", "IFSET YES\nDISPLAY yes\nENDIF\nIFSET NO\nDISPLAY no\nENDIF\n");
}

TEST_F(Board, SampleIdentifiesTheBoard) {
  EXPECT_EQ(Run(Sample("IDENTIFY.CFG")), 0) << message;
  EXPECT_EQ(machine.console,
            "Hearth S2 server board.\nTwo processors.\nMemory modules of 16 GiB or more.\n"
            "Drive backplane with its controller.\nPower supply with inventory data.\n"
            "Chassis of two rack units.\n");
  EXPECT_THAT(Traffic(), HasSubstr("> 20 32/0 10 43 68 61 73 73 69 73\n"));
}

}  // namespace
}  // namespace varnok
