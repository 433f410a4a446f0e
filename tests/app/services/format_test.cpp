// The formatter against the C library's, on generated formats and values.
#include "app/services/format.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>

#include "app/services/text.h"

namespace varnok {
namespace {

template <class... Arguments>
std::string FromLibc(const std::string& format, Arguments... arguments) {
  char buffer[8192];
  int length = std::snprintf(buffer, sizeof buffer, format.c_str(), arguments...);
  return {buffer, static_cast<std::size_t>(length)};
}

class Generator {
 public:
  std::size_t Below(std::size_t limit) { return engine_() % limit; }

  template <class Number>
  Number Value() {
    static constexpr std::uint64_t kEdges[] = {0,    1,    9,          10,         0x7F,
                                               0x80, 0xFF, 0x7FFFFFFF, 0x80000000, ~std::uint64_t{0}};
    return static_cast<Number>(Below(3) == 0 ? kEdges[Below(std::size(kEdges))] : engine_() >> Below(64));
  }

  /// Flags, width and precision, as far as C defines them for the conversion.
  std::string Shape(const std::string& flags, bool withPrecision) {
    std::string shape;
    for (char flag : flags)
      if (Below(3) == 0) shape += flag;
    if (Below(2) == 0) shape += std::to_string(1 + Below(24));
    if (withPrecision && Below(3) == 0) shape += "." + std::to_string(Below(12));
    return shape;
  }

  std::string Word() {
    std::string word;
    for (std::size_t i = Below(20); i > 0; --i) word += static_cast<char>(32 + Below(95));
    return word;
  }

 private:
  std::mt19937_64 engine_{20};
};

template <class Number>
void CompareIntegers(Generator& generator, const std::string& size) {
  static constexpr char kLetters[] = {'d', 'i', 'u', 'x', 'X'};
  for (int round = 0; round < 4000; ++round) {
    char letter = kLetters[generator.Below(std::size(kLetters))];
    bool isSigned = letter == 'd' || letter == 'i';
    std::string flags = isSigned ? "-0+ " : letter == 'u' ? "-0" : "-0#";
    std::string format = "a%" + generator.Shape(flags, true) + size + letter + "b";
    auto value = generator.Value<Number>();
    std::string expected = FromLibc(format, value);
    ASSERT_EQ(Format(format, value), expected) << format << " of " << value;
    ASSERT_EQ(Narrow(FormatWide(format.c_str(), value)), expected) << format << " of " << value;
  }
}

TEST(Formatter, IntegersReadAsByTheCLibrary) {
  Generator generator;
  CompareIntegers<std::int32_t>(generator, "");
  CompareIntegers<std::uint32_t>(generator, "");
  CompareIntegers<std::int64_t>(generator, "l");
  CompareIntegers<std::uint64_t>(generator, "l");
  CompareIntegers<std::uint8_t>(generator, "");
  CompareIntegers<std::uint16_t>(generator, "");
}

TEST(Formatter, TextReadsAsByTheCLibrary) {
  Generator generator;
  for (int round = 0; round < 4000; ++round) {
    std::string shape = generator.Shape("-", true);
    std::string word = generator.Word();
    std::string format = "<%" + shape + "s|%%>";
    std::string expected = FromLibc(format, word.c_str());
    ASSERT_EQ(Format(format, word), expected) << format;
    ASSERT_EQ(Narrow(FormatWide(("<%" + shape + "ls|%%>").c_str(), Widen(word))), expected) << format;
    ASSERT_EQ(Narrow(FormatWide(("<%" + shape + "hs|%%>").c_str(), word)), expected) << format;
    char character = static_cast<char>(32 + generator.Below(95));
    format = "%" + generator.Shape("-", false) + "c";
    ASSERT_EQ(Format(format, character), FromLibc(format, character)) << format;
  }
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
  EXPECT_EQ(FormatUpTo(4, "%ls", u"abcdef"), u"abcd");
}

}  // namespace
}  // namespace varnok
