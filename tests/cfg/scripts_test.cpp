// What scripts in memory do, and how they are refused.
#include "cfg/block.h"
#include "cfg/fru_address_command.h"
#include "tests/cfg/script_test.h"

namespace varnok {
namespace {

using ::testing::Contains;
using Scripts = testing::ScriptTest;

TEST_F(Scripts, FlowAnswersAsWritten) {
  ExpectRows("flow.txt");
  auto names = [this](const std::string& reason) {
    std::string found;
    for (const std::string& line : machine.TraceLines()) {
      std::size_t end = line.find("::ReadFromFile - " + reason);
      if (end != std::string::npos && !found.ends_with(line.substr(4, end - 4)))
        found += " " + line.substr(4, end - 4);
    }
    return found;
  };
  EXPECT_EQ(
      names("Missing first parameter"),
      " Set Clear IfSet Configuration Display Prompt Menu FruName SdrName FruArea FruField FruAddress Found");
  EXPECT_EQ(
      names("Too many parameters"),
      " Set Clear ErrorLevel Configuration Boot Display Menu FruName SdrName SdrClear Found FruArea Prompt Else");
  EXPECT_EQ(
      names("Unable to read the line"),
      " Set Clear IfSet ErrorLevel Configuration Boot Display Prompt Menu FruName SdrName SdrClear FruAddress FruArea FruField Else Found Display");
}
TEST_F(Scripts, DialogueAnswersAsWritten) {
  ExpectRows("dialogue.txt");
}
TEST_F(Scripts, FruAnswersAsWritten) {
  ExpectRows("fru.txt");
}
TEST_F(Scripts, ProbeAnswersAsWritten) {
  ExpectRows("probe.txt");
  EXPECT_THAT(machine.TraceLines(), Contains("CCfgProbePing::ValidateParams - Invalid parameters"));
}

TEST_F(Scripts, CursorWalksABody) {
  ASSERT_EQ(Load("IFSET a\nSET b\nSET c\nENDIF"), kSuccess);
  CCfgCommand& block = parser.Commands().front();
  const CommandList& body = block.AsBlock()->Body();
  CCfgCommand *first = &body.front(), *second = &body.back(), *none = nullptr;
  for (CCfgCommand* next : {first, second, none}) EXPECT_EQ(block.Next(), next);
  for (CCfgCommand* previous : {second, first, none}) EXPECT_EQ(block.Previous(), previous);
  block.Next();
  block.ResetLink();
  EXPECT_EQ(block.Next(), first);
}

TEST_F(Scripts, DebugPrintShowsBlocksWithoutTheirElse) {
  ASSERT_EQ(Load("IFSET a \"b c\"\nERRORLEVEL 1f\nIFSET d\nBOOT\nENDIF\nELSE\nBOOT\nENDIF\nERRORLEVEL\n"
                 "MENUTITLE Rack\nMENU one \"First %d\"\nmenu two\nMENUPROMPT\nFRUNAME a.fru\nFRUAREA board\n"
                 "FRUFIELD am3 x\nSDRNAME b.sdr"),
            kSuccess);
  parser.DebugPrint();
  EXPECT_EQ(machine.console,
            "IFSET a b c\nERRORLEVEL 1F\nIFSET d\nBoot\nERRORLEVEL 00\nRack\none\tFirst %d\ntwo\ttwo\na.fru\n"
            "FRU Area: Board\nFRU Field: AMx\nb.sdr\n");
  machine.console.clear();
  parser.Commands().front().AsBlock()->Choose()->DebugPrint();
  EXPECT_EQ(machine.console, "ELSE\nBoot\n") << "by itself";
}

TEST_F(Scripts, FoundPrintsItsTags) {
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

TEST_F(Scripts, ConfigurationIsShownOnTheConsoleItself) {
  CCfgCommand::Callbacks().display = nullptr;
  EXPECT_EQ(Run("CONFIGURATION \"Hearth S2\" S2 third\nCONFIGURATION Other Later\nBOOT\n"), kSuccess);
  EXPECT_EQ(machine.console,
            "Update File Configuration: Hearth S2 S2 third\nUpdate File Configuration: Other Later\n");
  EXPECT_EQ(parser.TargetPlatformInfo(), u"S2");
}

TEST_F(Scripts, FullPoolStopsABlockOrAProbeAndEndsAScript) {
  machine.FailPoolAllocation(2);
  EXPECT_EQ(Load("IFSET a\nSET b\nENDIF"), cfg_status::kOutOfMemory);
  machine.FailPoolAllocation(1);
  EXPECT_EQ(Load("PROBE HWID a"), cfg_status::kBadProbeType);
  EXPECT_THAT(Message(),
              ::testing::HasSubstr("Unrecoverable internal error: Failed to create PROBE command."));
  machine.FailPoolAllocation(2);
  EXPECT_EQ(Run("DISPLAY 1\nDISPLAY 2\nDISPLAY 3"), kSuccess);
  EXPECT_EQ(machine.console, "1\n");
  EXPECT_EQ(machine.errors, "varnok: T.CFG, line 2: out of memory; the script ends in front of this line\n");
}

TEST_F(Scripts, InputThatFailsCountsAsAYesWhoseTagIsSetBeforeItIsShown) {
  static CCfgParser* current;
  static std::string order;
  current = &parser;
  order.clear();
  CCfgCommand::Callbacks().display = [](std::u16string_view text) {
    order += Narrow(text) + (current->IsTagSet("Y") ? "set " : "unset ");
  };
  CCfgCommand::Callbacks().inputChar = [](char& key) {
    key = 'x';
    return 0;
  };
  EXPECT_EQ(Run("PROMPT A?\nYES Y\nNO N\nBOOT"), kSuccess);
  EXPECT_EQ(order, "A?unset  unset x\nset ");
  CCfgCommand::Callbacks().inputChar = nullptr;
  EXPECT_EQ(Run("MENU a\nMENUPROMPT"), cfg_status::kNoInput) << "nothing can be read";
}

TEST_F(Scripts, OnlyATitledMenuIsLimited) {
  std::string items;
  for (int i = 1; i <= 33; ++i) items += "MENU t\n";
  EXPECT_EQ(Load(items + "MENUPROMPT"), kSuccess);
  EXPECT_EQ(Load("MENUTITLE a\n" + items + "MENUPROMPT"), cfg_status::kUnknownCommand);
  EXPECT_EQ(
      Message(),
      "Invalid input in file 'T.CFG' at line 35:\n   Invalid number of menus to prompt: 33, the maximum "
      "allowed is 32.");
}

TEST_F(Scripts, InputFilesAreCountedWhenLoaded) {
  ASSERT_EQ(Load("SDRNAME a.sdr\nSDRNAME b.sdr\nFRUNAME a.fru\nFRUNAME system"), kSuccess);
  EXPECT_EQ(parser.UpdateFileCount(), 3u);
  for (const char* script : {"SET a", "SDRNAME b.sdr\nNOSUCH"}) {
    Discard(Load(script));
    EXPECT_EQ(parser.UpdateFileCount(), 0u) << script;
  }
}

TEST_F(Scripts, FruAddressHasThreeForms) {
  struct {
    const char* parameters;
    std::uint8_t nvsType, deviceId, bus, address;
  } const cases[] = {{"1F", nvs_type::kImbDevice, 0x1F, 0xFF, 0x20},
                     {"imbdevice 1f 3 A0", nvs_type::kImbDevice, 0x1F, 3, 0xA0},
                     {"IMBDEVICE 3 A0", nvs_type::kImbDevice, 0, 3, 0xA0},
                     {"AT24C02 3 A0", 0, 0, 3, 0xA0},
                     {"DS1624S 3 A0", 1, 0, 3, 0xA0}};
  for (const auto& each : cases) {
    ASSERT_EQ(Load("FRUNAME SYSTEM\nFRUADDRESS " + std::string(each.parameters)), kSuccess) << Message();
    FruDeviceAddress read = static_cast<const CCfgFruAddress&>(parser.Commands().back()).GetAddress();
    EXPECT_EQ(Format("%u %u %u %u", read.nvsType, read.deviceId, read.bus, read.deviceAddress),
              Format("%u %u %u %u", each.nvsType, each.deviceId, each.bus, each.address));
  }
}

TEST_F(Scripts, FruBlockBelongsToTheLastFruNameThatWasRead) {
  ASSERT_EQ(Load("IFSET a\nFRUNAME x.fru\nENDIF\nFRUAREA Board\nFRUFIELD PN y"), kSuccess);
  EXPECT_NE(parser.CurrentFruName(), nullptr);
  ASSERT_EQ(Load("SET a"), kSuccess);
  EXPECT_EQ(parser.CurrentFruName(), nullptr);
}

}  // namespace
}  // namespace varnok
