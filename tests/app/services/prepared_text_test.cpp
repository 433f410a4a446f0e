#include "app/services/prepared_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "tests/support/test_firmware.h"

namespace varnok {
namespace {

using testing::TestFirmware;
using Lines = std::vector<std::string>;

Lines LinesOf(const PreparedText& text) {
  Lines lines;
  for (std::size_t i = 0; i < text.LineCount(); ++i) lines.emplace_back(text.Line(i));
  return lines;
}

TEST(PreparedText, EveryKindOfLineEndSplits) {
  PreparedText text;
  text.Assign("a\rb\nc\r\nd\n\re\n\nf\r\r\ng");
  EXPECT_EQ(LinesOf(text), (Lines{"a", "b", "c", "d", "e", "", "f", "", "g"}));
  text.Assign("a\n");
  EXPECT_EQ(LinesOf(text), Lines{"a"});
  text.Assign("");
  EXPECT_EQ(text.LineCount(), 0u);
}

TEST(PreparedText, CommentsAreCutThenBlanksTrimmed) {
  PreparedText text;
  text.Assign(" \t key 'a//b' \n// all\n 01 02\t/ 03 // x\n");
  text.CutAt("//");
  text.Trim();
  EXPECT_EQ(LinesOf(text), (Lines{"key 'a", "", "01 02\t/ 03"}));
  text.RemoveBlanks(2);
  EXPECT_EQ(text.Line(2), "0102/03");
  EXPECT_EQ(text.Line(3), "") << "a line that is not there is empty";
}

TEST(PreparedText, QuotedTextNeedsTwoQuotes) {
  PreparedText text;
  text.Assign("K 'one' 'two'\nK 'open\nK ''\nK");
  EXPECT_EQ(text.QuotedText(0), "one");
  EXPECT_EQ(text.QuotedText(1), std::nullopt);
  EXPECT_EQ(text.QuotedText(2), "");
  EXPECT_EQ(text.QuotedText(3), std::nullopt);
  EXPECT_TRUE(text.LineContains(0, "'one'"));
  EXPECT_FALSE(text.LineContains(0, "k"));
}

TEST(PreparedText, FileThatCannotBeReadHasNoLines) {
  TestFirmware machine;
  machine.files["a.fru"] = std::string(10000, 'x') + "\ny";
  PreparedText text;
  EXPECT_EQ(text.Load("a.fru"), kSuccess);
  EXPECT_EQ(text.LineCount(), 2u);
  EXPECT_EQ(text.LineLength(0), 10000u);
  EXPECT_EQ(text.Load("b.fru"), uefi_status::kNotFound);
  EXPECT_FALSE(text.IsLoaded());
  EXPECT_EQ(text.LineCount(), 0u);
}

/// A disk whose files break off behind their first block.
struct BrokenDisk : TestFirmware {
  struct BrokenFile : File {
    bool isBroken = false;
    Status Read(std::span<std::uint8_t> buffer, std::size_t& count) override {
      count = isBroken ? 0 : buffer.size();
      std::fill_n(buffer.begin(), count, std::uint8_t{'\n'});
      return std::exchange(isBroken, true) ? uefi_status::kDeviceError : kSuccess;
    }
    Status Write(std::span<const std::uint8_t>) override { return uefi_status::kWriteProtected; }
  };
  Status OpenFile(std::u16string_view, FileMode, std::unique_ptr<File>& file) override {
    file = std::make_unique<BrokenFile>();
    return kSuccess;
  }
};

TEST(PreparedText, FileThatBreaksOffHasNoLines) {
  BrokenDisk machine;
  PreparedText text;
  text.Assign("earlier");
  EXPECT_EQ(text.Load("a.fru"), uefi_status::kDeviceError);
  EXPECT_FALSE(text.IsLoaded());
  EXPECT_EQ(text.LineCount(), 0u);
}

}  // namespace
}  // namespace varnok
