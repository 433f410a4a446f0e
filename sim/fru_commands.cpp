// FRU inventory devices (IPMI v2.0, chapter 34).
#include <algorithm>

#include "firmware/bytes.h"
#include "sim/commands.h"

namespace varnok::sim {
namespace {

/// The unit of offsets and counts, in bytes.
std::size_t UnitOf(const FruDevice& fru) {
  return fru.wordAccess ? 2 : 1;
}

std::size_t OffsetOf(const CommandContext& context, const FruDevice& fru) {
  return WordAt(context.data, 1) * UnitOf(fru);
}

std::uint8_t GetFruInventoryAreaInfo(CommandContext& context) {
  const FruDevice* fru = context.self.FindFru(context.data[0]);
  if (fru == nullptr) return code::kNotPresent;
  const std::size_t size = fru->image->Size();
  context.answer = {static_cast<std::uint8_t>(size), static_cast<std::uint8_t>(size >> 8),
                    static_cast<std::uint8_t>(fru->wordAccess ? 1 : 0)};
  return code::kSuccess;
}

std::uint8_t ReadFruData(CommandContext& context) {
  const FruDevice* fru = context.self.FindFru(context.data[0]);
  if (fru == nullptr) return code::kNotPresent;
  const FruLimits& limits = context.self.Config().limits;
  const std::size_t offset = OffsetOf(context, *fru);
  const std::size_t asked = context.data[3] * UnitOf(*fru);
  // The count starts at 1; firmware that checks a limit tests both ends of the range at once.
  if (asked == 0) return limits.read == 0 ? code::kInvalidField : limits.readCode;
  if (limits.read != 0 && asked > limits.read) return limits.readCode;
  const auto content = fru->image->Content();
  if (offset >= content.size()) return code::kOutOfRange;
  const auto bytes = content.subspan(offset, std::min(asked, content.size() - offset));
  context.answer.push_back(static_cast<std::uint8_t>(bytes.size() / UnitOf(*fru)));
  context.answer.insert(context.answer.end(), bytes.begin(), bytes.end());
  return code::kSuccess;
}

std::uint8_t WriteFruData(CommandContext& context) {
  FruDevice* fru = context.self.FindFru(context.data[0]);
  if (fru == nullptr) return code::kNotPresent;
  const FruLimits& limits = context.self.Config().limits;
  const std::size_t offset = OffsetOf(context, *fru);
  const auto bytes = context.data.subspan(3);
  if (limits.write != 0 && bytes.size() > limits.write) return limits.writeCode;
  if (bytes.size() % UnitOf(*fru) != 0) return code::kLengthInvalid;
  if (offset >= fru->image->Size() || bytes.size() > fru->image->Size() - offset) return code::kOutOfRange;
  if (fru->readOnly) return code::kWriteProtected;
  fru->image->Write(offset, bytes);
  context.answer.push_back(static_cast<std::uint8_t>(bytes.size() / UnitOf(*fru)));
  return code::kSuccess;
}

constexpr CommandRow kFruRows[] = {
    {net_function::kStorage, ipmi_command::kGetFruAreaInfo, 1, 1, row_flag::kNone, GetFruInventoryAreaInfo},
    {net_function::kStorage, ipmi_command::kReadFruData, 4, 4, row_flag::kNone, ReadFruData},
    {net_function::kStorage, ipmi_command::kWriteFruData, 4, 0xFF, row_flag::kNone, WriteFruData},
};

}  // namespace

std::span<const CommandRow> FruCommands() {
  return kFruRows;
}

}  // namespace varnok::sim
