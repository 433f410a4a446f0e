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

/// Who looks at the traffic from within the process.
class TrafficObserver {
 public:
  virtual ~TrafficObserver() = default;
  /// A request has reached a controller, which has not looked at it. One that is bridged is told of within
  /// the request that carries it.
  virtual void Asked(const BusPlace& place, const Request& request) = 0;
  virtual void Answered(const BusPlace& place, const Response& response) = 0;
  virtual void Unanswered(const BusPlace& place) = 0;
  /// The process ends with the board's power, now.
  virtual void PowerIsCut() {}
};

class TrafficLog {
 public:
  /// `clock` gives microseconds since the start.
  using Clock = std::function<std::uint64_t()>;
  explicit TrafficLog(Clock clock) : clock_(std::move(clock)) {}

  /// Null for none; it must outlive its time here.
  void Observe(TrafficObserver* observer) { observer_ = observer; }

  /// Starts an empty log in the file at `path`. False when it cannot be written.
  bool Open(const std::string& path);

  void Asked(const BusPlace& place, const Request& request);
  void Answered(const BusPlace& place, const Response& response, std::string_view remark = {});
  /// Stands where the answer would: "lost", or "refused" for a request that did not get through.
  void Unanswered(const BusPlace& place, const Request& request, std::string_view word,
                  std::string_view remark);
  /// Something that happened on the board.
  void Event(std::string_view text);
  /// An image that the computer does not take: the first one is told on stderr too.
  void Failure(std::string_view text);
  void PowerCut(std::string_view text);

 private:
  /// Writes one line. A log that cannot be written any more ends, and says so on standard error.
  void Line(std::string text, std::string_view remark = {});

  Clock clock_;
  TrafficObserver* observer_ = nullptr;
  std::string path_;
  Descriptor file_;
  bool isFailureTold_ = false;
};

}  // namespace varnok::sim
