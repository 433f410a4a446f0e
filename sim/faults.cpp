#include "sim/faults.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "sim/board_config.h"
#include "sim/json_object.h"

namespace varnok::sim {
namespace {

enum class Where { Anywhere, Bmc, Satellite };

struct KindRow {
  std::string_view name;
  FaultKind kind;
  Where where;
  const char* valueKey;  ///< the number that the kind needs; null: none
  std::uint32_t lowest;
  bool choosesExecution;  ///< takes the key "executed"
  bool executed;          ///< its default
};

constexpr KindRow kKinds[] = {
    {"no-answer", FaultKind::NoAnswer, Where::Anywhere, nullptr, 0, true, true},
    {"send-failure", FaultKind::Refuse, Where::Bmc, nullptr, 0, false, false},
    {"nak", FaultKind::Refuse, Where::Satellite, nullptr, 0, false, false},
    {"completion-code", FaultKind::CompletionCode, Where::Anywhere, "code", 1, true, false},
    {"short", FaultKind::Short, Where::Anywhere, "bytes", 1, false, true},
    {"long", FaultKind::Long, Where::Anywhere, "bytes", 1, false, true},
    {"stale", FaultKind::Stale, Where::Anywhere, nullptr, 0, false, true},
    {"duplicate", FaultKind::Duplicate, Where::Anywhere, nullptr, 0, false, true},
    {"other-command", FaultKind::OtherCommand, Where::Anywhere, "answeredCommand", 0, false, true},
    {"cold-reset", FaultKind::ColdReset, Where::Anywhere, nullptr, 0, true, false},
    {"lost-reservation", FaultKind::LoseReservation, Where::Anywhere, nullptr, 0, false, true},
    {"flip", FaultKind::Flip, Where::Anywhere, nullptr, 0, false, true},
};

bool HappensBefore(FaultKind kind) {
  return kind == FaultKind::LoseReservation || kind == FaultKind::Flip;
}

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
  if (object.Has("nth") + object.Has("every") + (object.Has("from") || object.Has("to")) > 1) {
    object.Fail(object.Has("nth") ? "nth" : "every", "only one of nth, every and from/to can be given");
  }
  if (const auto nth = object.OptionalNumber("nth", 1, kMost)) rule.first = rule.last = *nth;
  if (const auto every = object.OptionalNumber("every", 1, kMost)) rule.first = rule.step = *every;
  rule.first = object.Number("from", rule.first, 1, kMost);
  rule.last = object.Number("to", rule.last, rule.first, rule.last);
}

const KindRow& ReadKind(JsonObject& object) {
  const std::string name = object.RequiredText("fault");
  const auto row =
      std::find_if(std::begin(kKinds), std::end(kKinds), [&](const KindRow& r) { return r.name == name; });
  if (row == std::end(kKinds)) object.Fail("fault", "\"" + name + "\" is not a fault");
  return *row;
}

void ReadFlip(JsonObject& object, FaultRule& rule) {
  rule.file = object.RequiredText("file");
  rule.offset = object.Number("offset", 0, 0, 0xFFFFFF);
  rule.mask = static_cast<std::uint8_t>(object.Number("mask", 1, 1, 0xFF));
}

}  // namespace

FaultRule ReadFaultRule(JsonObject& object) {
  FaultRule rule;
  ReadMatch(object, rule);
  ReadTime(object, rule);
  const KindRow& row = ReadKind(object);
  rule.kind = row.kind;
  rule.label = object.PathOf("");
  rule.label.back() = ' ';  // the path ends in a dot
  rule.label += row.name;
  const bool isBmc = rule.controller == kBmcAddress;
  if (row.where == Where::Bmc && !isBmc)
    object.Fail("fault", "only the BMC's own interface can fail to send");
  if (row.where == Where::Satellite && isBmc)
    object.Fail("fault", "needs the key controller: who does not acknowledge");
  if (row.valueKey != nullptr) {
    if (!object.Has(row.valueKey)) object.Fail(row.valueKey, "is missing");
    rule.value = static_cast<std::uint8_t>(object.Number(row.valueKey, 0, row.lowest, 0xFF));
  }
  rule.executed = row.choosesExecution ? object.Boolean("executed", row.executed) : row.executed;
  if (rule.kind == FaultKind::Flip) ReadFlip(object, rule);
  object.Finish();
  return rule;
}

FaultEngine::FaultEngine(std::vector<FaultRule> rules) : rules_(std::move(rules)), counts_(rules_.size()) {}

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
    if (HappensBefore(rule.kind)) {
      firing.before.push_back(&rule);
    } else if (firing.answer == nullptr) {
      firing.answer = &rule;
    }
  }
  return firing;
}

}  // namespace varnok::sim
