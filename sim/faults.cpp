#include "sim/faults.h"

#include <algorithm>
#include <utility>

#include "sim/board_config.h"
#include "sim/fault_kinds.h"
#include "sim/json_object.h"

namespace varnok::sim {
namespace {

std::optional<std::uint8_t> OptionalByte(JsonObject& object, const std::string& key, std::uint32_t high) {
  const auto number = object.OptionalNumber(key, 0, high);
  if (!number) return std::nullopt;
  return static_cast<std::uint8_t>(*number);
}

void ReadMatch(JsonObject& object, FaultRule& rule) {
  rule.controller = object.Byte("controller", kBmcAddress);
  rule.channel = OptionalByte(object, "channel", 11);
  rule.netFunction = OptionalByte(object, "netFunction", 0x3F);
  rule.command = OptionalByte(object, "command", 0xFF);
  rule.lun = OptionalByte(object, "lun", 3);
  rule.data = object.ByteArray("data");
}

void ReadTime(JsonObject& object, FaultRule& rule) {
  constexpr std::uint32_t kMost = 1'000'000;
  const bool hasNth = object.Has("nth"), hasEvery = object.Has("every"),
             hasRange = object.Has("from") || object.Has("to");
  if ((hasNth && hasEvery) || (hasNth && hasRange) || (hasEvery && hasRange)) {
    object.Fail(hasNth ? "nth" : "every", "only one of nth, every and from/to can be given");
  }
  if (const auto nth = object.OptionalNumber("nth", 1, kMost)) rule.first = rule.last = *nth;
  if (const auto every = object.OptionalNumber("every", 1, kMost)) rule.first = rule.step = *every;
  rule.first = object.Number("from", rule.first, 1, kMost);
  rule.last = object.Number("to", rule.last, rule.first, rule.last);
}

const FaultKind& ReadKind(JsonObject& object) {
  const std::string name = object.RequiredText("fault");
  const FaultKind* kind = FindFaultKind(name);
  if (kind == nullptr) object.Fail("fault", "\"" + name + "\" is not a fault");
  return *kind;
}

void CheckPlace(const JsonObject& object, FaultPlace place, bool isBmc) {
  if (place == FaultPlace::Bmc && !isBmc)
    object.Fail("fault", "only the BMC's own interface can fail to send");
  if (place == FaultPlace::Satellite && isBmc)
    object.Fail("fault", "needs the key controller: who does not acknowledge");
}

bool ReadExecution(JsonObject& object, FaultExecution execution) {
  const bool isDone = execution == FaultExecution::Always || execution == FaultExecution::UnlessDenied;
  const bool isChoice = execution == FaultExecution::UnlessDenied || execution == FaultExecution::IfAsked;
  return isChoice ? object.Boolean("executed", isDone) : isDone;
}

}  // namespace

FaultRule ReadFaultRule(JsonObject& object) {
  FaultRule rule;
  ReadMatch(object, rule);
  ReadTime(object, rule);
  rule.kind = &ReadKind(object);
  rule.label = object.PathOf("");
  rule.label.back() = ' ';  // the path ends in a dot
  rule.label += rule.kind->name;
  CheckPlace(object, rule.kind->place, rule.controller == kBmcAddress);
  for (const FaultKey& key : rule.kind->keys) {
    if (!key.fallback && !object.Has(key.name)) object.Fail(key.name, "is missing");
    rule.*key.value = object.OptionalNumber(key.name, key.low, key.high).value_or(key.fallback.value_or(0));
  }
  rule.executed = ReadExecution(object, rule.kind->execution);
  if (rule.kind->namesFile) rule.file = object.RequiredText("file");
  object.Finish();
  return rule;
}

FaultEngine::FaultEngine(std::vector<FaultRule> rules) {
  for (FaultRule& rule : rules) Add(std::move(rule));
}

std::size_t FaultEngine::Add(FaultRule rule) {
  rules_.push_back(std::move(rule));
  counts_.push_back(0);
  return rules_.size() - 1;
}

FaultEngine::Firing FaultEngine::Count(const ControllerConfig& controller, const Request& request) {
  const auto agrees = [](const std::optional<std::uint8_t>& wanted, std::uint8_t value) {
    return !wanted || *wanted == value;
  };
  Firing firing;
  for (std::size_t i = 0; i < rules_.size(); ++i) {
    const FaultRule& rule = rules_[i];
    if (rule.controller != controller.address || !agrees(rule.channel, controller.channel)) continue;
    if (!agrees(rule.netFunction, request.netFunction) || !agrees(rule.command, request.command)) continue;
    if (!agrees(rule.lun, request.lun) || request.data.size() < rule.data.size()) continue;
    if (!std::equal(rule.data.begin(), rule.data.end(), request.data.begin())) continue;
    const std::uint32_t number = ++counts_[i];
    if (number < rule.first || number > rule.last || (number - rule.first) % rule.step != 0) continue;
    if (rule.kind->phase == FaultPhase::Before) {
      firing.before.push_back(&rule);
    } else if (firing.answer == nullptr) {
      firing.answer = &rule;
    }
  }
  return firing;
}

}  // namespace varnok::sim
