// The built-in board's own content, and dumps of SMBIOS tables: good, of the newer kind, and hostile.
#include <algorithm>
#include <map>
#include <numeric>
#include <set>

#include "firmware/host/smbios_dump.h"
#include "sim/default_board.h"
#include "sim/fru_builder.h"
#include "sim/sdr_repository.h"
#include "sim/smbios_builder.h"
#include "tests/sim/board_fixture.h"

namespace varnok::testing {
namespace {

std::uint8_t Sum(std::span<const std::uint8_t> bytes) {
  return static_cast<std::uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0));
}

/// What the entry point says, whose checksums must hold; "none" without one.
std::string Entry(const host::SmbiosDump& dump) {
  const auto entry = dump.EntryPoint();
  if (entry.empty()) return "none";
  EXPECT_EQ(entry.size(), 31u);
  EXPECT_EQ(std::string(entry.begin(), entry.begin() + 4), "_SM_");
  EXPECT_EQ(Sum(entry), 0);
  EXPECT_EQ(Sum(entry.subspan(16)), 0);
  auto word = [&entry](std::size_t at) { return std::to_string(entry[at] + entry[at + 1] * 256); };
  return "version " + std::to_string(entry[6]) + "." + std::to_string(entry[7]) + ", " + word(22) +
         " bytes at " + word(24) + ", " + word(28) + " structures";
}

TEST(DefaultBoard, FruImagesAreWellFormed) {
  for (const sim::DefaultFile& file : sim::DefaultBoardImages()) {
    if (file.name == "sdr.bin" || file.name == "smbios.bin") continue;
    if (file.name == "spare.bin") {
      EXPECT_EQ(file.content, Bytes(256, 0xFF));
      continue;
    }
    const bool isRiser = file.name == "riser.bin";
    EXPECT_TRUE(!isRiser || (file.content.size() == 2048 && file.content[1100] != 0xFF))
        << "it fills its device";
    EXPECT_TRUE(file.name != "board.bin" || std::count(&file.content[1], &file.content[6], 0) == 0)
        << "has all areas";
    const std::span<const std::uint8_t> image = file.content;
    EXPECT_EQ(Sum(image.first(8)), 0) << file.name;
    for (std::size_t area = 2; area <= 4; ++area) {
      if (image[area] == 0) continue;
      const std::size_t start = image[area] * 8u;
      EXPECT_EQ(Sum(image.subspan(start, image[start + 1] * 8u)), 0) << file.name << " area " << area;
    }
    std::size_t position = image[5] * 8u;
    for (bool last = position == 0; !last;) {
      EXPECT_EQ(Sum(image.subspan(position, 5)), 0) << file.name << " record at " << position;
      const auto data = image.subspan(position + 5, image[position + 2]);
      EXPECT_EQ(static_cast<std::uint8_t>(Sum(data) + image[position + 3]), 0) << file.name;
      last = (image[position + 1] & 0x80) != 0;
      position += 5u + data.size();
    }
  }
}

TEST(DefaultBoard, SmbiosTablesAreWellFormed) {
  const Bytes dump = sim::DefaultSmbiosDump();
  std::map<int, int> counts;
  auto table = std::span(dump).subspan(32);
  while (table.size() > 4) {
    ++counts[table[0]];
    std::size_t end = table[1];
    while (table[end] != 0 || table[end + 1] != 0) ++end;
    table = table.subspan(end + 2);
  }
  EXPECT_EQ(counts, (std::map<int, int>{
                        {0, 1}, {1, 1}, {2, 1}, {3, 1}, {4, 2}, {16, 1}, {17, 8}, {38, 1}, {127, 1}}));
  EXPECT_EQ(Entry(host::SmbiosDump(dump)),
            "version 2.8, " + std::to_string(dump.size() - 32) + " bytes at 32, 17 structures");
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

TEST(FruBuilder, KeepsTheEndMarkerApartAndRefusesWhatDoesNotFit) {
  sim::FruLayout layout;
  layout.board = {"A", "", sim::FruField(1, "\x12\x34")};
  const Bytes image = sim::BuildFruImage(layout, 32);
  EXPECT_EQ(Bytes(image.begin() + 8, image.begin() + 24),
            (Bytes{1, 2, 25, 0, 0, 0, 0xC2, 'A', ' ', 0xC0, 0x42, 0x12, 0x34, 0xC1, 0, image[23]}));
  EXPECT_THROW(sim::BuildFruImage(layout, 16), std::runtime_error);
  layout.board = {std::string(64, 'x')};
  EXPECT_THROW(sim::BuildFruImage(layout, 256), std::runtime_error);
}

/// A 3.x dump of two structures, or of many.
Bytes NewerDump(int structures) {
  Bytes dump = {'_', 'S', 'M', '3', '_', 0, 24, 3, 6, 0, 1, 0, 0, 0, 4, 0, 32};
  dump.resize(32);
  for (int i = 0; i < structures; ++i) {
    const Bytes one = sim::SmbiosStructure(11, static_cast<std::uint16_t>(i)).Byte(1).String("text").Finish();
    dump.insert(dump.end(), one.begin(), one.end());
  }
  const Bytes end = sim::SmbiosStructure(127, 0xFFFE).Finish();
  dump.insert(dump.end(), end.begin(), end.end());
  dump.insert(dump.end(), 40, 0xEE);  // behind the table's end
  return dump;
}

TEST(SmbiosDump, NewerEntryPointIsAnsweredAsAnOlderOne) {
  const host::SmbiosDump dump(NewerDump(2));
  EXPECT_EQ(Entry(dump), "version 3.6, 30 bytes at 32, 3 structures");
  EXPECT_EQ(dump.Memory(32, 2)[0], 11);
  // 72,006 bytes are more than the older one can tell: the table is cut at a structure.
  EXPECT_EQ(Entry(host::SmbiosDump(NewerDump(6000))), "version 3.6, 65532 bytes at 32, 5461 structures");
}

TEST(SmbiosDump, NewerTableThatCannotBeWalkedHasNoOlderEntryPoint) {
  // A structure shorter than its own header, and a table far away.
  for (auto [place, value] : {std::pair(33, 2), std::pair(23, 0xFF)}) {
    Bytes broken = NewerDump(1);
    broken[static_cast<std::size_t>(place)] = static_cast<std::uint8_t>(value);
    EXPECT_EQ(Entry(host::SmbiosDump(broken)), "none") << place;
  }
}

TEST(SmbiosDump, EntryPointAndTableInFilesOfTheirOwn) {
  for (const Bytes& whole : {sim::DefaultSmbiosDump(), NewerDump(2)}) {
    const bool isNewer = whole[3] == '3';
    Bytes entryPoint(whole.begin(), whole.begin() + (isNewer ? 24 : 31));
    entryPoint[isNewer ? 17 : 25] = 0x70;  // somewhere in this machine's memory
    const host::SmbiosDump dump(entryPoint, std::span(whole).subspan(32));
    EXPECT_EQ(Entry(dump), Entry(host::SmbiosDump(whole)));
    EXPECT_EQ(dump.Memory(32, 1)[0], whole[32]);
  }
  EXPECT_THROW(host::SmbiosDump({}, {}), std::runtime_error) << "a machine without tables";
}

TEST(SmbiosDump, DamagedDumpsArePassedOnWithinTheirBounds) {
  for (const Bytes& whole : {sim::DefaultSmbiosDump(), NewerDump(3)}) {
    for (std::size_t size = 5; size < whole.size(); ++size) {
      const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
      if (cut[3] == '3' && size < 24) {
        EXPECT_THROW(host::SmbiosDump dump(cut), std::runtime_error);
        continue;
      }
      const host::SmbiosDump dump(cut);
      EXPECT_LE(dump.EntryPoint().size(), 31u);
      EXPECT_LE(dump.Memory(32, 1'000'000).size(), size);
      EXPECT_TRUE(dump.Memory(~std::uint64_t{0}, 16).empty());
    }
    for (std::size_t place = 5; place < whole.size(); ++place) {
      Bytes damaged = whole;
      damaged[place] ^= 0xFF;
      EXPECT_LE(host::SmbiosDump(damaged).EntryPoint().size(), 31u);
    }
  }
}

}  // namespace
}  // namespace varnok::testing
