#include "platform/ipmi.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/services/trace.h"
#include "tests/support/scripted_ipmi.h"

namespace varnok {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using testing::ScriptedIpmi;
using testing::TestFirmware;

IpmiMessage Request(std::uint8_t netFunction, std::uint8_t command,
                    std::initializer_list<std::uint8_t> data = {}, std::uint8_t lun = 0) {
  IpmiMessage request;
  request.targetAddress = kBmcAddress;
  request.netFunction = netFunction;
  request.lun = lun;
  request.command = command;
  std::copy(data.begin(), data.end(), request.data.begin());
  request.dataLength = static_cast<std::uint32_t>(data.size());
  return request;
}

struct Ipmi : ::testing::Test {
  TestFirmware machine;
  ScriptedIpmi bmc{machine};
  IpmiMessage response;
};

TEST_F(Ipmi, RequestAndResponse) {
  bmc.Expect(0x0A, 0x11, {0x00, 0x08, 0x00, 0x02}, 1).Reply({0x02, 0xAB, 0xCD});
  EXPECT_EQ(IpmiTransaction(Request(0x0A, 0x11, {0x00, 0x08, 0x00, 0x02}, 1), response),
            ipmi_result::kSuccess);
  EXPECT_EQ(response.netFunction, 0x0B);
  EXPECT_EQ(response.lun, 1);
  EXPECT_EQ(response.command, 0x11);
  EXPECT_EQ(response.dataLength, 3u);
  EXPECT_EQ(response.data[2], 0xCD);
  EXPECT_THAT(machine.stalls, ElementsAre(50'000, 10'000));
  EXPECT_EQ(machine.waitedMicroseconds, 0u);
}

TEST_F(Ipmi, GetMessageIsNotDelayed) {
  bmc.Expect(0x06, 0x33).Reply({});
  EXPECT_EQ(IpmiTransaction(Request(0x06, 0x33), response), ipmi_result::kSuccess);
  EXPECT_THAT(machine.stalls, ElementsAre(50'000));
}

TEST_F(Ipmi, NoResponseFetchesNothing) {
  bmc.Expect(0x06, 0x02);
  EXPECT_EQ(IpmiTransaction(Request(0x06, 0x02), response, true), ipmi_result::kSuccess);
  EXPECT_THAT(machine.stalls, ElementsAre(50'000));
}

TEST_F(Ipmi, FourRefusedSendsEndTheTransaction) {
  for (int i = 0; i < 3; ++i) bmc.ExpectRefused(6, 1);
  bmc.Expect(6, 1).Reply({0x20});
  EXPECT_EQ(IpmiTransaction(Request(6, 1), response), ipmi_result::kSuccess);
  EXPECT_THAT(machine.stalls, ElementsAre(50'000, 50'000, 50'000, 50'000, 10'000));

  for (int i = 0; i < 4; ++i) bmc.ExpectRefused(6, 1);
  EXPECT_EQ(IpmiTransaction(Request(6, 1), response), ipmi_result::kSendFailed);
}

TEST_F(Ipmi, ThreeFailedFetchesAreOneAttempt) {
  bmc.Expect(6, 1).ReceiveFails().ReceiveFails().ReceiveFails().Reply({0x20});
  EXPECT_EQ(IpmiTransaction(Request(6, 1), response), ipmi_result::kSuccess);
}

TEST_F(Ipmi, ElevenLostAnswers) {
  for (int i = 0; i < 11; ++i) bmc.Expect(6, 0).Lost();
  response.completionCode = 0xC1;  // what an earlier call left is no answer
  EXPECT_EQ(IpmiTransaction(Request(6, 0), response), ipmi_result::kWrongResponse);
  EXPECT_EQ(response.completionCode, 0);
  EXPECT_EQ(machine.pacedMicroseconds, 11u * 60'000);
}

TEST_F(Ipmi, ElevenCompletionCodesAreSeenByTheCaller) {
  for (int i = 0; i < 11; ++i) bmc.Expect(6, 1).Reply({}, 0xC1);
  EXPECT_EQ(IpmiTransaction(Request(6, 1), response), ipmi_result::kCompletionCode);
  EXPECT_EQ(response.completionCode, 0xC1);
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
    EXPECT_EQ(IpmiTransaction(Request(6, 1), response), one.result) << "case " << &one - cases;
  }
}

TEST_F(Ipmi, EleventhAttemptMaySucceed) {
  for (int i = 0; i < 9; ++i) bmc.Expect(6, 1).Reply({}, 0xC0);
  bmc.Expect(6, 1).ReplyWith({.netFunction = 0x0B, .command = 0x11, .data = {0x55}});
  bmc.Expect(6, 1).Reply({0x20});
  EXPECT_EQ(IpmiTransaction(Request(6, 1), response), ipmi_result::kSuccess);
  EXPECT_EQ(response.data[0], 0x20);
}

TEST_F(Ipmi, LyingLengthsAreHarmless) {
  bmc.Expect(6, 1).Reply({1, 2, 3, 4});
  EXPECT_EQ(IpmiTransaction(Request(6, 1), response), ipmi_result::kSuccess);

  // Two bytes said, four delivered: only the two that count are data, the rest is not the earlier answer's.
  bmc.Expect(6, 1).ReplyStating(2, {9, 8, 7, 6});
  EXPECT_EQ(IpmiTransaction(Request(6, 1), response), ipmi_result::kSuccess);
  EXPECT_EQ(response.dataLength, 2u);
  EXPECT_THAT(std::vector(response.data.begin(), response.data.begin() + 4), ElementsAre(9, 8, 0, 0));

  // Four said, one delivered: what never came reads as 0, not as an earlier answer's.
  bmc.Expect(6, 1).ReplyStating(4, {5});
  EXPECT_EQ(IpmiTransaction(Request(6, 1), response), ipmi_result::kSuccess);
  EXPECT_THAT(std::vector(response.data.begin(), response.data.begin() + 4), ElementsAre(5, 0, 0, 0));

  bmc.Expect(6, 1).ReplyStating(200, ScriptedIpmi::Bytes(100, 0xEE));
  EXPECT_EQ(IpmiTransaction(Request(6, 1), response), ipmi_result::kSuccess);
  EXPECT_EQ(response.dataLength, 64u);
  EXPECT_THAT(response.data, Each(0xEE));

  IpmiMessage request = Request(6, 1);
  request.dataLength = 0xFFFFFFFF;
  bmc.Expect(6, 1, ScriptedIpmi::Bytes(64, 0)).Reply({});
  EXPECT_EQ(IpmiTransaction(request, response), ipmi_result::kSuccess);
}

TEST_F(Ipmi, ClearMessageFlagsIgnoresItsResult) {
  bmc.Expect(0x06, 0x30, {0x01}).Reply({});
  IpmiClearMessageFlags(1);
  for (int i = 0; i < 11; ++i) bmc.Expect(0x06, 0x30, {0x02}).Reply({}, 0xC1);
  IpmiClearMessageFlags(2);
}

TEST_F(Ipmi, NothingIsTracedOrPrinted) {
  const char* arguments[] = {"varnok", "-debug3"};
  TraceSelectLevel(2, arguments);
  IpmiLoadProtocol();
  for (int i = 0; i < 4; ++i) bmc.ExpectRefused(6, 1);
  EXPECT_EQ(IpmiTransaction(Request(6, 1), response), ipmi_result::kSendFailed);
  bmc.ExpectSend(0, 0xB0, 1, 6, 1).Lost();
  IpmiMessage request = Request(6, 1);
  request.targetAddress = 0xB0;
  EXPECT_EQ(IpmiTransaction(request, response), ipmi_result::kReceiveFailed);
  std::uint32_t type = 0, version = 0;
  for (int i = 0; i < 11; ++i) bmc.Expect(6, 1).Lost();
  EXPECT_EQ(GetBmcTypeAndVersion(type, version), ipmi_result::kNoDeviceId);
  TraceSelectLevel(0, nullptr);
  EXPECT_EQ(machine.files["DBGLOG.txt"], "");
  EXPECT_EQ(machine.console, "");
}

ScriptedIpmi::Bytes DeviceId(std::uint16_t product, std::uint8_t ipmiVersion) {
  return {0x20,
          0x01,
          0x02,
          0x45,
          ipmiVersion,
          0xBF,
          0x57,
          0x01,
          0x00,
          static_cast<std::uint8_t>(product & 0xFF),
          static_cast<std::uint8_t>(product >> 8)};
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
    for (int i = 0; i < 2; ++i) bmc.Expect(6, 1).Reply(DeviceId(one.product, one.ipmiVersion));
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
  for (int i = 0; i < 11; ++i) bmc.Expect(6, 1).Lost();
  EXPECT_EQ(GetBmcTypeAndVersion(type, version), ipmi_result::kNoDeviceId);
  EXPECT_EQ(type, 0u);

  // Lost at the second read: that read's own error, and nothing is remembered.
  bmc.Expect(6, 1).Reply(DeviceId(0x4311, 0x02));
  for (int i = 0; i < 11; ++i) bmc.Expect(6, 1).Reply({}, 0xC0);
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
