#include <gtest/gtest.h>

#include "platform/ipmi.h"
#include "tests/support/scripted_ipmi.h"

namespace varnok {
namespace {

using testing::ScriptedIpmi;
using testing::TestFirmware;

constexpr std::uint8_t kPsu = 0xB0;

IpmiMessage DeviceIdOf(std::uint8_t target, std::uint8_t lun = 0) {
  return {.targetAddress = target, .netFunction = 0x06, .lun = lun, .command = 0x01};
}

/// A machine whose clock can be stopped and set.
struct SetClock : TestFirmware {
  bool isStill = false;
  void Stall(std::uint64_t microseconds, StallKind kind) override {
    std::uint64_t before = clockMicroseconds;
    TestFirmware::Stall(microseconds, kind);
    if (isStill) clockMicroseconds = before;
  }
};

struct IpmiBridge : ::testing::Test {
  SetClock machine;
  ScriptedIpmi bmc{machine};
  IpmiMessage response;

  void ExpectWholeExchange(std::uint8_t channel, std::uint8_t target, std::uint8_t sequence) {
    bmc.ExpectSend(channel, target, sequence, 6, 1).Reply({});
    bmc.ExpectFetch().ReplyBridged(target, sequence, 6, 1, {0x42, 0x43});
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

TEST_F(IpmiBridge, ChannelBySlaveAddress) {
  ExpectWholeExchange(6, 0x2C, 1);
  EXPECT_EQ(IpmiTransaction(DeviceIdOf(0x2C), response), ipmi_result::kSuccess);
  ExpectWholeExchange(0, kPsu, 2);
  EXPECT_EQ(IpmiTransaction(DeviceIdOf(kPsu), response), ipmi_result::kSuccess);
}

TEST_F(IpmiBridge, SequenceRunsFrom1To63) {
  for (int i = 0; i < 64; ++i) {
    ExpectWholeExchange(0, kPsu, static_cast<std::uint8_t>(i % 63 + 1));
    EXPECT_EQ(IpmiTransaction(DeviceIdOf(kPsu), response), ipmi_result::kSuccess);
  }
}

TEST_F(IpmiBridge, RepeatedDirectRequestLeavesTheSequence) {
  bmc.Expect(6, 1).Reply({}, 0xC0);
  bmc.Expect(6, 1).Reply({0x20});
  EXPECT_EQ(IpmiTransaction(DeviceIdOf(kBmcAddress), response), ipmi_result::kSuccess);
  ExpectWholeExchange(0, kPsu, 1);
  EXPECT_EQ(IpmiTransaction(DeviceIdOf(kPsu), response), ipmi_result::kSuccess);
}

TEST_F(IpmiBridge, RepeatedAttemptKeepsItsSequence) {
  bmc.ExpectSend(0, kPsu, 1, 6, 1).Reply({});
  bmc.ExpectFetch().ReplyBridged(kPsu, 1, 6, 1, {}, 0xC0);
  ExpectWholeExchange(0, kPsu, 1);
  EXPECT_EQ(IpmiTransaction(DeviceIdOf(kPsu), response), ipmi_result::kSuccess);
}

TEST_F(IpmiBridge, CompletionCodeOfTheControllerIsSeen) {
  for (int i = 0; i < 11; ++i) {
    bmc.ExpectSend(0, kPsu, 1, 6, 1).Reply({});
    bmc.ExpectFetch().ReplyBridged(kPsu, 1, 6, 1, {}, 0xC1);
  }
  EXPECT_EQ(IpmiTransaction(DeviceIdOf(kPsu), response), ipmi_result::kCompletionCode);
  EXPECT_EQ(response.completionCode, 0xC1);
  EXPECT_EQ(response.targetAddress, kPsu);
}

TEST_F(IpmiBridge, NakedSendIsRepeatedFourTimes) {
  for (int i = 0; i < 4; ++i) bmc.ExpectSend(0, kPsu, 1, 6, 1).Reply({}, 0x83);
  EXPECT_EQ(IpmiTransaction(DeviceIdOf(kPsu), response), ipmi_result::kSendFailed);
}

TEST_F(IpmiBridge, LostSendAnswerEndsTheTransaction) {
  bmc.ExpectSend(0, kPsu, 1, 6, 1).Lost();
  EXPECT_EQ(IpmiTransaction(DeviceIdOf(kPsu), response), ipmi_result::kReceiveFailed);
}

TEST_F(IpmiBridge, RefusedSendEndsTheTransactionRefusedFetchTheAttempt) {
  for (int i = 0; i < 4; ++i) bmc.ExpectRefused(0x06, 0x34, {0x00, 0xB0, 0x18, 0x38, 0x20, 0x06, 0x01, 0xD9});
  EXPECT_EQ(IpmiTransaction(DeviceIdOf(kPsu), response), ipmi_result::kSendFailed);

  bmc.ExpectSend(0, kPsu, 2, 6, 1).Reply({});
  for (int i = 0; i < 4; ++i) bmc.ExpectRefused(0x06, 0x33);
  bmc.ExpectSend(0, kPsu, 2, 6, 1).Reply({});
  bmc.ExpectFetch().Reply({}, 0x80);
  for (int i = 0; i < 4; ++i) bmc.ExpectRefused(0x06, 0x33);
  ExpectWholeExchange(0, kPsu, 2);
  EXPECT_EQ(IpmiTransaction(DeviceIdOf(kPsu), response), ipmi_result::kSuccess);
}

TEST_F(IpmiBridge, AnswerInsideAnotherCommandOrAFailedFetchIsNotTaken) {
  const ScriptedIpmi::Bytes inside = {0x00, 0x1E, 0xC2, kPsu, 0x04, 0x01, 0x00, 0x77, 0x00};
  bmc.ExpectSend(0, kPsu, 1, 6, 1).Reply({});
  bmc.ExpectFetch().ReplyWith({.netFunction = 7, .command = 0x34, .data = inside});
  bmc.ExpectFetch().Reply(inside, 0xFF);
  bmc.ExpectFetch().ReplyBridged(kPsu, 1, 6, 1, {0x42});
  EXPECT_EQ(IpmiTransaction(DeviceIdOf(kPsu), response), ipmi_result::kSuccess);
  EXPECT_EQ(response.data[0], 0x42);
}

TEST_F(IpmiBridge, OtherAnswersToASendAreSkipped) {
  bmc.ExpectSend(0, kPsu, 1, 6, 1)
      .ReplyWith({.netFunction = 7, .command = 0x01})
      .ReplyWith({.netFunction = 7, .lun = 2, .command = 0x34})
      .ReplyWith({.netFunction = 0x0B, .command = 0x34})
      .Reply({});
  bmc.ExpectFetch().ReplyBridged(kPsu, 1, 6, 1, {});
  EXPECT_EQ(IpmiTransaction(DeviceIdOf(kPsu), response), ipmi_result::kSuccess);
}

TEST_F(IpmiBridge, SendGivesUpAfterFiveSecondsOfOtherAnswers) {
  machine.isStill = true;
  const ScriptedIpmi::Response other = {.netFunction = 7, .command = 0x01};
  bmc.ExpectSend(0, kPsu, 1, 6, 1).Pass(0).ReplyWith(other).Pass(4).ReplyWith(other).Pass(1).ReplyWith(other);
  EXPECT_EQ(IpmiTransaction(DeviceIdOf(kPsu), response), ipmi_result::kSendFailed);
}

TEST_F(IpmiBridge, FetchSkipsWhatBelongsToOthers) {
  bmc.ExpectSend(0, kPsu, 1, 6, 1).Reply({});
  bmc.ExpectFetch().Reply({}, 0x80);                                 // empty queue
  bmc.ExpectFetch().ReplyBridged(kPsu, 63, 6, 1, {0x99});            // stale
  bmc.ExpectFetch().Reply({0x00, 0x1E, 0xC2, kPsu, 0x04, 0x01});     // cut before its completion code
  bmc.ExpectFetch().ReplyWith({.netFunction = 7, .command = 0x34});  // late Send Message answer
  bmc.ExpectFetch().ReplyBridged(kPsu, 1, 6, 1, {0x42});
  EXPECT_EQ(IpmiTransaction(DeviceIdOf(kPsu), response), ipmi_result::kSuccess);
  EXPECT_EQ(response.data[0], 0x42);
}

TEST_F(IpmiBridge, AnswerWithoutDataOrChecksum) {
  bmc.ExpectSend(0, kPsu, 1, 6, 1).Reply({});
  bmc.ExpectFetch().Reply({0x00, 0x1E, 0xC2, kPsu, 0x04, 0x01, 0x00});
  EXPECT_EQ(IpmiTransaction(DeviceIdOf(kPsu), response), ipmi_result::kSuccess);
  EXPECT_EQ(response.dataLength, 0u);
}

TEST_F(IpmiBridge, EmptyQueueForFiveSecondsLosesTheAttempt) {
  machine.isStill = true;
  for (int i = 0; i < 11; ++i) {
    bmc.ExpectSend(0, kPsu, 1, 6, 1).Reply({});
    bmc.ExpectFetch().Pass(4).Reply({}, 0x80);
    bmc.ExpectFetch().Pass(1).Reply({}, 0x80);
    bmc.ExpectFetch();  // asked once more before the clock is looked at; the answer is left with the BMC
  }
  EXPECT_EQ(IpmiTransaction(DeviceIdOf(kPsu), response), ipmi_result::kWrongResponse);
}

TEST_F(IpmiBridge, NoTimeOutAcrossMidnight) {
  machine.clockMicroseconds = 86'398ull * 1'000'000;
  bmc.ExpectSend(0, kPsu, 1, 6, 1).Reply({});
  bmc.ExpectFetch().Reply({}, 0x80);
  bmc.ExpectFetch().Pass(600).Reply({}, 0x80);  // ten minutes, now after midnight
  bmc.ExpectFetch().ReplyBridged(kPsu, 1, 6, 1, {});
  EXPECT_EQ(IpmiTransaction(DeviceIdOf(kPsu), response), ipmi_result::kSuccess);
}

TEST_F(IpmiBridge, StillClockEndsWhenTheBmcFallsSilent) {
  machine.isStill = true;
  for (int attempt = 0; attempt < 11; ++attempt) {
    bmc.ExpectSend(0, kPsu, 1, 6, 1).Reply({});
    for (int i = 0; i < 20; ++i) bmc.ExpectFetch().Reply({}, 0x80);
    bmc.ExpectFetch().Lost();
  }
  EXPECT_EQ(IpmiTransaction(DeviceIdOf(kPsu), response), ipmi_result::kWrongResponse);
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

TEST_F(IpmiBridge, ExplicitChannelHasItsOwnSequence) {
  for (int i = 0; i < 64; ++i) {
    ExpectWholeExchange(7, 0xC0, static_cast<std::uint8_t>(i % 63 + 1));
    EXPECT_EQ(IpmiBridgedRequest(DeviceIdOf(kPsu), response, 7, 0xC0, 1000), ipmi_result::kSuccess);
  }
  EXPECT_EQ(response.targetAddress, 0xC0);
  EXPECT_EQ(response.netFunction, 7);
  EXPECT_EQ(response.dataLength, 2u);
  EXPECT_EQ(response.data[1], 0x43);
  ExpectWholeExchange(0, kPsu, 1);
  EXPECT_EQ(IpmiTransaction(DeviceIdOf(kPsu), response), ipmi_result::kSuccess);
}

TEST_F(IpmiBridge, ExplicitChannelHandsOnTheControllersCompletionCode) {
  bmc.ExpectSend(7, kPsu, 1, 6, 1).Reply({});
  bmc.ExpectFetch().ReplyBridged(kPsu, 1, 6, 1, {}, 0xC1);
  EXPECT_EQ(IpmiBridgedRequest(DeviceIdOf(kPsu), response, 7, kPsu, 1000), ipmi_result::kSuccess);
  EXPECT_EQ(response.completionCode, 0xC1);
}

TEST_F(IpmiBridge, ExplicitChannelWithNakEndsAfterOneTransaction) {
  for (int i = 0; i < 11; ++i) bmc.ExpectSend(7, kPsu, 1, 6, 1).Reply({}, 0x83);
  EXPECT_EQ(IpmiBridgedRequest(DeviceIdOf(kPsu), response, 7, kPsu, 1000), ipmi_result::kCompletionCode);
  EXPECT_EQ(response.completionCode, 0x83);
  ExpectWholeExchange(7, kPsu, 2);  // a failure steps the sequence too
  EXPECT_EQ(IpmiBridgedRequest(DeviceIdOf(kPsu), response, 7, kPsu, 1000), ipmi_result::kSuccess);
}

TEST_F(IpmiBridge, ExplicitChannelKeepsTheSendAnswerWhenOnlyOtherCommandsCome) {
  bmc.ExpectSend(7, kPsu, 1, 6, 1).Reply({0x5A});
  for (int i = 0; i < 3; ++i) bmc.ExpectFetch().ReplyBridged(kPsu, 1, 6, 2, {0x77});
  EXPECT_EQ(IpmiBridgedRequest(DeviceIdOf(kPsu), response, 7, kPsu, 1000), ipmi_result::kSuccess);
  EXPECT_EQ(response.command, 0x34);
  EXPECT_EQ(response.data[0], 0x5A);
}

TEST_F(IpmiBridge, ExplicitChannelTakesNoAnswerThatEndsBeforeItsCompletionCode) {
  bmc.ExpectSend(7, kPsu, 1, 6, 1).Reply({});
  bmc.ExpectFetch().Reply({0x00, 0x1E, 0xC2, kPsu, 0x04, 0x01});
  bmc.ExpectFetch().ReplyBridged(kPsu, 1, 6, 1, {}, 0xC1);
  EXPECT_EQ(IpmiBridgedRequest(DeviceIdOf(kPsu), response, 7, kPsu, 1000), ipmi_result::kSuccess);
  EXPECT_EQ(response.completionCode, 0xC1);
}

TEST_F(IpmiBridge, ExplicitChannelWithAnEmptyQueue) {
  bmc.ExpectSend(7, kPsu, 1, 6, 1).Reply({});
  for (int i = 0; i < 3 * 11; ++i) bmc.ExpectFetch().Reply({}, 0x80);
  EXPECT_EQ(IpmiBridgedRequest(DeviceIdOf(kPsu), response, 7, kPsu, 1000), ipmi_result::kCompletionCode);
}

TEST_F(IpmiBridge, SendToControllerBridgesOnChannel0) {
  ExpectWholeExchange(0, 0x2C, 1);
  EXPECT_EQ(IpmiSendToController(DeviceIdOf(0x2C), response, 1000), ipmi_result::kSuccess);
  bmc.Expect(6, 1).Reply({0x20});
  EXPECT_EQ(IpmiSendToController(DeviceIdOf(kBmcAddress), response, 1000), ipmi_result::kSuccess);
  EXPECT_EQ(response.data[0], 0x20);
}

}  // namespace
}  // namespace varnok
