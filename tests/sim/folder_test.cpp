// The board's folder: what board.json may say, what is written and when, where the folder is.
#include <sys/wait.h>

#include <csignal>
#include <map>

#include "sim/board_source.h"
#include "tests/sim/board_fixture.h"

namespace varnok::testing {
namespace {

TEST_F(BoardTest, EveryErrorNamesItsKey) {
  WriteFile("a.bin", "abcdefgh");
  WriteFile("empty.bin", "");
  std::filesystem::create_directory(folder / "d");
  std::filesystem::create_symlink("/etc/hostname", folder / "out.bin");
  std::filesystem::create_hard_link(folder / "empty.bin", folder / "same.bin");
  const std::string deep = std::string(65500, '[') + std::string(65500, ']');
  std::string many;
  for (int i = 0; i < 70000; ++i) many += ",0";
  using Rows = std::vector<std::pair<std::string, std::string>>;
  /// `front` and `back` are said around what the rows hold, `place` in front of their errors.
  auto expect = [this](const std::string& front, const std::string& back, const std::string& place,
                       const Rows& rows) {
    for (const auto& [json, error] : rows)
      EXPECT_EQ(ErrorOf(front + json + back), (folder / "board.json: ").string() + place + error) << json;
  };
  const std::string missing = ": cannot be read: No such file or directory";
  expect("", "", "",
         {{R"([])", "the whole: must be an object"},
          {R"({})", "smbios: " + (folder / "smbios.bin").string() + missing},
          {R"({"smbios": "a.bin"})",
           "smbios: a.bin: does not begin with an SMBIOS entry point as dmidecode --dump-bin writes it"}});
  expect(R"({"smbios": "", )", "}", "",
         {{R"("extra": 1)", "extra: unknown key"},
          {R"("bmc": )" + deep, "it is nested more than 32 deep"},
          {R"("clock": {"exchangeMicroseconds": [[1]]})",
           "clock.exchangeMicroseconds: an array is not a number from 0 to 1000000"},
          {R"("faults": [0)" + many + "]", "an array has more than 65536 elements"},
          {R"("bmc": {"frus": [{"id": 0, "file": "empty.bin"}], "sdrs": {"file": "same.bin"}})",
           "bmc.frus[0].file: \"empty.bin\" is the SDR repository already"},
          {R"("bmc": {"frus": []}, "faults": [], "faults": [])", "\"faults\" stands twice in one object"},
          {R"("clock": {"start": ""})", "clock.start: \"\" is neither \"now\" nor like 2026-01-01T08:00:00"},
          {R"("controllers": [{"address": 32}])", "controllers[0].address: is the BMC's own"},
          {R"("controllers": [{"address": 192}, {"address": 192}])",
           "controllers[1].address: is taken by another controller of this channel"},
          {R"("controllers": [{"address": 192, "transferMode": {}}])",
           "controllers[0].transferMode: unknown key"},
          {R"("controllers": [{"address": 192, "sensors": []}])", "controllers[0].sensors: unknown key"},
          {R"("clock": {"start": "2026-02-29T00:00:00"})",
           "clock.start: \"2026-02-29T00:00:00\" is neither \"now\" nor like 2026-01-01T08:00:00"}});
  expect(R"({"smbios": "", "bmc": {"identity": {)", "}}}", "bmc.identity.",
         {{R"("deviceID": 1)", "deviceID: unknown key"},
          {R"("deviceId": 256)", "deviceId: 256 is not a number from 0 to 255"},
          {R"("deviceId": -1)", "deviceId: -1 is not a number from 0 to 255"},
          {R"("productId": "0xZZ")", "productId: \"0xZZ\" is not a number from 0 to 65535"},
          {R"("ipmiVersion": "2")", "ipmiVersion: \"2\" is not a version like \"2.0\""},
          {R"("auxiliary": [1])", "auxiliary: must be an array of 4 bytes"},
          {R"("providesSdrs": 1)", "providesSdrs: must be true or false"}});
  expect(
      R"({"smbios": "", "bmc": {"frus": [)", "]}}", "bmc.frus[0].",
      {{R"({"id": 0})", "file: is missing"},
       {R"({"file": "a.bin"})", "id: is missing"},
       {R"({"id": 0, "file": 7})", "file: must be a text"},
       {R"({"id": 0, "file": "a.bin", "access": "bit"})", "access: must be \"byte\" or \"word\""},
       {R"({"id": 0, "file": "a.bin", "size": 4})", "file: a.bin holds 8 bytes, the device 4"},
       {R"({"id": 0, "file": "board.json"})", "file: \"board.json\" is the board's description"},
       {R"({"id": 0, "file": ".a.bin"})", "file: \".a.bin\" is not the name of a file inside the folder"},
       {R"({"id": 0, "file": "out.bin"})", "file: \"out.bin\" leads out of the folder"},
       {R"({"id": 0, "file": "../a.bin"})", "file: \"../a.bin\" is not the name of a file inside the folder"},
       {R"({"id": 0, "file": "gone.bin"})", "file: " + (folder / "gone.bin").string() + missing},
       {R"({"id": 0, "file": "d"})", "file: " + (folder / "d").string() + ": is a folder, not a file"}});
  expect(R"({"smbios": "", "bmc": {)", "}}", "bmc.",
         {{R"("frus": {})", "frus: must be an array of objects"},
          {R"("frus": [{"id": 0, "file": "a.bin"}, {"id": 0, "file": "a.bin"}])",
           "frus[1].id: is taken by another device of this controller"},
          {R"("eeproms": [{"kind": "24C02"}])", "eeproms[0].kind: must be \"AT24C02\" or \"DS1624S\""},
          {R"("eeproms": [{"kind": "AT24C02", "bus": 1, "address": 161, "file": "a.bin"}])",
           "eeproms[0].address: must be even: bit 0 is the read/write bit"},
          {R"("sensors": [{"reading": [0]}])", "sensors[0].number: is missing"},
          {R"("sensors": [{"number": 1, "reading": [0, 256]}])",
           "sensors[0].reading[1]: 256 is not a number from 0 to 255"},
          {R"("lanParameters": [{"parameter": 3, "channel": 16}])",
           "lanParameters[0].channel: 16 is not a number from 0 to 15"},
          {R"("oem": [{"command": "0x15"}])", "oem[0].command: must be 0x14, 0x93, 0x94 or 0x97"},
          {R"("keyValues": [{"key": "", "value": "x"}])", "keyValues[0].key: must have 1 to 56 bytes"}});
  OpenWith(R"({"smbios": ""})");
  EXPECT_TRUE(board->SmbiosEntryPoint().empty()) << "nothing else is needed";
  EXPECT_NE(ErrorOf("{\"smbios\": ").find("board.json: "), std::string::npos);
  std::filesystem::remove(folder / "board.json");
  std::string error;
  EXPECT_EQ(sim::Board::Open(folder, error), nullptr);
  EXPECT_EQ(error, (folder / "board.json").string() + missing);
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
  Converse({{"0A/0 12 00 00 00 58", "FF"}, {"0A/0 11 00 00 00 01", "00 01 61"}});
  EXPECT_NE(TextOf("log").find("! " + (folder / "sub/a.bin").string() + ": cannot be written"),
            std::string::npos);
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
