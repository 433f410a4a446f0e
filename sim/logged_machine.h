// The traffic log of a machine that is not simulated: what goes over its IPMI protocol, with the time since
// the start.
#pragma once

#include <memory>
#include <string>

#include "firmware/host/machine.h"
#include "sim/board_source.h"

namespace varnok::sim {

/// Puts the traffic log of `VARNOK_TRAFFIC` in front of the machine; without that variable the machine as it
/// is. Null with `error` set when the log cannot be written.
std::unique_ptr<host::Machine> WithTrafficLog(std::unique_ptr<host::Machine> machine,
                                              const Environment& environment, std::string& error);

}  // namespace varnok::sim
