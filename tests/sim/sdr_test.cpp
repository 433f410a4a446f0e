// The simulated SDR repository: reservations, pieces, erase, capacity, and the file behind it.
#include <set>
#include <tuple>

#include "sim/default_board.h"
#include "sim/sdr_repository.h"
#include "tests/sim/board_fixture.h"

namespace varnok::testing {
namespace {

// An OEM record of 12 bytes; its first eight, and the rest.
const std::string kHead = " 00 00 51 C0 07 40 E2 01", kTail = " 52 65 76 31";
const std::string kAdd = "0A/0 24" + kHead + kTail;

/// The record as it is stored under its ID.
std::string Under(char id) {
  return id + std::string("\x00\x51\xC0\x07\x40\xE2\x01Rev1", 11);
}

class SdrTest : public BoardTest {
 protected:
  void OpenEmpty(const std::string& keys = "") { OpenBmc(R"("sdrs": {)" + keys + "}"); }
};

TEST_F(SdrTest, RecordsAreAddedWholeOrInPiecesAndRead) {
  OpenEmpty();
  // The first reservation is 0001h.
  Converse({{kAdd, "00 01 00"}, {"0A/0 22", "00 01 00"}, {"0A/0 25 01 00 00 00 00 00" + kHead, "00 02 00"}});
  EXPECT_EQ(TextOf("sdr.bin"), Under(1));
  EXPECT_EQ(Ask("0A/0 25 01 00 02 00 08 01" + kTail), "00 02 00");
  EXPECT_EQ(TextOf("sdr.bin"), Under(1) + Under(2));
  // Record 0000h is the first, FFFFh the last; FFh bytes are the whole record.
  Converse({{"0A/0 23 00 00 00 00 00 FF", "00 02 00 01 00 51 C0 07 40 E2 01" + kTail},
            {"0A/0 23 00 00 FF FF 00 05", "00 FF FF 02 00 51 C0 07"},
            {"0A/0 23 00 00 03 00 00 05", "CB"}});
  Open();
  EXPECT_TRUE(Ask("0A/0 20").starts_with("00 51 02 00"));
}

TEST_F(SdrTest, LimitsReservationsEraseAndClock) {
  // clang-format off
  const std::tuple<const char*, std::string, Conversation, std::string> cases[] = {
      {"reads are bounded as a BMC bounds them", R"("readLimit": 10)",
       {{kAdd, "00 01 00"}, {"0A/0 22", "00 01 00"}, {"0A/0 23 01 00 01 00 00 0B", "CA"},
        {"0A/0 23 01 00 01 00 0C 01", "C9"}, {"0A/0 23 01 00 01 00 0A 05", "00 FF FF 76 31"}}, Under(1)},
      {"reservations are lost to others and to changes", "",
       {{kAdd, "00 01 00"}, {"0A/0 22", "00 01 00"}, {"0A/0 22", "00 02 00"},
        {"0A/0 23 01 00 01 00 05 02", "C5"}, {"0A/0 23 02 00 01 00 05 02", "00 FF FF 40 E2"},
        {kAdd, "00 02 00"}, {"0A/0 23 02 00 01 00 05 02", "C5"},
        {"0A/0 22", "00 03 00"}, {"0A/0 26 03 00 01 00", "00 01 00"},
        {"0A/0 22", "00 04 00"}, {"0A/0 26 04 00 01 00", "CB"}}, Under(2)},
      {"pieces that do not fit together", "",
       {{"0A/0 22", "00 01 00"}, {"0A/0 25 01 00 01 00 08 01 52", "CB"},
        {"0A/0 25 01 00 00 00 00 00" + kHead, "00 01 00"},
        {"0A/0 25 01 00 01 00 09 01 52", "C9"},    // a gap, which ends the record
        {"0A/0 25 01 00 01 00 08 01 52", "CB"},
        {"0A/0 25 01 00 00 00 00 00" + kHead, "00 01 00"},
        {"0A/0 25 01 00 01 00 08 01 52", "80"}}, ""},
      {"a full repository takes no more", R"("capacity": 20)",
       {{kAdd, "00 01 00"}, {kAdd, "C4"}, {"0A/0 20", "00 51 01 00 08 00 80 29 56 69 00 00 00 00 2F"}},
       Under(1)},
      {"an erase takes its time", R"("eraseMilliseconds": 1500)",
       {{kAdd, "00 01 00"}, {"0A/0 22", "00 01 00"}, {"0A/0 27 01 00 43 4C 52 55", "CC"},
        {"0A/0 27 01 00 43 4C 52 AA", "00 00"}, {kAdd, "C0"}, {"wait 1500", ""},
        {"0A/0 27 01 00 43 4C 52 00", "00 01"}, {kAdd, "00 01 00"}}, Under(1)},
      {"its clock can be set", "",
       {{"0A/0 28", "00 80 29 56 69"}, {"0A/0 29 10 20 30 40", "00"}, {"wait 2000", ""},
        {"0A/0 28", "00 12 20 30 40"}}, ""},
      {"no repository", R"("file": "")", {{"0A/0 20", "C1"}, {"0A/0 22", "C1"}}, ""},
  };
  // clang-format on
  for (const auto& [what, keys, conversation, after] : cases) {
    SCOPED_TRACE(what);
    WriteFile("sdr.bin", "");
    OpenEmpty(keys);
    Converse(conversation);
    EXPECT_EQ(TextOf("sdr.bin"), after);
  }
}

TEST_F(SdrTest, BadFilesAreNamed) {
  const std::string json = R"({"smbios": ""})", place = "bmc.sdrs.file: sdr.bin: the record at byte ";
  WriteFile("sdr.bin", Under(1).substr(0, 6));
  EXPECT_TRUE(ErrorOf(json).ends_with(place + "0 goes past the end of the file"));
  WriteFile("sdr.bin", Under(1) + Under(1));
  EXPECT_TRUE(ErrorOf(json).ends_with(place + "12 has record ID 1, as one before it has"));
  EXPECT_NE(ErrorOf(R"({"smbios": "", "bmc": {"sdrs": {"file": "none.bin"}}})").find("bmc.sdrs.file: "),
            std::string::npos);
}

TEST(DefaultBoard, RepositoryHoldsEveryRecordType) {
  const Bytes records = sim::DefaultSdrs();
  std::multiset<int> types;
  for (std::span<const std::uint8_t> rest = records; !rest.empty();
       rest = rest.subspan(sim::FirstSdr(rest).size()))
    types.insert(rest[3]);
  EXPECT_EQ(types.size(), 60U);
  EXPECT_EQ(std::set<int>(types.begin(), types.end()),
            (std::set<int>{0x01, 0x02, 0x03, 0x08, 0x09, 0x10, 0x11, 0x12, 0x13, 0x14, 0xC0}));
}

}  // namespace
}  // namespace varnok::testing
