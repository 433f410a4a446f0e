// The simulated SDR repository: reservations, pieces, erase, capacity, and the file behind it.
#include <gmock/gmock.h>

#include <map>

#include "sim/default_board.h"
#include "sim/sdr_repository.h"
#include "tests/sim/board_fixture.h"

namespace varnok::testing {
namespace {

constexpr std::uint8_t kStorage = 0x0A;
const Bytes kRecord{0x00, 0x00, 0x51, 0xC0, 0x07, 0x40, 0xE2, 0x01, 'R', 'e', 'v', '1'};

class SdrTest : public BoardTest {
 protected:
  void OpenEmpty(const std::string& keys = "") {
    OpenWith(R"({"smbios": "", "bmc": {"sdrs": {)" + keys + "}}}");
  }
  std::uint8_t Code(std::uint8_t command, const Bytes& data) {
    return Exchange(kStorage, command, data).completionCode;
  }
  Bytes Reserved() { return Exchange(kStorage, 0x22, {}).data; }
  static Bytes Joined(Bytes head, const Bytes& tail) {
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
  }
  static Bytes Under(Bytes record, std::uint8_t id) {
    record[0] = id;
    return record;
  }
};

TEST_F(SdrTest, RecordsAreAddedWholeOrInPiecesAndRead) {
  OpenEmpty();
  EXPECT_EQ(Exchange(kStorage, 0x24, kRecord).data, (Bytes{1, 0}));
  const Bytes reservation = Reserved();
  EXPECT_EQ(Exchange(kStorage, 0x25,
                     Joined(Joined(reservation, {0, 0, 0, 0}), Bytes(kRecord.begin(), kRecord.begin() + 8)))
                .data,
            (Bytes{2, 0}));
  EXPECT_EQ(ReadFile("sdr.bin"), Under(kRecord, 1));
  EXPECT_EQ(Exchange(kStorage, 0x25,
                     Joined(Joined(reservation, {2, 0, 8, 1}), Bytes(kRecord.begin() + 8, kRecord.end())))
                .data,
            (Bytes{2, 0}));
  EXPECT_EQ(ReadFile("sdr.bin"), Joined(Under(kRecord, 1), Under(kRecord, 2)));
  // Record 0000h is the first, FFFFh the last; FFh bytes are the whole record.
  EXPECT_EQ(Exchange(kStorage, 0x23, {0, 0, 0, 0, 0, 0xFF}).data, Joined({2, 0}, Under(kRecord, 1)));
  EXPECT_EQ(Exchange(kStorage, 0x23, {0, 0, 0xFF, 0xFF, 0, 5}).data,
            (Bytes{0xFF, 0xFF, 2, 0, 0x51, 0xC0, 7}));
  EXPECT_EQ(Code(0x23, {0, 0, 3, 0, 0, 5}), 0xCB);
  Open();
  EXPECT_EQ(Exchange(kStorage, 0x20, {}).data[1], 2);
}

TEST_F(SdrTest, ReadsAreBoundedAsABmcBoundsThem) {
  OpenEmpty(R"("readLimit": 10)");
  Exchange(kStorage, 0x24, kRecord);
  const Bytes read = Joined(Reserved(), {1, 0});
  EXPECT_EQ(Code(0x23, Joined(read, {0, 11})), 0xCA);
  EXPECT_EQ(Code(0x23, Joined(read, {12, 1})), 0xC9);
  EXPECT_EQ(Exchange(kStorage, 0x23, Joined(read, {10, 5})).data, (Bytes{0xFF, 0xFF, 'v', '1'}));
}

TEST_F(SdrTest, ReservationsAreLostToOthersAndToChanges) {
  OpenEmpty();
  Exchange(kStorage, 0x24, kRecord);
  const Bytes first = Reserved();
  const Bytes second = Reserved();
  EXPECT_NE(first, second);
  EXPECT_EQ(Code(0x23, Joined(first, {1, 0, 5, 2})), 0xC5);
  EXPECT_EQ(Code(0x23, Joined(second, {1, 0, 5, 2})), 0x00);
  Exchange(kStorage, 0x24, kRecord);
  EXPECT_EQ(Code(0x23, Joined(second, {1, 0, 5, 2})), 0xC5);
  EXPECT_EQ(Code(0x26, Joined(Reserved(), {1, 0})), 0x00);
  EXPECT_EQ(ReadFile("sdr.bin"), Under(kRecord, 2));
  EXPECT_EQ(Code(0x26, Joined(Reserved(), {1, 0})), 0xCB);
}

TEST_F(SdrTest, PiecesThatDoNotFitTogetherAreRefused) {
  OpenEmpty();
  const Bytes reservation = Reserved();
  const Bytes start = Joined(Joined(reservation, {0, 0, 0, 0}), Bytes(kRecord.begin(), kRecord.begin() + 8));
  EXPECT_EQ(Code(0x25, Joined(reservation, {1, 0, 8, 1, 'R'})), 0xCB);
  EXPECT_EQ(Code(0x25, start), 0x00);
  EXPECT_EQ(Code(0x25, Joined(reservation, {1, 0, 9, 1, 'R'})), 0xC9);
  EXPECT_EQ(Code(0x25, start), 0x00);
  EXPECT_EQ(Code(0x25, Joined(reservation, {1, 0, 8, 1, 'R'})), 0x80);
  EXPECT_EQ(ReadFile("sdr.bin"), Bytes{});
}

TEST_F(SdrTest, AFullRepositoryTakesNoMore) {
  OpenEmpty(R"("capacity": 20)");
  EXPECT_EQ(Code(0x24, kRecord), 0x00);
  EXPECT_EQ(Code(0x24, kRecord), 0xC4);
  EXPECT_EQ(Exchange(kStorage, 0x20, {}).data[3], 8);
}

TEST_F(SdrTest, AnEraseTakesItsTime) {
  OpenEmpty(R"("eraseMilliseconds": 1500)");
  Exchange(kStorage, 0x24, kRecord);
  const Bytes clear = Joined(Reserved(), {'C', 'L', 'R'});
  EXPECT_EQ(Code(0x27, Joined(clear, {0x55})), 0xCC);
  EXPECT_EQ(Exchange(kStorage, 0x27, Joined(clear, {0xAA})).data, Bytes{0});
  EXPECT_EQ(ReadFile("sdr.bin"), Bytes{});
  EXPECT_EQ(Code(0x24, kRecord), 0xC0);
  board->Stall(1'500'000, StallKind::Waiting);
  EXPECT_EQ(Exchange(kStorage, 0x27, Joined(clear, {0x00})).data, Bytes{1});
  EXPECT_EQ(Code(0x24, kRecord), 0x00);
}

TEST_F(SdrTest, TheClockCanBeSet) {
  OpenWith(R"({"smbios": "", "clock": {"start": "2026-01-01T08:00:00", "exchangeMicroseconds": 0}})");
  EXPECT_EQ(Exchange(kStorage, 0x28, {}).data, (Bytes{0x80, 0x29, 0x56, 0x69}));
  EXPECT_EQ(Code(0x29, {0x10, 0x20, 0x30, 0x40}), 0x00);
  board->Stall(2'000'000, StallKind::Waiting);
  EXPECT_EQ(Exchange(kStorage, 0x28, {}).data, (Bytes{0x12, 0x20, 0x30, 0x40}));
}

TEST_F(SdrTest, BadFilesAreNamed) {
  auto error = [this](const std::string& keys) {
    return ErrorOf(R"({"smbios": "", "bmc": {"sdrs": {)" + keys + "}}}");
  };
  EXPECT_THAT(error(R"("file": "none.bin")"), ::testing::HasSubstr("bmc.sdrs.file: "));
  WriteFile("sdr.bin", std::string("\x01\x00\x51\xC0\x07\x40", 6));
  EXPECT_THAT(error(""), ::testing::HasSubstr("sdr.bin: the record at byte 0 goes past the end of the file"));
  WriteFile("sdr.bin", std::string("\x01\x00\x51\xC0\x00\x01\x00\x51\xC0\x00", 10));
  EXPECT_THAT(error(""), ::testing::HasSubstr("the record at byte 5 has record ID 1, as one before it has"));
  OpenEmpty(R"("file": "")");
  EXPECT_EQ(Code(0x20, {}), 0xC1);
  EXPECT_EQ(Code(0x22, {}), 0xC1);
}

TEST(DefaultBoard, RepositoryHoldsEveryRecordType) {
  std::map<int, int> counts;
  const Bytes records = sim::DefaultSdrs();
  std::span<const std::uint8_t> rest = records;
  while (!rest.empty()) {
    const auto record = sim::FirstSdr(rest);
    ++counts[record[3]];
    rest = rest.subspan(record.size());
  }
  EXPECT_EQ(counts, (std::map<int, int>{{0x01, 26},
                                        {0x02, 14},
                                        {0x03, 3},
                                        {0x08, 2},
                                        {0x09, 1},
                                        {0x10, 3},
                                        {0x11, 4},
                                        {0x12, 3},
                                        {0x13, 1},
                                        {0x14, 1},
                                        {0xC0, 2}}));
}

}  // namespace
}  // namespace varnok::testing
