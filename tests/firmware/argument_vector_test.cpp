#include "firmware/argument_vector.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "firmware/command_text.h"
#include "tests/support/test_firmware.h"

namespace varnok {
namespace {

constexpr const char16_t* kArguments[] = {u"VARNOK", u"", u"caf\u00E9", u"\u20AC"};

TEST(ArgumentVector, PacksNarrowedArgumentsOneBehindTheOther) {
  testing::TestFirmware machine;
  {
    ArgumentVector vector;
    ASSERT_TRUE(vector.Build(kArguments));
    ASSERT_EQ(vector.Count(), 4);
    char** pointers = vector.Pointers();
    EXPECT_STREQ(pointers[0], "VARNOK");
    EXPECT_STREQ(pointers[2], "caf\xE9");
    EXPECT_STREQ(pointers[3], "?");
    EXPECT_EQ(pointers[4], nullptr);
    // One block: every text, its NUL, and one NUL more.
    EXPECT_EQ(std::memcmp(pointers[0], "VARNOK\0\0caf\xE9\0?\0\0", 16), 0);
    EXPECT_EQ(machine.poolBlocks, 2u);
  }
  EXPECT_EQ(machine.poolBlocks, 0u);
}

TEST(ArgumentVector, FailsWhenEitherBlockCannotBeHad) {
  for (int allocation : {1, 2}) {
    testing::TestFirmware machine;
    machine.FailPoolAllocation(allocation);
    EXPECT_FALSE(ArgumentVector().Build(kArguments));
    EXPECT_EQ(machine.poolBlocks, 0u);
  }
}

TEST(CommandText, SplitsLoadOptions) {
  const struct {
    std::u16string options;
    const char16_t* arguments;  ///< with a bar behind each
  } kRows[] = {
      {u"VARNOK /cfg \"A  B.CFG\" x\"y\"", u"VARNOK|/cfg|A  B.CFG|xy|"},
      {std::u16string(u"SNAPSHOT\0junk", 13), u"SNAPSHOT|"},
      {u"/d fru ", u"VARNOK|/d|fru|"},
      {u"  a \"\"", u"a||"},
      {u"a \"b c", u"a|b c|"},
      {u"", u""},
      {u"VARNOK \u20AC", u""},
      {u"VARNOK \r", u""},
      {std::u16string(1025, u'a'), u""},
  };
  for (const auto& row : kRows) {
    CommandText text;
    text.Split({reinterpret_cast<const std::uint8_t*>(row.options.data()), row.options.size() * 2});
    std::u16string joined;
    for (const char16_t* argument : text.Arguments()) joined.append(argument) += u'|';
    EXPECT_EQ(joined, row.arguments);
  }
  std::u16string many;
  for (int i = 0; i < 500; ++i) many += u"/ ";
  CommandText text;
  text.Split({reinterpret_cast<const std::uint8_t*>(many.data()), many.size() * 2 - 1});
  EXPECT_TRUE(text.Arguments().empty());
}

}  // namespace
}  // namespace varnok
