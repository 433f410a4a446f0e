// SDRNAME and CLEARSDR in front of a scripted BMC.
#include "sdr/sdr_data.h"
#include "tests/cfg/script_test.h"
#include "tests/support/scripted_ipmi.h"

namespace varnok {
namespace {

using testing::ScriptedIpmi;

constexpr std::uint8_t kStorage = 0x0A;

class SdrCommands : public testing::ScriptTest {
 protected:
  SdrCommands() {
    EXPECT_EQ(SdrData::Initialize(), kSuccess);
    machine.files[".\\A.SDR"] =
        "_LF_NAME x\n_LF_VERSION x\n_LF_FMT_VER x\n_IPMI_VERSION x\n_SDR (\n_START_ADDR 0\n_DATA_LEN 0\n"
        "_NVS_TYPE x\n_DEV_BUS x\n_DEV_ADDRESS x\n)\n";
    machine.files[".\\SHORT.SDR"] = "_LF_NAME x\n)\n";
  }
  ~SdrCommands() override { Discard(SdrData::DeInitialize()); }

  /// The repository says that it is empty.
  void AnswerInfo() {
    bmc.Expect(kStorage, 0x20).Reply({0x51, 0, 0, 0x00, 0x10, 0, 0, 0, 0, 0, 0, 0, 0, 0x22});
  }

  ScriptedIpmi bmc{machine};
};

TEST_F(SdrCommands, FileThatCannotBeLoadedStopsTheScript) {
  ExpectRows("sdr.txt");
  // A file that is right is of no use without the BMC, which leaves no words of its own.
  Discard(SdrData::Initialize());
  bmc.ExpectFailing(kStorage, 0x20, 0xC1);
  EXPECT_EQ(Run("SDRNAME A.SDR"), 0xC000000000090024);
  EXPECT_EQ(Message(), "The file '.\\A.SDR' was not found.");
}

TEST_F(SdrCommands, LastFileThatIsReachedIsRegistered) {
  for (int i = 0; i < 3; ++i) AnswerInfo();
  ASSERT_EQ(
      Load("SDRNAME A.SDR\nIFSET never\nSDRNAME C.SDR\nENDIF\nSDRNAME A.SDR\nBMC_REFRESH\nSDRNAME A.SDR"),
      kSuccess);
  EXPECT_EQ(parser.UpdateFileCount(), 4u);
  ASSERT_EQ(parser.Process(), kSuccess) << Message();
  EXPECT_EQ(parser.UpdateFileCount(), 1u);
}

TEST_F(SdrCommands, CommitFailsOnAnEmptyTagOrWithoutALoadedFile) {
  AnswerInfo();
  ASSERT_EQ(Run("SET \"\"\nSDRNAME A.SDR"), kSuccess) << Message();
  EXPECT_EQ(parser.Execute(), 0xC000000000090012);
  AnswerInfo();
  ASSERT_EQ(Run("SDRNAME A.SDR"), kSuccess) << Message();
  Discard(SdrData::Initialize());
  EXPECT_EQ(parser.Execute(), 0xC000000000090025);
  EXPECT_EQ(Message(), "The file 'A.SDR' was not found.");
}

TEST_F(SdrCommands, ClearingHappensAtOnceAndItsStatusPassesThrough) {
  bmc.ExpectFailing(kStorage, 0x22, 0xC1);
  EXPECT_EQ(Run("CLEARSDR\nERRORLEVEL 1").value >> 16, 0xC00000000006u);
}

}  // namespace
}  // namespace varnok
