#include "sim/bridging.h"

#include <algorithm>
#include <utility>

#include "sim/bmc.h"
#include "sim/commands.h"

namespace varnok::sim {
namespace {

constexpr std::uint8_t kSystemSoftwareLun = 2;  // answers to it go to the receive message queue
constexpr std::size_t kFrameHeader = 6;         // rsSA, netFn/rsLUN, checksum, rqSA, rqSeq/rqLUN, command

bool ChecksumsHold(std::span<const std::uint8_t> frame) {
  return IpmiChecksum(frame.first(3)) == 0 && IpmiChecksum(frame.subspan(3)) == 0;
}

/// The answer's frame behind the requester's address, which its first checksum covers.
std::vector<std::uint8_t> AnswerFrame(std::span<const std::uint8_t> request, const Response& response) {
  const std::uint8_t requester = request[3];
  const std::uint8_t requesterLun = request[4] & 3;
  const auto netFunction = static_cast<std::uint8_t>(response.netFunction << 2 | requesterLun);
  const std::uint8_t head[] = {requester, netFunction};
  std::vector<std::uint8_t> frame = {netFunction, IpmiChecksum(head)};
  std::vector<std::uint8_t> body = {request[0], static_cast<std::uint8_t>((request[4] & 0xFC) | response.lun),
                                    response.command, response.completionCode};
  body.insert(body.end(), response.data.begin(), response.data.end());
  body.push_back(IpmiChecksum(body));
  frame.insert(frame.end(), body.begin(), body.end());
  return frame;
}

std::uint8_t SendMessage(CommandContext& context) {
  const std::uint8_t channel = context.data[0] & 0x0F;
  const auto frame = context.data.subspan(1);
  if (!context.bmc.HasChannel(channel)) return code::kInvalidField;
  Controller* target = context.bmc.FindController(channel, frame[0]);
  if (target == nullptr) return code::kNakOnWrite;
  // A controller drops a frame that arrived damaged, and answers that it did not ask for.
  if (!ChecksumsHold(frame)) {
    context.bmc.Log().Event("frame with a wrong checksum dropped");
    return code::kSuccess;
  }
  const auto netFunction = static_cast<std::uint8_t>(frame[1] >> 2);
  if ((netFunction & 1) != 0) return code::kSuccess;
  Request request{netFunction, static_cast<std::uint8_t>(frame[1] & 3), frame[5], {}};
  request.data.assign(frame.begin() + kFrameHeader, frame.end() - 1);
  const Delivery delivery = context.bmc.Deliver(*target, request);
  if (delivery.fate == Delivery::Fate::Refused) return code::kNakOnWrite;
  if ((frame[4] & 3) != kSystemSoftwareLun) return code::kSuccess;
  for (const Response& response : delivery.answers) {
    std::vector<std::uint8_t> message = AnswerFrame(frame, response);
    message.insert(message.begin(), channel);
    context.bmc.Queue().Push(std::move(message), delivery.due);
  }
  return code::kSuccess;
}

std::uint8_t GetMessage(CommandContext& context) {
  auto message = context.bmc.Queue().Pop();
  if (!message) return code::kQueueEmpty;
  context.answer = std::move(*message);
  return code::kSuccess;
}

/// By this an operating system learns through which channels it may bridge (IPMI v2.0, section 22.24).
std::uint8_t GetChannelInfo(CommandContext& context) {
  constexpr std::uint8_t kSystemInterface = 15;
  const std::uint8_t channel = context.data[0] & 15;
  // Medium and protocol: system interface and KCS, or IPMB and IPMB.
  const bool isInterface = channel == kSystemInterface;
  const std::uint8_t medium = isInterface ? 12 : 1;
  const std::uint8_t protocol = isInterface ? 5 : 1;
  if (!isInterface && !context.bmc.HasChannel(channel)) return code::kInvalidField;
  // Without sessions; IPMI's own enterprise number.
  context.answer = {channel, medium, protocol, 0, 0xF2, 0x1B, 0x00, 0, 0};
  return code::kSuccess;
}

constexpr CommandRow kBridgingRows[] = {
    {net_function::kApplication, ipmi_command::kGetMessage, 0, 0,
     row_flag::kBmcOnly | row_flag::kInTransferMode, GetMessage},
    {net_function::kApplication, ipmi_command::kSendMessage, 8, 0xFF, row_flag::kBmcOnly, SendMessage},
    {net_function::kApplication, ipmi_command::kGetChannelInfo, 1, 1, row_flag::kBmcOnly, GetChannelInfo},
};

}  // namespace

bool ReceiveQueue::IsEmpty() const {
  return std::none_of(messages_.begin(), messages_.end(),
                      [this](const Message& message) { return message.due <= clock_.Elapsed(); });
}

void ReceiveQueue::Push(std::vector<std::uint8_t> message, std::uint64_t due) {
  if (messages_.size() < kCapacity) messages_.push_back({std::move(message), due});
}

std::optional<std::vector<std::uint8_t>> ReceiveQueue::Pop() {
  const auto first = std::find_if(messages_.begin(), messages_.end(),
                                  [this](const Message& message) { return message.due <= clock_.Elapsed(); });
  if (first == messages_.end()) return std::nullopt;
  std::vector<std::uint8_t> bytes = std::move(first->bytes);
  messages_.erase(first);
  return bytes;
}

std::span<const CommandRow> BridgingCommands() {
  return kBridgingRows;
}

}  // namespace varnok::sim
