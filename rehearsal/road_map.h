// The roads that an exploration found, put together from what its processes left: states, the answers that
// lead out of them, and where each leads.
#pragma once

#include <map>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

#include "rehearsal/explorer.h"

namespace varnok::rehearsal {

/// Where an answer leads: to a state, or to the end of a road.
struct Way {
  bool isEnd = false;
  std::uint64_t state = 0;
  std::size_t leaf = 0;               ///< index into RoadMap::leaves
  std::optional<std::size_t> join{};  ///< index into RoadMap::joins: who came here found the state known
  std::string text{};
  bool isInvalid = false;
};

struct State {
  Question question{};
  std::vector<std::string> alternatives{};
  Outcome arrival{};                    ///< of who saw it first: time, requests and lines so far
  std::map<std::uint32_t, Way> ways{};  ///< by alternative
};

struct RoadMap {
  /// False for bytes that are no trace.
  bool Take(std::span<const std::uint8_t> record);

  std::optional<Way> start{};
  std::unordered_map<std::uint64_t, State> states{};
  std::vector<Trace> leaves{};
  std::vector<Trace> joins{};

 private:
  void AddPath(const Trace& trace, const Way& end);
  void AddDeath(Trace trace);
};

}  // namespace varnok::rehearsal
