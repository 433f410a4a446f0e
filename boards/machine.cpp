#include "boards/machine.h"

#include <filesystem>
#include <string_view>
#include <utility>

#include "firmware/host/interruption.h"
#include "firmware/host/linux_machine.h"
#include "firmware/lasting.h"
#include "sim/board.h"
#include "sim/logged_machine.h"

namespace varnok::boards {

std::unique_ptr<OpenMachine> OpenMachine::Open(const std::string& name, std::string& error) {
  std::unique_ptr<host::Machine> machine;
  // A folder is a folder wherever it is.
  std::error_code ignored;
  if (std::string_view(name).starts_with("/dev/") && !std::filesystem::is_directory(name, ignored))
    machine = sim::WithTrafficLog(host::OpenLinuxMachine(name, error), sim::ProcessEnvironment, error);
  else
    machine = sim::Board::Open(name, error);
  if (machine == nullptr) return nullptr;
  return std::unique_ptr<OpenMachine>(new OpenMachine(std::move(machine)));
}

OpenMachine::OpenMachine(std::unique_ptr<host::Machine> machine)
    : machine_(std::make_unique<host::InterruptibleMachine>(std::move(machine))),
      firmware_(*machine_),
      previous_(InstallFirmware(&firmware_)) {}

OpenMachine::~OpenMachine() {
  // What the transport knows of this machine ends with it.
  ForgetProgramState();
  InstallFirmware(previous_);
}

}  // namespace varnok::boards
