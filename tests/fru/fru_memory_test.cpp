// Programming takes its memory before the first write, and none until the verification has ended.
#include "app/services/console.h"
#include "app/services/trace.h"
#include "tests/fru/memory_fru.h"

namespace varnok {
namespace {

using namespace testing;

class FruMemory : public FruDeviceTest {
 protected:
  FruMemory() {
    EXPECT_EQ(FruData::Initialize(), kSuccess);
    EXPECT_EQ(FruData::SetDisplayHexCallback(DisplayHex), kSuccess);
    EXPECT_EQ(FruData::SetOutputFile("FRU.TMP"), kSuccess);
  }

  /// The status of programming; `taken` counts what was taken from the first write on, and the pool is
  /// exhausted from there. `onDevice` is what is then read back.
  Status Program(int firstRefused, const Bytes& onDevice) {
    device.log.clear();
    std::size_t before = 0;
    device.fault = [&](int request, MemoryFru::Answer& answer) {
      if (device.log.back().starts_with("0A/12") && before == 0) {
        before = HeapAllocations();
        machine.FailPoolAllocation(1);
      }
      if (request >= firstRefused) answer = {0xFF, {}};
      if (request == kLastWrite && !onDevice.empty()) device.image = onDevice;
    };
    Status status = fru->WriteToSystem();
    taken = HeapAllocations() - before;
    machine.FailPoolAllocation(0);
    device.fault = nullptr;
    return status;
  }

  std::size_t taken = 0;
  static constexpr int kLastWrite = 31;
  static constexpr int kNever = 1000;
};

TEST_F(FruMemory, IsTakenBeforeTheFirstWriteOnly) {
  // More fields and records than were written.
  const Bytes crowded =
      Join({Header({1, 2, 7, 13, 19}), Bytes(8, 1), Area(5, Join({kChassisContent, Fields({"x1", "x2"})})),
            Area(6, Join({kBoardContent, Fields({"yy"})})),
            Area(6, Join({kProductContent, Fields({"", "zz"})})), Record(0xC0, {1, 2, 3}, false),
            Record(0xC1, {4, 5, 6, 7}, false), Record(0xC2, {8, 9}, false), Record(0xC3, {8, 9}, true)});
  struct Case {
    const char* rule;
    Status status;
    FruWriteMode mode = FruWriteMode::WriteAndVerify;  ///< of all areas but the header
    Bytes onDevice{};
    int firstRefused = kNever;
  };
  const Case cases[] = {
      {"as written", kSuccess},
      {"refused write", kAreaNotWritten, FruWriteMode::WriteAndVerify, {}, 3},
      {"refused read", kBoardInfoArea, FruWriteMode::WriteAndVerify, {}, kLastWrite + 3},
      {"another device", kUnexpected, FruWriteMode::WriteAndVerify, crowded},
      {"another device, not compared", kSuccess, FruWriteMode::Skip, crowded},
      {"the third record damaged", kMultiRecordArea, FruWriteMode::Skip, Changed(crowded, {{174, 0}})},
  };
  for (const char* level : {"", "-debug3"}) {
    const char* arguments[] = {"varnok", level};
    TraceSelectLevel(2, arguments);
    for (const Case& row : cases) {
      ASSERT_EQ(Load(FullImage()), kSuccess);
      fru->Address().displayName.emplace(100, u't');  // more than a string holds within itself
      for (std::uint32_t area = 2; area <= 6; ++area)
        ASSERT_EQ(fru->SetAreaWriteMode(FruAreaId{area}, row.mode, kAllMultiRecords), kSuccess);
      if (row.mode == FruWriteMode::Skip) device.image = row.onDevice;
      EXPECT_EQ(Program(row.firstRefused, row.onDevice), row.status) << row.rule;
      EXPECT_EQ(taken, 0u) << row.rule << level;
    }
  }
  const char* off[] = {"varnok"};
  TraceSelectLevel(1, off);
}

TEST_F(FruMemory, ThatRunsOutLeavesTheDeviceAlone) {
  ASSERT_EQ(Load(FullImage()), kSuccess);
  int refused = 0;
  for (;; ++refused) {
    device.log.clear();
    machine.FailPoolAllocation(refused + 1);
    Status status = fru->WriteToSystem();
    if (status == kSuccess) break;
    ExpectFailure(status, kOutOfMemory, kNoMemoryText);
    ASSERT_TRUE(device.log.empty()) << refused;
  }
  EXPECT_GT(refused, 10);
}

}  // namespace
}  // namespace varnok
