// Each fault of board.json, seen from the program's side.
#include <numeric>

#include "tests/sim/board_fixture.h"

namespace varnok::testing {
namespace {

class FaultTest : public BoardTest {
 protected:
  void SetUp() override {
    BoardTest::SetUp();
    WriteFile("a.bin", "abcdefgh");
  }
  /// A board with FRU device 0 at the BMC and one at the controller C0h, and these faults.
  void OpenWithFaults(const std::string& faults) { OpenWith(Board(faults)); }
  std::string Board(const std::string& faults) {
    WriteFile("b.bin", "ABCDEFGH");
    return R"({"smbios": "", "bmc": {"coldResetMilliseconds": 1000, "frus": [{"id": 0, "file": "a.bin"}]},
      "controllers": [{"address": "0xC0", "frus": [{"id": 0, "file": "b.bin"}]}],
      "faults": [)" +
           faults + "]}";
  }
  Reply Read(std::uint8_t offset = 0, std::uint8_t count = 2) {
    return Exchange(0x0A, 0x11, {0, offset, 0, count});
  }
  Reply Write(std::uint8_t offset, std::uint8_t byte) { return Exchange(0x0A, 0x12, {0, offset, 0, byte}); }
  /// Read FRU Data to C0h; the completion code of Send Message.
  std::uint8_t BridgedRead() {
    const Bytes head = {0xC0, 0x28};
    const Bytes body = {0x20, 0x06, 0x11, 0, 0, 0, 2};
    Bytes data = {0};
    for (const Bytes& part : {head, body}) {
      data.insert(data.end(), part.begin(), part.end());
      data.push_back(static_cast<std::uint8_t>(0 - std::accumulate(part.begin(), part.end(), 0)));
    }
    return Exchange(0x06, 0x34, data).completionCode;
  }
  Reply Fetch() { return Exchange(0x06, 0x33, {}); }
  std::string FaultError(const std::string& fault) {
    const std::string error = ErrorOf(Board(fault));
    return error.substr(error.find("faults[0]"));
  }
};

constexpr Status kLost = uefi_status::kTimeout;

TEST_F(FaultTest, RuleFiresForTheRequestsItNames) {
  OpenWithFaults(
      R"({"netFunction": 10, "command": "0x11", "data": [0, 2], "nth": 2, "fault": "completion-code", "code": "0xC0"},
    {"netFunction": 10, "command": "0x12", "every": 3, "fault": "completion-code", "code": "0xC3"},
    {"command": "0x10", "from": 2, "to": 3, "fault": "completion-code", "code": "0xFF"},
    {"netFunction": 6, "lun": 1, "fault": "completion-code", "code": "0xD4"})");
  std::string reads, writes, sizes;
  for (std::uint8_t offset : Bytes{2, 0, 2, 2}) reads += Read(offset).completionCode == 0xC0 ? 'x' : '.';
  for (int i = 0; i < 6; ++i) writes += Write(0, 'a').completionCode == 0xC3 ? 'x' : '.';
  for (int i = 0; i < 4; ++i) sizes += Exchange(0x0A, 0x10, {0}).completionCode == 0xFF ? 'x' : '.';
  EXPECT_EQ(reads, "..x.");
  EXPECT_EQ(writes, "..x..x");
  EXPECT_EQ(sizes, ".xx.");
  EXPECT_EQ(Exchange(0x06, 0x01, {}, 1).completionCode, 0xD4);
  EXPECT_EQ(Exchange(0x06, 0x01, {}, 0).completionCode, 0);
}

TEST_F(FaultTest, LostAnswerAndFailedSend) {
  OpenWithFaults(R"({"command": "0x12", "nth": 1, "fault": "no-answer"},
    {"command": "0x12", "nth": 2, "fault": "no-answer", "executed": false},
    {"command": "0x12", "nth": 3, "fault": "send-failure"})");
  EXPECT_EQ(Write(0, 'X').receiveStatus, kLost);
  EXPECT_EQ(Receive().receiveStatus, kLost);  // lost until the next send
  EXPECT_EQ(Write(1, 'Y').receiveStatus, kLost);
  EXPECT_EQ(Write(2, 'Z').sendStatus, uefi_status::kDeviceError);
  EXPECT_EQ(Write(3, 'W').completionCode, 0);
  const Bytes file = ReadFile("a.bin");
  EXPECT_EQ(std::string(file.begin(), file.end()), "XbcWefgh");
}

TEST_F(FaultTest, CompletionCodeBeforeOrAfterTheWork) {
  OpenWithFaults(R"({"command": "0x12", "nth": 1, "fault": "completion-code", "code": "0xC3"},
    {"command": "0x12", "nth": 2, "fault": "completion-code", "code": "0xC3", "executed": true})");
  EXPECT_EQ(Write(0, 'X').completionCode, 0xC3);
  EXPECT_EQ(ReadFile("a.bin")[0], 'a');
  EXPECT_EQ(Write(0, 'X').completionCode, 0xC3);
  EXPECT_EQ(ReadFile("a.bin")[0], 'X');
}

TEST_F(FaultTest, ShortAndLongAnswers) {
  OpenWithFaults(R"({"command": "0x11", "nth": 1, "fault": "short", "bytes": 2},
    {"command": "0x11", "nth": 2, "fault": "short", "bytes": 200},
    {"command": "0x11", "nth": 3, "fault": "long", "bytes": 2})");
  EXPECT_EQ(Read().data, Bytes{2});
  const Reply empty = Read();
  EXPECT_EQ(empty.data, Bytes{});
  EXPECT_EQ(empty.receiveStatus, kSuccess);
  EXPECT_EQ(Read().data, (Bytes{2, 'a', 'b', 0xA5, 0xA5}));
}

TEST_F(FaultTest, StaleAnswersAreOneBehind) {
  OpenWithFaults(R"({"command": "0x11", "from": 2, "to": 3, "fault": "stale"})");
  EXPECT_EQ(Read(0).data, (Bytes{2, 'a', 'b'}));
  EXPECT_EQ(Read(2).data, (Bytes{2, 'a', 'b'}));
  EXPECT_EQ(Read(4).data, (Bytes{2, 'c', 'd'}));
  EXPECT_EQ(Read(6).data, (Bytes{2, 'g', 'h'}));
}

TEST_F(FaultTest, StaleAnswerWithoutOneBeforeIsLost) {
  OpenWithFaults(R"({"command": "0x11", "nth": 1, "fault": "stale"})");
  EXPECT_EQ(Read().receiveStatus, kLost);
}

TEST_F(FaultTest, DuplicateIsFoundBeforeTheNextAnswerOnce) {
  OpenWithFaults(R"({"command": "0x11", "nth": 1, "fault": "duplicate"})");
  EXPECT_EQ(Read(0).data, (Bytes{2, 'a', 'b'}));
  EXPECT_EQ(Read(2).data, (Bytes{2, 'a', 'b'}));
  EXPECT_EQ(Receive().data, (Bytes{2, 'c', 'd'}));
  EXPECT_EQ(Read(4).data, (Bytes{2, 'e', 'f'}));
}

TEST_F(FaultTest, AnswerOfAnotherCommand) {
  OpenWithFaults(R"({"command": "0x11", "nth": 1, "fault": "other-command", "answeredCommand": "0x12"})");
  EXPECT_EQ(Read().command, 0x12);
  EXPECT_EQ(Read().command, 0x11);
}

TEST_F(FaultTest, ColdResetInMidWrite) {
  OpenWithFaults(R"({"command": "0x12", "nth": 2, "fault": "cold-reset"})");
  EXPECT_EQ(Write(0, 'X').completionCode, 0);
  EXPECT_EQ(Write(1, 'Y').receiveStatus, kLost);
  EXPECT_EQ(Read().receiveStatus, kLost);
  board->Stall(1'000'000, StallKind::Waiting);
  EXPECT_EQ(Read(0, 3).data, (Bytes{3, 'X', 'b', 'c'}));
}

TEST_F(FaultTest, FlippedByteStaysInStorage) {
  OpenWithFaults(
      R"({"command": "0x11", "nth": 2, "fault": "flip", "file": "a.bin", "offset": 1, "mask": "0x20"})");
  EXPECT_EQ(Read().data, (Bytes{2, 'a', 'b'}));
  EXPECT_EQ(Read().data, (Bytes{2, 'a', 'B'}));
  EXPECT_EQ(ReadFile("a.bin")[1], 'B');
}

TEST_F(FaultTest, LostReservationIsCancelledBeforeTheRequest) {
  OpenWithFaults(R"({"command": "0x01", "nth": 1, "fault": "lost-reservation"})");
  sim::Reservation& reservation = board->TheBmc().Self().sdrReservation;
  const std::uint16_t id = reservation.Take();
  EXPECT_TRUE(reservation.Holds(id));
  EXPECT_EQ(Exchange(0x06, 0x01, {}).completionCode, 0);
  EXPECT_FALSE(reservation.Holds(id));
}

TEST_F(FaultTest, ControllersOnTheIpmbFailByThemselves) {
  OpenWithFaults(R"({"controller": "0xC0", "command": "0x11", "nth": 1, "fault": "nak"},
    {"controller": "0xC0", "command": "0x11", "nth": 2, "fault": "no-answer"},
    {"controller": "0xC0", "channel": 0, "command": "0x11", "nth": 3, "fault": "duplicate"},
    {"controller": "0xC0", "channel": 6, "fault": "no-answer"})");
  EXPECT_EQ(Read().completionCode, 0);  // the BMC's own requests are not counted
  EXPECT_EQ(BridgedRead(), 0x83);
  EXPECT_EQ(Fetch().completionCode, 0x80);
  EXPECT_EQ(BridgedRead(), 0);
  EXPECT_EQ(Fetch().completionCode, 0x80);
  // The rule counts what reaches the controller: the third request meets the duplicate.
  EXPECT_EQ(BridgedRead(), 0);
  EXPECT_EQ(Fetch().data, Fetch().data);
  EXPECT_EQ(Fetch().completionCode, 0x80);
}

TEST_F(FaultTest, FirstRuleThatFiresDecides) {
  OpenWithFaults(R"({"command": "0x11", "nth": 1, "fault": "completion-code", "code": "0xC0"},
    {"command": "0x11", "fault": "completion-code", "code": "0xC3"})");
  EXPECT_EQ(Read().completionCode, 0xC0);
  EXPECT_EQ(Read().completionCode, 0xC3);
}

TEST_F(FaultTest, BadRulesNameTheirKey) {
  EXPECT_EQ(FaultError(R"({"command": 1})"), "faults[0].fault: is missing");
  EXPECT_EQ(FaultError(R"({"fault": "explode"})"), R"(faults[0].fault: "explode" is not a fault)");
  EXPECT_EQ(FaultError(R"({"fault": "short"})"), "faults[0].bytes: is missing");
  EXPECT_EQ(FaultError(R"({"fault": "short", "bytes": 1, "code": 3})"), "faults[0].code: unknown key");
  EXPECT_EQ(FaultError(R"({"fault": "completion-code", "code": 0})"),
            "faults[0].code: 0 is not a number from 1 to 255");
  EXPECT_EQ(FaultError(R"({"fault": "stale", "nth": 1, "every": 2})"),
            "faults[0].nth: only one of nth, every and from/to can be given");
  EXPECT_EQ(FaultError(R"({"fault": "stale", "nth": 0})"),
            "faults[0].nth: 0 is not a number from 1 to 1000000");
  EXPECT_EQ(FaultError(R"({"fault": "stale", "data": [1, 256]})"),
            "faults[0].data[1]: 256 is not a number from 0 to 255");
  EXPECT_EQ(FaultError(R"({"fault": "nak"})"),
            "faults[0].fault: needs the key controller: who does not acknowledge");
  EXPECT_EQ(FaultError(R"({"fault": "send-failure", "controller": "0xC0"})"),
            "faults[0].fault: only the BMC's own interface can fail to send");
  EXPECT_EQ(FaultError(R"({"fault": "flip", "file": "z.bin"})"),
            R"(faults[0] flip: no device stores in "z.bin")");
  EXPECT_EQ(FaultError(R"({"fault": "flip", "file": "a.bin", "offset": 8})"),
            "faults[0] flip: the offset is past the end of a.bin");
}

TEST_F(FaultTest, TrafficLogShowsEveryRequestAnswerAndFault) {
  OpenWithFaults(R"({"command": "0x11", "nth": 2, "fault": "no-answer"},
    {"controller": "0xC0", "nth": 2, "fault": "nak"},
    {"command": "0x01", "fault": "flip", "file": "a.bin", "offset": 0, "mask": 1})");
  ASSERT_TRUE(board->OpenTrafficLog((folder / "log").string()));
  Read();
  Read();
  board->Stall(60'000'000, StallKind::Pacing);
  BridgedRead();
  Fetch();
  BridgedRead();
  Exchange(0x06, 0x01, {}, 2);
  const Bytes log = ReadFile("log");
  EXPECT_EQ(std::string(log.begin(), log.end()),
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
