#include "platform/ipmi.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/services/trace.h"
#include "tests/support/scripted_ipmi.h"

namespace varnok {
namespace {

using namespace testing;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

constexpr IpmiMessage kRequest = {.targetAddress = kBmcAddress, .netFunction = 6, .command = 1};

/// At the highest trace level: the transport neither traces nor prints, whatever happens.
struct Ipmi : ::testing::Test {
  Ipmi() {
    const char* arguments[] = {"varnok", "-debug3"};
    TraceSelectLevel(2, arguments);
  }
  ~Ipmi() override {
    EXPECT_EQ(machine.files["DBGLOG.txt"] + machine.console, "");
    TraceSelectLevel(0, nullptr);
  }
  IpmiResult Transact(const IpmiMessage& request = kRequest) { return IpmiTransaction(request, response); }

  TestFirmware machine;
  ScriptedIpmi bmc{machine};
  IpmiMessage response;
};

TEST_F(Ipmi, RequestAndResponse) {
  const IpmiMessage request = {.targetAddress = kBmcAddress,
                               .netFunction = 0x0A,
                               .lun = 1,
                               .command = 0x11,
                               .data = {0x00, 0x08, 0x00, 0x02},
                               .dataLength = 4};
  bmc.Expect(0x0A, 0x11, {0x00, 0x08, 0x00, 0x02}, 1).Reply({0x02, 0xAB, 0xCD});
  EXPECT_EQ(Transact(request), ipmi_result::kSuccess);
  EXPECT_EQ(response.netFunction, 0x0B);
  EXPECT_EQ(response.lun, 1);
  EXPECT_EQ(response.command, 0x11);
  EXPECT_EQ(response.dataLength, 3u);
  EXPECT_EQ(response.data[2], 0xCD);
  EXPECT_THAT(machine.stalls, ElementsAre(50'000, 10'000));
  EXPECT_EQ(machine.waitedMicroseconds, 0u);
}

TEST_F(Ipmi, NeitherGetMessageNorARequestWithoutResponseIsDelayed) {
  bmc.Expect(0x06, 0x33).Reply({});
  EXPECT_EQ(Transact({.targetAddress = kBmcAddress, .netFunction = 6, .command = 0x33}),
            ipmi_result::kSuccess);
  bmc.Expect(0x06, 0x01);
  EXPECT_EQ(IpmiTransaction(kRequest, response, /*noResponse=*/true), ipmi_result::kSuccess);
  EXPECT_THAT(machine.stalls, ElementsAre(50'000, 50'000));
}

TEST_F(Ipmi, RefusedSendsAndFailedFetchesAreRepeated) {
  for (int i = 0; i < 3; ++i) bmc.ExpectRefused(6, 1);
  bmc.Expect(6, 1).ReceiveFails().ReceiveFails().ReceiveFails().Reply({0x20});
  EXPECT_EQ(Transact(), ipmi_result::kSuccess);
  EXPECT_THAT(machine.stalls, ElementsAre(50'000, 50'000, 50'000, 50'000, 10'000));
}

TEST_F(Ipmi, ElevenLostAnswers) {
  bmc.ExpectSilence(6, 0);
  response.completionCode = 0xC1;  // what an earlier call left is no answer
  EXPECT_EQ(Transact({.targetAddress = kBmcAddress, .netFunction = 6}), ipmi_result::kWrongResponse);
  EXPECT_EQ(response.completionCode, 0);
  EXPECT_EQ(machine.pacedMicroseconds, kTransactionAttempts * 60'000u);
}

TEST_F(Ipmi, TheLastAnswerDecidesTheError) {
  struct Case {
    ScriptedIpmi::Response answer;
    IpmiResult result;
  } const cases[] = {
      {{.netFunction = 7, .command = 0x02}, ipmi_result::kWrongResponse},
      {{.netFunction = 7, .command = 0x02, .completionCode = 0xC1}, ipmi_result::kWrongResponse},
      {{.netFunction = 9, .command = 0x01}, ipmi_result::kReceiveFailed},
      {{.netFunction = 7, .lun = 1, .command = 0x01}, ipmi_result::kReceiveFailed},
      {{.netFunction = 9, .command = 0x01, .completionCode = 0xC3}, ipmi_result::kCompletionCode},
  };
  for (const Case& one : cases) {
    for (int i = 0; i < 10; ++i) bmc.Expect(6, 1).ReplyWith(one.answer);
    bmc.Expect(6, 1).Lost();
    EXPECT_EQ(Transact(), one.result) << "case " << &one - cases;
    EXPECT_EQ(response.completionCode, one.answer.completionCode);
  }
}

TEST_F(Ipmi, LyingLengthsAreHarmless) {
  // What is not counted or never came reads as 0, not as an earlier answer's.
  struct Case {
    int stated;
    ScriptedIpmi::Bytes delivered;
    std::array<std::uint8_t, 4> data;
  } const cases[] = {
      {4, {1, 2, 3, 4}, {1, 2, 3, 4}}, {2, {9, 8, 7, 6}, {9, 8, 0, 0}}, {4, {5}, {5, 0, 0, 0}}};
  for (const Case& one : cases) {
    bmc.Expect(6, 1).ReplyStating(one.stated, one.delivered);
    EXPECT_EQ(Transact(), ipmi_result::kSuccess);
    EXPECT_EQ(response.dataLength, static_cast<std::uint32_t>(one.stated));
    EXPECT_THAT(std::span(response.data).first(4), ElementsAreArray(one.data));
  }
  bmc.Expect(6, 1).ReplyStating(200, ScriptedIpmi::Bytes(100, 0xEE));
  EXPECT_EQ(Transact(), ipmi_result::kSuccess);
  EXPECT_EQ(response.dataLength, 64u);
  EXPECT_THAT(response.data, Each(0xEE));

  IpmiMessage request = kRequest;
  request.dataLength = 0xFFFFFFFF;
  bmc.Expect(6, 1, ScriptedIpmi::Bytes(64, 0)).Reply({});
  EXPECT_EQ(Transact(request), ipmi_result::kSuccess);
}

TEST_F(Ipmi, ClearMessageFlagsIgnoresItsResult) {
  bmc.ExpectFailing(0x06, 0x30, 0xC1, {0x02});
  IpmiClearMessageFlags(2);
}

TEST(BmcIdentity, TypeByProductAndVersionByIpmi) {
  struct Case {
    std::uint16_t product;
    std::uint8_t ipmiVersion;
    std::uint32_t type, version;
  } const cases[] = {{0x4311, 0x51, 2, 1}, {0x4312, 0x02, 2, 2}, {0x4315, 0x02, 2, 2},
                     {0x4313, 0x02, 1, 2}, {0x1143, 0x20, 1, 0}, {0x0000, 0x02, 1, 2}};
  for (const Case& one : cases) {
    TestFirmware machine;
    ScriptedIpmi bmc(machine);
    for (int i = 0; i < 2; ++i) bmc.Expect(6, 1).Reply(DeviceId(one.product, 0x02, one.ipmiVersion));
    std::uint32_t type = 99, version = 99;
    for (int i = 0; i < 2; ++i) {  // the second call sends nothing
      EXPECT_EQ(GetBmcTypeAndVersion(type, version), ipmi_result::kSuccess);
      EXPECT_EQ(type, one.type) << std::hex << one.product;
      EXPECT_EQ(version, one.version) << std::hex << one.product;
    }
  }
}

TEST_F(Ipmi, SilentBmcHasNoIdentity) {
  std::uint32_t type = 99, version = 99;
  bmc.ExpectSilence(6, 1);
  EXPECT_EQ(GetBmcTypeAndVersion(type, version), ipmi_result::kNoDeviceId);
  EXPECT_EQ(type, 0u);

  // Lost at the second read: that read's own error, and nothing is remembered.
  bmc.Expect(6, 1).Reply(DeviceId());
  bmc.ExpectFailing(6, 1, 0xC0);
  EXPECT_EQ(GetBmcTypeAndVersion(type, version), ipmi_result::kCompletionCode);
  EXPECT_EQ(type, 0u);

  for (int i = 0; i < 2; ++i) bmc.Expect(6, 1).Reply({0x20});  // too short for a product ID
  EXPECT_EQ(GetBmcTypeAndVersion(type, version), ipmi_result::kSuccess);
  EXPECT_EQ(type, 1u);
}

TEST(IpmiTime, DelaysAndSecondsOfTheDay) {
  TestFirmware machine;
  machine.clockMicroseconds = 86'399'900'000;
  EXPECT_EQ(SecondsOfDay(), 86'399u);
  DelayMilliseconds(5'000'000);  // more microseconds than 32 bits hold
  EXPECT_EQ(machine.waitedMicroseconds, 5'000'000'000u);
  EXPECT_EQ(SecondsOfDay(), 4'999u);
}

}  // namespace
}  // namespace varnok
