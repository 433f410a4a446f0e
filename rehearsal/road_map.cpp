#include "rehearsal/road_map.h"

#include <utility>

namespace varnok::rehearsal {

bool RoadMap::Take(std::span<const std::uint8_t> record) {
  Trace trace;
  if (!FromWire(record, trace)) return false;
  switch (trace.kind) {
    case TraceKind::State: {
      State& state = states[trace.state];
      state.question = std::move(trace.question);
      state.alternatives = std::move(trace.alternatives);
      state.arrival = std::move(trace.outcome);
      break;
    }
    case TraceKind::Leaf:
      AddPath(trace, {.isEnd = true, .leaf = leaves.size()});
      leaves.push_back(std::move(trace));
      break;
    case TraceKind::Death:
      AddDeath(std::move(trace));
      break;
    case TraceKind::Join:
      AddPath(trace, {.state = trace.state, .join = joins.size()});
      joins.push_back(std::move(trace));
      break;
  }
  return true;
}

void RoadMap::AddPath(const Trace& trace, const Way& end) {
  Way* open = start ? &*start : &start.emplace();
  for (const Step& step : trace.path) {
    open->state = step.state;
    open = &states[step.state].ways[step.alternative];
    open->text = step.text;
    open->isInvalid = step.isInvalid;
  }
  const Way answered = *open;
  *open = end;
  open->text = answered.text;
  open->isInvalid = answered.isInvalid;
}

/// The process that died had gone on with the first alternative of each state that it was the first to see.
void RoadMap::AddDeath(Trace trace) {
  const Way* way = start ? &*start : nullptr;
  for (const Step& step : trace.path) {
    const auto state = states.find(step.state);
    if (state == states.end()) break;
    const auto next = state->second.ways.find(step.alternative);
    way = next == state->second.ways.end() ? nullptr : &next->second;
  }
  while (way != nullptr && !way->isEnd && !way->join) {
    const State& state = states[way->state];
    if (state.alternatives.empty()) break;
    trace.path.push_back({.state = way->state, .alternative = 0, .text = state.alternatives.front()});
    const auto next = state.ways.find(0);
    way = next == state.ways.end() ? nullptr : &next->second;
  }
  AddPath(trace, {.isEnd = true, .leaf = leaves.size()});
  leaves.push_back(std::move(trace));
}

}  // namespace varnok::rehearsal
