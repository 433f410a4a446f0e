// The board's folder: what board.json may say, what is written and when, where the folder is.
#include <sys/wait.h>

#include <csignal>
#include <map>

#include "sim/board_source.h"
#include "tests/sim/board_fixture.h"

namespace varnok::testing {
namespace {

TEST_F(BoardTest, DescriptionThatIsNoneIsNamed) {
  std::string many, error;
  for (int i = 0; i < 70000; ++i) many += ",0";
  EXPECT_TRUE(ErrorOf(R"({"faults": [0)" + many + "]}").ends_with("an array has more than 65536 elements"));
  EXPECT_NE(ErrorOf("{\"smbios\": ").find("board.json: "), std::string::npos);
  OpenWith(R"({"smbios": ""})");
  EXPECT_TRUE(board->SmbiosEntryPoint().empty()) << "nothing else is needed";
  board.reset();
  std::filesystem::remove(folder / "board.json");
  EXPECT_EQ(sim::Board::Open(folder, error), nullptr);
  EXPECT_EQ(error, (folder / "board.json").string() + ": cannot be read: No such file or directory");
}

TEST_F(BoardTest, FolderIsHeldByOneProgramAtATime) {
  OpenBmc("");
  std::string error;
  EXPECT_EQ(sim::Board::Open(folder, error), nullptr);
  EXPECT_EQ(error, folder.string() + ": sim_test, process " + std::to_string(getpid()) +
                       ", works on this board; try again when it has ended");
  board.reset();
  EXPECT_NE(sim::Board::Open(folder, error), nullptr) << error;
}

TEST_F(BoardTest, WhatAKilledProgramLeftIsCleared) {
  std::filesystem::create_directory(folder / "sub");
  for (const char* name : {".a.bin.123.tmp", "sub/.b.bin.4.tmp", ".a.bin.tmp", ".notes.x1.tmp"})
    WriteFile(name, "x");
  const std::string record("\x01\0\x51\xC0\x01x", 6);
  WriteFile("sub/b.bin", "b");
  WriteFile("sdr.bin", record + record.substr(0, 3));
  WriteFile(".sdr.bin.adding", "");
  OpenBmc(R"("frus": [{"id": 0, "file": "sub/b.bin"}])");
  EXPECT_EQ(TextOf("sdr.bin"), record);
  for (const char* name : {".a.bin.123.tmp", "sub/.b.bin.4.tmp", ".sdr.bin.adding"})
    EXPECT_FALSE(std::filesystem::exists(folder / name)) << name;
  for (const char* name : {".a.bin.tmp", ".notes.x1.tmp"})
    EXPECT_TRUE(std::filesystem::exists(folder / name)) << name;
}

TEST_F(BoardTest, ImageKeepsItsModeAndItsLinks) {
  using std::filesystem::perms;
  for (const char* name : {"a.bin", "target.bin", "hard.bin"}) WriteFile(name, "abcd");
  std::filesystem::permissions(folder / "a.bin", perms(0620));
  std::filesystem::create_symlink("target.bin", folder / "link.bin");
  std::filesystem::create_hard_link(folder / "hard.bin", folder / "other.bin");
  OpenBmc(
      R"("frus": [{"id": 0, "file": "a.bin"}, {"id": 1, "file": "link.bin"}, {"id": 2, "file": "hard.bin"},
    {"id": 3, "file": "other.bin"}])");
  for (const char* id : {"00", "01", "02"})
    EXPECT_EQ(Ask("0A/0 12 " + std::string(id) + " 00 00 58"), "00 01");
  for (const char* name : {"a.bin", "link.bin", "target.bin", "hard.bin", "other.bin"})
    EXPECT_EQ(TextOf(name), "Xbcd");
  EXPECT_EQ(std::filesystem::status(folder / "a.bin").permissions(), perms(0620));
  EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.bin"));
  EXPECT_EQ(Ask("0A/0 11 03 00 00 01"), "00 01 58") << "two names of one file are one device's storage";
}

TEST_F(BoardTest, ImageThatCannotBeWrittenKeepsItsContent) {
  std::filesystem::create_directory(folder / "sub");
  WriteFile("sub/a.bin", "abcd");
  OpenBmc(R"("frus": [{"id": 0, "file": "sub/a.bin"}])");
  ASSERT_TRUE(board->OpenTrafficLog((folder / "log").string()));
  std::filesystem::rename(folder / "sub", folder / "moved");
  ::testing::internal::CaptureStderr();
  Converse(
      {{"0A/0 12 00 00 00 58", "FF"}, {"0A/0 12 00 00 00 59", "FF"}, {"0A/0 11 00 00 00 01", "00 01 61"}});
  const std::string reason =
      (folder / "sub/a.bin").string() + ": cannot be written: No such file or directory";
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "varnok: " + reason + "\n") << "once";
  EXPECT_NE(TextOf("log").find("! " + reason), std::string::npos);
}

TEST_F(BoardTest, KilledProgramLeavesAWholeImage) {
  WriteFile("a.bin", std::string(2048, 0));
  OpenBmc(R"("frus": [{"id": 0, "file": "a.bin"}])");
  for (int round = 0; round < 12; ++round) {
    const pid_t child = fork();
    if (child == 0) {
      for (std::uint8_t value = 1;; ++value)
        Exchange(0x0A, 0x12, Bytes{0, 16, 0, value, value, value, value});
    }
    usleep(static_cast<useconds_t>(3000 + 700 * round));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    const Bytes image = ReadFile("a.bin");
    ASSERT_EQ(image.size(), 2048u);
    EXPECT_EQ(Bytes(image.begin() + 16, image.begin() + 20), Bytes(4, image[16]));
  }
}

class BoardSourceTest : public BoardTest {
 protected:
  sim::Environment Variables() {
    return [this](const char* name) -> std::optional<std::string> {
      const auto found = variables.find(name);
      if (found == variables.end()) return std::nullopt;
      return found->second;
    };
  }
  std::map<std::string, std::string> variables;
  std::string notice;
  std::string error;
};

TEST_F(BoardSourceTest, FolderComesFromTheEnvironment) {
  EXPECT_FALSE(sim::FindBoard(Variables(), error));
  EXPECT_EQ(error, "no board: neither VARNOK_BOARD nor XDG_STATE_HOME nor HOME has a value");
  const std::tuple<const char*, const char*, const char*> settings[] = {
      {"HOME", "/home/u", "/home/u/.local/state/varnok/board"},
      {"XDG_STATE_HOME", "relative", "/home/u/.local/state/varnok/board"},
      {"XDG_STATE_HOME", "/state", "/state/varnok/board"},
      {"VARNOK_BOARD", "", "/state/varnok/board"},
      {"VARNOK_BOARD", "mine", "mine"},
  };
  for (const auto& [name, value, where] : settings) {
    variables[name] = value;
    EXPECT_EQ(sim::FindBoard(Variables(), error)->folder, where);
    EXPECT_EQ(sim::FindBoard(Variables(), error)->isDefault, variables["VARNOK_BOARD"].empty()) << where;
  }
}

TEST_F(BoardSourceTest, DefaultBoardIsMadeAtFirstUseOnly) {
  variables["XDG_STATE_HOME"] = folder.string();
  std::filesystem::create_directories(folder / "varnok" / "board");
  WriteFile("varnok/board/board.bin", "left behind by a killed first use");
  board = sim::OpenBoard(Variables(), notice, error);
  ASSERT_NE(board, nullptr) << error;
  EXPECT_EQ(Ask("0A/0 12 01 00 00 42"), "00 01");
  variables["VARNOK_TRAFFIC"] = (folder / "log").string();
  board.reset();
  board = sim::OpenBoard(Variables(), notice, error);
  ASSERT_NE(board, nullptr) << error;
  EXPECT_EQ(Ask("0A/0 11 01 00 00 01"), "00 01 42");
  EXPECT_FALSE(ReadFile("log").empty());
}

TEST_F(BoardSourceTest, NamedFolderIsNeverCreatedAndTheLogMustBeWritable) {
  variables["VARNOK_BOARD"] = (folder / "none").string();
  EXPECT_EQ(sim::OpenBoard(Variables(), notice, error), nullptr);
  EXPECT_FALSE(std::filesystem::exists(folder / "none"));
  ASSERT_TRUE(sim::Board::CreateDefault(folder, error));
  variables["VARNOK_BOARD"] = folder.string();
  variables["VARNOK_TRAFFIC"] = (folder / "none" / "log").string();
  EXPECT_EQ(sim::OpenBoard(Variables(), notice, error), nullptr);
  EXPECT_EQ(error, (folder / "none" / "log").string() + ": the traffic log cannot be written");
  for (const char* own : {"board.json", "board.bin", "sdr.bin"}) {
    variables["VARNOK_TRAFFIC"] = (folder / own).string();
    EXPECT_EQ(sim::OpenBoard(Variables(), notice, error), nullptr);
    EXPECT_FALSE(ReadFile(own).empty()) << own;
  }
  variables["VARNOK_BOARD"] = "/none/\x1B[2J\n\xC2\x9B\xFFä";
  EXPECT_EQ(sim::OpenBoard(Variables(), notice, error), nullptr);
  EXPECT_TRUE(error.starts_with("/none/\\x1B[2J\\x0A\\x9B?ä/board.json: ")) << error;
}

}  // namespace
}  // namespace varnok::testing
