// Requests to controllers behind the BMC: Send Message, Get Message and the receive queue.
#include <numeric>

#include "tests/sim/board_fixture.h"

namespace varnok::testing {
namespace {

std::uint8_t Checksum(const Bytes& bytes) {
  return static_cast<std::uint8_t>(0 - std::accumulate(bytes.begin(), bytes.end(), 0));
}

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
  Bytes head = {frame.target, static_cast<std::uint8_t>(frame.netFunction << 2)};
  head.push_back(Checksum(head));
  Bytes body = {0x20, static_cast<std::uint8_t>(frame.sequence << 2 | frame.requesterLun), frame.command};
  body.insert(body.end(), frame.data.begin(), frame.data.end());
  body.push_back(Checksum(body));
  Bytes bytes = {frame.channel};
  bytes.insert(bytes.end(), head.begin(), head.end());
  bytes.insert(bytes.end(), body.begin(), body.end());
  return bytes;
}

class BridgingTest : public BoardTest {
 protected:
  std::uint8_t Bridge(const Frame& frame) { return Exchange(0x06, 0x34, Build(frame)).completionCode; }
  Reply Fetch() { return Exchange(0x06, 0x33, {}); }
};

TEST_F(BridgingTest, AnswerWaitsInTheQueueWithItsFrame) {
  OpenDefault();
  EXPECT_EQ(Fetch().completionCode, 0x80);
  ASSERT_EQ(Bridge({.netFunction = 0x0A, .command = 0x11, .data = {0, 0, 0, 2}, .sequence = 9}), 0);
  // Channel, net function and requester's LUN, checksum; responder, sequence, command, code, data, checksum.
  Converse({{"06/0 33", "00 00 2E B2 C0 24 11 00 02 01 00 08"}, {"06/0 33", "80"}});
}

TEST_F(BridgingTest, EachControllerHasItsOwnChannelAndState) {
  OpenDefault();
  ASSERT_EQ(Bridge({.channel = 6, .target = 0x2C}), 0);
  EXPECT_EQ(Fetch().data[7], 0x50);                         // its device ID
  EXPECT_EQ(Bridge({.channel = 0, .target = 0x2C}), 0x83);  // on the other channel nobody acknowledges
  EXPECT_EQ(Bridge({.channel = 0, .target = 0xB0}), 0x83);
  EXPECT_EQ(Bridge({.channel = 0, .target = 0x20}), 0x83);  // the BMC does not talk to itself
  EXPECT_EQ(Bridge({.channel = 3, .target = 0xC0}), 0xCC);  // no such channel
  ASSERT_EQ(Bridge({.netFunction = 0x0A, .command = 0x12, .data = {0, 0, 0, 0x55}}), 0);
  EXPECT_EQ(Fetch().data[6], 0);
  EXPECT_EQ(ReadFile("backplane.bin")[0], 0x55);
  EXPECT_EQ(ReadFile("board.bin")[0], 0x01);
}

TEST_F(BridgingTest, SatelliteRefusesWhatOnlyTheBmcKnows) {
  OpenDefault();
  ASSERT_EQ(Bridge({.command = 0x34, .data = Bytes(8)}), 0);
  EXPECT_EQ(Fetch().data[6], 0xC1);
  ASSERT_EQ(Bridge({.netFunction = 0x08, .command = 0x00, .data = {'O', 'K', 'A', 'P', 'I'}}), 0);
  EXPECT_EQ(Fetch().data[6], 0xC1);
}

TEST_F(BridgingTest, DamagedFramesAndForeignAnswersLeaveTheQueueEmpty) {
  OpenDefault();
  Bytes first = Build({}), second = Build({});
  first[3] ^= 1;
  second.back() ^= 1;
  EXPECT_EQ(Exchange(0x06, 0x34, first).completionCode, 0);
  EXPECT_EQ(Exchange(0x06, 0x34, second).completionCode, 0);
  EXPECT_EQ(Bridge({.netFunction = 0x07}), 0);  // an answer, not a request
  EXPECT_EQ(Bridge({.requesterLun = 0}), 0);    // answered to the BMC's own LUN
  EXPECT_EQ(Fetch().completionCode, 0x80);
  EXPECT_EQ(Exchange(0x06, 0x34, Bytes(7)).completionCode, 0xC7);
}

TEST_F(BridgingTest, QueueKeepsOrderIsClearedAndIsBounded) {
  OpenDefault();
  for (std::uint8_t sequence = 1; sequence <= 20; ++sequence) ASSERT_EQ(Bridge({.sequence = sequence}), 0);
  EXPECT_EQ(Exchange(0x06, 0x31, {}).data, Bytes{1});  // message flags
  for (std::uint8_t sequence = 1; sequence <= 15; ++sequence) EXPECT_EQ(Fetch().data[4], sequence << 2);
  EXPECT_EQ(Exchange(0x06, 0x30, {0xFE}).completionCode, 0);  // another flag: the queue stays
  EXPECT_EQ(Fetch().data[4], 16 << 2);
  EXPECT_EQ(Fetch().completionCode, 0x80);
  ASSERT_EQ(Bridge({}), 0);
  EXPECT_EQ(Exchange(0x06, 0x30, {0x01}).completionCode, 0);
  EXPECT_EQ(Fetch().completionCode, 0x80);
}

TEST_F(BridgingTest, ControllerInResetAcknowledgesAndStaysSilent) {
  OpenDefault();
  ASSERT_EQ(Bridge({.command = 0x02}), 0);
  EXPECT_EQ(Fetch().data[6], 0);
  EXPECT_EQ(Bridge({}), 0);
  EXPECT_EQ(Fetch().completionCode, 0x80);
  EXPECT_EQ(Exchange(0x06, 0x01, {}).completionCode, 0);  // the BMC itself goes on
  board->Stall(3'000'000, StallKind::Waiting);
  EXPECT_EQ(Bridge({}), 0);
  EXPECT_EQ(Fetch().completionCode, 0);
}

}  // namespace
}  // namespace varnok::testing
