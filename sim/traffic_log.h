// The traffic log: one line for each request and each answer, with the virtual time, flushed line by line.
// docs/board.md describes the format.
#pragma once

#include <string>
#include <string_view>

#include "sim/clock.h"
#include "sim/controller.h"
#include "sim/descriptor.h"
#include "sim/message.h"

namespace varnok::sim {

/// Who looks at the traffic from within the process.
class TrafficObserver {
 public:
  virtual ~TrafficObserver() = default;
  /// A request has reached a controller, which has not looked at it. One that is bridged is told of within
  /// the request that carries it.
  virtual void Asked(const Controller& controller, const Request& request) = 0;
  virtual void Answered(const Controller& controller, const Response& response) = 0;
  virtual void Unanswered(const Controller& controller) = 0;
  /// The process ends with the board's power, now.
  virtual void PowerIsCut() {}
};

class TrafficLog {
 public:
  explicit TrafficLog(const VirtualClock& clock) : clock_(clock) {}

  /// Null for none; it must outlive its time here.
  void Observe(TrafficObserver* observer) { observer_ = observer; }

  /// Starts an empty log in the file at `path`. False when it cannot be written.
  bool Open(const std::string& path);

  void Asked(const Controller& controller, const Request& request);
  void Answered(const Controller& controller, const Response& response, std::string_view remark = {});
  /// Stands where the answer would: "lost", or "refused" for a request that did not get through.
  void Unanswered(const Controller& controller, const Request& request, std::string_view word,
                  std::string_view remark);
  /// Something that happened on the board.
  void Event(std::string_view text);
  void PowerCut(std::string_view text);

 private:
  /// Writes one line. A log that cannot be written any more ends, and says so on standard error.
  void Line(std::string text, std::string_view remark = {});

  const VirtualClock& clock_;
  TrafficObserver* observer_ = nullptr;
  std::string path_;
  Descriptor file_;
};

}  // namespace varnok::sim
