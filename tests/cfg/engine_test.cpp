// The engine's front.
#include "cfg/cfg_main.h"
#include "platform/ipmi.h"
#include "tests/cfg/script_test.h"
#include "tests/support/scripted_ipmi.h"

namespace varnok {
namespace {

using testing::ScriptedIpmi;

constexpr Status kNotLoaded = 0xC000000000090001;
constexpr Status kRefused = 0xC000000000090011;

/// An engine on a BMC that has answered Get Device ID.
class Engine : public ::testing::Test {
 protected:
  Engine() {
    for (int i = 0; i < 2; ++i) bmc.Expect(0x06, 0x01).Reply(testing::DeviceId());
    EXPECT_EQ(CfgMain::Initialize(), kSuccess);
    Discard(CfgFile::SetDisplayCallback(DisplayText));
  }
  Status Load(std::string script) {
    machine.files[".\\T.CFG"] = std::move(script);
    return CfgMain::LoadConfigurationFromFile(u"T.CFG", nullptr);
  }
  testing::TestFirmware machine;
  ScriptedIpmi bmc{machine};
  std::uint64_t level = 99;
  const char16_t* text = nullptr;
};

TEST(EngineStart, FailsWithoutMemoryOrBmc) {
  testing::TestFirmware machine;
  const char* arguments[] = {"varnok", "-debug1"};
  TraceSelectLevel(2, arguments);
  machine.FailPoolAllocation(1);
  EXPECT_EQ(CfgMain::Initialize(), kNotLoaded);
  machine.FailPoolAllocation(2);
  EXPECT_EQ(CfgMain::Initialize(), 0xC000000000090032);
  const char16_t* text = nullptr;
  std::uint64_t level = 0;
  std::uint32_t count = 0;
  for (Status status :
       {CfgMain::LoadConfigurationFromFile(u"T.CFG", nullptr), CfgMain::CommitConfigurationToSystem(),
        CfgMain::SetProgressCallback(nullptr), CfgMain::GetLastErrorMessage(text),
        CfgFile::SetDisplayCallback(nullptr), CfgFile::SetInputCharCallback(nullptr),
        CfgFile::SetGetEnvVarCallback(nullptr), CfgFile::SetOutputFile("x"), CfgFile::ProcessCommands(),
        CfgFile::GetErrorLevel(level), CfgFile::GetNumberOfInputFiles(count)})
    EXPECT_EQ(status, 0xC000000000090005);
  EXPECT_THAT(
      machine.TraceLines(),
      ::testing::Contains(
          "CfgMain::ProcessCommands - Unable to process commmands since interfaces are not initialized"));
  ForgetProgramState();
  EXPECT_EQ(CfgMain::Initialize(), 0xC000000000090004);
  EXPECT_EQ(machine.TraceLines().back(),
            "CfgMain::Initialize - Unable to read BMC type and version resource for this module");
}

TEST_F(Engine, StepsNeedTheOnesBefore) {
  EXPECT_EQ(CfgMain::GetBmcIdentity().type, 2u);
  EXPECT_EQ(CfgMain::GetBmcIdentity().ipmiVersion, 2u);
  EXPECT_EQ(CfgFile::ProcessCommands(), kNotLoaded);
  EXPECT_EQ(CfgFile::GetErrorLevel(level), kNotLoaded);
  EXPECT_EQ(CfgMain::CommitConfigurationToSystem(), kRefused);
  EXPECT_EQ(CfgFile::SetOutputFile("CFG.TMP"), kSuccess);
  EXPECT_EQ(Load("SET a"), kSuccess);
  EXPECT_EQ(machine.TextOf("CFG.TMP"), "SET a\n");
  EXPECT_EQ(CfgMain::CommitConfigurationToSystem(), kRefused);
  EXPECT_EQ(CfgFile::ProcessCommands(), kSuccess);
  EXPECT_EQ(CfgMain::CommitConfigurationToSystem(), kSuccess);
}

TEST_F(Engine, LevelIsTakenOffTheStatus) {
  // Level 0 leaves the earlier one.
  for (const char* script : {"ERRORLEVEL 3", "ERRORLEVEL 0"}) {
    EXPECT_EQ(Load(script), kSuccess);
    EXPECT_EQ(CfgFile::ProcessCommands(), 0xC0000000000903E8);
    EXPECT_EQ(CfgFile::GetErrorLevel(level), kSuccess);
    EXPECT_EQ(level, 3u);
    EXPECT_EQ(CfgMain::CommitConfigurationToSystem(), kRefused);
  }
}

TEST_F(Engine, MessageIsHandedOutOnce) {
  EXPECT_EQ(CfgMain::LoadConfigurationFromFile(u"T.TXT", nullptr), 0xC000000000090008);
  EXPECT_EQ(CfgMain::GetLastErrorMessage(text), kSuccess);
  const std::u16string_view first = text;
  CCfgParser::SetLastError("second");
  EXPECT_EQ(first, u"T.TXT is an invalid file type, the extension must be '.CFG'.")
      << "valid until the next call";
  EXPECT_EQ(CfgMain::GetLastErrorMessage(text), kSuccess);
  EXPECT_EQ(std::u16string_view(text), u"second");
  EXPECT_EQ(CfgMain::GetLastErrorMessage(text), kSuccess);
  EXPECT_EQ(text, nullptr);
  CCfgParser::SetLastError("old");
  EXPECT_EQ(CfgMain::Initialize(), kSuccess);
  EXPECT_EQ(CCfgParser::GetLastError(), u"") << "a start forgets it";
}

}  // namespace
}  // namespace varnok
