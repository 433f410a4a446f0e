// Boards that are asked and answer, in the cases of tests/sim/fixtures:
//
//   = NAME                    a case, in a folder of its own
//   a.bin = CONTENT           what a file holds before the board is opened
//   bmc KEYS, faults RULES    keys of board.json; lines that are indented go on. "default": the default board
//   0A/0 11 00 00 => 00 01    a request and its answer, as Ask has them; C0@0 06/0 01 is one to a controller
//   a.bin: CONTENT            what the file holds by now; "log:" and what follows: the traffic log
//   ... "extra": 1 => TEXT    a board.json and the error of opening it
#include "app/services/format.h"
#include "sim/fault_kinds.h"
#include "tests/sim/board_fixture.h"
#include "tests/support/expectations.h"
#include "tests/support/rows.h"

namespace varnok::testing {
namespace {

/// A request to a controller as the Send Message request, of sequence 1, that carries it.
std::string Bridged(const std::string& request) {
  std::istringstream text(request);
  int target = 0, channel = 0, netFunction = 0, lun = 0, byte = 0, sum = 0x20 + 0x06;
  char mark = 0;
  text >> std::hex >> target >> mark >> channel >> netFunction >> mark >> lun;
  const int head = netFunction << 2 | lun;
  std::string frame =
      Format("06/0 34 %02X %02X %02X %02X 20 06", channel, target, head, -(target + head) & 0xFF);
  for (; text >> byte; sum += byte) frame += Format(" %02X", byte);
  return frame + Format(" %02X", -sum & 0xFF);
}

class Conversations : public BoardTest {
 protected:
  void Play(const std::string& path) {
    for (const auto& [name, text] : Expectations("sim/fixtures/" + path)) {
      SCOPED_TRACE(name);
      Start();
      const std::size_t log = text.find("\nlog: ");
      std::string lines = text.substr(0, log);
      for (std::size_t at; (at = lines.find("\n    ")) != std::string::npos;) lines.replace(at, 5, " ");
      for (std::string line : Split(lines, "\n")) {
        line.resize(std::min(line.size(), line.find("//")));
        line.resize(line.find_last_not_of(' ') + 1);
        if (!line.empty()) Do(line);
      }
      if (log != std::string::npos) {
        EXPECT_EQ(TextOf("log"), text.substr(log + 6));
      }
    }
  }

 private:
  void Start() {
    board.reset();
    for (const auto& entry : std::filesystem::directory_iterator(folder)) std::filesystem::remove_all(entry);
    std::filesystem::create_directory(folder / "d");
    std::filesystem::create_symlink("/etc/hostname", folder / "out.bin");
    bmc_ = faults_ = "";
  }

  void Do(const std::string& line) {
    const std::size_t arrow = line.find(" =>"), equals = line.find(" ="), colon = line.find(':');
    const std::string answer = line.substr(std::min(line.size(), arrow + 4));
    if (line == "default") return OpenDefault();
    if (line == "reopen") return BoardTest::Open();
    if (line.starts_with("bmc ")) {
      bmc_ = line.substr(4);
    } else if (line.starts_with("faults ")) {
      faults_ = line.substr(7);
    } else if (arrow == std::string::npos && equals != std::string::npos) {
      WriteFile(line.substr(0, equals), Unescape(line.substr(std::min(line.size(), equals + 3))));
      if (line.starts_with("empty.bin"))
        std::filesystem::create_hard_link(folder / "empty.bin", folder / "same.bin");
    } else if (arrow == std::string::npos) {
      EXPECT_EQ(TextOf(line.substr(0, colon)), Unescape(line.substr(std::min(line.size(), colon + 2))));
    } else if (std::string_view(".{[").find(line[0]) != std::string_view::npos) {
      ExpectError(Unescape(line.substr(0, arrow)), answer);
    } else {
      if (board == nullptr) Open();
      const std::string request = line.substr(0, arrow);
      EXPECT_EQ(Ask(line[2] == '@' ? Bridged(request) : request), answer) << request;
    }
  }

  void ExpectError(std::string json, std::string error) {
    if (json.starts_with("...")) json = R"({"smbios": "", )" + json.substr(3) + "}";
    if (std::size_t at = error.find("DIR/"); at != std::string::npos) error.replace(at, 3, folder);
    EXPECT_EQ(ErrorOf(json), (folder / "board.json: ").string() + error);
  }

  /// As the case describes it so far; faults meet a board whose controllers have a FRU device each.
  void Open() {
    if (faults_.empty()) return OpenBmc(bmc_);
    WriteFile("a.bin", "abcdefgh");
    WriteFile("b.bin", "ABCDEFGH");
    OpenBmc(R"("coldResetMilliseconds": 1000, "frus": [{"id": 0, "file": "a.bin"}])",
            R"(, "controllers": [{"address": "0xC0", "frus": [{"id": 0, "file": "b.bin"}]}], "faults": [)" +
                faults_ + "]");
    ASSERT_TRUE(board->OpenTrafficLog((folder / "log").string()));
  }

  std::string bmc_, faults_;
};

TEST_F(Conversations, OfTheBmc) {
  Play("bmc.txt");
}
TEST_F(Conversations, OfItsSdrRepository) {
  Play("sdr.txt");
}
TEST_F(Conversations, WithControllersBehindIt) {
  Play("bridging.txt");
}
TEST_F(Conversations, WithFaults) {
  Play("faults.txt");
}
TEST_F(Conversations, ThatDoNotBegin) {
  Play("errors.txt");
}

TEST_F(BoardTest, PowerIsCutBehindARequest) {
  WriteFile("a.bin", "abcdefgh");
  OpenBmc(R"("frus": [{"id": 0, "file": "a.bin"}])",
          R"(, "faults": [{"command": "0x12", "nth": 2, "fault": "power-cut"}])");
  EXPECT_EQ(Ask("0A/0 12 00 00 00 58"), "00 01");
  EXPECT_EXIT(Ask("0A/0 12 00 01 00 59"), ::testing::ExitedWithCode(sim::kPowerCutStatus), "");
  EXPECT_EQ(TextOf("a.bin"), "XYcdefgh");
}

TEST_F(BoardTest, ClockFollowsStallsAndExchanges) {
  OpenBmc("", R"(, "clock": {"start": "2024-02-28T23:59:58", "exchangeMicroseconds": 500000})");
  EXPECT_EQ(Ask("wait 1000"), "");
  EXPECT_EQ(board->Now().day, 28);
  EXPECT_EQ(Exchange(0x06, 0x52, Bytes(256)), "refused");
  EXPECT_EQ(Ask("06/0 01").substr(0, 5) + Ask("06/0 01").substr(0, 5), "00 2000 20");
  const WallClock now = board->Now();
  EXPECT_EQ(now.month * 100 + now.day, 229);
  EXPECT_EQ(now.hour * 3600 + now.minute * 60 + now.second, 0);
}

}  // namespace
}  // namespace varnok::testing
