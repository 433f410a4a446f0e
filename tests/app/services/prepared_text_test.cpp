#include "app/services/prepared_text.h"

#include <gtest/gtest.h>

#include <tuple>
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

TEST(PreparedText, FileThatIsNoneOrTooLargeOrMarkedIsToldOfOnTheErrorOutput) {
  const std::tuple<std::string, Status, Status, std::string> rows[] = {
      {"", uefi_status::kUnsupported, uefi_status::kUnsupported, "a device or a pipe, not a file"},
      {"", uefi_status::kAccessDenied, uefi_status::kAccessDenied, "a folder, or may not be read"},
      {std::string((64 << 20) + 1, 'x'), kSuccess, uefi_status::kBadBufferSize, "larger than 64 MiB"},
      {"\xEF\xBB\xBF// text", kSuccess, kSuccess, "UTF-8 text: save the file as ANSI or ASCII"},
      {std::string("\xFF\xFE/\0", 4), kSuccess, kSuccess, "UTF-16 text: save the file as ANSI or ASCII"},
      {"\xFE\xFF/", kSuccess, kSuccess, "UTF-16 text: save the file as ANSI or ASCII"},
      {"", uefi_status::kNotFound, uefi_status::kNotFound, ""},
      {std::string(10000, 'x'), kSuccess, kSuccess, ""},
  };
  for (const auto& [content, opening, status, message] : rows) {
    TestFirmware machine;
    machine.files["A.CFG"] = content;
    if (opening != kSuccess) machine.fileFailures["A.CFG"] = opening;
    machine.files["BROKEN.CFG"] = std::string(5000, 'x');
    machine.readFailures["BROKEN.CFG"] = uefi_status::kDeviceError;
    PreparedText text;
    text.Assign("old");
    EXPECT_EQ(text.Load("BROKEN.CFG"), uefi_status::kDeviceError);
    EXPECT_EQ(text.LineCount(), 0u);
    EXPECT_EQ(text.Load("A.CFG"), status) << message;
    EXPECT_EQ(text.IsLoaded(), status == kSuccess) << message;
    EXPECT_EQ(text.LineLength(0), text.IsLoaded() ? content.size() : 0) << message;
    EXPECT_NE(machine.errors.find(message), std::string::npos) << machine.errors;
    EXPECT_EQ(machine.errors.empty(), message.empty());
  }
}

TEST(PreparedText, CommentsAreCutThenBlanksTrimmed) {
  PreparedText text;
  text.Assign(" \t key 'a//b' \n// all\n 01 02\t/ 03 // x\n");
  text.CutAt("//");
  text.Trim();
  EXPECT_EQ(LinesOf(text), (Lines{"key 'a", "", "01 02\t/ 03"}));
  text.RemoveBlanks(2);
  text.RemoveBlanks(9);
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

}  // namespace
}  // namespace varnok
