// The traffic log: one line for each request and each answer, with the time of the board, flushed line by
// line. docs/board.md describes the format.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "sim/descriptor.h"
#include "sim/message.h"

namespace varnok::sim {

class TrafficLog {
 public:
  /// `clock` gives microseconds since the start.
  using Clock = std::function<std::uint64_t()>;
  explicit TrafficLog(Clock clock) : clock_(std::move(clock)) {}

  /// Starts an empty log in the file at `path`. False when it cannot be written.
  bool Open(const std::string& path);

  void Asked(const BusPlace& place, const Request& request);
  void Answered(const BusPlace& place, const Response& response, std::string_view remark = {});
  /// Stands where the answer would: "lost", or "refused" for a request that did not get through.
  void Unanswered(const BusPlace& place, const Request& request, std::string_view word,
                  std::string_view remark);
  /// Something that happened on the board.
  void Event(std::string_view text);

 private:
  /// Writes one line. A log that cannot be written any more ends, and says so on standard error.
  void Line(std::string text, std::string_view remark = {});

  Clock clock_;
  std::string path_;
  Descriptor file_;
};

}  // namespace varnok::sim
