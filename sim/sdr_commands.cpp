// The SDR repository's commands (IPMI v2.0, chapter 33).
#include <algorithm>

#include "firmware/bytes.h"
#include "sim/bmc.h"
#include "sim/commands.h"

namespace varnok::sim {
namespace {

constexpr std::uint8_t kStorage = net_function::kStorage;
// Non-modal update, delete, partial add, reserve and allocation info.
constexpr std::uint8_t kSupport = 0x2F;
constexpr std::uint8_t kOverflow = 0x80;

void AppendWord(CommandContext& context, std::size_t value) {
  context.answer.push_back(static_cast<std::uint8_t>(value));
  context.answer.push_back(static_cast<std::uint8_t>(value >> 8));
}

void AppendLong(CommandContext& context, std::uint32_t value) {
  AppendWord(context, value & 0xFFFF);
  AppendWord(context, value >> 16);
}

/// A size in 16 bits, FFFEh for all that is more.
std::size_t Capped(std::size_t size) {
  return std::min<std::size_t>(size, 0xFFFE);
}

/// Runs a handler on a repository that is there and not being erased.
template <std::uint8_t (*Handler)(CommandContext&, SdrRepository&)>
std::uint8_t WhenReady(CommandContext& context) {
  SdrRepository& repository = context.bmc.Sdrs();
  if (!repository.IsPresent()) return code::kInvalidCommand;
  if (repository.IsErasing()) return code::kNodeBusy;
  return Handler(context, repository);
}

std::uint8_t GetInfo(CommandContext& context) {
  const SdrRepository& repository = context.bmc.Sdrs();
  if (!repository.IsPresent()) return code::kInvalidCommand;
  context.answer = {kSdrVersion};
  AppendWord(context, Capped(repository.Count()));
  AppendWord(context, Capped(repository.FreeBytes()));
  AppendLong(context, repository.LastAddition());
  AppendLong(context, repository.LastErase());
  context.answer.push_back(
      static_cast<std::uint8_t>(kSupport | (repository.FreeBytes() == 0 ? kOverflow : 0)));
  return code::kSuccess;
}

std::uint8_t GetAllocationInfo(CommandContext& context, SdrRepository& repository) {
  constexpr std::size_t kUnit = 1;
  AppendWord(context, Capped(repository.Config().capacity));
  AppendWord(context, kUnit);
  AppendWord(context, Capped(repository.FreeBytes()));
  AppendWord(context, Capped(repository.FreeBytes()));
  context.answer.push_back(static_cast<std::uint8_t>(std::min<std::size_t>(repository.FreeBytes(), 255)));
  return code::kSuccess;
}

std::uint8_t Reserve(CommandContext& context) {
  if (!context.bmc.Sdrs().IsPresent()) return code::kInvalidCommand;
  AppendWord(context, context.self.sdrReservation.Take());
  return code::kSuccess;
}

std::uint8_t GetRecord(CommandContext& context, SdrRepository& repository) {
  const std::uint16_t reservation = WordAt(context.data, 0);
  const std::size_t offset = context.data[4];
  const std::size_t asked = context.data[5];
  // A whole record may be read without a reservation, 0000h.
  const bool isNeeded = offset != 0 || reservation != 0;
  if (isNeeded && !context.self.sdrReservation.Holds(reservation)) return code::kReservationLost;
  std::uint16_t nextId = 0;
  const auto record = repository.Find(WordAt(context.data, 2), nextId);
  if (!record) return code::kNotPresent;
  if (offset >= record->size()) return code::kOutOfRange;
  constexpr std::size_t kWholeRecord = 0xFF;
  const std::size_t rest = record->size() - offset;
  const std::size_t count = asked == kWholeRecord ? rest : asked;
  if (count > repository.Config().readLimit) return code::kCannotReturnLength;
  AppendWord(context, nextId);
  const auto bytes = record->subspan(offset, std::min(count, rest));
  context.answer.insert(context.answer.end(), bytes.begin(), bytes.end());
  return code::kSuccess;
}

std::uint8_t Add(CommandContext& context, SdrRepository& repository) {
  std::uint16_t recordId = 0;
  const std::uint8_t result = repository.Add({context.data.begin(), context.data.end()}, recordId);
  if (result != code::kSuccess) return result;
  context.self.sdrReservation.Cancel();
  AppendWord(context, recordId);
  return code::kSuccess;
}

std::uint8_t PartialAdd(CommandContext& context, SdrRepository& repository) {
  constexpr std::size_t kPrefix = 6;
  constexpr std::uint8_t kProgressBits = 0x0F;
  if (!context.self.sdrReservation.Holds(WordAt(context.data, 0))) return code::kReservationLost;
  const std::uint8_t progress = context.data[5] & kProgressBits;
  if (progress > 1) return code::kInvalidField;
  std::uint16_t recordId = WordAt(context.data, 2);
  const std::uint8_t result =
      repository.AddPart(recordId, context.data[4], progress == 1, context.data.subspan(kPrefix));
  if (result != code::kSuccess) return result;
  if (progress == 1) context.self.sdrReservation.Cancel();
  AppendWord(context, recordId);
  return code::kSuccess;
}

std::uint8_t Delete(CommandContext& context, SdrRepository& repository) {
  if (!context.self.sdrReservation.Holds(WordAt(context.data, 0))) return code::kReservationLost;
  const std::uint16_t recordId = WordAt(context.data, 2);
  const std::uint8_t result = repository.Delete(recordId);
  if (result != code::kSuccess) return result;
  context.self.sdrReservation.Cancel();
  AppendWord(context, recordId);
  return code::kSuccess;
}

std::uint8_t Clear(CommandContext& context) {
  constexpr std::uint8_t kStartErase = 0xAA;
  constexpr std::uint8_t kGetState = 0x00;
  constexpr std::uint8_t kCompleted = 1;
  constexpr std::uint8_t kInProgress = 0;
  SdrRepository& repository = context.bmc.Sdrs();
  if (!repository.IsPresent()) return code::kInvalidCommand;
  if (!context.self.sdrReservation.Holds(WordAt(context.data, 0))) return code::kReservationLost;
  constexpr std::uint8_t kSignature[] = {'C', 'L', 'R'};
  const std::uint8_t what = context.data[5];
  if (!std::equal(std::begin(kSignature), std::end(kSignature), context.data.begin() + 2) ||
      (what != kStartErase && what != kGetState)) {
    return code::kInvalidField;
  }
  // The reservation outlives the erase, so that its state can be asked for.
  if (what == kStartErase) repository.StartErase();
  context.answer = {repository.IsErasing() ? kInProgress : kCompleted};
  return code::kSuccess;
}

std::uint8_t GetTime(CommandContext& context, SdrRepository& repository) {
  AppendLong(context, repository.Time());
  return code::kSuccess;
}

std::uint8_t SetTime(CommandContext& context, SdrRepository& repository) {
  repository.SetTime(DwordAt(context.data, 0));
  return code::kSuccess;
}

constexpr std::uint8_t kAnyLength = 0xFF;

constexpr CommandRow kSdrRows[] = {
    {kStorage, ipmi_command::kGetSdrRepositoryInfo, 0, 0, row_flag::kBmcOnly, GetInfo},
    {kStorage, ipmi_command::kGetSdrAllocationInfo, 0, 0, row_flag::kBmcOnly, WhenReady<GetAllocationInfo>},
    {kStorage, ipmi_command::kReserveSdrRepository, 0, 0, row_flag::kBmcOnly, Reserve},
    {kStorage, ipmi_command::kGetSdr, 6, 6, row_flag::kBmcOnly, WhenReady<GetRecord>},
    {kStorage, ipmi_command::kAddSdr, 5, kAnyLength, row_flag::kBmcOnly, WhenReady<Add>},
    {kStorage, ipmi_command::kPartialAddSdr, 7, kAnyLength, row_flag::kBmcOnly, WhenReady<PartialAdd>},
    {kStorage, ipmi_command::kDeleteSdr, 4, 4, row_flag::kBmcOnly, WhenReady<Delete>},
    {kStorage, ipmi_command::kClearSdrRepository, 6, 6, row_flag::kBmcOnly, Clear},
    {kStorage, 0x28, 0, 0, row_flag::kBmcOnly, WhenReady<GetTime>},
    {kStorage, 0x29, 4, 4, row_flag::kBmcOnly, WhenReady<SetTime>},
};

}  // namespace

std::span<const CommandRow> SdrCommands() {
  return kSdrRows;
}

}  // namespace varnok::sim
