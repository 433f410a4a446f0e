#include "app/services/trace.h"

#include <gtest/gtest.h>

#include <array>

#include "firmware/lasting.h"
#include "tests/support/heap_count.h"
#include "tests/support/test_firmware.h"

namespace varnok {
namespace {

using testing::TestFirmware;
using Lines = std::vector<std::string>;

std::uint32_t Select(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "VARNOK");
  arguments.push_back(nullptr);
  return TraceSelectLevel(static_cast<int>(arguments.size()) - 1, arguments.data());
}

/// Leaves the level at 0 behind a test.
class TraceLog : public ::testing::Test {
 protected:
  ~TraceLog() override { Select({}); }
  TestFirmware machine;
};

TEST_F(TraceLog, FirstSwitchChoosesTheLevelAndEmptiesTheLog) {
  ForgetProgramState();
  Trace("before a level is chosen: %d", 1, 1);
  Trace("not so", 2);
  EXPECT_EQ(machine.TraceLines(), Lines{"before a level is chosen: 1"});
  EXPECT_EQ(Select({"/d", "-DEBUG2"}), 2u);
  machine.files["DBGLOG.txt"] = "old";
  EXPECT_EQ(Select({"-debug1", "-debug3"}), 1u);
  EXPECT_EQ(machine.files["DBGLOG.txt"], "");
  machine.files.clear();
  EXPECT_EQ(Select({"/debug2", "-debug4", "-debug", "debug1", "-debug11"}), 0u);
  EXPECT_TRUE(machine.files.empty()) << "without a level the log is not touched";
}

TEST_F(TraceLog, LineIsWrittenAtItsLevelAndAbove) {
  for (std::uint32_t level = 1; level <= 3; ++level) {
    Select({("-debug" + std::to_string(level)).c_str()});
    EXPECT_EQ(Fail("one", "1", 7), Status(7));
    Trace("two", 2);
    TraceHexDump("Title", {}, 0);
    { TraceScope scope("C::M"); }
    Lines expected{"one - 1", "two", "Title", "", "C::M [ENTRY]", "C::M [EXIT]"};
    expected.resize(level == 1 ? 1 : 2 * level);
    EXPECT_EQ(machine.TraceLines(), expected) << level;
  }
  EXPECT_EQ(machine.files["DBGLOG.txt"].substr(0, 18), std::string("o\0n\0e\0 \0-\0 \0"
                                                                   "1\0\r\0\n\0",
                                                                   18));
}

TEST_F(TraceLog, TakesNoMemoryAndDropsWhatTheLogDoesNotTake) {
  Select({"-debug3"});
  const std::string longText(1300, 'x');
  const std::array<std::uint8_t, 80> bytes{};
  const std::size_t allocations = testing::HeapAllocations();
  {
    TraceScope scope("Class", "Method");
    Trace("%s %5d %#x", 1, longText, -7, 0xFFu);
    TraceHexDump("Title", bytes, bytes.size());
  }
  EXPECT_EQ(testing::HeapAllocations(), allocations);
  const Lines lines = machine.TraceLines();
  ASSERT_EQ(lines.size(), 10u);
  EXPECT_EQ(lines[1], longText + "    -7 0xff");
  machine.fileFailures["DBGLOG.txt"] = uefi_status::kWriteProtected;
  Trace("lost", 1);
  EXPECT_EQ(machine.TraceLines(), lines);
}

TEST_F(TraceLog, HexDumpFillsItsLastRow) {
  Select({"-debug2"});
  std::array<std::uint8_t, 20> bytes{0x41, 0xCC, 0x20};
  bytes[16] = 0x7F;
  bytes[17] = 0x7E;
  TraceHexDump("Title", bytes, 17);
  std::string zeros(3 * 13, ' ');
  for (std::size_t i = 0; i < 13; ++i) zeros.replace(3 * i, 3, " 00");
  EXPECT_EQ(machine.TraceLines(), (Lines{"Title", " 41    20" + zeros + "\tA. .............",
                                         " 7F 7E 00" + zeros + "\t.~..............", ""}));
}

}  // namespace
}  // namespace varnok
