// Requests to controllers behind the BMC: Send Message, Get Message and the receive queue.
#include <numeric>

#include "tests/sim/board_fixture.h"

namespace varnok::testing {
namespace {

struct Frame {
  std::uint8_t channel = 0;
  std::uint8_t target = 0xC0;
  std::uint8_t netFunction = 0x06;
  std::uint8_t command = 0x01;
  Bytes data = {};
  std::uint8_t sequence = 1;
  std::uint8_t requesterLun = 2;
};

/// The data of a Send Message request.
Bytes Build(const Frame& frame) {
  auto byte = [](int number) { return static_cast<std::uint8_t>(number); };
  const int netFunction = frame.netFunction << 2;
  Bytes bytes = frame.data;
  bytes.insert(bytes.begin(),
               {frame.channel, frame.target, byte(netFunction), byte(-frame.target - netFunction), 0x20,
                byte(frame.sequence << 2 | frame.requesterLun), frame.command});
  bytes.push_back(byte(-std::accumulate(bytes.begin() + 4, bytes.end(), 0)));
  return bytes;
}

class BridgingTest : public BoardTest {
 protected:
  void SetUp() override { OpenDefault(); }
  std::string Bridge(const Frame& frame) { return Exchange(0x06, 0x34, Build(frame)); }
  /// Some bytes of the answer to Get Message, the completion code being number 0; all of a shorter one.
  std::string Fetch(std::size_t first = 0, std::size_t count = 1) {
    const std::string answer = Ask("06/0 33");
    return answer.size() < 3 * first ? answer : answer.substr(3 * first, 3 * count - 1);
  }
};

TEST_F(BridgingTest, AnswerWaitsInTheQueueWithItsFrame) {
  EXPECT_EQ(Fetch(), "80");
  ASSERT_EQ(Bridge({.netFunction = 0x0A, .command = 0x11, .data = {0, 0, 0, 2}, .sequence = 9}), "00");
  // Channel, net function and requester's LUN, checksum; responder, sequence, command, code, data, checksum.
  Converse({{"06/0 33", "00 00 2E B2 C0 24 11 00 02 01 00 08"}, {"06/0 33", "80"}});
}

TEST_F(BridgingTest, EachControllerHasItsOwnChannelAndState) {
  ASSERT_EQ(Bridge({.channel = 6, .target = 0x2C}), "00");
  EXPECT_EQ(Fetch(7, 2), "00 50");                          // its device ID
  EXPECT_EQ(Bridge({.channel = 0, .target = 0x2C}), "83");  // on the other channel nobody acknowledges
  EXPECT_EQ(Bridge({.channel = 0, .target = 0xB0}), "83");
  EXPECT_EQ(Bridge({.channel = 0, .target = 0x20}), "83");  // the BMC does not talk to itself
  EXPECT_EQ(Bridge({.channel = 3, .target = 0xC0}), "CC");  // no such channel
  ASSERT_EQ(Bridge({.netFunction = 0x0A, .command = 0x12, .data = {0, 0, 0, 0x55}}), "00");
  EXPECT_EQ(Fetch(7), "00");
  EXPECT_EQ(ReadFile("backplane.bin")[0], 0x55);
  EXPECT_EQ(ReadFile("board.bin")[0], 0x01);
  // What only the BMC knows.
  ASSERT_EQ(Bridge({.command = 0x34, .data = Bytes(8)}), "00");
  EXPECT_EQ(Fetch(7), "C1");
  ASSERT_EQ(Bridge({.netFunction = 0x08, .command = 0x00, .data = {'O', 'K', 'A', 'P', 'I'}}), "00");
  EXPECT_EQ(Fetch(7), "C1");
}

TEST_F(BridgingTest, DamagedFramesAndForeignAnswersLeaveTheQueueEmpty) {
  Bytes first = Build({}), second = Build({});
  first[3] ^= 1;
  second.back() ^= 1;
  EXPECT_EQ(Exchange(0x06, 0x34, first), "00");
  EXPECT_EQ(Exchange(0x06, 0x34, second), "00");
  EXPECT_EQ(Bridge({.netFunction = 0x07}), "00");  // an answer, not a request
  EXPECT_EQ(Bridge({.requesterLun = 0}), "00");    // answered to the BMC's own LUN
  EXPECT_EQ(Fetch(), "80");
  EXPECT_EQ(Exchange(0x06, 0x34, Bytes(7)), "C7");
}

TEST_F(BridgingTest, QueueKeepsOrderIsClearedAndIsBounded) {
  for (std::uint8_t sequence = 0; sequence < 20; ++sequence) ASSERT_EQ(Bridge({.sequence = sequence}), "00");
  EXPECT_EQ(Ask("06/0 31"), "00 01");  // message flags
  for (const char* sequence :
       {"00", "04", "08", "0C", "10", "14", "18", "1C", "20", "24", "28", "2C", "30", "34"})
    EXPECT_EQ(Fetch(5), sequence);
  EXPECT_EQ(Ask("06/0 30 FE"), "00");  // another flag: the queue stays
  EXPECT_EQ(Fetch(5), "38");
  EXPECT_EQ(Fetch(5), "3C");
  EXPECT_EQ(Fetch(), "80");
  ASSERT_EQ(Bridge({}), "00");
  Converse({{"06/0 30 01", "00"}, {"06/0 33", "80"}});
  ASSERT_EQ(Bridge({}), "00");
  Converse({{"06/0 02", "00"}, {"wait 60000", ""}, {"06/0 33", "80"}});  // a reset clears it, too
}

TEST_F(BridgingTest, ControllerInResetAcknowledgesAndStaysSilent) {
  ASSERT_EQ(Bridge({.command = 0x02}), "00");
  EXPECT_EQ(Fetch(7), "00");
  EXPECT_EQ(Bridge({}), "00");
  EXPECT_EQ(Fetch(), "80");
  EXPECT_TRUE(Ask("06/0 01").starts_with("00 20"));  // the BMC itself goes on
  EXPECT_EQ(Ask("wait 3000"), "");
  EXPECT_EQ(Bridge({}), "00");
  EXPECT_EQ(Fetch(), "00");
}

}  // namespace
}  // namespace varnok::testing
