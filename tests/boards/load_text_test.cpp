// Load files out of images and records: what the program makes of them is what they were made of, and what is
// lost is said.
#include "boards/load_text.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "boards/decoded.h"
#include "boards/load_file.h"
#include "sim/default_board.h"
#include "tests/boards/generated.h"

namespace varnok::testing {
namespace {

using namespace boards;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

Bytes Front(const Bytes& bytes, std::size_t count) {
  return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(std::min(count, bytes.size()))};
}

/// The text is the image when the program writes the same bytes and what is behind them is erased.
void ExpectTextIsHonest(const Bytes& image, const LoadText& made) {
  if (made.text.empty()) {
    EXPECT_THAT(made.losses, Not(IsEmpty()));
    return;
  }
  std::string error;
  const std::optional<Bytes> written = ReadFruFile(made.text, error);
  ASSERT_TRUE(written) << error << "\n" << made.text;
  const ByteView rest = Part(image, written->size(), image.size());
  const bool isWhole = written->size() <= image.size() && *written == Front(image, written->size()) &&
                       (rest.empty() || IsFill(rest));
  EXPECT_EQ(isWhole, made.losses.empty()) << made.text;
}

TEST(FruLoadText, EveryImageComesBack) {
  std::vector<Bytes> images;
  for (const sim::DefaultFile& file : sim::DefaultBoardImages())
    if (file.name.ends_with(".bin") && file.name != "sdr.bin" && file.name != "smbios.bin" &&
        file.content[0] == 1)
      images.push_back(file.content);
  EXPECT_GE(images.size(), 4u);
  Generator generator(5);
  for (int i = 0; i < 500; ++i) images.push_back(generator.Image());
  int whole = 0;
  for (const Bytes& image : images) {
    const LoadText made = FruLoadText(image, {}, "image");
    ExpectTextIsHonest(image, made);
    whole += made.losses.empty() ? 1 : 0;
    if (HasFailure()) return;
  }
  // An area of more than 512 bytes is the one thing that a good image can lose.
  EXPECT_GT(whole, 465);
}

TEST(FruLoadText, WhatDamageTakesIsSaid) {
  Generator generator(6);
  for (int i = 0; i < 500; ++i) {
    Bytes image = generator.Image();
    generator.Damage(image);
    if (generator.IsOneIn(4)) image.resize(generator.Number(0, 300));
    ExpectTextIsHonest(image, FruLoadText(image, {}, "image"));
    if (HasFailure()) return;
  }
}

TEST(FruLoadText, LossesNameWhatAndWhere) {
  sim::FruLayout layout;
  layout.board = {"Varnok Works", "Riser", "1", "2", ""};
  layout.product = {"Varnok Works", "Hearth"};  // ends before its version
  Bytes image = sim::BuildFruImage(layout, 256);
  image[200] = 7;
  const LoadText made = FruLoadText(image, {.controller = 0xC0, .id = 2}, "it's a // board");
  EXPECT_THAT(made.losses, Contains(HasSubstr("Product Info Area: mended")));
  EXPECT_THAT(made.losses, Contains(HasSubstr("behind the last area, from byte 80 on: the device keeps")));
  EXPECT_THAT(made.text, HasSubstr("_LF_NAME      'it_s a __ board'"));
  EXPECT_THAT(made.text, HasSubstr("  _DEV_ID      02\n  _DEV_CNTR    C0\n"));
  EXPECT_THAT(made.text, HasSubstr("//   - Product Info Area: mended"));
  // An area that the program writes as it stands is not mended, however odd.
  layout.product = {};
  image = sim::BuildFruImage(layout, 256);
  image[8] += 4;
  image[8 + image[9] * 8 - 1] -= 4;
  EXPECT_THAT(FruLoadText(image, {}, "odd").losses, IsEmpty());
}

TEST(SdrLoadText, EveryRecordComesBackInTheOrderOfTypes) {
  Generator generator(7);
  for (int i = 0; i < 200; ++i) {
    std::vector<Bytes> records;
    for (unsigned count = generator.Number(0, 30); count > 0; --count) records.push_back(generator.Record());
    const LoadText made = SdrLoadText(records, {}, "records");
    std::vector<Bytes> read;
    std::string error;
    ASSERT_TRUE(ReadSdrFile(made.text, read, error)) << error << "\n" << made.text;
    std::stable_sort(records.begin(), records.end(),
                     [](const Bytes& a, const Bytes& b) { return WritingOrder(a[3]) < WritingOrder(b[3]); });
    ASSERT_EQ(read, records) << made.text;
  }
}

TEST(SdrLoadText, WhatNoFileHoldsIsSaid) {
  Generator generator(8);
  Bytes locator = generator.Record();
  while (locator[3] != 0x11) locator = generator.Record();
  Bytes unknown = locator;
  unknown[3] = 0x15;
  Bytes longer = locator;
  longer.push_back(0);
  ++longer[4];
  const Bytes rest = {1, 2, 3};
  const LoadText made = SdrLoadText({locator, unknown, longer, locator}, rest, "records");
  EXPECT_THAT(made.losses,
              ElementsAre(HasSubstr("no known record type: 15h"), HasSubstr("refuses its length"),
                          HasSubstr("3 bytes behind the last whole record"),
                          HasSubstr("a BMC may keep one of the two only")));
  EXPECT_THAT(made.text, HasSubstr("//   - record "));
}

}  // namespace
}  // namespace varnok::testing
