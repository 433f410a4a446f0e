#include "sim/bmc.h"

#include <algorithm>

#include "sim/commands.h"
#include "sim/error.h"

namespace varnok::sim {
namespace {

constexpr std::uint8_t kPadding = 0xA5;  // what a long answer is made longer with

void CheckFault(const FaultRule& rule, ImageStore& images) {
  if (rule.kind != FaultKind::Flip) return;
  const Image* image = images.Find(rule.file);
  if (image == nullptr) throw BoardError(rule.label + ": no device stores in \"" + rule.file + "\"");
  if (rule.offset >= image->Size())
    throw BoardError(rule.label + ": the offset is past the end of " + rule.file);
}

/// An answer of the request with nothing behind the completion code.
Response EmptyResponse(const Request& request, std::uint8_t completionCode) {
  return {
      static_cast<std::uint8_t>(request.netFunction + 1), request.lun, request.command, completionCode, {}};
}

bool LosesAnswer(FaultKind kind) {
  return kind == FaultKind::NoAnswer || kind == FaultKind::Refuse || kind == FaultKind::ColdReset;
}

/// The faults that change an answer's own bytes.
void Distort(Response& response, const FaultRule& rule) {
  Bytes& data = response.data;
  if (rule.kind == FaultKind::Short)
    data.resize(data.size() - std::min<std::size_t>(rule.value, data.size()));
  if (rule.kind == FaultKind::Long) data.insert(data.end(), rule.value, kPadding);
  if (rule.kind == FaultKind::OtherCommand) response.command = rule.value;
}

}  // namespace

Bmc::Bmc(const BoardConfig& config, ImageStore& images, VirtualClock& clock)
    : images_(images),
      clock_(clock),
      faults_(config.faults),
      log_(clock),
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
    return {.refused = true, .answers = {}};
  }
}

Delivery Bmc::Deliver(Controller& controller, const Request& request) {
  clock_.Advance(exchangeMicroseconds_);
  log_.Asked(controller, request);
  if (controller.IsSilent(clock_.Elapsed())) {
    log_.Unanswered(controller, request, "lost", "in reset");
    return {};
  }
  const FaultEngine::Firing firing = faults_.Count(controller.Config(), request);
  for (const FaultRule* rule : firing.before) Disturb(controller, *rule);
  return Answer(controller, request, firing.answer);
}

void Bmc::Disturb(Controller& controller, const FaultRule& rule) {
  log_.Event(rule.label);
  if (rule.kind == FaultKind::LoseReservation) controller.sdrReservation.Cancel();
  if (rule.kind != FaultKind::Flip) return;
  Image& image = *images_.Find(rule.file);
  if (rule.offset >= image.Size()) return;  // it has shrunk since
  const auto flipped = static_cast<std::uint8_t>(image.Content()[rule.offset] ^ rule.mask);
  try {
    image.Write(rule.offset, {&flipped, 1});
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
  if (rule == nullptr) return Answered(controller, Execute(controller, request), 1, {});
  const std::optional<Response> previous = controller.lastAnswer;
  Response response = rule->executed ? Execute(controller, request) : EmptyResponse(request, 0);
  if (rule->kind == FaultKind::CompletionCode) {
    response = EmptyResponse(request, rule->value);
    controller.lastAnswer = response;
  }
  if (rule->kind == FaultKind::ColdReset) Reset(controller);
  if (LosesAnswer(rule->kind) || (rule->kind == FaultKind::Stale && !previous)) {
    const bool refused = rule->kind == FaultKind::Refuse;
    log_.Unanswered(controller, request, refused ? "refused" : "lost", rule->label);
    return {.refused = refused, .answers = {}};
  }
  if (rule->kind == FaultKind::Stale) response = *previous;
  Distort(response, *rule);
  return Answered(controller, response, rule->kind == FaultKind::Duplicate ? 2 : 1, rule->label);
}

Delivery Bmc::Answered(Controller& controller, const Response& response, std::size_t times,
                       std::string_view remark) {
  for (std::size_t i = 0; i < times; ++i) log_.Answered(controller, response, remark);
  return {.refused = false, .answers = std::vector<Response>(times, response)};
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
  if (!controller.IsBmc()) return;
  queue_.Clear();
  sdrs_.DropPart();
}

}  // namespace varnok::sim
