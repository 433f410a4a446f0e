// What can go wrong at one request: the board's kinds of faults, each with the numbers that are worth trying.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "sim/faults.h"
#include "sim/message.h"

namespace varnok::rehearsal {

/// Which requests a disturbance can make a difference for.
enum class Scope : std::uint8_t {
  Any,
  Bmc,         ///< the BMC's own interface
  Satellite,   ///< a controller behind it
  Write,       ///< what can change the storage
  Repository,  ///< SDR commands
  GetSdr,
  RepositoryInfo,
};

struct Disturbance {
  std::string name{};     ///< "lost answer, not done", "completion code C3h"
  sim::FaultRule rule{};  ///< but for the controller, and numbers that the request decides
  Scope scope = Scope::Any;
};

/// All of them, always in the same order.
std::span<const Disturbance> AllDisturbances();

bool IsWithin(Scope scope, const sim::BusPlace& place, const sim::Request& request);

/// The rule that fires at the next request at `place`, which is this one.
sim::FaultRule RuleFor(const Disturbance& disturbance, const sim::BusPlace& place,
                       const sim::Request& request);

}  // namespace varnok::rehearsal
