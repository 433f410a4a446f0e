#include "firmware/host/utf8.h"

#include <gtest/gtest.h>

namespace varnok::host {
namespace {

TEST(Utf8, WellFormedTextComesBack) {
  for (const char* text : {"", "plain", "\u00E4\u20AC", "\U0001F600 \uFFFD"})
    EXPECT_EQ(ToUtf8(FromUtf8(text)), text);
  EXPECT_EQ(FromUtf8("\U0001F600").size(), 2u);
  EXPECT_EQ(Utf8FromLatin1("\xE4z"), "\u00E4z");
  EXPECT_EQ(Latin1FromUtf8("\u00E4z\u20AC"), "\xE4z?");
}

TEST(Utf8, IllFormedBytesAreReplacedOneByOne) {
  for (const char* text :
       {"\x80", "\xC0\xAF", "\xE4z", "\xED\xA0\x80", "\xF5", "\xE2\x82", "\xF4\x90\x80\x80"}) {
    std::u16string wide = FromUtf8(text);
    ASSERT_FALSE(wide.empty());
    EXPECT_EQ(wide.front(), u'\uFFFD') << text;
  }
  EXPECT_EQ(FromUtf8("\xE4z"), u"\uFFFDz");
  EXPECT_EQ(ToUtf8(std::u16string(1, char16_t{0xD800}) + u"x"), "\uFFFDx");
}

}  // namespace
}  // namespace varnok::host
