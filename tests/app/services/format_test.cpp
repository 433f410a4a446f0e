// The formatter against the C library's, on every shape of a conversion that the program could use.
#include "app/services/format.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <utility>

#include "app/services/text.h"

namespace varnok {
namespace {

template <class... Arguments>
std::string FromLibc(const std::string& format, Arguments... arguments) {
  char buffer[8192];
  int length = std::snprintf(buffer, sizeof buffer, format.c_str(), arguments...);
  return {buffer, static_cast<std::size_t>(length)};
}

// Width and precision, with the flags that C defines for every number.
constexpr const char* kShapes[] = {"",   "-",   "0",  "1",  "7",   "-7",   "07",   "-07",
                                   "24", "024", ".0", ".4", "7.4", "07.4", "-7.4", "4.11"};

template <class Number>
void CompareIntegers(const std::string& size) {
  // Flags and letter.
  constexpr std::pair<const char*, const char*> kConversions[] = {
      {"", "d"}, {"+", "d"}, {" ", "i"}, {"+ ", "i"}, {"", "u"}, {"", "x"}, {"#", "x"}, {"#", "X"}};
  constexpr std::uint64_t kValues[] = {
      0,    1,      9,      10,      0x7F,       0x80,       0xFF,
      1234, 0x7FFF, 0x8000, 0xABCDE, 0x7FFFFFFF, 0x80000000, ~std::uint64_t{0}};
  for (const auto& [flags, letter] : kConversions) {
    for (const char* shape : kShapes) {
      std::string format = std::string("a%") + flags + shape + size + letter + "b";
      for (std::uint64_t bits : kValues) {
        auto value = static_cast<Number>(bits);
        std::string expected = FromLibc(format, value);
        ASSERT_EQ(Format(format, value), expected) << format << " of " << value;
        ASSERT_EQ(Narrow(FormatWide(format.c_str(), value)), expected) << format << " of " << value;
      }
    }
  }
}

TEST(Formatter, IntegersReadAsByTheCLibrary) {
  CompareIntegers<std::int32_t>("");
  CompareIntegers<std::uint32_t>("");
  CompareIntegers<std::int64_t>("l");
  CompareIntegers<std::uint64_t>("l");
  CompareIntegers<std::uint8_t>("");
  CompareIntegers<std::uint16_t>("");
}

TEST(Formatter, TextReadsAsByTheCLibrary) {
  for (std::string shape : {"", "-", "1", "7", "-7", "24", ".0", ".4", "7.4", "-7.4", "4.11"}) {
    for (std::string word : {"", "a", "four", "a longer text"}) {
      std::string expected = FromLibc("<%" + shape + "s|%%>", word.c_str());
      EXPECT_EQ(Format("<%" + shape + "s|%%>", word), expected);
      EXPECT_EQ(Narrow(FormatWide(("<%" + shape + "ls|%%>").c_str(), Widen(word))), expected);
      EXPECT_EQ(Narrow(FormatWide(("<%" + shape + "hs|%%>").c_str(), word)), expected);
    }
  }
  for (std::string format : {"%c", "%-c", "%5c", "%-5c"})
    EXPECT_EQ(Format(format, 'x'), FromLibc(format, 'x'));
}

TEST(Formatter, ConversionWithoutFittingArgumentStandsAsText) {
  EXPECT_EQ(Format("100%s done"), "100%s done");
  EXPECT_EQ(Format("%d%n%s", 5), "5%n%s");
  EXPECT_EQ(Format("%s", 5), "%s");
  EXPECT_EQ(Format("%d %s", "x"), "%d x");
  EXPECT_EQ(FormatWide("%hs %ls", u"wide", "x"), u"%hs wide");
  EXPECT_EQ(Format("50% off%"), "50% off%");
  EXPECT_EQ(Format("%5"), "%5");
  EXPECT_EQ(Format("%-08.3l"), "%-08.3l");
  EXPECT_EQ(Format("%999999999999d|", 1).size(), 4097u) << "padding is bounded";
  EXPECT_EQ(Format("%s", static_cast<const char*>(nullptr)), "(null)");
  EXPECT_EQ(FormatWide("%ls", static_cast<const char16_t*>(nullptr)), u"(null)");
  EXPECT_EQ(Format("%d", std::int16_t{-3}), "-3");
  EXPECT_EQ(FormatUpTo(4, "%ls", u"abcdef"), u"abcd");
}

TEST(Text, EndsOfItsRanges) {
  EXPECT_TRUE(EqualsIgnoreCase("az", "AZ"));
  EXPECT_EQ(HexDigitValue('g'), -1);
  EXPECT_EQ(Narrow(u"\u00FF\u0100"), "\xFF?");
}

}  // namespace
}  // namespace varnok
