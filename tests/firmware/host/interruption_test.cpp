// A signal in the middle of a run: what is still asked of the board, and what is said to be written.
#include "firmware/host/interruption.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <cstdio>
#include <string>

#include "firmware/host/linux_machine.h"

namespace varnok::host {
namespace {

using Bytes = std::vector<std::uint8_t>;

struct Exchange {
  std::uint8_t netFunction;
  std::uint8_t command;
  Bytes data;
  Bytes answer;  ///< completion code and data; empty: none comes
};

/// Answers by the rows; the signal comes while the request of one row is on its way.
class ScriptedMachine : public Machine {
 public:
  ScriptedMachine(const std::vector<Exchange>& rows, std::size_t signalAt)
      : protocol_{{kIpmiProtocolRevision, Send, Receive}, this}, rows_(rows), signalAt_(signalAt) {}
  IpmiProtocol* InstalledIpmi() override { return &protocol_.interface; }
  std::span<const std::uint8_t> SmbiosEntryPoint() override { return {}; }
  std::span<const std::uint8_t> PhysicalMemory(std::uint64_t, std::size_t) override { return {}; }
  void Stall(std::uint64_t, StallKind) override {}
  WallClock Now() override { return {}; }

 private:
  struct Protocol {
    IpmiProtocol interface;
    ScriptedMachine* machine;
  };
  static Status Send(IpmiProtocol* self, std::uint8_t, std::uint8_t, std::uint8_t, const std::uint8_t*,
                     std::uint32_t) {
    ScriptedMachine& machine = *reinterpret_cast<Protocol*>(self)->machine;
    std::fprintf(stderr, "<%zu>", machine.next_);
    if (machine.next_++ == machine.signalAt_) raise(SIGTERM);
    return kSuccess;
  }
  static Status Receive(IpmiProtocol* self, std::uint8_t* netFunction, std::uint8_t*, std::uint8_t* command,
                        std::uint8_t* completionCode, std::uint8_t* data, std::uint32_t* dataLength) {
    ScriptedMachine& machine = *reinterpret_cast<Protocol*>(self)->machine;
    const Exchange& row = machine.rows_[machine.next_ - 1];
    if (row.answer.empty()) return uefi_status::kTimeout;
    *netFunction = row.netFunction + 1;
    *command = row.command;
    *completionCode = row.answer[0];
    *dataLength = static_cast<std::uint32_t>(row.answer.size() - 1);
    std::copy(row.answer.begin() + 1, row.answer.end(), data);
    return kSuccess;
  }

  Protocol protocol_;
  const std::vector<Exchange>& rows_;
  std::size_t signalAt_;
  std::size_t next_ = 0;
};

void RunScript(const std::vector<Exchange>& rows, std::size_t signalAt) {
  InterruptibleMachine machine(std::make_unique<ScriptedMachine>(rows, signalAt));
  IpmiProtocol* ipmi = machine.InstalledIpmi();
  for (const Exchange& row : rows) {
    std::uint8_t netFunction, lun, command, completionCode, data[256];
    std::uint32_t length = sizeof data;
    (void)ipmi->Send(ipmi, row.netFunction, 0, row.command, row.data.data(),
                     static_cast<std::uint32_t>(row.data.size()));
    (void)ipmi->Receive(ipmi, &netFunction, &lun, &command, &completionCode, data, &length);
    machine.Stall(1, StallKind::Waiting);
  }
}

const Exchange kInfo{0x0A, 0x10, {0}, {0, 0x00, 0x04, 0}};
const Exchange kNextWrite{0x0A, 0x12, {0, 8, 0, 3, 4}, {0, 2}};

TEST(InterruptionDeathTest, EndsBehindTheWriteUnderWayAndSaysWhatIsWritten) {
  struct Row {
    std::vector<Exchange> traffic;
    std::size_t signalAt;
    const char* said;
  };
  const Row kRows[] = {
      {{{6, 1, {}, {0, 0x20, 1, 2}}, kNextWrite}, 0, "^<0>[^<]*stopped by SIGTERM; nothing was written"},
      // The request of a write whose answer is lost is repeated first.
      {{kInfo, {0x0A, 0x12, {0, 0, 0, 1, 2}, {}}, {0x0A, 0x12, {0, 0, 0, 1, 2}, {0, 2}}, kNextWrite},
       1,
       "<1>[^<]*<2>[^<]*  FRU device 0: 2 of 1024 bytes were written \\(0 to 1\\), the others are as they were\n"},
      {{{0x0A, 0x12, {0, 0, 0, 1, 2}, {}}, kInfo, kNextWrite},
       1,
       "<0>[^<]*<1>[^<]*FRU device 0: 0 of 1024 bytes were written; a write that was not confirmed may be done"},
      // The device's size was never asked for; a repetition is refused since the first one was done.
      {{{0x0A, 0x12, {0, 0, 0, 1, 2}, {}}, {0x0A, 0x12, {0, 0, 0, 1, 2}, {0x80}}, kInfo},
       0,
       "<0>[^<]*<1>[^<]*FRU device 0: 0 bytes were written; a write that was not confirmed may be done"},
      {{{6, 0x52, {3, 0xA0, 0, 0, 16, 7}, {}}, kInfo},
       0,
       "<0>[^<]*EEPROM 03:A0: 0 bytes were written; a write"},
      // Through the BMC to the controller at C0h: its answer is fetched.
      {{{6, 0x34, {0, 0xC0, 0x28, 0x18, 0x20, 6, 0x12, 1, 0, 0, 9, 0}, {0}},
        {6, 0x33, {}, {0x80}},
        {6, 0x33, {}, {0, 0, 0x2E, 0xB2, 0xC0, 4, 0x12, 0, 1, 0}},
        kNextWrite},
       0,
       "<0>[^<]*<1><2>[^<]*  FRU device 1@C0: 1 bytes were written \\(0 to 0\\)"},
      {{{6, 0x52, {3, 0xA0, 0, 0, 16, 7}, {0}}, kNextWrite},
       0,
       "<0>[^<]*  EEPROM 03:A0: 1 bytes were written \\(16 to"},
      // An erase, then a record in two pieces.
      {{{0x0A, 0x27, {1, 0, 'C', 'L', 'R', 0xAA}, {0, 0}},
        {0x0A, 0x27, {1, 0, 'C', 'L', 'R', 0}, {0, 1}},
        {0x0A, 0x22, {}, {0, 1, 0}}},
       0,
       "<0>[^<]*<1>[^<]*SDR repository: erased; 0 records were added, it holds no oth"},
      {{{0x0A, 0x25, {1, 0, 0, 0, 0, 0, 5}, {0, 1, 0}},
        {0x0A, 0x25, {1, 0, 1, 0, 1, 1, 6}, {0, 1, 0}},
        {0x0A, 0x22, {}, {0, 1, 0}}},
       0,
       "<0>[^<]*<1>[^<]*SDR repository: 1 record was added\n"},
      {{{0x0A, 0x25, {1, 0, 0, 0, 0, 0, 5}, {0, 1, 0}},
        {0x0A, 0x25, {1, 0, 1, 0, 1, 1, 6}, {}},
        {0x0A, 0x25, {1, 0, 1, 0, 1, 1, 6}, {0xC5}},
        kInfo},
       1,
       "SDR repository: 0 records were added; one more was begun; changes that were not"},
      {{{0x0A, 0x27, {1, 0, 'C', 'L', 'R', 0xAA}, {}}, kInfo},
       0,
       "<0>[^<]*SDR repository: 0 records were added; changes that"},
      // Out of firmware-transfer mode again.
      {{{8, 0, {}, {0}},
        {8, 4, {}, {0}},
        {6, 1, {}, {0, 0x20, 1, 0x82}},
        {6, 1, {}, {0, 0x20, 1, 2}},
        kNextWrite},
       0,
       "<0>[^<]*<1><2><3>[^<]*nothing was written"},
  };
  for (const Row& row : kRows)
    EXPECT_EXIT(RunScript(row.traffic, row.signalAt), ::testing::KilledBySignal(SIGTERM), row.said);
  const std::vector<Exchange> untilKilled{{0x0A, 0x25, {1, 0, 0, 0, 0, 0, 5}, {0, 1, 0}}};
  auto killTwice = [&untilKilled] {
    RunScript(untilKilled, 9);
    InterruptibleMachine again(std::make_unique<ScriptedMachine>(untilKilled, 0));
    raise(SIGINT);
    raise(SIGTERM);
  };
  EXPECT_EXIT(killTwice(), ::testing::KilledBySignal(SIGTERM), "");
}

TEST(LinuxMachine, DeviceThatCannotBeHadSaysWhatToDo) {
  std::string error;
  EXPECT_EQ(OpenLinuxMachine("/dev/ipmi77", error), nullptr);
  EXPECT_NE(error.find("modprobe -a ipmi_si ipmi_devintf"), std::string::npos) << error;
}

}  // namespace
}  // namespace varnok::host
