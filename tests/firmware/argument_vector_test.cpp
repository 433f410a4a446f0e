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
  std::u16string many;
  for (int i = 0; i < 500; ++i) many += u"/ ";
  const std::pair<std::u16string, const char16_t*> kRows[] = {
      // arguments with a bar behind each
      {u"VARNOK /cfg \"A  B.CFG\" x\"y\"", u"VARNOK|/cfg|A  B.CFG|xy|"},
      {std::u16string(u"SNAPSHOT\0junk", 13), u"SNAPSHOT|"},
      {u"/d  \"\" \"b c", u"VARNOK|/d||b c|"},
      {u"VARNOK \u20AC", u""},
      {u"VARNOK \r", u""},
      {std::u16string(1025, u'a'), u""},
      {many, u""},
  };
  for (const auto& [options, arguments] : kRows) {
    CommandText text;
    text.Split({reinterpret_cast<const std::uint8_t*>(options.data()), options.size() * 2});
    std::u16string joined;
    for (const char16_t* argument : text.Arguments()) joined.append(argument) += u'|';
    EXPECT_EQ(joined, arguments);
  }
}

}  // namespace
}  // namespace varnok
