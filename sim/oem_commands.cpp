// The maker's own requests: net function 30h (fans, board, processors) by rows of request and answer, and net
// function 32h, which gives the value of a key.
#include <algorithm>

#include "sim/commands.h"

namespace varnok::sim {
namespace {

constexpr std::uint8_t kOem = 0x30;
constexpr std::uint8_t kOemKeyValue = 0x32;

template <std::uint8_t command>
std::uint8_t Answer(CommandContext& context) {
  for (const OemConfig& row : context.self.Config().answers.oem) {
    if (row.command != command || row.data.size() > context.data.size() ||
        !std::equal(row.data.begin(), row.data.end(), context.data.begin()))
      continue;
    context.answer = row.answer;
    return row.completionCode;
  }
  return code::kInvalidField;
}

std::uint8_t GetKeyValue(CommandContext& context) {
  for (const KeyValueConfig& row : context.self.Config().answers.keyValues) {
    const bool same =
        std::equal(row.key.begin(), row.key.end(), context.data.begin(), context.data.end(),
                   [](char wanted, std::uint8_t byte) { return static_cast<std::uint8_t>(wanted) == byte; });
    if (!same) continue;
    context.answer.assign(row.value.begin(), row.value.end());
    return code::kSuccess;
  }
  return code::kNotPresent;
}

constexpr CommandRow kOemRows[] = {
    {kOem, 0x14, 3, 3, row_flag::kBmcOnly, Answer<0x14>},
    {kOem, 0x93, 0, 0, row_flag::kBmcOnly, Answer<0x93>},
    {kOem, 0x94, 0, 0, row_flag::kBmcOnly, Answer<0x94>},
    {kOem, 0x97, 1, 1, row_flag::kBmcOnly, Answer<0x97>},
    {kOemKeyValue, 0x10, 1, 0xFF, row_flag::kBmcOnly, GetKeyValue},
};

}  // namespace

std::span<const CommandRow> OemCommands() {
  return kOemRows;
}

}  // namespace varnok::sim
