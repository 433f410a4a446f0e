// The Linux program: the core over a simulated board, or over this computer's own BMC.
#include <sys/stat.h>

#include <cstdlib>
#include <exception>
#include <memory>
#include <string>
#include <utility>

#include "firmware/host/host_firmware.h"
#include "firmware/host/interruption.h"
#include "firmware/host/linux_machine.h"
#include "sim/board_source.h"
#include "sim/logged_machine.h"

namespace {

using namespace varnok;

/// Whether a name is the kernel's IPMI device, or would be one if the kernel had it.
bool IsDevice(const char* name) {
  struct stat information;
  if (stat(name, &information) == 0) return S_ISCHR(information.st_mode);
  return std::string_view(name).starts_with("/dev/ipmi");
}

/// VARNOK_BOARD names a folder, or the kernel's IPMI device.
std::unique_ptr<host::Machine> OpenMachine(std::string& error) {
  const char* board = std::getenv("VARNOK_BOARD");
  if (board != nullptr && IsDevice(board))
    return sim::WithTrafficLog(host::OpenLinuxMachine(board, error), sim::ProcessEnvironment, error);
  std::string notice;
  auto machine = sim::OpenBoard(sim::ProcessEnvironment, notice, error);
  if (!notice.empty()) host::Complain(notice);
  return machine;
}

int Run(int argc, char* argv[]) {
  std::string error;
  std::unique_ptr<host::Machine> machine = OpenMachine(error);
  if (machine == nullptr) {
    host::Complain(error);
    return host::kNoBoardStatus;
  }
  host::InterruptibleMachine interruptible(std::move(machine));
  return host::RunProgram(interruptible, argc, argv);
}

}  // namespace

int main(int argc, char* argv[]) {
  sim::TakeStandardDescriptors();
  host::PrepareProcess();
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    // The core throws nothing: a board's folder did.
    host::Complain(error.what());
    return host::kNoBoardStatus;
  }
}
