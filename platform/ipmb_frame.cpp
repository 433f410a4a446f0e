#include "platform/ipmb_frame.h"

#include <algorithm>
#include <cstddef>
#include <span>

#include "firmware/ipmi.h"

namespace varnok {
namespace {

// The BMC's mailbox for messages to system software is requester LUN 2.
constexpr std::uint8_t kMailboxLun = 2;
// Send Message data around the request's own data: seven bytes before it and a checksum behind it.
constexpr std::size_t kFrameHeader = 7;
constexpr std::size_t kFrameOverhead = kFrameHeader + 1;
// Get Message data: channel, net function and LUN, checksum, address, sequence and LUN, command, completion
// code.
constexpr std::size_t kNetFunctionAt = 1;
constexpr std::size_t kAddressAt = 3;
constexpr std::size_t kSequenceAt = 4;
constexpr std::size_t kCommandAt = 5;
constexpr std::size_t kCompletionCodeAt = 6;
constexpr std::size_t kDataAt = 7;

}  // namespace

bool WrapInSendMessage(const IpmiMessage& request, std::uint8_t channel, std::uint8_t target,
                       std::uint8_t sequence, IpmiMessage& sendMessage) {
  std::size_t length = request.dataLength;
  if (length > IpmiMessage::kCapacity - kFrameOverhead) return false;
  sendMessage = {};
  sendMessage.targetAddress = kBmcAddress;
  sendMessage.netFunction = net_function::kApplication;
  sendMessage.command = ipmi_command::kSendMessage;
  sendMessage.dataLength = static_cast<std::uint32_t>(length + kFrameOverhead);
  std::span frame(sendMessage.data);
  frame[0] = channel;
  frame[1] = target;
  frame[2] = static_cast<std::uint8_t>(request.netFunction << 2 | request.lun);
  frame[3] = IpmiChecksum(frame.subspan(1, 2));
  frame[4] = kBmcAddress;
  frame[5] = static_cast<std::uint8_t>(sequence << 2 | kMailboxLun);
  frame[6] = request.command;
  std::copy_n(request.data.begin(), length, frame.begin() + kFrameHeader);
  frame[kFrameHeader + length] = IpmiChecksum(frame.subspan(4, 3 + length));
  return true;
}

IpmiMessage MakeGetMessage() {
  IpmiMessage getMessage;
  getMessage.targetAddress = kBmcAddress;
  getMessage.netFunction = net_function::kApplication;
  getMessage.command = ipmi_command::kGetMessage;
  return getMessage;
}

bool HoldsResponse(const IpmiMessage& getMessageAnswer) {
  return getMessageAnswer.dataLength >= kDataAt;
}

std::uint8_t BridgedSequence(const IpmiMessage& getMessageAnswer) {
  return getMessageAnswer.data[kSequenceAt] >> 2;
}

std::uint8_t BridgedCommand(const IpmiMessage& getMessageAnswer) {
  return getMessageAnswer.data[kCommandAt];
}

IpmiMessage UnwrapGetMessage(const IpmiMessage& getMessageAnswer) {
  const auto& bytes = getMessageAnswer.data;
  IpmiMessage response;
  response.targetAddress = bytes[kAddressAt];
  response.netFunction = bytes[kNetFunctionAt] >> 2;
  response.lun = bytes[kSequenceAt] & 3;
  response.command = bytes[kCommandAt];
  response.completionCode = bytes[kCompletionCodeAt];
  // A short answer has no data; its length must not wrap round.
  std::uint32_t length = std::min(getMessageAnswer.dataLength, IpmiMessage::kCapacity);
  response.dataLength = length > kFrameOverhead ? static_cast<std::uint32_t>(length - kFrameOverhead) : 0;
  std::copy_n(bytes.begin() + kDataAt, response.dataLength, response.data.begin());
  return response;
}

}  // namespace varnok
