#include "platform/ipmi.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/services/trace.h"
#include "tests/support/expectations.h"
#include "tests/support/scripted_ipmi.h"
#include "tests/support/split.h"

namespace varnok {
namespace {

using namespace testing;
using ::testing::Each;
using ::testing::ElementsAreArray;

constexpr IpmiMessage kRequest = {.targetAddress = kBmcAddress, .netFunction = 6, .command = 1};
constexpr std::uint8_t kSupply = 0xB0;

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

  /// Sends a request of a case; what came of it, as the cases have it.
  std::string Outcome(const std::string& line) {
    const std::vector<std::string> words = Split(line, " ");
    const std::vector<std::uint8_t> bytes = BytesOf(line.substr(line.find('/') + 3));
    auto number = [](const std::string& hex) {
      return static_cast<std::uint8_t>(std::stoul(hex, nullptr, 16));
    };
    IpmiMessage request = {.targetAddress = number(words[1]),
                           .netFunction = number(words[2]),
                           .lun = number(words[2].substr(3)),
                           .command = bytes[0],
                           .dataLength = static_cast<std::uint32_t>(bytes.size() - 1)};
    std::copy(bytes.begin() + 1, bytes.end(), request.data.begin());
    machine.pacedMicroseconds = 0;
    const IpmiResult result = words[0] == "send"  ? IpmiSendToController(request, response, 1000)
                              : words[0] == "on7" ? IpmiBridgedRequest(request, response, 7, kSupply, 1000)
                                                  : IpmiTransaction(request, response, words[0] == "bare");
    std::string text = Format("%d %u %02X/%u %02X: %02X", result, machine.pacedMicroseconds / 1000,
                              response.netFunction, response.lun, response.command, response.completionCode);
    for (std::uint32_t i = 0; i < response.dataLength; ++i) text += Format(" %02X", response.data[i]);
    EXPECT_EQ(response.dataLength < 64 ? response.data[response.dataLength] : 0, 0) << "nothing behind it";
    return text;
  }

  TestFirmware machine;
  ScriptedIpmi bmc{machine};
  IpmiMessage response;
};

TEST_F(Ipmi, ExchangesAsTheyAreWritten) {
  for (const auto& [name, text] : Expectations("platform/ipmi.txt")) {
    SCOPED_TRACE(name);
    machine.isClockStill = text.starts_with("clock stands still");
    machine.clockMicroseconds = text.starts_with("clock 86398") ? 86'398'000'000 : 0;
    ForgetProgramState();
    ASSERT_EQ(IpmiLoadProtocol(), ipmi_result::kSuccess);
    for (const WireStep& step : WireSteps(text)) {
      bmc.Play(step.wire);
      EXPECT_EQ(Outcome(step.operation) + "\n", step.outcome) << step.operation << "\n" << step.wire;
    }
  }
  EXPECT_EQ(machine.waitedMicroseconds, 0u);
}

TEST_F(Ipmi, SequencesRunFrom1To63EachOnItsOwn) {
  for (int i = 0; i < 128; ++i) {
    const std::string lines = i < 64 ? "C0@7#%d 06/0 01 => 00\n06/0 33 => C0#%d 06/0 01: 00"
                                     : "B0@0#%d 06/0 01 => 00\n06/0 33 => B0#%d 06/0 01: 00";
    bmc.Play(Format(lines, i % 64 % 63 + 1, i % 64 % 63 + 1));
    IpmiMessage request = kRequest;
    request.targetAddress = kSupply;
    EXPECT_EQ(i < 64 ? IpmiBridgedRequest(request, response, 7, 0xC0, 1000) : Transact(request),
              ipmi_result::kSuccess);
    EXPECT_EQ(response.targetAddress, i < 64 ? 0xC0 : kSupply);
  }
}

TEST_F(Ipmi, RequestTooLongForAFrameIsNotSent) {
  IpmiMessage request = kRequest;
  request.targetAddress = kSupply;
  request.dataLength = 57;
  EXPECT_EQ(Transact(request), ipmi_result::kSendFailed);
  response.completionCode = 0xC1;  // an earlier call's
  EXPECT_EQ(IpmiBridgedRequest(request, response, 0, kSupply, 1000), ipmi_result::kSendFailed);
  EXPECT_EQ(response.completionCode, 0);
  EXPECT_EQ(bmc.sent(), 0);
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
