// A machine to read and write on the host: this computer's own board behind /dev/ipmi0, or a board folder.
#pragma once

#include <memory>
#include <string>

#include "firmware/host/host_firmware.h"
#include "firmware/host/machine.h"

namespace varnok::boards {

/// Stands as the installed firmware while it lives.
class OpenMachine {
 public:
  /// `name` is a device of the kernel when it begins with "/dev/", else a board folder. Null, with `error`
  /// set, when it cannot be had.
  static std::unique_ptr<OpenMachine> Open(const std::string& name, std::string& error);
  ~OpenMachine();
  OpenMachine(const OpenMachine&) = delete;
  OpenMachine& operator=(const OpenMachine&) = delete;

 private:
  explicit OpenMachine(std::unique_ptr<host::Machine> machine);

  std::unique_ptr<host::Machine> machine_;
  host::HostFirmware firmware_;
  Firmware* previous_;
};

}  // namespace varnok::boards
