// The Linux program: the core over a simulated board, or over this computer's own BMC.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "firmware/host/host_firmware.h"
#include "firmware/host/linux_machine.h"
#include "sim/board_source.h"

namespace {

using namespace varnok;

/// VARNOK_BOARD names a folder, or the kernel's IPMI device.
std::unique_ptr<host::Machine> OpenMachine(std::string& error) {
  const char* board = std::getenv("VARNOK_BOARD");
  // What the name is decides, not how it begins: a folder in /dev/shm is a board's folder.
  std::error_code ignored;
  if (board != nullptr && std::string_view(board).starts_with("/dev/") &&
      !std::filesystem::is_directory(board, ignored))
    return host::OpenLinuxMachine(board, error);
  std::string notice;
  auto machine = sim::OpenBoard(sim::ProcessEnvironment, notice, error);
  if (!notice.empty()) std::fprintf(stderr, "varnok: %s\n", notice.c_str());
  return machine;
}

}  // namespace

int main(int argc, char* argv[]) {
  sim::TakeStandardDescriptors();
  std::string error;
  std::unique_ptr<host::Machine> machine = OpenMachine(error);
  if (machine == nullptr) {
    std::fprintf(stderr, "varnok: %s\n", error.c_str());
    return host::kNoBoardStatus;
  }
  return host::RunProgram(*machine, argc, argv);
}
