// A test machine with a simulated board below it.
#pragma once

#include <memory>

#include "sim/board.h"
#include "tests/support/test_firmware.h"

namespace varnok::testing {

/// Its clock, its BMC and its tables are the board's.
class BoardMachine : public TestFirmware {
 public:
  void Stall(std::uint64_t microseconds, StallKind kind) override {
    TestFirmware::Stall(microseconds, kind);
    board->Stall(microseconds, kind);
  }
  WallClock Now() override { return board->Now(); }
  std::span<const std::uint8_t> PhysicalMemory(std::uint64_t address, std::size_t length) override {
    return board->PhysicalMemory(address, length);
  }

  void Install(std::unique_ptr<sim::Board> opened) {
    board = std::move(opened);
    protocol = board->InstalledIpmi();
    smbiosEntryPoint = board->SmbiosEntryPoint().data();
  }

  std::unique_ptr<sim::Board> board;
};

}  // namespace varnok::testing
