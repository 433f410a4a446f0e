#include "boards/snapshot/exchange.h"

#include <algorithm>

#include "app/services/format.h"

namespace varnok::boards {
namespace {

constexpr int kLostLimit = 3;
constexpr int kBusyLimit = 50;
constexpr std::uint32_t kBusyRest = 100;  // milliseconds

bool IsBusy(std::uint8_t completionCode) {
  return completionCode == completion_code::kNodeBusy || completionCode == completion_code::kTimeout ||
         completionCode == completion_code::kDeviceBusy;
}

}  // namespace

std::string Outcome::Text() const {
  if (!reason.empty()) return reason;
  switch (kind) {
    case Kind::Done:
      return "done";
    case Kind::Refused:
      return Format("completion code %02Xh", completionCode);
    case Kind::Silent:
      return "no answer";
    case Kind::Differs:
      return "reads back as something else";
    case Kind::Unfit:
      break;
  }
  return "cannot be done";
}

Outcome Exchange(const Target& target, std::uint8_t netFunction, std::uint8_t command,
                 std::span<const std::uint8_t> data, IpmiMessage& response) {
  IpmiMessage request;
  request.targetAddress = target.controller;
  request.netFunction = netFunction;
  request.command = command;
  request.dataLength = static_cast<std::uint32_t>(std::min<std::size_t>(data.size(), IpmiMessage::kCapacity));
  std::copy_n(data.begin(), request.dataLength, request.data.begin());
  int lost = 0;
  int busy = 0;
  for (;;) {
    const IpmiResult result = IpmiTryOnce(request, target.channel, response);
    if (result == ipmi_result::kSuccess) return {};
    if (result != ipmi_result::kCompletionCode) {
      if (++lost == kLostLimit) return {Outcome::Kind::Silent};
      continue;
    }
    if (!IsBusy(response.completionCode) || ++busy == kBusyLimit)
      return {Outcome::Kind::Refused, response.completionCode};
    DelayMilliseconds(kBusyRest);
  }
}

}  // namespace varnok::boards
