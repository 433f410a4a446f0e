// This computer's own board: the BMC behind the kernel's IPMI device and the SMBIOS tables of its firmware.
#pragma once

#include <memory>
#include <string>

#include "firmware/host/machine.h"

namespace varnok::host {

/// Opens an IPMI device (/dev/ipmi0). Null, with `error` saying why, when that fails. Without SMBIOS tables
/// in /sys/firmware/dmi/tables the board counts as one that has none.
std::unique_ptr<Machine> OpenLinuxMachine(const std::string& device, std::string& error);

}  // namespace varnok::host
