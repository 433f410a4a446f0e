// Whole runs over a simulated board, cut short by a signal in front of each request: what the program says it
// has written is what the board holds.
#include "firmware/host/interruption.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include <cstdio>
#include <regex>

#include "firmware/host/host_firmware.h"
#include "sim/board.h"
#include "tests/support/host_files.h"

namespace varnok::testing {
namespace {

namespace fs = std::filesystem;

/// Raises the signal while one request is on its way.
class SignallingMachine : public host::MachineFilter {
 public:
  SignallingMachine(std::unique_ptr<Machine> below, int at) : MachineFilter(std::move(below)), left_(at) {}

 protected:
  void Asking(const host::SentRequest&) override {
    if (left_-- == 0) raise(SIGTERM);
  }

 private:
  int left_;
};

/// Runs over a copy of the board; the status of the child, with its error output in the file `said`.
int RunCutShort(const fs::path& board, const fs::path& said, const char* mode, const char* file, int at) {
  if (fork() == 0) {
    if (std::freopen(said.c_str(), "w", stderr) == nullptr ||
        std::freopen("/dev/null", "w", stdout) == nullptr)
      _exit(99);
    std::string error;
    host::InterruptibleMachine machine(
        std::make_unique<SignallingMachine>(sim::Board::Open(board, error), at));
    std::string words[] = {"varnok", mode, std::string(VARNOK_SAMPLES "/") + file};
    char* arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
    _exit(host::RunProgram(machine, 3, arguments));
  }
  int status = 0;
  wait(&status);
  return status;
}

std::size_t RecordsIn(const std::string& repository) {
  std::size_t count = 0;
  for (std::size_t at = 0; at + 4 < repository.size(); ++count)
    at += 5 + static_cast<unsigned char>(repository[at + 4]);
  return count;
}

TEST(Interruption, WhatIsSaidToBeWrittenIs) {
  const TemporaryFolder temporary;
  const fs::path untouched = temporary.Path() / "untouched", board = temporary.Path() / "board";
  std::string error;
  ASSERT_TRUE(sim::Board::CreateDefault(untouched, error)) << error;
  const std::string before = ContentOf(untouched / "board.bin");
  const std::size_t recordsBefore = RecordsIn(ContentOf(untouched / "sdr.bin"));
  for (const auto& [mode, file, device] : {std::tuple("/fru", "server-board.fru", "FRU device 0: "),
                                           std::tuple("/sdr", "server-board.sdr", "SDR repository: ")}) {
    std::string wholly;
    for (int at = -1, status = -1; status != 0; ++at) {
      fs::remove_all(board);
      fs::copy(untouched, board);
      status = RunCutShort(board, temporary.Path() / "said", mode, file, at);
      const std::string now = ContentOf(board / "board.bin");
      if (at < 0) {
        wholly = now;
        ASSERT_EQ(std::exchange(status, -1), 0);
        continue;
      }
      if (status == 0) break;
      ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM) << mode << " at " << at;
      const std::string said = ContentOf(temporary.Path() / "said");
      std::smatch found;
      std::string wanted = before;
      if (std::regex_search(said, found, std::regex("0: (\\d+) (of 1024 )?bytes were written \\(0 to")))
        wanted.replace(0, std::stoul(found[1]), wholly, 0, std::stoul(found[1]));
      EXPECT_TRUE(now == wanted) << mode << " at " << at << "\n" << said;
      const bool isErased = std::regex_search(said, found, std::regex("erased; (\\d+) record"));
      EXPECT_EQ(RecordsIn(ContentOf(board / "sdr.bin")), isErased ? std::stoul(found[1]) : recordsBefore)
          << mode << " at " << at << "\n"
          << said;
      EXPECT_EQ(said.find(device) == std::string::npos,
                said.find("nothing was written") != std::string::npos);
    }
  }
}

}  // namespace
}  // namespace varnok::testing
