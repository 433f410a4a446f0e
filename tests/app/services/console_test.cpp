#include "app/services/console.h"

#include <gtest/gtest.h>

#include <array>
#include <numeric>

#include "app/services/trace.h"
#include "tests/support/heap_count.h"
#include "tests/support/test_firmware.h"

namespace varnok {
namespace {

struct Console : ::testing::Test {
  testing::TestFirmware machine;
};

TEST_F(Console, ShowsNoControlCharacterButLayout) {
  constexpr std::u16string_view kText = u"a\x1B[2Jb\x07\b\t\r\n\x7F\x9Bz\xE4";
  PrintText(kText);
  EXPECT_EQ(machine.console, "a?[2Jb?\b\t\r\n??z\xE4");
  Warn("%s", kText);
  EXPECT_EQ(machine.errors, "varnok: a?[2Jb???????z\xE4\n") << "a warning is one line";
}

TEST_F(Console, TakesNoMemoryAndKeepsTheHalvesOfACharacterTogether) {
  struct : testing::TestFirmware {
    void WriteConsole(std::u16string_view text) override {
      EXPECT_TRUE(text.back() < 0xD800 || text.back() >= 0xDC00) << "ends in half a character";
      TestFirmware::WriteConsole(text);
    }
  } narrow;
  std::u16string text(2000, u'x');
  for (std::size_t i = 1; i < text.size(); i += 2) text[i] = 0xD83D, text[i - 1] = 0xDE00;
  text += u'.';
  const std::array<std::uint8_t, 100> bytes{};
  const std::size_t allocations = testing::HeapAllocations();
  PrintText(text);
  Warn("%s", text);
  DisplayHex(bytes.data(), bytes.size(), nullptr);
  Dornquist::DisplayProgress(ProgressStyle::CountOfTotal, u"Record ", 1, 2);
  EXPECT_EQ(testing::HeapAllocations(), allocations);
  EXPECT_EQ(narrow.errors.size(), 9 + text.size());
}

TEST_F(Console, ProgressStyles) {
  using Dornquist::DisplayProgress;
  const char* const traced[] = {"VARNOK", "-debug3"};
  TraceSelectLevel(2, traced);
  EXPECT_EQ(DisplayProgress(ProgressStyle::Text, u"Working", 1, 2), 0);
  DisplayProgress(ProgressStyle::CountOfTotal, u"\tRecord ", 3, 60);
  DisplayProgress(ProgressStyle::Percent, u"Loading ", 99, 0);
  DisplayProgress(ProgressStyle::Percent, u"Loading ", 100, 0);
  DisplayProgress(ProgressStyle::Percent, u"Loading ", 0xFFFFFFFF, 0);
  DisplayProgress(static_cast<ProgressStyle>(4), u"never", 1, 2);
  EXPECT_EQ(machine.console,
            "Working\tRecord 3 of 60.\rLoading 99% Done\rLoading 100% Done\nLoading 100% Done\n");
  EXPECT_EQ(machine.TraceLines().back(), "Dornquist::DisplayProgress [EXIT]");
  machine.console.clear();
  DisplayProgress(ProgressStyle::CountOfTotal, std::u16string(300, u'p'), 1, 2);
  EXPECT_EQ(machine.console, std::string(255, 'p') + "\r");
}

TEST_F(Console, KeyIsTakenFromPushBackFirst) {
  machine.keys = u"ab";
  EXPECT_EQ(GetKey(u'x'), u'x');
  EXPECT_EQ(machine.flushes, 0) << "a push reads nothing";
  EXPECT_EQ(GetKey(0), u'x');
  EXPECT_EQ(GetKey(0), u'a');
  EXPECT_EQ(machine.flushes, 4);
  char character = 0;
  EXPECT_EQ(InputChar(character), 1);
  EXPECT_EQ(character, 'b');
  machine.keys = u"\u0442";
  EXPECT_EQ(InputChar(character), 1);
  EXPECT_EQ(character, '\0') << "a key of another script is none that a question takes";
}

TEST_F(Console, EnvironmentValueIsCutToItsRoom) {
  machine.environment["SERIAL"] = u"A1234567";
  std::u16string value = u"old";
  EXPECT_TRUE(GetEnvVar(u"SERIAL", value, 4));
  EXPECT_EQ(value, u"A123");
  EXPECT_FALSE(GetEnvVar(u"MISSING", value, 4));
  EXPECT_EQ(value, u"");
  machine.environment["?"] = u"X";
  EXPECT_TRUE(GetEnvVar(u"\u0442", value, 4)) << "names are Latin-1";
  machine.FailPoolAllocation(1);
  EXPECT_FALSE(GetEnvVar(u"SERIAL", value, 4));
  EXPECT_EQ(machine.poolBlocks, 0u);
}

TEST_F(Console, HexDumpPadsShortRows) {
  std::array<std::uint8_t, 21> bytes;
  std::iota(bytes.begin(), bytes.end(), std::uint8_t{0x1E});
  DisplayHex(bytes.data(), bytes.size(), nullptr);
  EXPECT_EQ(machine.console,
            " 1E 1F 20 21 22 23 24 25 26 27 28 29 2A 2B 2C 2D   ...!\"#$%&'()*+,-\n 2E 2F 30 31 32" +
                std::string(33, ' ') + "   ./012" + std::string(33, ' ') + "\n");
  std::unique_ptr<File> file;
  ASSERT_EQ(machine.OpenFile(u"out", FileMode::Write, file), kSuccess);
  machine.console.clear();
  bytes = {0x7E, 0x7F};
  DisplayHex(bytes.data(), 2, file.get());
  EXPECT_EQ(machine.console, "");
  EXPECT_EQ(machine.TextOf("out"), " 7E 7F" + std::string(42, ' ') + "   ~." + std::string(42, ' ') + "\n");
}

}  // namespace
}  // namespace varnok
