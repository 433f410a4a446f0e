#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <new>

#include "firmware/host/host_firmware.h"

namespace varnok::host {
namespace {

TEST(ProcessDeathTest, WithoutMemoryEndsWithAMessageAndItsOwnStatus) {
  auto exhaust = [] {
    PrepareProcess();
    std::get_new_handler()();
  };
  EXPECT_EXIT(exhaust(), ::testing::ExitedWithCode(kOutOfMemoryStatus), "varnok: out of memory; stopped.\n");
}

class NoBoard : public Machine {
 public:
  IpmiProtocol* InstalledIpmi() override { return nullptr; }
  std::span<const std::uint8_t> SmbiosEntryPoint() override { return {}; }
  std::span<const std::uint8_t> PhysicalMemory(std::uint64_t, std::size_t) override { return {}; }
  void Stall(std::uint64_t, StallKind) override {}
  WallClock Now() override { return {}; }
};

TEST(ProcessDeathTest, ConsoleTextIsOutBeforeAComplaintAndBeforeAWait) {
  auto work = [] {
    NoBoard board;
    HostFirmware firmware(board);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    firmware.WriteConsole(u"begun; ");
    Complain("told");
    firmware.WriteConsole(u"writes");
    firmware.Stall(1, StallKind::Pacing);
    raise(SIGKILL);
  };
  EXPECT_EXIT(work(), ::testing::KilledBySignal(SIGKILL), "begun; host_test: told\nwrites$");
}

}  // namespace
}  // namespace varnok::host
