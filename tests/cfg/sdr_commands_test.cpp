// SDRNAME and CLEARSDR in front of a scripted BMC.
#include <fstream>
#include <iterator>

#include "sdr/sdr_data.h"
#include "tests/cfg/script_test.h"
#include "tests/support/scripted_ipmi.h"

namespace varnok {
namespace {

using testing::ScriptedIpmi;

constexpr std::uint8_t kStorage = 0x0A;
constexpr std::uint8_t kGetInfo = 0x20;
constexpr std::uint8_t kReserve = 0x22;
// One transaction gives up after so many attempts.
constexpr int kAttempts = 11;

class SdrCommands : public testing::ScriptTest {
 protected:
  SdrCommands() {
    EXPECT_EQ(SdrData::Initialize(), kSuccess);
    for (const char* name : {".\\A.SDR", ".\\B.SDR"})
      machine.files[name] =
          "_LF_NAME x\n_LF_VERSION x\n_LF_FMT_VER x\n_IPMI_VERSION x\n_SDR (\n_START_ADDR 0\n_DATA_LEN 0\n"
          "_NVS_TYPE x\n_DEV_BUS x\n_DEV_ADDRESS x\n)\n";
  }
  ~SdrCommands() override { SdrData::DeInitialize(); }

  /// The repository says that it is empty.
  static void AnswerInfo(ScriptedIpmi& bmc) {
    bmc.Expect(kStorage, kGetInfo).Reply({0x51, 0, 0, 0x00, 0x10, 0, 0, 0, 0, 0, 0, 0, 0, 0x22});
  }
};

TEST_F(SdrCommands, LastFileThatIsReachedIsRegistered) {
  ScriptedIpmi bmc(machine);
  AnswerInfo(bmc);
  AnswerInfo(bmc);
  ASSERT_EQ(Load("SDRNAME A.SDR\nIFSET never\nSDRNAME C.SDR\nENDIF\nSDRNAME B.SDR LAST COMPARE"), kSuccess);
  EXPECT_EQ(parser.UpdateFileCount(), 3u);
  ASSERT_EQ(parser.Process(), kSuccess) << Message();
  EXPECT_EQ(parser.UpdateFileCount(), 1u);
  EXPECT_EQ(parser.UpdateCount(), 1u);
}

TEST_F(SdrCommands, FileThatCannotBeLoadedStopsTheScript) {
  {
    ScriptedIpmi bmc(machine);
    machine.files[".\\A.SDR"] = "_LF_NAME x\n)\n";
    ExpectStopped("SDRNAME NONE.SDR", 0xC000000000090007, "Could not open file .\\NONE.SDR");
    ExpectStopped("SDRNAME A.SDR", 0xC000000000090024, "Invalid file: Token _LF_VERSION not found.\n");
    ExpectStopped("SDRNAME \"\"", 0xC00000000009000C, "SDR file name is null.");
  }
  // A file that is right is of no use without the BMC, which leaves no words of its own.
  SdrData::Initialize();
  ScriptedIpmi bmc(machine);
  for (int i = 0; i < kAttempts; ++i) bmc.Expect(kStorage, kGetInfo).Reply({}, 0xC1);
  ExpectStopped("SDRNAME B.SDR", 0xC000000000090024, "The file '.\\B.SDR' was not found.");
}

TEST_F(SdrCommands, RecordsOfTheSampleAreRead) {
  std::ifstream sample(VARNOK_SAMPLES "/HEARTHS2.SDR", std::ios::binary);
  machine.files[".\\A.SDR"] = std::string(std::istreambuf_iterator<char>(sample), {});
  ScriptedIpmi bmc(machine);
  AnswerInfo(bmc);
  EXPECT_EQ(Run("SDRNAME A.SDR"), kSuccess) << Message();
  bool isLoaded = false;
  EXPECT_EQ(SdrData::IsLoaded(isLoaded), kSuccess);
  EXPECT_TRUE(isLoaded);
}

TEST_F(SdrCommands, EmptyTagEndsTheCommit) {
  ScriptedIpmi bmc(machine);
  AnswerInfo(bmc);
  ASSERT_EQ(Run("SET \"\"\nSDRNAME A.SDR"), kSuccess) << Message();
  EXPECT_EQ(parser.Execute(), 0xC000000000090012);
}

TEST_F(SdrCommands, CommitWithoutALoadedFileNamesIt) {
  ScriptedIpmi bmc(machine);
  AnswerInfo(bmc);
  ASSERT_EQ(Run("SDRNAME A.SDR"), kSuccess) << Message();
  SdrData::Initialize();
  EXPECT_EQ(parser.Execute(), 0xC000000000090025);
  EXPECT_EQ(Message(), "The file 'A.SDR' was not found.");
}

TEST_F(SdrCommands, ClearingHappensAtOnceAndItsStatusPassesThrough) {
  ScriptedIpmi bmc(machine);
  for (int i = 0; i < kAttempts; ++i) bmc.Expect(kStorage, kReserve).Reply({}, 0xC1);
  Status status = Run("CLEARSDR\nERRORLEVEL 1");
  EXPECT_EQ(status >> 16, 0xC00000000006u);
}

}  // namespace
}  // namespace varnok
