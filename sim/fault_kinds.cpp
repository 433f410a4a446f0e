#include "sim/fault_kinds.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "firmware/bytes.h"
#include "firmware/host/keyboard.h"
#include "sim/bmc.h"

namespace varnok::sim {
namespace {

using Fate = Delivery::Fate;
using Phase = FaultPhase;
using Place = FaultPlace;
using Execution = FaultExecution;

constexpr std::uint8_t kPadding = 0xA5;  // what a long answer is made longer with
constexpr std::uint32_t kNever = std::numeric_limits<std::uint32_t>::max();

// --- before the request is looked at ---

void LoseReservation(FaultScene& scene) {
  scene.controller.sdrReservation.Cancel();
}

void Flip(FaultScene& scene) {
  const FaultRule& rule = scene.rule;
  Image& image = *scene.bmc.Images().Find(rule.file);
  if (rule.offset >= image.Size()) return;  // it has shrunk since
  const auto flipped = static_cast<std::uint8_t>(image.Content()[rule.offset] ^ rule.value);
  image.Write(rule.offset, {&flipped, 1});
}

void DelayWrites(FaultScene& scene) {
  StorageFault& storage = scene.bmc.Images().fault;
  storage.until = scene.rule.value == kNever
                      ? StorageFault::kNever
                      : scene.bmc.Clock().Elapsed() + std::uint64_t{scene.rule.value} * 1000;
}

void FillStorage(FaultScene& scene) {
  scene.bmc.Images().fault.room = scene.rule.value;
}

// --- what becomes of the answer ---

void LoseAnswer(FaultScene& scene) {
  scene.fate = Fate::Lost;
}

void Refuse(FaultScene& scene) {
  scene.fate = Fate::Refused;
}

void AnswerCode(FaultScene& scene) {
  scene.response = EmptyResponse(scene.request, static_cast<std::uint8_t>(scene.rule.value));
  scene.controller.lastAnswer = scene.response;
}

void Shorten(FaultScene& scene) {
  Bytes& data = scene.response.data;
  data.resize(data.size() - std::min<std::size_t>(scene.rule.value, data.size()));
}

void Lengthen(FaultScene& scene) {
  scene.response.data.insert(scene.response.data.end(), scene.rule.value, kPadding);
}

void AnswerPrevious(FaultScene& scene) {
  if (scene.previous)
    scene.response = *scene.previous;
  else
    scene.fate = Fate::Lost;
}

void Duplicate(FaultScene& scene) {
  scene.copies = 2;
}

void AnswerOtherCommand(FaultScene& scene) {
  scene.response.command = static_cast<std::uint8_t>(scene.rule.value);
}

void ColdReset(FaultScene& scene) {
  scene.bmc.Reset(scene.controller);
  scene.fate = Fate::Lost;
}

void AnswerLate(FaultScene& scene) {
  scene.delay = std::uint64_t{scene.rule.value} * 1'000'000;
}

void AnswerErased(FaultScene& scene) {
  Bytes& data = scene.response.data;
  std::fill(data.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(scene.rule.value, data.size())),
            data.end(), 0xFF);
}

/// Puts a word into the answer of one storage command; another's stays.
template <std::uint8_t command, std::size_t offset>
void AnswerWord(FaultScene& scene) {
  Bytes& data = scene.response.data;
  if (scene.request.netFunction != net_function::kStorage || scene.request.command != command ||
      data.size() < offset + 2)
    return;
  ByteWriter(std::span(data).subspan(offset)).Word(static_cast<std::uint16_t>(scene.rule.value));
}

void CutPower(FaultScene& scene) {
  scene.bmc.Log().PowerCut(scene.rule.label);
  host::EndAtOnce(kPowerCutStatus);
}

constexpr FaultKey kCode[] = {{"code", &FaultRule::value, 1, 0xFF}};
constexpr FaultKey kBytes[] = {{"bytes", &FaultRule::value, 1, 0xFF}};
constexpr FaultKey kCommand[] = {{"answeredCommand", &FaultRule::value, 0, 0xFF}};
constexpr FaultKey kFlip[] = {{"offset", &FaultRule::offset, 0, 0xFFFFFF, 0},
                              {"mask", &FaultRule::value, 1, 0xFF, 1}};
constexpr FaultKey kMilliseconds[] = {{"milliseconds", &FaultRule::value, 1, 3'600'000, kNever}};
constexpr FaultKey kSeconds[] = {{"seconds", &FaultRule::value, 1, 3600}};
constexpr FaultKey kRoom[] = {{"room", &FaultRule::value, 0, 0xFFFF, 0}};
constexpr FaultKey kKeep[] = {{"keep", &FaultRule::value, 0, 0xFF, 0}};
constexpr FaultKey kRecord[] = {{"record", &FaultRule::value, 0, 0xFFFF}};
constexpr FaultKey kRecords[] = {{"records", &FaultRule::value, 0, 0xFFFF}};

constexpr FaultKind kKinds[] = {
    {"no-answer", Phase::Answer, Place::Anywhere, Execution::UnlessDenied, false, {}, LoseAnswer},
    {"send-failure", Phase::Answer, Place::Bmc, Execution::Never, false, {}, Refuse},
    {"nak", Phase::Answer, Place::Satellite, Execution::Never, false, {}, Refuse},
    {"completion-code", Phase::Answer, Place::Anywhere, Execution::IfAsked, false, kCode, AnswerCode},
    {"short", Phase::Answer, Place::Anywhere, Execution::Always, false, kBytes, Shorten},
    {"long", Phase::Answer, Place::Anywhere, Execution::Always, false, kBytes, Lengthen},
    {"stale", Phase::Answer, Place::Anywhere, Execution::Always, false, {}, AnswerPrevious},
    {"duplicate", Phase::Answer, Place::Anywhere, Execution::Always, false, {}, Duplicate},
    {"other-command", Phase::Answer, Place::Anywhere, Execution::Always, false, kCommand, AnswerOtherCommand},
    {"cold-reset", Phase::Answer, Place::Anywhere, Execution::IfAsked, false, {}, ColdReset},
    {"lost-reservation", Phase::Before, Place::Anywhere, Execution::Always, false, {}, LoseReservation},
    {"flip", Phase::Before, Place::Anywhere, Execution::Always, true, kFlip, Flip},
    {"late-write", Phase::Before, Place::Anywhere, Execution::Always, false, kMilliseconds, DelayWrites},
    {"full-storage", Phase::Before, Place::Anywhere, Execution::Always, false, kRoom, FillStorage},
    {"late-answer", Phase::Answer, Place::Anywhere, Execution::UnlessDenied, false, kSeconds, AnswerLate},
    {"all-ff", Phase::Answer, Place::Anywhere, Execution::Always, false, kKeep, AnswerErased},
    {"next-record", Phase::Answer, Place::Anywhere, Execution::Always, false, kRecord,
     AnswerWord<ipmi_command::kGetSdr, 0>},
    {"record-count", Phase::Answer, Place::Anywhere, Execution::Always, false, kRecords,
     AnswerWord<ipmi_command::kGetSdrRepositoryInfo, 1>},
    {"power-cut", Phase::Answer, Place::Anywhere, Execution::UnlessDenied, false, {}, CutPower},
};

}  // namespace

const FaultKind* FindFaultKind(std::string_view name) {
  const auto* const kind = std::find_if(std::begin(kKinds), std::end(kKinds),
                                        [name](const FaultKind& row) { return row.name == name; });
  return kind == std::end(kKinds) ? nullptr : kind;
}

}  // namespace varnok::sim
