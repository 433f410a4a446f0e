// The board's folder: what board.json may say, what is written and when, where the folder is.
#include <sys/wait.h>

#include <csignal>
#include <map>

#include "sim/board_source.h"
#include "tests/sim/board_fixture.h"

namespace varnok::testing {
namespace {

/// The error without the path of board.json in front.
std::string Behind(const std::filesystem::path& folder, const std::string& error) {
  const std::string prefix = (folder / "board.json").string() + ": ";
  return error.starts_with(prefix) ? error.substr(prefix.size()) : error;
}

TEST_F(BoardTest, EmptyConfigurationIsABoard) {
  OpenWith(R"({"smbios": ""})");
  EXPECT_EQ(Exchange(0x06, 0x01, {}).completionCode, 0);
  EXPECT_TRUE(board->SmbiosEntryPoint().empty());
  const WallClock now = board->Now();
  EXPECT_EQ(now.year, 2026);
  EXPECT_EQ(now.hour, 8);
}

TEST_F(BoardTest, EveryErrorNamesItsKey) {
  WriteFile("a.bin", "abcdefgh");
  std::filesystem::create_directory(folder / "d");
  const std::map<std::string, std::string> cases = {
      {R"([])", "the whole: must be an object"},
      {R"({"smbios": "", "extra": 1})", "extra: unknown key"},
      {R"({"smbios": "", "bmc": {"identity": {"deviceID": 1}}})", "bmc.identity.deviceID: unknown key"},
      {R"({"smbios": "", "bmc": {"identity": {"deviceId": 256}}})",
       "bmc.identity.deviceId: 256 is not a number from 0 to 255"},
      {R"({"smbios": "", "bmc": {"identity": {"deviceId": -1}}})",
       "bmc.identity.deviceId: -1 is not a number from 0 to 255"},
      {R"({"smbios": "", "bmc": {"identity": {"productId": "0xZZ"}}})",
       "bmc.identity.productId: \"0xZZ\" is not a number from 0 to 65535"},
      {R"({"smbios": "", "bmc": {"identity": {"ipmiVersion": "2"}}})",
       "bmc.identity.ipmiVersion: \"2\" is not a version like \"2.0\""},
      {R"({"smbios": "", "bmc": {"identity": {"auxiliary": [1]}}})",
       "bmc.identity.auxiliary: must be an array of 4 bytes"},
      {R"({"smbios": "", "bmc": {"identity": {"providesSdrs": 1}}})",
       "bmc.identity.providesSdrs: must be true or false"},
      {R"({"smbios": "", "bmc": {"frus": {}}})", "bmc.frus: must be an array of objects"},
      {R"({"smbios": "", "bmc": {"frus": [{"id": 0}]}})", "bmc.frus[0].file: is missing"},
      {R"({"smbios": "", "bmc": {"frus": [{"file": "a.bin"}]}})", "bmc.frus[0].id: is missing"},
      {R"({"smbios": "", "bmc": {"frus": [{"id": 0, "file": 7}]}})", "bmc.frus[0].file: must be a text"},
      {R"({"smbios": "", "bmc": {"frus": [{"id": 0, "file": "a.bin"}, {"id": 0, "file": "a.bin"}]}})",
       "bmc.frus[1].id: is taken by another device of this controller"},
      {R"({"smbios": "", "bmc": {"frus": [{"id": 0, "file": "a.bin", "access": "bit"}]}})",
       "bmc.frus[0].access: must be \"byte\" or \"word\""},
      {R"({"smbios": "", "bmc": {"frus": [{"id": 0, "file": "a.bin", "size": 4}]}})",
       "bmc.frus[0].file: a.bin holds 8 bytes, the device 4"},
      {R"({"smbios": "", "bmc": {"frus": [{"id": 0, "file": "../a.bin"}]}})",
       "bmc.frus[0].file: \"../a.bin\" is not the name of a file inside the folder"},
      {R"({"smbios": "", "bmc": {"frus": [{"id": 0, "file": "gone.bin"}]}})",
       "bmc.frus[0].file: " + (folder / "gone.bin").string() + ": cannot be read: No such file or directory"},
      {R"({"smbios": "", "bmc": {"frus": [{"id": 0, "file": "d"}]}})",
       "bmc.frus[0].file: " + (folder / "d").string() + ": is a folder, not a file"},
      {R"({"smbios": "", "bmc": {"eeproms": [{"kind": "24C02"}]}})",
       "bmc.eeproms[0].kind: must be \"AT24C02\" or \"DS1624S\""},
      {R"({"smbios": "", "bmc": {"eeproms": [{"kind": "AT24C02", "bus": 1, "address": 161, "file": "a.bin"}]}})",
       "bmc.eeproms[0].address: must be even: bit 0 is the read/write bit"},
      {R"({"smbios": "", "controllers": [{"address": 32}]})", "controllers[0].address: is the BMC's own"},
      {R"({"smbios": "", "controllers": [{"address": 192}, {"address": 192}]})",
       "controllers[1].address: is taken by another controller of this channel"},
      {R"({"smbios": "", "controllers": [{"address": 192, "transferMode": {}}]})",
       "controllers[0].transferMode: unknown key"},
      {R"({"smbios": "", "bmc": {"sensors": [{"reading": [0]}]}})", "bmc.sensors[0].number: is missing"},
      {R"({"smbios": "", "bmc": {"sensors": [{"number": 1, "reading": [0, 256]}]}})",
       "bmc.sensors[0].reading[1]: 256 is not a number from 0 to 255"},
      {R"({"smbios": "", "bmc": {"lanParameters": [{"parameter": 3, "channel": 16}]}})",
       "bmc.lanParameters[0].channel: 16 is not a number from 0 to 15"},
      {R"({"smbios": "", "bmc": {"oem": [{"command": "0x15"}]}})",
       "bmc.oem[0].command: must be 0x14, 0x93, 0x94 or 0x97"},
      {R"({"smbios": "", "bmc": {"keyValues": [{"key": "", "value": "x"}]}})",
       "bmc.keyValues[0].key: must have 1 to 56 bytes"},
      {R"({"smbios": "", "controllers": [{"address": 192, "sensors": []}]})",
       "controllers[0].sensors: unknown key"},
      {R"({"smbios": "", "clock": {"start": "2026-02-29T00:00:00"}})",
       "clock.start: \"2026-02-29T00:00:00\" is neither \"now\" nor like 2026-01-01T08:00:00"},
      {R"({})",
       "smbios: " + (folder / "smbios.bin").string() + ": cannot be read: No such file or directory"},
      {R"({"smbios": "a.bin"})",
       "smbios: a.bin: does not begin with an SMBIOS entry point as dmidecode --dump-bin writes it"},
  };
  for (const auto& [json, wanted] : cases) EXPECT_EQ(Behind(folder, ErrorOf(json)), wanted) << json;
  EXPECT_NE(ErrorOf("{\"smbios\": ").find("board.json: "), std::string::npos);
}

TEST_F(BoardTest, DocumentedExamplesAreAccepted) {
  std::ifstream file(std::string(VARNOK_SOURCE_DIR) + "/docs/board.md");
  const std::string text(std::istreambuf_iterator<char>(file), {});
  const std::string opening = "```json\n", closing = "\n```";
  int examples = 0;
  for (std::size_t at = text.find(opening); at != std::string::npos; at = text.find(opening, at + 1)) {
    const std::size_t from = at + opening.size();
    std::string json = text.substr(from, text.find(closing, from) - from);
    if (json.front() != '{')
      json = "{\"bmc\": {\"frus\": [{\"id\": 0, \"file\": \"board.bin\"}]}, " + json + "}";
    std::string error;
    ASSERT_TRUE(sim::Board::CreateDefault(folder, error)) << error;
    OpenWith(json);
    ++examples;
  }
  EXPECT_EQ(examples, 2);
}

TEST_F(BoardTest, FolderWithoutBoardJsonIsAnError) {
  std::string error;
  EXPECT_EQ(sim::Board::Open(folder, error), nullptr);
  EXPECT_EQ(error, (folder / "board.json").string() + ": cannot be read: No such file or directory");
}

TEST_F(BoardTest, ImageThatCannotBeWrittenKeepsItsContent) {
  std::filesystem::create_directory(folder / "sub");
  WriteFile("sub/a.bin", "abcd");
  OpenWith(R"({"smbios": "", "bmc": {"frus": [{"id": 0, "file": "sub/a.bin"}]}})");
  ASSERT_TRUE(board->OpenTrafficLog((folder / "log").string()));
  std::filesystem::rename(folder / "sub", folder / "moved");
  EXPECT_EQ(Exchange(0x0A, 0x12, {0, 0, 0, 'X'}).completionCode, 0xFF);
  EXPECT_EQ(Exchange(0x0A, 0x11, {0, 0, 0, 1}).data, (Bytes{1, 'a'}));
  const Bytes log = ReadFile("log");
  EXPECT_NE(std::string(log.begin(), log.end())
                .find("! " + (folder / "sub/a.bin").string() + ": cannot be written"),
            std::string::npos);
}

TEST_F(BoardTest, KilledProgramLeavesAWholeImage) {
  WriteFile("a.bin", std::string(2048, 0));
  OpenWith(R"({"smbios": "", "bmc": {"frus": [{"id": 0, "file": "a.bin"}]}})");
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

TEST_F(BoardTest, NewProgramSeesWhatTheLastOneWrote) {
  OpenDefault();
  for (int offset = 0; offset < 2048; offset += 8) {
    Bytes data = {2, static_cast<std::uint8_t>(offset), static_cast<std::uint8_t>(offset >> 8)};
    data.resize(11, static_cast<std::uint8_t>(offset / 8));
    ASSERT_EQ(Exchange(0x0A, 0x12, data).completionCode, 0);
  }
  board.reset();
  Open();
  EXPECT_EQ(Exchange(0x0A, 0x11, {2, 0xF8, 0x07, 2}).data, (Bytes{2, 0xFF, 0xFF}));
  EXPECT_EQ(Exchange(0x0A, 0x11, {2, 0x10, 0x00, 2}).data, (Bytes{2, 2, 2}));
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
  variables["HOME"] = "/home/u";
  EXPECT_EQ(sim::FindBoard(Variables(), error)->folder, "/home/u/.local/state/varnok/board");
  variables["XDG_STATE_HOME"] = "relative";
  EXPECT_EQ(sim::FindBoard(Variables(), error)->folder, "/home/u/.local/state/varnok/board");
  variables["XDG_STATE_HOME"] = "/state";
  EXPECT_EQ(sim::FindBoard(Variables(), error)->folder, "/state/varnok/board");
  variables["VARNOK_BOARD"] = "";
  EXPECT_TRUE(sim::FindBoard(Variables(), error)->isDefault);
  variables["VARNOK_BOARD"] = "mine";
  EXPECT_EQ(sim::FindBoard(Variables(), error)->folder, "mine");
  EXPECT_FALSE(sim::FindBoard(Variables(), error)->isDefault);
}

TEST_F(BoardSourceTest, DefaultBoardIsMadeAtFirstUseOnly) {
  variables["XDG_STATE_HOME"] = folder.string();
  const std::filesystem::path where = folder / "varnok" / "board";
  std::filesystem::create_directories(where);
  WriteFile("varnok/board/board.bin", "left behind by a killed first use");
  board = sim::OpenBoard(Variables(), notice, error);
  ASSERT_NE(board, nullptr) << error;
  EXPECT_EQ(notice, "created the default simulated board in " + where.string());
  EXPECT_EQ(Exchange(0x0A, 0x12, {1, 0, 0, 0x42}).completionCode, 0);
  notice.clear();
  variables["VARNOK_TRAFFIC"] = (folder / "log").string();
  board = sim::OpenBoard(Variables(), notice, error);
  ASSERT_NE(board, nullptr) << error;
  EXPECT_EQ(notice, "");
  EXPECT_EQ(Exchange(0x0A, 0x11, {1, 0, 0, 1}).data, (Bytes{1, 0x42}));
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
}

}  // namespace
}  // namespace varnok::testing
