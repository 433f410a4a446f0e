#include "firmware/host/kernel_ipmi.h"

#include <linux/ipmi.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "firmware/bytes.h"
#include "firmware/host/host_firmware.h"
#include "firmware/ipmi.h"

namespace varnok::host {
namespace {

// The kernel sends a bridged request three times, then it answers C3h itself, after the five seconds that the
// caller allows. Left to its defaults it takes ten, and the caller repeats the whole of it.
constexpr int kBridgeRepeats = 2;
constexpr int kBridgeMilliseconds = 2'000;
// Longer than the kernel's own time-outs.
constexpr int kAnswerMilliseconds = 10'000;
}  // namespace

KernelIpmi::~KernelIpmi() {
  close(descriptor_);
}

template <class Address>
bool KernelIpmi::Submit(Address address, std::uint8_t netFunction, std::uint8_t command,
                        std::span<const std::uint8_t> data) {
  ipmi_req_settime timed{};
  timed.retries = kBridgeRepeats;
  timed.retry_time_ms = kBridgeMilliseconds;
  ipmi_req& request = timed.req;
  request.addr = reinterpret_cast<unsigned char*>(&address);
  request.addr_len = sizeof address;
  request.msgid = ++messageId_;
  request.msg.netfn = netFunction;
  request.msg.cmd = command;
  request.msg.data = const_cast<unsigned char*>(data.data());
  request.msg.data_len = static_cast<unsigned short>(data.size());
  return ioctl(descriptor_, IPMICTL_SEND_COMMAND_SETTIME, &timed) == 0;
}

Status KernelIpmi::Send(std::uint8_t netFunction, std::uint8_t lun, std::uint8_t command,
                        std::span<const std::uint8_t> data) {
  ready_.reset();
  isWaiting_ = false;
  if (netFunction == net_function::kApplication && command == ipmi_command::kSendMessage)
    return SendBridged(lun, data);
  if (netFunction == net_function::kApplication && command == ipmi_command::kGetMessage)
    return GetBridged(lun);
  ipmi_system_interface_addr address{};
  address.addr_type = IPMI_SYSTEM_INTERFACE_ADDR_TYPE;
  address.channel = IPMI_BMC_CHANNEL;
  address.lun = lun;
  isWaiting_ = Submit(address, netFunction, command, data);
  waitingLun_ = lun;
  return isWaiting_ ? kSuccess : uefi_status::kDeviceError;
}

Status KernelIpmi::Receive(Answer& answer) {
  if (ready_) {
    answer = *std::exchange(ready_, std::nullopt);
    return kSuccess;
  }
  if (!isWaiting_) return uefi_status::kNotReady;
  isWaiting_ = false;
  if (!WaitForAnswer(answer)) return uefi_status::kTimeout;
  answer.lun = waitingLun_;
  return kSuccess;
}

/// The answer to the latest request; answers to earlier ones come too late for anybody and are dropped.
bool KernelIpmi::WaitForAnswer(Answer& answer) {
  FlushConsoleOutput();
  for (;;) {
    pollfd input{descriptor_, POLLIN, 0};
    int ready = poll(&input, 1, kAnswerMilliseconds);
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) return false;
    ipmi_addr address{};
    ipmi_recv received{};
    received.addr = reinterpret_cast<unsigned char*>(&address);
    received.addr_len = sizeof address;
    received.msg.data = answer.room.data();
    received.msg.data_len = static_cast<unsigned short>(answer.room.size());
    if (ioctl(descriptor_, IPMICTL_RECEIVE_MSG_TRUNC, &received) != 0 && errno != EMSGSIZE) return false;
    if (received.recv_type != IPMI_RESPONSE_RECV_TYPE || received.msgid != messageId_) continue;
    answer.netFunction = received.msg.netfn;
    answer.command = received.msg.cmd;
    answer.count = std::min<std::size_t>(received.msg.data_len, answer.room.size());
    return true;
  }
}

void KernelIpmi::AnswerLocally(std::uint8_t lun, std::uint8_t command, std::span<const std::uint8_t> bytes) {
  Answer answer;
  answer.netFunction = net_function::kApplication + 1;
  answer.lun = lun;
  answer.command = command;
  ByteWriter writer(answer.room);
  answer.count = writer.Bytes(bytes).Length();
  ready_ = answer;
}

void KernelIpmi::AnswerLocally(std::uint8_t lun, std::uint8_t command, std::uint8_t completionCode) {
  AnswerLocally(lun, command, {&completionCode, 1});
}

/// `frame`: channel, rsSA, netFn/rsLUN, checksum, rqSA, rqSeq/rqLUN, command, data, checksum (IPMI
/// v2.0, 22.7).
Status KernelIpmi::SendBridged(std::uint8_t lun, std::span<const std::uint8_t> frame) {
  constexpr std::size_t kHeader = 7;
  if (frame.size() < kHeader + 1 || frame.size() > frame_.size()) {
    AnswerLocally(lun, ipmi_command::kSendMessage, completion_code::kLengthInvalid);
    return kSuccess;
  }
  const bool isRepeated = std::ranges::equal(frame, std::span(frame_).first(frameLength_));
  if (isRepeated && isGivenUp_) {
    AnswerLocally(lun, ipmi_command::kSendMessage, completion_code::kNakOnWrite);
    return kSuccess;
  }
  ipmi_ipmb_addr address{};
  address.addr_type = IPMI_IPMB_ADDR_TYPE;
  address.channel = frame[0] & 0x0F;
  address.slave_addr = frame[1];
  address.lun = frame[2] & 3;
  auto data = frame.subspan(kHeader, frame.size() - kHeader - 1);
  if (!Submit(address, static_cast<std::uint8_t>(frame[2] >> 2), frame[6], data))
    return uefi_status::kDeviceError;
  bridged_ = Bridged{.messageId = messageId_,
                     .channel = static_cast<std::uint8_t>(frame[0] & 0x0F),
                     .responder = frame[1],
                     .requesterLun = static_cast<std::uint8_t>(frame[5] & 3),
                     .responderLun = static_cast<std::uint8_t>(frame[2] & 3),
                     .sequence = static_cast<std::uint8_t>(frame[5] >> 2)};
  std::ranges::copy(frame, frame_.begin());
  frameLength_ = frame.size();
  isGivenUp_ = false;
  AnswerLocally(lun, ipmi_command::kSendMessage, completion_code::kSuccess);
  return kSuccess;
}

/// Get Message's answer: channel, netFn/rqLUN, checksum, rsSA, rqSeq/rsLUN, command, completion code, data,
/// checksum (IPMI v2.0, 22.6).
Status KernelIpmi::GetBridged(std::uint8_t lun) {
  Answer answer;
  if (!bridged_ || bridged_->messageId != messageId_ || !WaitForAnswer(answer)) {
    AnswerLocally(lun, ipmi_command::kGetMessage, completion_code::kQueueEmpty);
    return kSuccess;
  }
  isGivenUp_ = answer.count == 1 && answer.room[0] == completion_code::kTimeout;
  Bridged from = *std::exchange(bridged_, std::nullopt);
  auto head = static_cast<std::uint8_t>(answer.netFunction << 2 | from.requesterLun);
  const std::array<std::uint8_t, 2> addressed{kBmcAddress, head};
  std::array<std::uint8_t, kLargestMessage> bytes;
  ByteWriter writer(bytes);
  writer.Byte(completion_code::kSuccess).Byte(from.channel).Byte(head).Byte(IpmiChecksum(addressed));
  writer.Byte(from.responder).Byte(static_cast<std::uint8_t>(from.sequence << 2 | from.responderLun));
  writer.Byte(answer.command).Bytes(answer.Bytes());
  writer.Byte(IpmiChecksum(std::span(bytes).first(writer.Length()).subspan(4)));
  AnswerLocally(lun, ipmi_command::kGetMessage, std::span(bytes).first(writer.Length()));
  return kSuccess;
}

}  // namespace varnok::host
