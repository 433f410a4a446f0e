#include "sim/bmc.h"

#include "sim/commands.h"

namespace varnok::sim {

Bmc::Bmc(const BoardConfig& config, ImageStore& images, VirtualClock& clock)
    : clock_(clock), log_(clock), exchangeMicroseconds_(config.exchangeMicroseconds) {
  controllers_.emplace_back(config.bmc, config.transferMode, images);
  for (const ControllerConfig& controller : config.controllers) {
    controllers_.emplace_back(controller, TransferModeConfig{}, images);
  }
}

Delivery Bmc::Process(const Request& request) noexcept {
  try {
    return Deliver(Self(), request);
  } catch (...) {
    // Out of memory, say: to the caller a BMC that does not take the request.
    return {.refused = true, .answers = {}};
  }
}

Delivery Bmc::Deliver(Controller& controller, const Request& request) {
  clock_.Advance(exchangeMicroseconds_);
  log_.Asked(controller, request);
  if (controller.IsSilent(clock_.Elapsed())) {
    log_.Lost(controller, request, "reset");
    return {};
  }
  Response response = ExecuteCommand(*this, controller, request);
  log_.Answered(controller, response);
  Delivery delivery;
  delivery.answers.push_back(std::move(response));
  return delivery;
}

bool Bmc::HasChannel(std::uint8_t channel) const {
  if (channel == 0 || channel == 6) return true;
  for (const Controller& controller : controllers_) {
    if (!controller.IsBmc() && controller.Config().channel == channel) return true;
  }
  return false;
}

Controller* Bmc::FindController(std::uint8_t channel, std::uint8_t address) {
  for (Controller& controller : controllers_) {
    if (controller.IsBmc()) continue;
    if (controller.Config().channel == channel && controller.Config().address == address) return &controller;
  }
  return nullptr;
}

void Bmc::Reset(Controller& controller) {
  controller.Reset(clock_.Elapsed());
  if (controller.IsBmc()) queue_.Clear();
}

}  // namespace varnok::sim
