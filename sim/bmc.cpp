#include "sim/bmc.h"

#include <algorithm>
#include <utility>

#include "sim/commands.h"
#include "sim/error.h"
#include "sim/fault_kinds.h"

namespace varnok::sim {
namespace {

void CheckFault(const FaultRule& rule, ImageStore& images) {
  if (!rule.kind->namesFile) return;
  const Image* image = images.Find(rule.file);
  if (image == nullptr) throw BoardError(rule.label + ": no device stores in \"" + rule.file + "\"");
  if (rule.offset >= image->Size())
    throw BoardError(rule.label + ": the offset is past the end of " + rule.file);
}

}  // namespace

Bmc::Bmc(const BoardConfig& config, ImageStore& images, VirtualClock& clock)
    : images_(images),
      clock_(clock),
      faults_(config.faults),
      log_([&clock] { return clock.Elapsed(); }),
      queue_(clock),
      sdrs_(config.sdrs, images, clock),
      exchangeMicroseconds_(config.exchangeMicroseconds) {
  controllers_.emplace_back(config.bmc, config.transferMode, images);
  for (const ControllerConfig& controller : config.controllers) {
    controllers_.emplace_back(controller, TransferModeConfig{}, images);
  }
  for (const FaultRule& rule : faults_.Rules()) CheckFault(rule, images);
}

Delivery Bmc::Process(const Request& request) noexcept {
  try {
    return Deliver(Self(), request);
  } catch (...) {
    // Out of memory, say: to the caller a BMC that does not take the request.
    return {.fate = Delivery::Fate::Refused, .answers = {}};
  }
}

Delivery Bmc::Deliver(Controller& controller, const Request& request) {
  clock_.Advance(exchangeMicroseconds_);
  images_.Settle(clock_.Elapsed());
  log_.Asked(controller.Where(), request);
  if (controller.IsSilent(clock_.Elapsed())) {
    log_.Unanswered(controller.Where(), request, "lost", "in reset");
    return {};
  }
  // A request to a controller runs inside one to the BMC; what befalls its storage is its own.
  const StorageFault outer = std::exchange(images_.fault, {});
  const FaultEngine::Firing firing = faults_.Count(controller.Config(), request);
  for (const FaultRule* rule : firing.before) Disturb(controller, request, *rule);
  Delivery delivery = Answer(controller, request, firing.answer);
  images_.fault = outer;
  return delivery;
}

void Bmc::Disturb(Controller& controller, const Request& request, const FaultRule& rule) {
  log_.Event(rule.label);
  FaultScene scene{*this, controller, request, rule};
  try {
    rule.kind->effect(scene);
  } catch (const BoardError& error) {
    log_.Event(error.what());
  }
}

Response Bmc::Execute(Controller& controller, const Request& request) {
  Response response = ExecuteCommand(*this, controller, request);
  controller.lastAnswer = response;
  return response;
}

Delivery Bmc::Answer(Controller& controller, const Request& request, const FaultRule* rule) {
  using Fate = Delivery::Fate;
  if (rule == nullptr) return Answered(controller, Execute(controller, request), 1, {});
  FaultScene scene{*this, controller, request, *rule, controller.lastAnswer};
  scene.response = rule->executed ? Execute(controller, request) : EmptyResponse(request, code::kSuccess);
  rule->kind->effect(scene);
  if (scene.fate != Fate::Answered) {
    log_.Unanswered(controller.Where(), request, scene.fate == Fate::Refused ? "refused" : "lost",
                    rule->label);
    return {.fate = scene.fate, .answers = {}};
  }
  Delivery delivery = Answered(controller, std::move(scene.response), scene.copies, rule->label);
  if (scene.delay != 0) delivery.due = clock_.Elapsed() + scene.delay;
  return delivery;
}

Delivery Bmc::Answered(Controller& controller, Response response, std::size_t times,
                       std::string_view remark) {
  for (std::size_t i = 0; i < times; ++i) log_.Answered(controller.Where(), response, remark);
  Delivery delivery{.fate = Delivery::Fate::Answered, .answers = {}};
  delivery.answers.reserve(times);
  for (std::size_t i = 1; i < times; ++i) delivery.answers.push_back(response);
  delivery.answers.push_back(std::move(response));
  return delivery;
}

bool Bmc::HasChannel(std::uint8_t channel) const {
  if (channel == 0 || channel == 6) return true;
  return std::ranges::any_of(controllers_, [channel](const Controller& controller) {
    return !controller.IsBmc() && controller.Config().channel == channel;
  });
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
  if (!controller.IsBmc()) return;
  queue_.Clear();
  hasQueueInterrupt_ = false;
  sdrs_.DropPart();
}

}  // namespace varnok::sim
