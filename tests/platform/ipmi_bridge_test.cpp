#include <gtest/gtest.h>

#include "platform/ipmi.h"
#include "tests/support/scripted_ipmi.h"

namespace varnok {
namespace {

using namespace testing;

constexpr std::uint8_t kPsu = 0xB0;
// An answer of the power supply up to its command: it has no completion code.
const ScriptedIpmi::Bytes kCutAnswer = {0x00, 0x1E, 0xC2, kPsu, 0x04, 0x01};

IpmiMessage DeviceIdOf(std::uint8_t target) {
  return {.targetAddress = target, .netFunction = 0x06, .command = 0x01};
}

/// Get Device ID requests to the power supply, or to another controller.
struct IpmiBridge : ::testing::Test {
  TestFirmware machine;
  ScriptedIpmi bmc{machine};
  IpmiMessage response;

  void ExpectSend(int sequence = 1, std::uint8_t channel = 0, std::uint8_t target = kPsu) {
    bmc.ExpectSend(channel, target, static_cast<std::uint8_t>(sequence), 6, 1).Reply({});
  }
  void ExpectAnswer(const ScriptedIpmi::Bytes& data, std::uint8_t completionCode = 0, int sequence = 1,
                    std::uint8_t target = kPsu) {
    bmc.ExpectFetch().ReplyBridged(target, static_cast<std::uint8_t>(sequence), 6, 1, data, completionCode);
  }
  void ExpectExchange(int sequence = 1, std::uint8_t channel = 0, std::uint8_t target = kPsu) {
    ExpectSend(sequence, channel, target);
    ExpectAnswer({0x42, 0x43}, 0, sequence, target);
  }
  void ExpectEmptyQueue() { bmc.ExpectFetch().Reply({}, 0x80); }

  IpmiResult Transact(std::uint8_t target = kPsu) { return IpmiTransaction(DeviceIdOf(target), response); }
  IpmiResult TransactOnChannel7(std::uint8_t target = kPsu) {
    return IpmiBridgedRequest(DeviceIdOf(kPsu), response, 7, target, 1000);
  }
};

TEST_F(IpmiBridge, FrameAndAnswer) {
  IpmiMessage request = {.targetAddress = kPsu, .netFunction = 0x0A, .lun = 1, .command = 0x10};
  request.data[0] = 0x05;
  request.dataLength = 1;
  bmc.Expect(0x06, 0x34, {0x00, 0xB0, 0x29, 0x27, 0x20, 0x06, 0x10, 0x05, 0xC5}).Reply({});
  bmc.Expect(0x06, 0x33).Reply({0x00, 0x2E, 0xB2, 0xB0, 0x05, 0x10, 0x00, 0xAA, 0xBB, 0xD6});
  EXPECT_EQ(IpmiTransaction(request, response), ipmi_result::kSuccess);
  EXPECT_EQ(response.targetAddress, kPsu);
  EXPECT_EQ(response.netFunction, 0x0B);
  EXPECT_EQ(response.lun, 1);
  EXPECT_EQ(response.command, 0x10);
  ASSERT_EQ(response.dataLength, 2u);
  EXPECT_EQ(response.data[1], 0xBB);
  EXPECT_EQ(response.data[2], 0x00);
}

TEST_F(IpmiBridge, ChannelBySlaveAddressOfATransactionAlone) {
  ExpectExchange(1, 6, 0x2C);
  EXPECT_EQ(Transact(0x2C), ipmi_result::kSuccess);
  ExpectExchange(2, 0);
  EXPECT_EQ(Transact(), ipmi_result::kSuccess);
  ExpectExchange(1, 0, 0x2C);
  EXPECT_EQ(IpmiSendToController(DeviceIdOf(0x2C), response, 1000), ipmi_result::kSuccess);
  bmc.Expect(6, 1).Reply({0x20});
  EXPECT_EQ(IpmiSendToController(DeviceIdOf(kBmcAddress), response, 1000), ipmi_result::kSuccess);
  EXPECT_EQ(response.data[0], 0x20);
}

TEST_F(IpmiBridge, SequencesRunFrom1To63EachOnItsOwn) {
  for (int i = 0; i < 64; ++i) {
    ExpectExchange(i % 63 + 1, 7, 0xC0);
    EXPECT_EQ(TransactOnChannel7(0xC0), ipmi_result::kSuccess);
  }
  EXPECT_EQ(response.targetAddress, 0xC0);
  for (int i = 0; i < 64; ++i) {
    ExpectExchange(i % 63 + 1);
    EXPECT_EQ(Transact(), ipmi_result::kSuccess);
  }
}

TEST_F(IpmiBridge, RepeatedRequestsLeaveTheSequence) {
  ExpectSend(1);
  ExpectAnswer({}, 0xC0);
  ExpectExchange(1);
  EXPECT_EQ(Transact(), ipmi_result::kSuccess);
  bmc.Expect(6, 1).Reply({}, 0xC0);
  bmc.Expect(6, 1).Reply({0x20});
  EXPECT_EQ(Transact(kBmcAddress), ipmi_result::kSuccess);
  ExpectExchange(2);
  EXPECT_EQ(Transact(), ipmi_result::kSuccess);
}

TEST_F(IpmiBridge, FailedSendEndsTheTransactionFailedFetchTheAttempt) {
  for (int i = 0; i < 4; ++i) bmc.ExpectSend(0, kPsu, 1, 6, 1).Reply({}, 0x83);
  EXPECT_EQ(Transact(), ipmi_result::kSendFailed);
  bmc.ExpectSend(0, kPsu, 2, 6, 1).Lost();
  EXPECT_EQ(Transact(), ipmi_result::kReceiveFailed);
  for (int i = 0; i < 4; ++i) bmc.ExpectRefused(0x06, 0x34, {0x00, 0xB0, 0x18, 0x38, 0x20, 0x0E, 0x01, 0xD1});
  EXPECT_EQ(Transact(), ipmi_result::kSendFailed);

  ExpectSend(4);
  for (int i = 0; i < 4; ++i) bmc.ExpectRefused(0x06, 0x33);
  ExpectSend(4);
  for (int i = 0; i < 20; ++i) ExpectEmptyQueue();
  bmc.ExpectFetch().Lost();
  ExpectExchange(4);
  EXPECT_EQ(Transact(), ipmi_result::kSuccess);
}

TEST_F(IpmiBridge, OtherAnswersToASendAreSkipped) {
  bmc.ExpectSend(0, kPsu, 1, 6, 1)
      .ReplyWith({.netFunction = 7, .command = 0x01})
      .ReplyWith({.netFunction = 7, .lun = 2, .command = 0x34})
      .ReplyWith({.netFunction = 0x0B, .command = 0x34})
      .Reply({});
  ExpectAnswer({});
  EXPECT_EQ(Transact(), ipmi_result::kSuccess);
}

TEST_F(IpmiBridge, SendGivesUpAfterFiveSecondsOfOtherAnswers) {
  machine.isClockStill = true;
  const ScriptedIpmi::Response other = {.netFunction = 7, .command = 0x01};
  bmc.ExpectSend(0, kPsu, 1, 6, 1).Pass(0).ReplyWith(other).Pass(4).ReplyWith(other).Pass(1).ReplyWith(other);
  EXPECT_EQ(Transact(), ipmi_result::kSendFailed);
}

TEST_F(IpmiBridge, FetchSkipsWhatBelongsToOthers) {
  const ScriptedIpmi::Bytes inside = {0x00, 0x1E, 0xC2, kPsu, 0x04, 0x01, 0x00, 0x77, 0x00};
  ExpectSend();
  ExpectEmptyQueue();
  ExpectAnswer({0x99}, 0, 63);  // stale
  bmc.ExpectFetch().Reply(kCutAnswer);
  bmc.ExpectFetch().ReplyWith(
      {.netFunction = 7, .command = 0x34, .data = inside});  // late Send Message answer
  bmc.ExpectFetch().Reply(inside, 0xFF);
  bmc.ExpectFetch().Reply({0x00, 0x1E, 0xC2, kPsu, 0x04, 0x01, 0x00});  // neither data nor checksum
  EXPECT_EQ(Transact(), ipmi_result::kSuccess);
  EXPECT_EQ(response.dataLength, 0u);
}

TEST_F(IpmiBridge, EmptyQueueForFiveSecondsLosesTheAttempt) {
  machine.isClockStill = true;
  for (int i = 0; i < kTransactionAttempts; ++i) {
    ExpectSend();
    bmc.ExpectFetch().Pass(4).Reply({}, 0x80);
    bmc.ExpectFetch().Pass(1).Reply({}, 0x80);
    bmc.ExpectFetch();  // asked once more before the clock is looked at; the answer is left with the BMC
  }
  EXPECT_EQ(Transact(), ipmi_result::kWrongResponse);
}

TEST_F(IpmiBridge, NoTimeOutAcrossMidnight) {
  machine.clockMicroseconds = 86'398ull * 1'000'000;
  ExpectSend();
  ExpectEmptyQueue();
  bmc.ExpectFetch().Pass(600).Reply({}, 0x80);  // ten minutes, now after midnight
  ExpectAnswer({});
  EXPECT_EQ(Transact(), ipmi_result::kSuccess);
}

TEST_F(IpmiBridge, RequestTooLongForAFrameIsNotSent) {
  IpmiMessage request = DeviceIdOf(kPsu);
  request.dataLength = 57;
  EXPECT_EQ(IpmiTransaction(request, response), ipmi_result::kSendFailed);
  response.completionCode = 0xC1;  // an earlier call's
  EXPECT_EQ(IpmiBridgedRequest(request, response, 0, kPsu, 1000), ipmi_result::kSendFailed);
  EXPECT_EQ(response.completionCode, 0);
  EXPECT_EQ(bmc.sent(), 0);
}

TEST_F(IpmiBridge, ExplicitChannelWithNakEndsAfterOneTransaction) {
  for (int i = 0; i < kTransactionAttempts; ++i) bmc.ExpectSend(7, kPsu, 1, 6, 1).Reply({}, 0x83);
  EXPECT_EQ(TransactOnChannel7(), ipmi_result::kCompletionCode);
  EXPECT_EQ(response.completionCode, 0x83);
  ExpectExchange(2, 7);  // a failure steps the sequence too
  EXPECT_EQ(TransactOnChannel7(), ipmi_result::kSuccess);
}

TEST_F(IpmiBridge, ExplicitChannelKeepsTheSendAnswerWhenOnlyOtherCommandsCome) {
  bmc.ExpectSend(7, kPsu, 1, 6, 1).Reply({0x5A});
  for (int i = 0; i < 3; ++i) bmc.ExpectFetch().ReplyBridged(kPsu, 1, 6, 2, {0x77});
  EXPECT_EQ(TransactOnChannel7(), ipmi_result::kSuccess);
  EXPECT_EQ(response.command, 0x34);
  EXPECT_EQ(response.data[0], 0x5A);
}

TEST_F(IpmiBridge, ExplicitChannelPassesOverACutAnswerAndHandsOnTheControllersCompletionCode) {
  ExpectSend(1, 7);
  bmc.ExpectFetch().Reply(kCutAnswer);
  ExpectAnswer({}, 0xC1);
  EXPECT_EQ(TransactOnChannel7(), ipmi_result::kSuccess);
  EXPECT_EQ(response.completionCode, 0xC1);
}

TEST_F(IpmiBridge, ExplicitChannelWithAnEmptyQueue) {
  ExpectSend(1, 7);
  for (int i = 0; i < 3 * kTransactionAttempts; ++i) ExpectEmptyQueue();
  EXPECT_EQ(TransactOnChannel7(), ipmi_result::kCompletionCode);
}

}  // namespace
}  // namespace varnok
