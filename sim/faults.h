// Faults as data: rules of board.json that make the board misbehave, each for chosen requests, the same in
// every run.
#pragma once

#include <cstdint>
#include <deque>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sim/message.h"

namespace varnok::sim {

struct ControllerConfig;
class JsonObject;

struct FaultKind;

struct FaultRule {
  std::string label;  ///< like "faults[0] short", for the traffic log

  // Which requests; what is absent matches any.
  std::uint8_t controller = 0x20;
  std::optional<std::uint8_t> channel;
  std::optional<std::uint8_t> netFunction;
  std::optional<std::uint8_t> command;
  std::optional<std::uint8_t> lun;
  std::vector<std::uint8_t> data;  ///< how the request's data begins

  // When: the first-th matching request, every step-th after it, up to the last-th.
  std::uint32_t first = 1;
  std::uint32_t last = std::numeric_limits<std::uint32_t>::max();
  std::uint32_t step = 1;

  // What happens, with the numbers that its kind takes.
  const FaultKind* kind = nullptr;
  bool executed = true;  ///< the request is carried out all the same
  std::uint32_t value = 0;
  std::uint32_t offset = 0;
  std::string file;
};

/// Reads one rule. Throws BoardError.
FaultRule ReadFaultRule(JsonObject& object);

/// Counts requests and tells which rules fire.
class FaultEngine {
 public:
  explicit FaultEngine(std::vector<FaultRule> rules);

  struct Firing {
    std::vector<const FaultRule*> before;  ///< what happens to the board before the request is looked at
    const FaultRule* answer = nullptr;     ///< what becomes of the answer: the first such rule that fires
  };
  Firing Count(const ControllerConfig& controller, const Request& request);

  /// One more rule, whose count begins now. Returns its number, for Stop.
  std::size_t Add(FaultRule rule);
  /// The rule does not fire any more.
  void Stop(std::size_t number) { rules_[number].last = 0; }

  const std::deque<FaultRule>& Rules() const { return rules_; }

 private:
  std::deque<FaultRule> rules_;  // one may be added while another is at work
  std::vector<std::uint32_t> counts_;
};

}  // namespace varnok::sim
