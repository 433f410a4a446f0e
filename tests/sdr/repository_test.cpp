// Requests to the BMC's SDR repository, to the byte, and what every kind of bad answer does.
#include <gtest/gtest.h>

#include <functional>

#include "app/services/text.h"
#include "platform/ipmi.h"
#include "sdr/read_system.h"
#include "sdr/utility.h"
#include "tests/sdr/records.h"
#include "tests/support/scripted_ipmi.h"

namespace varnok {
namespace {

using testing::AssociationRecord;
using testing::Bytes;
using testing::ScriptedIpmi;
using testing::TestFirmware;

constexpr std::uint8_t kStorage = 0x0A;
// One transaction gives up after so many attempts.
constexpr int kAttempts = 11;

struct Repository : ::testing::Test {
  TestFirmware machine;
  std::array<std::uint8_t, SdrReadSystem::kRecordCapacity> record{};
  std::uint16_t recordId = 0x0102;

  /// The last trace line.
  std::string Failure() { return machine.TraceLines().empty() ? "" : machine.TraceLines().back(); }
  static void Refuse(ScriptedIpmi& bmc, std::uint8_t command, const Bytes& data, std::uint8_t code) {
    for (int i = 0; i < kAttempts; ++i) bmc.Expect(kStorage, command, data).Reply({}, code);
  }
  static void LoseSend(ScriptedIpmi& bmc, std::uint8_t command, const Bytes& data) {
    for (int i = 0; i < 4; ++i) bmc.ExpectRefused(kStorage, command, data);
  }
};

Bytes Joined(Bytes head, const Bytes& tail) {
  head.insert(head.end(), tail.begin(), tail.end());
  return head;
}

/// A part of a record behind its next-record ID.
Bytes Part(const Bytes& record, std::size_t offset, std::size_t count) {
  return Joined({0x04, 0x03}, Bytes(record.begin() + offset, record.begin() + offset + count));
}

TEST_F(Repository, PropertiesAreTakenApart) {
  ScriptedIpmi bmc(machine);
  bmc.Expect(kStorage, 0x20)
      .Reply({0x51, 0x02, 0x01, 0x04, 0x03, 0x08, 0x07, 0x06, 0x05, 0x0C, 0x0B, 0x0A, 0x09, 0x22});
  SdrRepositoryInfo info;
  info.extra = 7;
  ASSERT_EQ(SdrReadSystem::LoadSdrProperties(info), kSuccess);
  EXPECT_EQ(info.version, 0x51);
  EXPECT_EQ(info.recordCount, 0x0102);
  EXPECT_EQ(info.freeSpace, 0x0304);
  EXPECT_EQ(info.lastAddition, 0x05060708U);
  EXPECT_EQ(info.lastErase, 0x090A0B0CU);
  EXPECT_EQ(info.support, 0x22);
  EXPECT_EQ(info.extra, 0);
}

TEST_F(Repository, PropertiesThatDoNotArriveAreZero) {
  ScriptedIpmi bmc(machine);
  // The bytes of a longer answer that was not accepted do not shine through.
  bmc.Expect(kStorage, 0x20).Reply(Bytes(14, 0xEE), 0xC0);
  bmc.Expect(kStorage, 0x20).Reply({0x51, 0x02});
  SdrRepositoryInfo info;
  ASSERT_EQ(SdrReadSystem::LoadSdrProperties(info), kSuccess);
  EXPECT_EQ(info.recordCount, 2);
  EXPECT_EQ(info.support, 0);
}

TEST_F(Repository, ReadsHeaderThenPieces) {
  ScriptedIpmi bmc(machine);
  const Bytes bytes = testing::TemperatureRecord("Inlet");  // 53 bytes
  bmc.Expect(kStorage, 0x22).Reply({0xCD, 0xAB});
  bmc.Expect(kStorage, 0x23, {0xCD, 0xAB, 0x02, 0x01, 0, 5}).Reply(Part(bytes, 0, 5));
  bmc.Expect(kStorage, 0x23, {0xCD, 0xAB, 0x02, 0x01, 5, 16}).Reply(Part(bytes, 5, 16));
  bmc.Expect(kStorage, 0x23, {0xCD, 0xAB, 0x02, 0x01, 21, 16}).Reply(Part(bytes, 21, 16));
  bmc.Expect(kStorage, 0x23, {0xCD, 0xAB, 0x02, 0x01, 37, 16}).Reply(Part(bytes, 37, 16));
  ASSERT_EQ(SdrReadSystem::ReadRecFromBMC(record, recordId), kSuccess);
  EXPECT_EQ(recordId, 0x0304);
  EXPECT_EQ(Bytes(record.begin(), record.begin() + 53), bytes);
  EXPECT_EQ(record[53], 0);
}

TEST_F(Repository, ARecordWithoutABodyIsReadByItsHeader) {
  ScriptedIpmi bmc(machine);
  bmc.Expect(kStorage, 0x22).Reply({1, 0});
  bmc.Expect(kStorage, 0x23, {1, 0, 0x02, 0x01, 0, 5}).Reply({0xFF, 0xFF, 9, 0, 0x51, 0xC0, 0});
  EXPECT_EQ(SdrReadSystem::ReadRecFromBMC(record, recordId), kSuccess);
  EXPECT_EQ(recordId, 0xFFFF);
}

TEST_F(Repository, ARecordPast255BytesTakesOneRequestAndStaysInItsBuffer) {
  ScriptedIpmi bmc(machine);
  bmc.Expect(kStorage, 0x22).Reply({1, 0});
  bmc.Expect(kStorage, 0x23, {1, 0, 0x02, 0x01, 0, 5}).Reply({0xFF, 0xFF, 9, 0, 0x51, 0xC0, 255});
  bmc.Expect(kStorage, 0x23, {1, 0, 0x02, 0x01, 5, 255}).Reply(Bytes(64, 0xAA));
  ASSERT_EQ(SdrReadSystem::ReadRecFromBMC(record, recordId), kSuccess);
  EXPECT_EQ(record[5 + 61], 0xAA);
  EXPECT_EQ(record[5 + 62], 0x00);
}

TEST_F(Repository, AnAnswerLongerThanAskedForIsCut) {
  ScriptedIpmi bmc(machine);
  const Bytes bytes = AssociationRecord();
  bmc.Expect(kStorage, 0x22).Reply({1, 0});
  bmc.Expect(kStorage, 0x23, {1, 0, 0x02, 0x01, 0, 5}).Reply(Joined(Part(bytes, 0, 5), Bytes(57, 0xEE)));
  bmc.Expect(kStorage, 0x23, {1, 0, 0x02, 0x01, 5, 11}).Reply(Joined(Part(bytes, 5, 11), Bytes(51, 0xEE)));
  ASSERT_EQ(SdrReadSystem::ReadRecFromBMC(record, recordId), kSuccess);
  EXPECT_EQ(Bytes(record.begin(), record.begin() + 16), bytes);
  EXPECT_EQ(record[16], 0);
}

struct ReadFault {
  const char* what;
  std::function<void(ScriptedIpmi&)> script;
  Status status;
  const char* reason;
};

TEST_F(Repository, EveryFailedReadHasItsStatusAndTrace) {
  const Bytes bytes = AssociationRecord();
  const Bytes header{1, 0, 0x02, 0x01, 0, 5};
  const Bytes rest{1, 0, 0x02, 0x01, 5, 11};
  auto reserved = [](ScriptedIpmi& bmc) -> ScriptedIpmi& { return bmc.Expect(kStorage, 0x22).Reply({1, 0}); };
  auto headerRead = [&](ScriptedIpmi& bmc) {
    reserved(bmc).Expect(kStorage, 0x23, header).Reply(Part(bytes, 0, 5));
  };
  const ReadFault faults[] = {
      {"reserve refused", [](ScriptedIpmi& bmc) { Refuse(bmc, 0x22, {}, 0xC1); }, sdr_status::kCompletionCode,
       "BMC Completion Code Error"},
      {"reserve not sent", [](ScriptedIpmi& bmc) { LoseSend(bmc, 0x22, {}); }, sdr_status::kReserveFailed,
       "Error Reading Reserve ID"},
      {"reservation of 3 bytes",
       [](ScriptedIpmi& bmc) {
         bmc.Expect(kStorage, 0x22).Reply({1, 0, 0});
       },
       sdr_status::kBadReservation, "Bad Reserve ID Length"},
      {"reservation empty", [](ScriptedIpmi& bmc) { bmc.Expect(kStorage, 0x22).Reply({}); },
       sdr_status::kBadReservation, "Bad Reserve ID Length"},
      {"header refused", [&](ScriptedIpmi& bmc) { Refuse(reserved(bmc), 0x23, header, 0xC5); },
       sdr_status::kCompletionCode, "BMC Completion Code Error"},
      {"header not sent", [&](ScriptedIpmi& bmc) { LoseSend(reserved(bmc), 0x23, header); },
       sdr_status::kReadFailed, "Error Reading SDR"},
      {"header empty", [&](ScriptedIpmi& bmc) { reserved(bmc).Expect(kStorage, 0x23, header).Reply({}); },
       sdr_status::kReadFailed, "Error Reading SDR"},
      {"header a byte short",
       [&](ScriptedIpmi& bmc) { reserved(bmc).Expect(kStorage, 0x23, header).Reply(Part(bytes, 0, 4)); },
       sdr_status::kReadFailed, "Error Reading SDR"},
      {"piece refused", [&](ScriptedIpmi& bmc) { headerRead(bmc), Refuse(bmc, 0x23, rest, 0xCA); },
       sdr_status::kCompletionCode, "BMC Completion Code Error"},
      {"piece not sent", [&](ScriptedIpmi& bmc) { headerRead(bmc), LoseSend(bmc, 0x23, rest); },
       sdr_status::kReadFailed, "Error Reading SDR"},
      {"piece a byte short",
       [&](ScriptedIpmi& bmc) {
         headerRead(bmc), bmc.Expect(kStorage, 0x23, rest).Reply(Part(bytes, 5, 10));
       },
       sdr_status::kReadFailed, "Error Reading SDR"},
      {"piece empty", [&](ScriptedIpmi& bmc) { headerRead(bmc), bmc.Expect(kStorage, 0x23, rest).Reply({}); },
       sdr_status::kReadFailed, "Error Reading SDR"},
  };
  for (const ReadFault& fault : faults) {
    SCOPED_TRACE(fault.what);
    ScriptedIpmi bmc(machine);
    fault.script(bmc);
    recordId = 0x0102;
    LastFailingRecordId = 0;
    EXPECT_EQ(SdrReadSystem::ReadRecFromBMC(record, recordId), fault.status);
    EXPECT_EQ(Failure(), std::string("SdrReadSystem::ReadRecFromBMC - ") + fault.reason);
    EXPECT_EQ(LastFailingRecordId, fault.status == sdr_status::kReadFailed ? 0x0102U : 0U);
  }
}

TEST_F(Repository, WritesInPiecesOfSixteen) {
  ScriptedIpmi bmc(machine);
  Bytes bytes(21);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i + 1);
  bmc.Expect(kStorage, 0x22).Reply({0xCD, 0xAB});
  bmc.Expect(kStorage, 0x25, Joined({0xCD, 0xAB, 0, 0, 0, 0}, Bytes(bytes.begin(), bytes.begin() + 16)))
      .Reply({0x34, 0x12});
  // The ID that later answers name does not matter.
  bmc.Expect(kStorage, 0x25, Joined({0xCD, 0xAB, 0x34, 0x12, 16, 1}, Bytes(bytes.begin() + 16, bytes.end())))
      .Reply({0x99, 0x99});
  EXPECT_EQ(SdrReadSystem::SendRecordToBMC(bytes), kSuccess);
}

TEST_F(Repository, ARecordOfSixteenBytesIsOneLastPiece) {
  ScriptedIpmi bmc(machine);
  bmc.Expect(kStorage, 0x22).Reply({1, 0});
  bmc.Expect(kStorage, 0x25, Joined({1, 0, 0, 0, 0, 1}, AssociationRecord())).Reply({5, 0});
  EXPECT_EQ(SdrReadSystem::SendRecordToBMC(AssociationRecord()), kSuccess);
}

TEST_F(Repository, EveryFailedWriteHasItsStatusAndTrace) {
  const Bytes bytes = AssociationRecord();
  const Bytes add = Joined({1, 0, 0, 0, 0, 1}, bytes);
  auto reserved = [](ScriptedIpmi& bmc) -> ScriptedIpmi& { return bmc.Expect(kStorage, 0x22).Reply({1, 0}); };
  const ReadFault faults[] = {
      {"reserve refused", [](ScriptedIpmi& bmc) { Refuse(bmc, 0x22, {}, 0xC1); }, sdr_status::kCompletionCode,
       "BMC Completion Code Error"},
      {"reserve not sent", [](ScriptedIpmi& bmc) { LoseSend(bmc, 0x22, {}); }, sdr_status::kReserveFailed,
       "Error Reading Reserve ID"},
      {"reservation of a byte", [](ScriptedIpmi& bmc) { bmc.Expect(kStorage, 0x22).Reply({1}); },
       sdr_status::kBadReservation, "Bad Reserve ID Length"},
      {"piece refused", [&](ScriptedIpmi& bmc) { Refuse(reserved(bmc), 0x25, add, 0xC4); },
       sdr_status::kCompletionCode, "BMC Completion Code Error"},
      {"piece not sent", [&](ScriptedIpmi& bmc) { LoseSend(reserved(bmc), 0x25, add); },
       sdr_status::kRequestFailed, "Error Reading SDR Info"},
  };
  for (const ReadFault& fault : faults) {
    SCOPED_TRACE(fault.what);
    ScriptedIpmi bmc(machine);
    fault.script(bmc);
    EXPECT_EQ(SdrReadSystem::SendRecordToBMC(bytes), fault.status);
    EXPECT_EQ(Failure(), std::string("SdrReadSystem::SendRecordToBMC - ") + fault.reason);
  }
}

TEST_F(Repository, OnlyMorePiecesNeedTheRecordsId) {
  ScriptedIpmi bmc(machine);
  bmc.Expect(kStorage, 0x22).Reply({1, 0});
  bmc.Expect(kStorage, 0x25, Joined({1, 0, 0, 0, 0, 1}, AssociationRecord())).Reply({});
  EXPECT_EQ(SdrReadSystem::SendRecordToBMC(AssociationRecord()), kSuccess);
  bmc.Expect(kStorage, 0x22).Reply({1, 0});
  bmc.Expect(kStorage, 0x25, Joined({1, 0, 0, 0, 0, 0}, Bytes(16, 0xAA))).Reply({5});
  EXPECT_EQ(SdrReadSystem::SendRecordToBMC(Bytes(17, 0xAA)), sdr_status::kRequestFailed);
  EXPECT_EQ(Failure(), "SdrReadSystem::SendRecordToBMC - Error Reading SDR Info");
}

const Bytes kStartErase{1, 0, 'C', 'L', 'R', 0xAA};
const Bytes kEraseState{1, 0, 'C', 'L', 'R', 0x00};

TEST_F(Repository, ClearPollsOnceASecondUntilErased) {
  ScriptedIpmi bmc(machine);
  bmc.Expect(kStorage, 0x22).Reply({1, 0});
  bmc.Expect(kStorage, 0x27, kStartErase).Reply({0});
  bmc.Expect(kStorage, 0x27, kEraseState).Reply({0x11});  // in progress, whatever the other bits say
  bmc.Expect(kStorage, 0x27, kEraseState).Reply({1});
  EXPECT_EQ(SdrReadSystem::ClearSDRRepository(), kSuccess);
  EXPECT_EQ(machine.console, "\n\nClearing SDR repository\n\n");
  EXPECT_EQ(machine.waitedMicroseconds, 2'000'000U);
}

TEST_F(Repository, ClearThatNeverEndsCountsAsDoneAfterThreePolls) {
  ScriptedIpmi bmc(machine);
  bmc.Expect(kStorage, 0x22).Reply({1, 0});
  bmc.Expect(kStorage, 0x27, kStartErase).Reply({});
  for (int poll = 0; poll < 3; ++poll) bmc.Expect(kStorage, 0x27, kEraseState).Reply({0});
  EXPECT_EQ(SdrReadSystem::ClearSDRRepository(), kSuccess);
  EXPECT_EQ(machine.waitedMicroseconds, 3'000'000U);
}

TEST_F(Repository, EveryFailedClearHasItsStatusAndTrace) {
  auto reserved = [](ScriptedIpmi& bmc) -> ScriptedIpmi& { return bmc.Expect(kStorage, 0x22).Reply({1, 0}); };
  auto started = [&](ScriptedIpmi& bmc) -> ScriptedIpmi& {
    return reserved(bmc).Expect(kStorage, 0x27, kStartErase).Reply({0});
  };
  const ReadFault faults[] = {
      {"reserve refused", [](ScriptedIpmi& bmc) { Refuse(bmc, 0x22, {}, 0xC1); }, sdr_status::kCompletionCode,
       "BMC Completion Code Error"},
      {"reserve not sent", [](ScriptedIpmi& bmc) { LoseSend(bmc, 0x22, {}); }, sdr_status::kReserveFailed,
       "Error Reading Reserve ID"},
      {"reservation of 3 bytes",
       [](ScriptedIpmi& bmc) {
         bmc.Expect(kStorage, 0x22).Reply({1, 0, 0});
       },
       sdr_status::kBadReservation, "Bad Reserve ID Length"},
      {"start refused", [&](ScriptedIpmi& bmc) { Refuse(reserved(bmc), 0x27, kStartErase, 0xC5); },
       sdr_status::kCompletionCode, "BMC Completion Code Error"},
      {"start not sent", [&](ScriptedIpmi& bmc) { LoseSend(reserved(bmc), 0x27, kStartErase); },
       sdr_status::kRequestFailed, "Error Reading SDR Info"},
      {"poll refused", [&](ScriptedIpmi& bmc) { Refuse(started(bmc), 0x27, kEraseState, 0xC5); },
       sdr_status::kRequestFailed, "Error Reading SDR Info"},
  };
  for (const ReadFault& fault : faults) {
    SCOPED_TRACE(fault.what);
    ScriptedIpmi bmc(machine);
    fault.script(bmc);
    EXPECT_EQ(SdrReadSystem::ClearSDRRepository(), fault.status);
    EXPECT_EQ(Failure(), std::string("SdrReadSystem::ClearSDRRepository - ") + fault.reason);
  }
}

TEST_F(Repository, FailedPropertiesAreTracedUnderAnotherName) {
  SdrRepositoryInfo info;
  {
    ScriptedIpmi bmc(machine);
    Refuse(bmc, 0x20, {}, 0xC1);
    EXPECT_EQ(SdrReadSystem::LoadSdrProperties(info), sdr_status::kCompletionCode);
    EXPECT_EQ(Failure(), "SdrReadSystem::CountIPMI10SDRTypes - BMC Completion Code Error");
  }
  ScriptedIpmi bmc(machine);
  LoseSend(bmc, 0x20, {});
  EXPECT_EQ(SdrReadSystem::LoadSdrProperties(info), sdr_status::kRequestFailed);
  EXPECT_EQ(Failure(), "SdrReadSystem::CountIPMI10SDRTypes - Error Reading SDR Info");
}

/// Expects the read of a record of 16 bytes under `asked`, whose successor is `next`.
void ExpectRecord(ScriptedIpmi& bmc, std::uint8_t asked, std::uint16_t next, const Bytes& bytes) {
  const Bytes nextId{static_cast<std::uint8_t>(next), static_cast<std::uint8_t>(next >> 8)};
  bmc.Expect(kStorage, 0x22).Reply({1, 0});
  bmc.Expect(kStorage, 0x23, {1, 0, asked, 0, 0, 5})
      .Reply(Joined(nextId, Bytes(bytes.begin(), bytes.begin() + 5)));
  bmc.Expect(kStorage, 0x23, {1, 0, asked, 0, 5, 11})
      .Reply(Joined(nextId, Bytes(bytes.begin() + 5, bytes.end())));
}

TEST_F(Repository, WalkStartsAtRecord0AndFollowsTheIds) {
  ScriptedIpmi bmc(machine);
  ExpectRecord(bmc, 0, 7, AssociationRecord(3));
  ExpectRecord(bmc, 7, 0xFFFF, AssociationRecord(7));
  SdrTypeList lists;
  EXPECT_EQ(SdrReadSystem::LoadSdrRecordsToList(lists), kSuccess);
  ASSERT_EQ(lists[3].size(), 2U);
  EXPECT_EQ(lists[3].back()->Header().recordId, 7);
}

TEST_F(Repository, WalkEndsWhereNextIdsGoRound) {
  ScriptedIpmi bmc(machine);
  ExpectRecord(bmc, 0, 7, AssociationRecord(3));
  ExpectRecord(bmc, 7, 8, AssociationRecord(7));
  ExpectRecord(bmc, 8, 7, AssociationRecord(8));
  SdrTypeList lists;
  EXPECT_EQ(SdrReadSystem::LoadSdrRecordsToList(lists), sdr_status::kReadFailed);
  EXPECT_EQ(lists[3].size(), 3U);
  EXPECT_EQ(LastFailingRecordId, 8U);
  EXPECT_EQ(Failure(), "SdrReadSystem::LoadSdrRecordsToList - Error Reading SDR");
}

TEST_F(Repository, WalkEndsAtARecordThatItCannotTake) {
  {
    ScriptedIpmi bmc(machine);
    ExpectRecord(bmc, 0, 7, testing::Record(0x04, Bytes(11)));
    SdrTypeList lists;
    EXPECT_EQ(SdrReadSystem::LoadSdrRecordsToList(lists), sdr_status::kTypeNotSupported);
  }
  ScriptedIpmi bmc(machine);
  ExpectRecord(bmc, 0, 7, AssociationRecord());
  ExpectRecord(bmc, 7, 8, testing::Record(0x13, Bytes(11)));
  SdrTypeList lists;
  EXPECT_EQ(SdrReadSystem::LoadSdrRecordsToList(lists), sdr_status::kBadRecordLength);
  EXPECT_EQ(lists[3].size(), 1U);
}

TEST_F(Repository, WalkReturnsTheStatusOfAFailedRead) {
  ScriptedIpmi bmc(machine);
  ExpectRecord(bmc, 0, 7, AssociationRecord());
  bmc.Expect(kStorage, 0x22).Reply({1});
  SdrTypeList lists;
  EXPECT_EQ(SdrReadSystem::LoadSdrRecordsToList(lists), sdr_status::kBadReservation);
  EXPECT_EQ(lists[3].size(), 1U);
}

}  // namespace
}  // namespace varnok
