// The kinds of faults: one row each, with its name, when it happens, the keys that it takes, and what it
// does.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "sim/faults.h"
#include "sim/message.h"

namespace varnok::sim {

class Bmc;
class Controller;

/// A request that meets a fault, and what comes of it.
struct FaultScene {
  Bmc& bmc;
  Controller& controller;
  const Request& request;
  const FaultRule& rule;
  std::optional<Response> previous{};  ///< what this controller answered last
  Response response{};                 ///< the answer, for the effect to change
  Delivery::Fate fate = Delivery::Fate::Answered;
  std::size_t copies = 1;
  std::uint64_t delay = 0;  ///< microseconds until it can be received
};

/// A number that a kind needs or takes.
struct FaultKey {
  const char* name;
  std::uint32_t FaultRule::*value;
  std::uint32_t low;
  std::uint32_t high;
  std::optional<std::uint32_t> fallback{};  ///< without one the key must be there
};

enum class FaultPhase {
  Before,  ///< something happens to the board before the request is looked at; every rule that fires
  Answer,  ///< something becomes of the answer; the first rule that fires
};
enum class FaultPlace { Anywhere, Bmc, Satellite };
/// Whether the request does its work: the row says so, or the key "executed" with this default.
enum class FaultExecution { Always, Never, UnlessDenied, IfAsked };

struct FaultKind {
  std::string_view name;
  FaultPhase phase;
  FaultPlace place;
  FaultExecution execution;
  bool namesFile;  ///< takes the key "file", a device's image
  std::span<const FaultKey> keys;
  void (*effect)(FaultScene& scene);
};

/// Null for a name that no kind has.
const FaultKind* FindFaultKind(std::string_view name);

/// The exit status of a program whose board had its power cut.
inline constexpr int kPowerCutStatus = 137;

}  // namespace varnok::sim
