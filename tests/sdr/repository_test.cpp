// Requests to the BMC's SDR repository, to the byte, and what every kind of bad answer does.
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <tuple>

#include "platform/ipmi.h"
#include "sdr/read_system.h"
#include "tests/sdr/records.h"
#include "tests/support/scripted_ipmi.h"

namespace varnok::testing {
namespace {

using namespace sdr_status;

/// One request to the repository and what becomes of it.
struct Step {
  std::uint8_t command;
  Bytes data;
  Bytes answer;
  std::uint8_t code = 0;
  bool isSent = true;
};
using Steps = std::vector<Step>;

const Step kInfo{0x20, {}, {}};
const Step kReserved{0x22, {}, {0xCD, 0xAB}};

Step Answered(Step step, const Bytes& answer) {
  step.answer = answer;
  return step;
}
Step Refused(Step step) {
  step.code = 0xC1;
  return step;
}
Step NotSent(Step step) {
  step.isSent = false;
  return step;
}

/// A part of the record `asked`, answered with the ID of the record behind it.
Step Get(const Bytes& record, std::size_t offset, std::size_t count, std::uint16_t asked = 0x0102,
         std::uint16_t next = 0x0304) {
  auto byte = [](std::size_t number) { return static_cast<std::uint8_t>(number); };
  const Bytes part(record.begin() + offset, record.begin() + std::min(offset + count, record.size()));
  return {0x23,
          {0xCD, 0xAB, byte(asked), byte(asked >> 8), byte(offset), byte(count)},
          Joined({byte(next), byte(next >> 8)}, part)};
}
Step Add(std::uint8_t id, std::uint8_t offset, std::uint8_t isLast, const Bytes& bytes,
         const Bytes& answer = {}) {
  return {0x25, Joined({0xCD, 0xAB, id, 0, offset, isLast}, bytes), answer};
}
Step Clear(std::uint8_t action, const Bytes& answer) {
  return {0x27, {0xCD, 0xAB, 'C', 'L', 'R', action}, answer};
}

struct Repository : ::testing::Test {
  TestFirmware machine;
  std::array<std::uint8_t, SdrReadSystem::kRecordCapacity> record{};
  std::uint16_t recordId = 0;
  std::uint32_t failingId = 0;

  Status Play(const Steps& steps, const std::function<Status()>& operation) {
    ScriptedIpmi bmc(machine);
    for (const Step& step : steps) {
      // One transaction gives up after so many attempts.
      for (int i = 0; i < (step.code == 0 ? 1 : 11) && step.isSent; ++i)
        bmc.Expect(0x0A, step.command, step.data).Reply(step.answer, step.code);
      for (int i = 0; i < 4 && !step.isSent; ++i) bmc.ExpectRefused(0x0A, step.command, step.data);
    }
    record.fill(0);
    recordId = 0x0102;
    const Status status = operation();
    failingId = TheSdr().LastFailingRecordId;
    return status;
  }
};

TEST_F(Repository, PropertiesAreTakenApart) {
  SdrRepositoryInfo info{.extra = 7};
  auto load = [&info] { return SdrReadSystem::LoadSdrProperties(info); };
  const Bytes answer{0x51, 0x02, 0x01, 0x04, 0x03, 0x08, 0x07, 0x06, 0x05, 0x0C, 0x0B, 0x0A, 0x09, 0x22};
  ASSERT_EQ(Play({Answered(kInfo, answer)}, load), kSuccess);
  EXPECT_EQ(std::tie(info.version, info.recordCount, info.freeSpace, info.support, info.extra),
            std::tuple(0x51, 0x0102, 0x0304, 0x22, 0));
  EXPECT_EQ(std::tie(info.lastAddition, info.lastErase), std::tuple(0x05060708U, 0x090A0B0CU));
  ASSERT_EQ(Play({Answered(kInfo, {0x51, 0x02})}, load), kSuccess) << "what does not arrive is 0";
  EXPECT_EQ(info.recordCount, 2);
  EXPECT_EQ(info.support, 0);
}

TEST_F(Repository, RecordsAreReadByTheirHeaderAndThenInPieces) {
  const Bytes named = TemperatureRecord("Inlet");  // 53 bytes
  const Bytes bodyless{9, 0, 0x51, 0xC0, 0};
  const Bytes overlong = Joined({9, 0, 0x51, 0xC0, 255}, Bytes(62, 0xAA));
  Bytes padded = Joined(AssociationRecord(), Bytes(46, 0xEE));
  Step header = Get(padded, 0, 62), rest = Get(padded, 5, 62);
  header.data[5] = 5;
  rest.data[5] = 11;
  const std::tuple<const char*, Steps, Bytes> cases[] = {
      {"four pieces",
       {kReserved, Get(named, 0, 5), Get(named, 5, 16), Get(named, 21, 16), Get(named, 37, 16)},
       named},
      {"no body", {kReserved, Get(bodyless, 0, 5)}, bodyless},
      {"past 255 bytes, as much as fits", {kReserved, Get(overlong, 0, 5), Get(overlong, 5, 255)}, overlong},
      {"longer answers than asked for", {kReserved, header, rest}, AssociationRecord()},
  };
  for (const auto& [what, steps, wanted] : cases) {
    SCOPED_TRACE(what);
    EXPECT_EQ(Play(steps, [&] { return SdrReadSystem::ReadRecFromBMC(record, recordId); }), kSuccess);
    EXPECT_EQ(Bytes(record.begin(), record.begin() + wanted.size()), wanted);
    EXPECT_EQ(record[wanted.size()], 0);
    EXPECT_EQ(recordId, 0x0304);
  }
}

TEST_F(Repository, RecordsAreWrittenInPiecesOfSixteenUnderTheIdOfTheFirstAnswer) {
  const Bytes first(16, 0x0A), second(16, 0x0B), third(5, 0x0C);
  auto write = [&](const Bytes& bytes) { return [bytes] { return SdrReadSystem::SendRecordToBMC(bytes); }; };
  EXPECT_EQ(Play({kReserved, Add(0, 0, 1, first)}, write(first)), kSuccess) << "one piece needs no ID";
  EXPECT_EQ(Play({kReserved, Add(0, 0, 0, first, {0x34, 0}), Add(0x34, 16, 0, second, {0x99, 0x99}),
                  Add(0x34, 32, 1, third)},
                 write(Joined(first, Joined(second, third)))),
            kSuccess);
}

TEST_F(Repository, ClearPollsOnceASecondThreeTimesAtMost) {
  const Step inProgress = Clear(0x00, {0x10});
  for (const auto& [steps, seconds] :
       {std::pair<Steps, unsigned>{{kReserved, Clear(0xAA, {0}), inProgress, Clear(0x00, {1})}, 2},
        {{kReserved, Clear(0xAA, {}), inProgress, inProgress, inProgress}, 3}}) {
    machine.console.clear();
    machine.waitedMicroseconds = 0;
    EXPECT_EQ(Play(steps, SdrReadSystem::ClearSDRRepository), kSuccess);
    EXPECT_EQ(machine.console, "\n\nClearing SDR repository\n\n");
    EXPECT_EQ(machine.waitedMicroseconds, seconds * 1'000'000U);
  }
}

TEST_F(Repository, EveryFailureHasItsStatusAndTrace) {
  using Operation = std::pair<std::string, std::function<Status()>>;
  const Bytes plain = AssociationRecord(), longer(17, 0x0A);
  SdrRepositoryInfo info;
  const Operation load{"CountIPMI10SDRTypes", [&] { return SdrReadSystem::LoadSdrProperties(info); }};
  const Operation read{"ReadRecFromBMC", [&] { return SdrReadSystem::ReadRecFromBMC(record, recordId); }};
  const Operation write{"SendRecordToBMC", [&] { return SdrReadSystem::SendRecordToBMC(longer); }};
  const Operation clear{"ClearSDRRepository", SdrReadSystem::ClearSDRRepository};
  const Step header = Get(plain, 0, 5), rest = Get(plain, 5, 11);
  const Step add = Add(0, 0, 0, Bytes(16, 0x0A)), start = Clear(0xAA, {0}), poll = Clear(0x00, {0});
  const Bytes fourBytes = Get(plain, 0, 4).answer, tenBytes = Get(plain, 5, 10).answer;
  std::vector<std::tuple<const char*, Operation, Steps, Status>> failures{
      {"info refused", load, {Refused(kInfo)}, kCompletionCode},
      {"info not sent", load, {NotSent(kInfo)}, kRequestFailed},
      {"header refused", read, {kReserved, Refused(header)}, kCompletionCode},
      {"header not sent", read, {kReserved, NotSent(header)}, kReadFailed},
      {"header empty", read, {kReserved, Answered(header, {})}, kReadFailed},
      {"header a byte short", read, {kReserved, Answered(header, fourBytes)}, kReadFailed},
      {"rest refused", read, {kReserved, header, Refused(rest)}, kCompletionCode},
      {"rest not sent", read, {kReserved, header, NotSent(rest)}, kReadFailed},
      {"rest a byte short", read, {kReserved, header, Answered(rest, tenBytes)}, kReadFailed},
      {"piece refused", write, {kReserved, Refused(add)}, kCompletionCode},
      {"piece not sent", write, {kReserved, NotSent(add)}, kRequestFailed},
      {"half an ID for the second piece", write, {kReserved, Answered(add, {5})}, kRequestFailed},
      {"start refused", clear, {kReserved, Refused(start)}, kCompletionCode},
      {"start not sent", clear, {kReserved, NotSent(start)}, kRequestFailed},
      {"poll refused", clear, {kReserved, start, Refused(poll)}, kRequestFailed},
  };
  for (const Operation& each : {read, write, clear}) {
    failures.push_back({"reserve refused", each, {Refused(kReserved)}, kCompletionCode});
    failures.push_back({"reserve not sent", each, {NotSent(kReserved)}, kReserveFailed});
    failures.push_back({"ID of 3 bytes", each, {Answered(kReserved, {1, 0, 0})}, kBadReservation});
    failures.push_back({"ID of 1 byte", each, {Answered(kReserved, {1})}, kBadReservation});
  }
  const std::map<Status, std::string> reasons{{kCompletionCode, "BMC Completion Code Error"},
                                              {kRequestFailed, "Error Reading SDR Info"},
                                              {kReadFailed, "Error Reading SDR"},
                                              {kReserveFailed, "Error Reading Reserve ID"},
                                              {kBadReservation, "Bad Reserve ID Length"}};
  for (const auto& [what, operation, steps, status] : failures) {
    SCOPED_TRACE(operation.first + ", " + what);
    EXPECT_EQ(Play(steps, operation.second), status);
    EXPECT_EQ(machine.TraceLines().back(), "SdrReadSystem::" + operation.first + " - " + reasons.at(status));
    EXPECT_EQ(failingId, status == kReadFailed ? 0x0102U : 0U);
  }
}

/// Reads of records of 16 bytes, each given by its ID and the next one: associations, and one more.
Steps Reads(std::initializer_list<std::pair<int, int>> ids, const Bytes& last = AssociationRecord()) {
  Steps steps;
  for (const auto& each : ids) {
    const Bytes record = &each == ids.end() - 1 ? last : AssociationRecord();
    const auto asked = static_cast<std::uint16_t>(each.first), next = static_cast<std::uint16_t>(each.second);
    steps.insert(steps.end(), {kReserved, Get(record, 0, 5, asked, next), Get(record, 5, 11, asked, next)});
  }
  return steps;
}

TEST_F(Repository, WalkFollowsTheIdsToTheirEndOrToARecordThatItCannotTake) {
  Steps failing = Reads({{0, 7}});
  failing.push_back(Answered(kReserved, {1}));
  const std::tuple<const char*, Steps, Status, std::size_t> cases[] = {
      {"to the end", Reads({{0, 7}, {7, 0xFFFF}}), kSuccess, 2},
      {"an unknown type", Reads({{0, 7}}, Record(0x04, Bytes(11))), kTypeNotSupported, 0},
      {"a bad length", Reads({{0, 7}, {7, 8}}, Record(0x13, Bytes(11))), kBadRecordLength, 1},
      {"a failed read", failing, kBadReservation, 1},
      {"in a circle", Reads({{0, 7}, {7, 8}, {8, 7}}), kReadFailed, 3},
  };
  for (const auto& [what, steps, status, count] : cases) {
    SdrTypeList lists;
    EXPECT_EQ(Play(steps, [&] { return SdrReadSystem::LoadSdrRecordsToList(lists); }), status) << what;
    EXPECT_EQ(lists[3].size(), count) << what;
  }
  EXPECT_EQ(failingId, 8U);
  EXPECT_EQ(machine.TraceLines().back(), "SdrReadSystem::LoadSdrRecordsToList - Error Reading SDR");
}

}  // namespace
}  // namespace varnok::testing
