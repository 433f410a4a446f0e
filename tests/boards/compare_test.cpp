// What differs between two boards: everything, in words, and nothing when nothing does.
#include "boards/compare.h"

#include <gmock/gmock.h>

#include "tests/boards/generated.h"

namespace varnok::testing {
namespace {

using namespace boards;
using ::testing::ElementsAre;

Source ImageSource(const Bytes& image) {
  Source source;
  source.kind = SourceKind::FruImage;
  source.board.hasRepository = false;
  source.board.devices.push_back({.bytes = image});
  return source;
}

Source RecordSource(std::vector<Bytes> records) {
  Source source;
  source.kind = SourceKind::SdrDump;
  source.board.records = std::move(records);
  return source;
}

std::vector<std::string> LinesOf(const Comparison& comparison) {
  std::vector<std::string> lines;
  for (const Difference& difference : comparison.differences)
    lines.push_back(difference.part + " | " + difference.group + " | " + difference.field + ": " +
                    difference.before + " > " + difference.after);
  return lines;
}

TEST(Compare, ImagesDifferExactlyWhenTheirBytesDo) {
  Generator generator(10);
  for (int i = 0; i < 500; ++i) {
    const Bytes image = generator.Image();
    Bytes other = image;
    generator.Damage(other);
    const Comparison comparison = Compare(ImageSource(image), ImageSource(other));
    ASSERT_EQ(comparison.differences.empty(), image == other) << i;
  }
}

TEST(Compare, RecordsDifferExactlyWhenTheirBytesDoButForIdAndOrder) {
  Generator generator(11);
  for (int i = 0; i < 500; ++i) {
    std::vector<Bytes> records;
    for (unsigned count = generator.Number(1, 6); count > 0; --count) records.push_back(generator.Record());
    std::vector<Bytes> others(records.rbegin(), records.rend());
    for (Bytes& record : others) record[0] ^= generator.Byte();
    EXPECT_TRUE(Compare(RecordSource(records), RecordSource(others)).differences.empty());
    Bytes& changed = others[generator.Number(0, static_cast<unsigned>(others.size()) - 1)];
    const std::size_t at = generator.Number(5, static_cast<unsigned>(changed.size()) - 1);
    changed[at] ^= static_cast<std::uint8_t>(generator.Number(1, 255));
    ASSERT_FALSE(Compare(RecordSource(records), RecordSource(others)).differences.empty())
        << i << " byte " << at;
  }
}

TEST(Compare, SaysWhatChangedInWords) {
  sim::FruLayout layout;
  layout.chassis = {"", ""};
  layout.product = {"Works", "Hearth", "", "", "VWS225060417", {2, "\x64\xC9\xB2"}, ""};
  const Bytes before = sim::BuildFruImage(layout, 128);
  layout.product[4] = "VWS226110042";
  layout.product[5] = "DELL";
  layout.chassisType = 0x11;
  Bytes after = sim::BuildFruImage(layout, 128);
  after[120] = 0x12;
  EXPECT_THAT(
      LinesOf(Compare(ImageSource(before), ImageSource(after))),
      ElementsAre("FRU 0 | Chassis Info Area | Chassis Type: Rack Mount Chassis > Main Server Chassis",
                  "FRU 0 | Product Info Area | Product Serial Number: VWS225060417 > VWS226110042",
                  "FRU 0 | Product Info Area | Product Asset Tag: DELL [6-bit] > DELL [text]",
                  "FRU 0 | No area | Byte 120: FF > 12"));
  // An unexplained byte inside an area, a checksum that is wrong alone.
  Bytes damaged = before;
  damaged[15] ^= 1;
  EXPECT_THAT(LinesOf(Compare(ImageSource(before), ImageSource(damaged))),
              ElementsAre(::testing::StartsWith("FRU 0 | Chassis Info Area | Checksum: ")));
}

}  // namespace
}  // namespace varnok::testing
