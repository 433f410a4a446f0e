#include "rehearsal/disturbances.h"

#include <limits>
#include <stdexcept>

#include "app/services/format.h"
#include "firmware/ipmi.h"
#include "rehearsal/can_write.h"
#include "sim/fault_kinds.h"

namespace varnok::rehearsal {
namespace {

constexpr std::uint32_t kNever = std::numeric_limits<std::uint32_t>::max();

struct DisturbanceRow {
  const char* name;
  const char* kind;
  Scope scope = Scope::Any;
  bool executed = true;
  std::uint32_t value = 0;
  std::uint32_t times = 1;  ///< the request and those behind it
};

constexpr std::uint32_t kAWhile = 5;
/// A value that the request decides: a command that it is not.
constexpr std::uint32_t kAnotherCommand = 0xFFFFFFFE;

constexpr DisturbanceRow kDisturbances[] = {
    {"lost answer, done", "no-answer"},
    {"lost answer, not done", "no-answer", Scope::Any, false},
    {"request not taken", "send-failure", Scope::Bmc, false},
    {"request not acknowledged", "nak", Scope::Satellite, false},
    {"silent from here on", "no-answer", Scope::Any, false, 0, kNever},
    {"busy for a while (C0h)", "completion-code", Scope::Any, false, completion_code::kNodeBusy, kAWhile},
    {"busy for ever (C0h)", "completion-code", Scope::Any, false, completion_code::kNodeBusy, kNever},
    {"answer without its last byte", "short", Scope::Any, true, 1},
    {"answer without data", "short", Scope::Any, true, 0xFF},
    {"answer with a byte too many", "long", Scope::Any, true, 1},
    {"answer of the request before", "stale"},
    {"answer that comes twice", "duplicate"},
    {"answer of another command", "other-command", Scope::Any, true, kAnotherCommand},
    {"answer 2 s late", "late-answer", Scope::Any, true, 2},
    {"answer 30 s late", "late-answer", Scope::Any, true, 30},
    {"answer of FFh alone", "all-ff"},
    {"lost reservation", "lost-reservation", Scope::Repository},
    {"next record is the first again", "next-record", Scope::GetSdr, true, 0x0001},
    {"next record is not there", "next-record", Scope::GetSdr, true, 0xFFF0},
    {"record count 0", "record-count", Scope::RepositoryInfo, true, 0},
    {"record count too large", "record-count", Scope::RepositoryInfo, true, 0xFFFF},
    {"storage full", "full-storage", Scope::Write},
    {"write that arrives 0.5 s late", "late-write", Scope::Write, true, 500},
    {"write that never arrives", "late-write", Scope::Write, true, kNever},
    {"cold reset, done", "cold-reset"},
    {"cold reset, not done", "cold-reset", Scope::Any, false},
    {"power cut, done", "power-cut"},
    {"power cut, not done", "power-cut", Scope::Any, false},
};

Disturbance Make(const DisturbanceRow& row) {
  Disturbance made{.name = row.name, .scope = row.scope};
  made.rule.label = row.name;
  made.rule.kind = sim::FindFaultKind(row.kind);
  if (made.rule.kind == nullptr) throw std::logic_error(std::string(row.kind) + " is no kind of fault");
  made.rule.executed = row.executed;
  made.rule.value = row.value;
  made.rule.last = row.times;
  return made;
}

/// The rows, and the generic completion codes (IPMI v2.0, table 5-2), none of which says that the work was
/// done.
std::vector<Disturbance> MakeAll() {
  constexpr std::uint8_t kFirst = 0xC0, kLast = 0xD6, kUnspecified = 0xFF;
  std::vector<Disturbance> all;
  for (const DisturbanceRow& row : kDisturbances) all.push_back(Make(row));
  for (unsigned code = kFirst; code <= kLast + 1u; ++code) {
    const unsigned shown = code > kLast ? kUnspecified : code;
    const std::string name = Format("completion code %02Xh", shown);
    all.push_back(Make({name.c_str(), "completion-code", Scope::Any, false, shown}));
  }
  return all;
}

}  // namespace

std::span<const Disturbance> AllDisturbances() {
  static const std::vector<Disturbance> all = MakeAll();
  return all;
}

bool IsWithin(Scope scope, const sim::BusPlace& place, const sim::Request& request) {
  const bool isStorage = request.netFunction == net_function::kStorage;
  switch (scope) {
    case Scope::Any:
      return true;
    case Scope::Bmc:
      return place.isBmc;
    case Scope::Satellite:
      return !place.isBmc;
    case Scope::Write:
      return CanWrite(request.netFunction, request.command, request.data);
    case Scope::Repository:
      return isStorage && request.command >= ipmi_command::kGetSdrRepositoryInfo;
    case Scope::GetSdr:
      return isStorage && request.command == ipmi_command::kGetSdr;
    case Scope::RepositoryInfo:
      return isStorage && request.command == ipmi_command::kGetSdrRepositoryInfo;
  }
  return false;
}

sim::FaultRule RuleFor(const Disturbance& disturbance, const sim::BusPlace& place,
                       const sim::Request& request) {
  sim::FaultRule rule = disturbance.rule;
  rule.controller = place.address;
  rule.channel = place.channel;
  if (rule.value == kAnotherCommand) rule.value = request.command ^ 1u;
  return rule;
}

}  // namespace varnok::rehearsal
