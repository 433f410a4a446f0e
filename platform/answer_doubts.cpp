#include "platform/answer_doubts.h"

#include <algorithm>
#include <array>
#include <span>

#include "app/services/console.h"
#include "firmware/lasting.h"

namespace varnok {
namespace {

constexpr std::size_t kDoubts = 4;
/// Fewer bytes than this are the same by chance.
constexpr std::size_t kTelling = 3;

struct Doubts {
  std::array<std::uint32_t, kDoubts> counts{};
  bool isSilenceExpected = false;
  std::uint64_t device = 0;
  std::uint32_t place = 0;
  IpmiMessage answer{};  ///< to what was asked last
};

Doubts& TheDoubts() {
  return Lasting<Doubts>();
}

std::span<const std::uint8_t> DataOf(const IpmiMessage& answer) {
  return std::span(answer.data).first(std::min<std::size_t>(answer.dataLength, answer.data.size()));
}

bool IsFilled(std::span<const std::uint8_t> bytes, std::uint8_t byte) {
  return std::all_of(bytes.begin(), bytes.end(), [byte](std::uint8_t each) { return each == byte; });
}

}  // namespace

void NoteDoubt(AnswerDoubt doubt) {
  Doubts& doubts = TheDoubts();
  if (!doubts.isSilenceExpected) ++doubts.counts[static_cast<std::size_t>(doubt)];
}

void WatchForRepeat(std::uint64_t device, std::uint32_t place, const IpmiMessage& answer, std::size_t head) {
  Doubts& last = TheDoubts();
  const auto bytes = DataOf(answer), before = DataOf(last.answer);
  const auto content = bytes.subspan(std::min(head, bytes.size()));
  if (device == last.device && place != last.place && content.size() >= kTelling &&
      !IsFilled(content, content[0]) && std::equal(bytes.begin(), bytes.end(), before.begin(), before.end()))
    NoteDoubt(AnswerDoubt::Repeated);
  last.device = device;
  last.place = place;
  last.answer = answer;
}

void WatchForErased(const IpmiMessage& answer) {
  constexpr std::uint8_t kErased = 0xFF;
  const auto bytes = DataOf(answer);
  if (bytes.size() >= kTelling && IsFilled(bytes, kErased)) NoteDoubt(AnswerDoubt::Useless);
}

ExpectedSilence::ExpectedSilence() {
  TheDoubts().isSilenceExpected = true;
}

ExpectedSilence::~ExpectedSilence() {
  TheDoubts().isSilenceExpected = false;
}

void WarnOfDoubts() {
  const auto& counts = TheDoubts().counts;
  if (std::all_of(counts.begin(), counts.end(), [](std::uint32_t count) { return count == 0; })) return;
  Warn(
      "answers of the BMC were missing (%u), to other requests (%u), repeated (%u) or of no use (%u): what was "
      "read may be wrong; look again",
      counts[0], counts[1], counts[2], counts[3]);
}

}  // namespace varnok
