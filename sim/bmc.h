// The simulated BMC and the controllers behind it. Process() is the BMC's system interface: it takes one
// request and gives what comes back, faults and traffic log included.
#pragma once

#include <cstdint>
#include <deque>

#include "sim/bridging.h"
#include "sim/clock.h"
#include "sim/controller.h"
#include "sim/faults.h"
#include "sim/message.h"
#include "sim/sdr_repository.h"
#include "sim/traffic_log.h"

namespace varnok::sim {

class Bmc {
 public:
  /// Throws BoardError when an image cannot be opened. The images and the clock must outlive the BMC.
  Bmc(const BoardConfig& config, ImageStore& images, VirtualClock& clock);

  /// One request at the system interface.
  Delivery Process(const Request& request) noexcept;

  /// One request at a controller, wherever it stands.
  Delivery Deliver(Controller& controller, const Request& request);

  TrafficLog& Log() { return log_; }
  VirtualClock& Clock() { return clock_; }
  ImageStore& Images() { return images_; }
  FaultEngine& Faults() { return faults_; }
  ReceiveQueue& Queue() { return queue_; }
  SdrRepository& Sdrs() { return sdrs_; }
  /// Whether the machine wants an interrupt when an answer stands in the queue (IPMI v2.0, section 22.1).
  bool HasQueueInterrupt() const { return hasQueueInterrupt_; }
  void SetQueueInterrupt(bool isOn) { hasQueueInterrupt_ = isOn; }
  Controller& Self() { return controllers_.front(); }

  /// Channel 0 is the primary IPMB; others exist when a controller stands on them, 6 always.
  bool HasChannel(std::uint8_t channel) const;
  /// The controller at an address behind the BMC; null when nothing acknowledges there.
  Controller* FindController(std::uint8_t channel, std::uint8_t address);
  /// Cold reset of a controller; the BMC's also empties the receive queue.
  void Reset(Controller& controller);

 private:
  /// What a rule does to the board before the request is looked at.
  void Disturb(Controller& controller, const Request& request, const FaultRule& rule);
  /// Executes a request as the rule (null: none) says.
  Delivery Answer(Controller& controller, const Request& request, const FaultRule* rule);
  Delivery Answered(Controller& controller, Response response, std::size_t times, std::string_view remark);
  Response Execute(Controller& controller, const Request& request);

  ImageStore& images_;
  VirtualClock& clock_;
  FaultEngine faults_;
  TrafficLog log_;
  ReceiveQueue queue_;
  bool hasQueueInterrupt_ = false;
  SdrRepository sdrs_;
  std::uint32_t exchangeMicroseconds_;
  std::deque<Controller> controllers_;  // the BMC first
};

}  // namespace varnok::sim
