#include "app/services/console.h"

#include <gtest/gtest.h>

#include "tests/support/test_firmware.h"

namespace varnok {
namespace {

TEST(Console, ShowsNoControlCharacterButLayout) {
  testing::TestFirmware machine;
  PrintText(u"a\x1B[2Jb\x07\b\t\r\n\x7F\x9Bz\xE4");
  EXPECT_EQ(machine.console, "a?[2Jb?\b\t\r\n??z\xE4");
}

}  // namespace
}  // namespace varnok
