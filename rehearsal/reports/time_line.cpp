#include "rehearsal/reports/time_line.h"

#include <algorithm>

namespace varnok::rehearsal {
namespace {

/// Requests of a hostile file or a clock that stood still may begin before the last one ended.
std::uint64_t LengthOf(const Exchange& exchange) {
  return exchange.ended > exchange.begun ? exchange.ended - exchange.begun : 0;
}

std::vector<Wait> FindWaits(const Run& run) {
  std::vector<Wait> waits;
  std::uint64_t now = 0;
  const auto add = [&](std::uint64_t until, std::size_t before) {
    if (until > now) waits.push_back({now, until - now, before});
    now = std::max(now, until);
  };
  for (std::size_t i = 0; i < run.traffic.size(); ++i) {
    add(run.traffic[i].begun, i + 1);
    now = std::max(now, run.traffic[i].ended);
  }
  add(run.microseconds, run.traffic.size() + 1);
  return waits;
}

/// No wait is drawn longer than twenty usual ones: a wait of minutes would leave no room for the rest.
std::uint64_t LongestDrawn(const std::vector<Wait>& waits) {
  if (waits.empty()) return 0;
  std::vector<std::uint64_t> lengths;
  lengths.reserve(waits.size());
  for (const Wait& wait : waits) lengths.push_back(wait.length);
  const auto middle = lengths.begin() + static_cast<std::ptrdiff_t>(lengths.size() / 2);
  std::nth_element(lengths.begin(), middle, lengths.end());
  return *middle * 20;
}

/// Puts a stretch behind the others, or makes the last one longer where they touch.
void Append(std::vector<Stretch>& stretches, std::uint64_t begin, std::uint64_t end, std::uint64_t total) {
  const auto place = [total](std::uint64_t at) {
    return static_cast<std::size_t>(static_cast<double>(at) / static_cast<double>(total) * TimeLine::kUnits);
  };
  const std::size_t from = std::min(place(begin), TimeLine::kUnits - 1);
  const std::size_t to = std::min(std::max(place(end), from + 1), TimeLine::kUnits);
  if (!stretches.empty() && stretches.back().begin + stretches.back().length >= from)
    stretches.back().length =
        std::max(to, stretches.back().begin + stretches.back().length) - stretches.back().begin;
  else
    stretches.push_back({from, to - from});
}

}  // namespace

TimeLine MakeTimeLine(const Run& run) {
  TimeLine line;
  line.waits = FindWaits(run);
  const std::uint64_t longest = LongestDrawn(line.waits);
  std::uint64_t total = 0;
  for (Wait& wait : line.waits) {
    wait.isCut = wait.length > longest;
    total += std::min(wait.length, longest);
  }
  for (const Exchange& exchange : run.traffic) total += LengthOf(exchange);
  total = std::max<std::uint64_t>(total, 1);

  std::uint64_t now = 0;
  auto wait = line.waits.begin();
  for (std::size_t i = 0; i <= run.traffic.size(); ++i) {
    for (; wait != line.waits.end() && wait->before == i + 1; ++wait) {
      const std::uint64_t end = now + std::min(wait->length, longest);
      Append(wait->isCut ? line.cutWaits : line.shortWaits, now, end, total);
      now = end;
    }
    if (i == run.traffic.size()) break;
    const Exchange& exchange = run.traffic[i];
    const std::uint64_t end = now + LengthOf(exchange);
    Append(exchange.isWrite ? line.writes : line.reads, now, end, total);
    if (!exchange.isAnswered) Append(line.lost, now, end, total);
    now = end;
  }
  return line;
}

}  // namespace varnok::rehearsal
