// The scanner against the C library's, on the formats that the program reads and generated texts.
#include "app/services/scan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <random>

namespace varnok {
namespace {

/// Short enough that no number overflows.
std::string RandomText(std::mt19937& engine, const std::string& alphabet) {
  std::string text;
  for (std::size_t length = engine() % 9; length > 0; --length) text += alphabet[engine() % alphabet.size()];
  return text;
}

void CompareNumbers(const char* format, const std::string& alphabet, const std::string& prefix = "") {
  std::mt19937 engine(7);
  for (int round = 0; round < 20000; ++round) {
    std::string text = prefix + RandomText(engine, alphabet);
    unsigned expected[4] = {99, 99, 99, 99};
    std::uint32_t numbers[4] = {99, 99, 99, 99};
    int stored = std::sscanf(text.c_str(), format, &expected[0], &expected[1], &expected[2], &expected[3]);
    // The C library tells the end of the text from a mismatch; no caller does.
    ASSERT_EQ(Scan(text, format, &numbers[0], &numbers[1], &numbers[2], &numbers[3]), std::max(stored, 0))
        << text;
    ASSERT_TRUE(std::ranges::equal(numbers, expected)) << text;
  }
}

TEST(Scanner, NumbersReadAsByTheCLibrary) {
  CompareNumbers("%2X.%2X-%2X.%2X", "01Aaf..-- x");
  CompareNumbers("%2X.%2X+", "019F..+ x-");
  CompareNumbers("%x", "0012aFxX +-g");
  CompareNumbers("_LEN %x", "1f \t", "_LEN");
  CompareNumbers("%d", "0129 +-x\t\r");
}

TEST(Scanner, CharacterBehindANumberIsToldApart) {
  for (const char* text : {"1A", "1Ax", "1F h", "", "zz", "0x", "0xg"}) {
    std::uint32_t number = 0;
    char16_t rest = 0;
    unsigned expected = 0;
    char expectedRest = 0;
    int stored = std::sscanf(text, "%x%c", &expected, &expectedRest);  // NOLINT(cert-err34-c): the model
    EXPECT_EQ(Scan(text, "%x%c", &number, &rest), std::max(stored, 0)) << text;
    EXPECT_EQ(number, expected) << text;
    EXPECT_EQ(rest, static_cast<char16_t>(expectedRest)) << text;
  }
}

TEST(Scanner, NumberTooLargeDoesNotWrapBelowALimit) {
  std::uint32_t number = 0;
  EXPECT_EQ(Scan("_DEV_ID 100000001", "_DEV_ID %x", &number), 1);
  EXPECT_EQ(number, 0xFFFFFFFFu);
  std::int32_t decimal = 0;
  EXPECT_EQ(Scan("-99999999999999999999999", "%d", &decimal), 1);
  EXPECT_EQ(decimal, INT32_MIN);
}

TEST(Scanner, WordEndsAtWhiteSpace) {
  std::u16string word;
  EXPECT_EQ(Scan(u" \t ab c", "%hs", &word), 0) << "sizes are not part of the scanner's formats";
  EXPECT_EQ(Scan(u" \t ab c", "%s", &word), 1);
  EXPECT_EQ(word, u"ab");
  EXPECT_EQ(Scan(u"abc", "%2s", &word), 1);
  EXPECT_EQ(word, u"ab");
  EXPECT_EQ(Scan(u" \t ", "%s", &word), 0);
}

}  // namespace
}  // namespace varnok
