#include "sim/protocol_adapter.h"

#include <algorithm>

#include "firmware/host/reserve.h"

namespace varnok::sim {
namespace {

constexpr std::uint32_t kLargestRequest = 255;
/// What a receive without an answer takes, in microseconds.
constexpr std::uint64_t kReceiveTimeout = 5000;

}  // namespace

ProtocolAdapter::ProtocolAdapter(Bmc& bmc) : bmc_(bmc) {
  protocol_.revision = kIpmiProtocolRevision;
  protocol_.Send = &ProtocolAdapter::Send;
  protocol_.Receive = &ProtocolAdapter::Receive;
  protocol_.owner = this;
}

Status ProtocolAdapter::Send(IpmiProtocol* self, std::uint8_t netFunction, std::uint8_t lun,
                             std::uint8_t command, const std::uint8_t* data,
                             std::uint32_t dataLength) noexcept {
  if (dataLength > kLargestRequest || (data == nullptr && dataLength != 0) || netFunction > 0x3F || lun > 3) {
    return uefi_status::kInvalidParameter;
  }
  const host::MachineAtWork atWork;
  try {
    Request request{netFunction, lun, command, {}};
    if (dataLength != 0) request.data.assign(data, data + dataLength);
    return static_cast<Interface*>(self)->owner->SendRequest(request);
  } catch (...) {
    return uefi_status::kOutOfResources;
  }
}

Status ProtocolAdapter::SendRequest(const Request& request) {
  // A new request ends the wait for answers that nobody fetched, but for those that are still to come.
  const std::uint64_t now = bmc_.Clock().Elapsed();
  std::erase_if(waiting_,
                [now](const Waiting& waiting) { return !waiting.staysForNextSend && waiting.due <= now; });
  for (Waiting& waiting : waiting_) waiting.staysForNextSend = false;
  Delivery delivery = bmc_.Process(request);
  if (delivery.fate == Delivery::Fate::Refused) return uefi_status::kDeviceError;
  bool duplicate = false;
  for (Response& response : delivery.answers) {
    waiting_.push_back({std::move(response), duplicate, delivery.due});
    duplicate = true;
  }
  return kSuccess;
}

Status ProtocolAdapter::Receive(IpmiProtocol* self, std::uint8_t* netFunction, std::uint8_t* lun,
                                std::uint8_t* command, std::uint8_t* completionCode, std::uint8_t* data,
                                std::uint32_t* dataLength) noexcept {
  const host::MachineAtWork atWork;
  ProtocolAdapter& adapter = *static_cast<Interface*>(self)->owner;
  const std::uint64_t now = adapter.bmc_.Clock().Elapsed();
  const auto first = std::find_if(adapter.waiting_.begin(), adapter.waiting_.end(),
                                  [now](const Waiting& waiting) { return waiting.due <= now; });
  if (first == adapter.waiting_.end()) {
    adapter.bmc_.Clock().Advance(kReceiveTimeout);
    return uefi_status::kTimeout;
  }
  // The answer leaves the queue even when it does not fit: the program asks again, not the board.
  const Response response = std::move(first->response);
  adapter.waiting_.erase(first);
  const std::uint32_t room = *dataLength;
  *dataLength = static_cast<std::uint32_t>(response.data.size());
  if (response.data.size() > room) return uefi_status::kBufferTooSmall;
  *netFunction = response.netFunction;
  *lun = response.lun;
  *command = response.command;
  *completionCode = response.completionCode;
  std::copy(response.data.begin(), response.data.end(), data);
  return kSuccess;
}

}  // namespace varnok::sim
