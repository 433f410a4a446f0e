// The built-in board's own content, and dumps of SMBIOS tables: good, of the newer kind, and hostile.
#include <map>
#include <numeric>

#include "sim/default_board.h"
#include "sim/fru_builder.h"
#include "sim/smbios_builder.h"
#include "sim/smbios_dump.h"
#include "tests/sim/board_fixture.h"

namespace varnok::testing {
namespace {

std::uint8_t Sum(std::span<const std::uint8_t> bytes) {
  return static_cast<std::uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0));
}

/// The offset of the first structure of a type, and of those of it that follow.
std::vector<std::span<const std::uint8_t>> StructuresOf(std::span<const std::uint8_t> table,
                                                        std::uint8_t type) {
  std::vector<std::span<const std::uint8_t>> found;
  while (table.size() > 4) {
    std::size_t end = table[1];
    while (table[end] != 0 || table[end + 1] != 0) ++end;
    if (table[0] == type) found.push_back(table.first(end + 2));
    table = table.subspan(end + 2);
  }
  return found;
}

TEST(DefaultBoard, FruImagesAreWellFormed) {
  for (const sim::DefaultFile& file : sim::DefaultBoardImages()) {
    if (file.name == "spare.bin" || file.name == "sdr.bin" || file.name == "smbios.bin") continue;
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

TEST(DefaultBoard, SystemFruHasAllFiveAreasAndTheRiserFillsItsDevice) {
  std::map<std::string, Bytes> images;
  for (const sim::DefaultFile& file : sim::DefaultBoardImages()) images[file.name] = file.content;
  for (std::size_t area = 1; area <= 5; ++area) EXPECT_NE(images["board.bin"][area], 0);
  EXPECT_EQ(images["spare.bin"], Bytes(256, 0xFF));
  EXPECT_EQ(images["riser.bin"].size(), 2048u);
  EXPECT_NE(images["riser.bin"][1100], 0xFF);
}

TEST(DefaultBoard, SmbiosTablesAreWellFormed) {
  const Bytes dump = sim::DefaultSmbiosDump();
  const sim::SmbiosDump board(dump);
  const auto entry = board.EntryPoint();
  ASSERT_EQ(entry.size(), 31u);
  EXPECT_EQ(Sum(entry), 0);
  EXPECT_EQ(Sum(entry.subspan(16)), 0);
  const std::size_t length = entry[22] + entry[23] * 256u;
  EXPECT_EQ(length, dump.size() - 32);
  const auto table = board.Memory(32, length);
  std::size_t count = 0;
  for (std::uint8_t type : Bytes{0, 1, 2, 3, 16, 38, 127}) {
    EXPECT_EQ(StructuresOf(table, type).size(), 1u) << int{type};
    ++count;
  }
  EXPECT_EQ(StructuresOf(table, 4).size(), 2u);
  EXPECT_EQ(StructuresOf(table, 17).size(), 8u);
  EXPECT_EQ(entry[28], count + 10);
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
  const sim::SmbiosDump dump(NewerDump(2));
  const auto entry = dump.EntryPoint();
  ASSERT_EQ(entry.size(), 31u);
  EXPECT_EQ(std::string(entry.begin(), entry.begin() + 4), "_SM_");
  EXPECT_EQ(Sum(entry), 0);
  EXPECT_EQ(Sum(entry.subspan(16)), 0);
  EXPECT_EQ(entry[6] * 16 + entry[7], 0x36);
  EXPECT_EQ(entry[22] + entry[23] * 256, 2 * 12 + 6);
  EXPECT_EQ(entry[24], 32);
  EXPECT_EQ(entry[28], 3);
  EXPECT_EQ(dump.Memory(32, 2)[0], 11);
}

TEST(SmbiosDump, NewerTableBeyondTheOlderLimitsHasNoOlderEntryPoint) {
  EXPECT_TRUE(sim::SmbiosDump(NewerDump(6000)).EntryPoint().empty());  // 72,006 bytes
  Bytes broken = NewerDump(1);
  broken[33] = 2;  // a structure shorter than its own header
  EXPECT_TRUE(sim::SmbiosDump(broken).EntryPoint().empty());
  broken = NewerDump(1);
  broken[23] = 0xFF;  // a table far away
  EXPECT_TRUE(sim::SmbiosDump(broken).EntryPoint().empty());
}

TEST(SmbiosDump, DamagedDumpsArePassedOnWithinTheirBounds) {
  for (const Bytes& whole : {sim::DefaultSmbiosDump(), NewerDump(3)}) {
    for (std::size_t size = 5; size < whole.size(); ++size) {
      const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
      if (cut[3] == '3' && size < 24) {
        EXPECT_THROW(sim::SmbiosDump dump(cut), std::runtime_error);
        continue;
      }
      const sim::SmbiosDump dump(cut);
      EXPECT_LE(dump.EntryPoint().size(), 31u);
      EXPECT_LE(dump.Memory(32, 1'000'000).size(), size);
      EXPECT_TRUE(dump.Memory(~std::uint64_t{0}, 16).empty());
    }
    for (std::size_t place = 5; place < whole.size(); ++place) {
      Bytes damaged = whole;
      damaged[place] ^= 0xFF;
      EXPECT_LE(sim::SmbiosDump(damaged).EntryPoint().size(), 31u);
    }
  }
}

}  // namespace
}  // namespace varnok::testing
