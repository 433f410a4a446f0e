// Each fault of board.json, seen from the program's side.
#include <tuple>

#include "sim/fault_kinds.h"
#include "tests/sim/board_fixture.h"

namespace varnok::testing {
namespace {

/// Read FRU Data through Send Message, to the controller C0h.
constexpr const char* kBridgedRead = "06/0 34 00 C0 28 18 20 06 11 00 00 00 02 C7";
constexpr const char* kFetch = "06/0 33";
const std::string kFetched = "00 00 2E B2 C0 04 11 00 02 41 42 A6";

class FaultTest : public BoardTest {
 protected:
  /// A board with FRU device 0 at the BMC and one at the controller C0h, and these faults.
  std::string Board(const std::string& faults) {
    WriteFile("a.bin", "abcdefgh");
    WriteFile("b.bin", "ABCDEFGH");
    return R"({"smbios": "", "bmc": {"coldResetMilliseconds": 1000, "frus": [{"id": 0, "file": "a.bin"}]},
      "controllers": [{"address": "0xC0", "frus": [{"id": 0, "file": "b.bin"}]}],
      "faults": [)" +
           faults + "]}";
  }
};

TEST_F(FaultTest, RuleFiresForTheRequestsItNames) {
  OpenWith(Board(
      R"({"netFunction": 10, "command": "0x11", "data": [0, 2], "nth": 2, "fault": "no-answer"},
    {"netFunction": 10, "command": "0x12", "every": 3, "fault": "no-answer"},
    {"command": "0x10", "from": 2, "to": 3, "fault": "no-answer"},
    {"command": "0x01", "data": [0], "fault": "no-answer"},
    {"netFunction": 6, "lun": 1, "fault": "completion-code", "code": "0xD4"})"));
  auto lost = [this](const std::vector<std::string>& requests) {
    std::string marks;
    for (const std::string& request : requests) marks += Ask(request) == "lost" ? 'x' : '.';
    return marks;
  };
  const std::string fromTwo = "0A/0 11 00 02 00 02";
  EXPECT_EQ(lost({fromTwo, "0A/0 11 00 00 00 02", fromTwo, fromTwo}), "..x.");
  EXPECT_EQ(lost(std::vector<std::string>(6, "0A/0 12 00 00 00 61")), "..x..x");
  EXPECT_EQ(lost(std::vector<std::string>(4, "0A/0 10 00")), ".xx.");
  EXPECT_EQ(lost({"06/0 01"}), ".") << "it has no data";
  EXPECT_EQ(Ask("06/1 01"), "D4");
}

TEST_F(FaultTest, EveryKindDoesWhatItSays) {
  const std::string read = "0A/0 11 00 00 00 02", read2 = "0A/0 11 00 02 00 02";
  const std::string read4 = "0A/0 11 00 04 00 02";
  const std::string ab = "00 02 61 62", cd = "00 02 63 64", ef = "00 02 65 66";
  const std::string writeX = "0A/0 12 00 00 00 58", writeY = "0A/0 12 00 01 00 59";
  const std::string addSdr = "0A/0 24 00 00 51 C0 03 40 E2 01", isErased = "0A/0 27 01 00 43 4C 52 00";
  // The last one is the content of a.bin behind the conversation.
  // clang-format off
  const std::tuple<const char*, std::string, Conversation, const char*> cases[] = {
      {"lost answers and a failed send", R"({"command": "0x12", "nth": 1, "fault": "no-answer"},
         {"command": "0x12", "nth": 2, "fault": "no-answer", "executed": false},
         {"command": "0x12", "nth": 3, "fault": "send-failure"})",
       {{writeX, "lost"}, {"fetch", "lost"}, {writeY, "lost"}, {writeY, "refused"},
        {"0A/0 12 00 03 00 57", "00 01"}}, "XbcWefgh"},
      {"a completion code before the work",
       R"({"command": "0x12", "nth": 1, "fault": "completion-code", "code": "0xC3"})", {{writeX, "C3"}},
       "abcdefgh"},
      {"a completion code behind it",
       R"({"command": "0x12", "nth": 1, "fault": "completion-code", "code": "0xC3", "executed": true})",
       {{writeX, "C3"}}, "Xbcdefgh"},
      {"short and long answers", R"({"command": "0x11", "nth": 1, "fault": "short", "bytes": 2},
         {"command": "0x11", "nth": 2, "fault": "short", "bytes": 200},
         {"command": "0x11", "nth": 3, "fault": "long", "bytes": 2})",
       {{read, "00 02"}, {read, "00"}, {read, ab + " A5 A5"}}, "abcdefgh"},
      {"stale answers, one behind", R"({"command": "0x11", "from": 2, "to": 3, "fault": "stale"})",
       {{read, ab}, {read2, ab}, {read4, cd}, {read2, cd}}, "abcdefgh"},
      {"a stale answer with none before it", R"({"command": "0x11", "nth": 1, "fault": "stale"})",
       {{read, "lost"}}, "abcdefgh"},
      {"a duplicate in front of the next answer, once",
       R"({"command": "0x11", "nth": 1, "fault": "duplicate"})",
       {{read, ab}, {read2, ab}, {"fetch", cd}, {read4, ef}}, "abcdefgh"},
      {"the answer of another command",
       R"({"command": "0x11", "nth": 1, "fault": "other-command", "answeredCommand": "0x12"})",
       {{read, "12: " + ab}, {read, ab}}, "abcdefgh"},
      {"a cold reset in mid-write", R"({"command": "0x12", "nth": 2, "fault": "cold-reset"})",
       {{writeX, "00 01"}, {writeY, "lost"}, {read, "lost"}, {"wait 1000", ""}, {read, "00 02 58 62"}},
       "Xbcdefgh"},
      {"a flipped byte in storage", R"({"command": "0x11", "nth": 2, "fault": "flip", "file": "a.bin",
         "offset": 1, "mask": "0x20"})", {{read, ab}, {read, "00 02 61 42"}}, "aBcdefgh"},
      {"writes that reach the device later, or never",
       R"({"command": "0x12", "nth": 1, "fault": "late-write", "milliseconds": 500},
         {"command": "0x12", "nth": 2, "fault": "late-write"})",
       {{writeX, "00 01"}, {writeY, "00 01"}, {read, ab}, {"wait 500", ""}, {read, "00 02 58 62"},
        {"wait 9000000", ""}, {read, "00 02 58 62"}}, "Xbcdefgh"},
      {"a device that is full in the middle of a write",
       R"({"command": "0x12", "nth": 1, "fault": "full-storage", "room": 1})",
       {{"0A/0 12 00 00 00 58 59", "C4"}, {"0A/0 12 00 02 00 5A", "00 01"}}, "XbZdefgh"},
      {"an answer that comes seconds late, in front of another",
       R"({"command": "0x11", "nth": 1, "fault": "late-answer", "seconds": 2})",
       {{read, "lost"}, {read2, cd}, {"fetch", "lost"}, {"wait 2000", ""}, {"fetch", ab}, {"fetch", "lost"}},
       "abcdefgh"},
      {"a device that answers FFh", R"({"command": "0x11", "fault": "all-ff", "keep": 1})",
       {{read, "00 02 FF FF"}}, "abcdefgh"},
      {"a controller that answers late", R"({"controller": "0xC0", "fault": "late-answer", "seconds": 1})",
       {{kBridgedRead, "00"}, {kFetch, "80"}, {"06/0 31", "00 00"}, {"wait 1000", ""}, {kFetch, kFetched}},
       "abcdefgh"},
      {"the first rule that fires decides",
       R"({"command": "0x11", "nth": 1, "fault": "completion-code", "code": "0xC0"},
         {"command": "0x11", "fault": "completion-code", "code": "0xC3"})", {{read, "C0"}, {read, "C3"}},
       "abcdefgh"},
      {"a controller on the IPMB, which counts what reaches it",
       R"({"controller": "0xC0", "command": "0x11", "nth": 1, "fault": "nak"},
         {"controller": "0xC0", "command": "0x11", "nth": 2, "fault": "no-answer"},
         {"controller": "0xC0", "channel": 0, "command": "0x11", "nth": 3, "fault": "duplicate"},
         {"controller": "0xC0", "channel": 6, "fault": "no-answer"})",
       {{read, ab}, {kBridgedRead, "83"}, {kFetch, "80"}, {kBridgedRead, "00"}, {kFetch, "80"},
        {kBridgedRead, "00"}, {kFetch, kFetched}, {kFetch, kFetched}, {kFetch, "80"}}, "abcdefgh"},
      {"a reservation that is lost before the request",
       R"({"command": "0x27", "nth": 2, "fault": "lost-reservation"})",
       {{"0A/0 22", "00 01 00"}, {isErased, "00 01"}, {isErased, "C5"}}, "abcdefgh"},
      {"a repository that lies", R"({"command": "0x23", "nth": 1, "fault": "next-record", "record": 1},
         {"command": "0x20", "fault": "record-count", "records": 500},
         {"command": "0x24", "nth": 2, "fault": "full-storage"})",
       {{addSdr, "00 01 00"}, {addSdr, "C4"}, {"0A/0 23 00 00 01 00 00 01", "00 01 00 01"},
        {"0A/0 23 00 00 01 00 00 01", "00 FF FF 01"},
        {"0A/0 20", "00 51 F4 01 F8 7F 80 29 56 69 00 00 00 00 2F"}}, "abcdefgh"},
  };
  // clang-format on
  for (const auto& [what, rules, conversation, after] : cases) {
    SCOPED_TRACE(what);
    OpenWith(Board(rules));
    Converse(conversation);
    EXPECT_EQ(TextOf("a.bin"), after);
  }
}

TEST_F(FaultTest, PowerIsCutBehindARequest) {
  OpenWith(Board(R"({"command": "0x12", "nth": 2, "fault": "power-cut"})"));
  EXPECT_EQ(Ask("0A/0 12 00 00 00 58"), "00 01");
  EXPECT_EXIT(Ask("0A/0 12 00 01 00 59"), ::testing::ExitedWithCode(sim::kPowerCutStatus), "");
  EXPECT_EQ(TextOf("a.bin"), "XYcdefgh");
}

TEST_F(FaultTest, BadRulesNameTheirKey) {
  const std::pair<const char*, const char*> cases[] = {
      {R"("command": 1)", ".fault: is missing"},
      {R"("fault": "explode")", R"(.fault: "explode" is not a fault)"},
      {R"("fault": "short")", ".bytes: is missing"},
      {R"("fault": "short", "bytes": 1, "code": 3)", ".code: unknown key"},
      {R"("fault": "completion-code", "code": 0)", ".code: 0 is not a number from 1 to 255"},
      {R"("fault": "stale", "nth": 1, "every": 2)", ".nth: only one of nth, every and from/to can be given"},
      {R"("fault": "stale", "nth": 0)", ".nth: 0 is not a number from 1 to 1000000"},
      {R"("fault": "stale", "data": [1, 256])", ".data[1]: 256 is not a number from 0 to 255"},
      {R"("fault": "nak")", ".fault: needs the key controller: who does not acknowledge"},
      {R"("fault": "send-failure", "controller": "0xC0")",
       ".fault: only the BMC's own interface can fail to send"},
      {R"("fault": "flip", "file": "z.bin")", R"( flip: no device stores in "z.bin")"},
      {R"("fault": "flip", "file": "a.bin", "offset": 8)", " flip: the offset is past the end of a.bin"},
  };
  for (const auto& [rule, complaint] : cases)
    EXPECT_EQ(ErrorOf(Board("{" + std::string(rule) + "}")),
              (folder / "board.json: faults[0]").string() + complaint);
}

TEST_F(FaultTest, TrafficLogShowsEveryRequestAnswerAndFault) {
  OpenWith(Board(R"({"command": "0x11", "nth": 2, "fault": "no-answer"},
    {"controller": "0xC0", "nth": 2, "fault": "nak"},
    {"command": "0x01", "fault": "flip", "file": "a.bin", "offset": 0, "mask": 1})"));
  ASSERT_TRUE(board->OpenTrafficLog((folder / "log").string()));
  const char* const read = "0A/0 11 00 00 00 02";
  for (const char* request : {read, read, "wait 60000", kBridgedRead, kFetch, kBridgedRead, "06/2 01"})
    Ask(request);
  EXPECT_EQ(TextOf("log"),
            "000000.001000 > 20 0A/0 11 00 00 00 02\n"
            "000000.001000 < 20 0B/0 11 cc=00 02 61 62\n"
            "000000.002000 > 20 0A/0 11 00 00 00 02\n"
            "000000.002000 < 20 0B/0 11 lost # faults[0] no-answer\n"
            "000060.008000 > 20 06/0 34 00 C0 28 18 20 06 11 00 00 00 02 C7\n"
            "000060.009000 >> C0@0 0A/0 11 00 00 00 02\n"
            "000060.009000 << C0@0 0B/0 11 cc=00 02 41 42\n"
            "000060.009000 < 20 07/0 34 cc=00\n"
            "000060.010000 > 20 06/0 33\n"
            "000060.010000 < 20 07/0 33 cc=00 00 2E B2 C0 04 11 00 02 41 42 A6\n"
            "000060.011000 > 20 06/0 34 00 C0 28 18 20 06 11 00 00 00 02 C7\n"
            "000060.012000 >> C0@0 0A/0 11 00 00 00 02\n"
            "000060.012000 << C0@0 0B/0 11 refused # faults[1] nak\n"
            "000060.012000 < 20 07/0 34 cc=83\n"
            "000060.013000 > 20 06/2 01\n"
            "000060.013000 ! faults[2] flip\n"
            "000060.013000 < 20 07/2 01 cc=C2\n");
}

}  // namespace
}  // namespace varnok::testing
