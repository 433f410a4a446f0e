#include "firmware/host/kernel_ipmi.h"

#include <linux/ipmi.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace varnok::host {
namespace {

// IPMI v2.0, table 5-1 and appendix G.
constexpr std::uint8_t kApplication = 0x06;
constexpr std::uint8_t kGetMessage = 0x33;
constexpr std::uint8_t kSendMessage = 0x34;
constexpr std::uint8_t kQueueEmpty = 0x80;
constexpr std::uint8_t kRequestTooShort = 0xC7;

// The kernel sends a bridged request three times, then it answers C3h itself, after the five seconds that the
// caller allows. Left to its defaults it takes ten, and the caller repeats the whole of it.
constexpr int kBridgeRepeats = 2;
constexpr int kBridgeMilliseconds = 2'000;
// Longer than the kernel's own time-outs.
constexpr int kAnswerMilliseconds = 10'000;
constexpr std::size_t kLargestMessage = 272;

std::uint8_t Checksum(std::span<const std::uint8_t> bytes) {
  std::uint8_t sum = 0;
  for (std::uint8_t byte : bytes) sum = static_cast<std::uint8_t>(sum + byte);
  return static_cast<std::uint8_t>(0 - sum);
}

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
  if (netFunction == kApplication && command == kSendMessage) return SendBridged(lun, data);
  if (netFunction == kApplication && command == kGetMessage) return GetBridged(lun);
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
  for (;;) {
    pollfd input{descriptor_, POLLIN, 0};
    int ready = poll(&input, 1, kAnswerMilliseconds);
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) return false;
    std::array<std::uint8_t, kLargestMessage> bytes{};
    ipmi_addr address{};
    ipmi_recv received{};
    received.addr = reinterpret_cast<unsigned char*>(&address);
    received.addr_len = sizeof address;
    received.msg.data = bytes.data();
    received.msg.data_len = bytes.size();
    if (ioctl(descriptor_, IPMICTL_RECEIVE_MSG_TRUNC, &received) != 0 && errno != EMSGSIZE) return false;
    if (received.recv_type != IPMI_RESPONSE_RECV_TYPE || received.msgid != messageId_) continue;
    answer.netFunction = received.msg.netfn;
    answer.command = received.msg.cmd;
    std::size_t count = std::min<std::size_t>(received.msg.data_len, bytes.size());
    answer.bytes.assign(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
    return true;
  }
}

void KernelIpmi::AnswerLocally(std::uint8_t lun, std::uint8_t command, std::vector<std::uint8_t> bytes) {
  ready_ = Answer{kApplication + 1, lun, command, std::move(bytes)};
}

/// `frame`: channel, rsSA, netFn/rsLUN, checksum, rqSA, rqSeq/rqLUN, command, data, checksum (IPMI
/// v2.0, 22.7).
Status KernelIpmi::SendBridged(std::uint8_t lun, std::span<const std::uint8_t> frame) {
  constexpr std::size_t kHeader = 7;
  if (frame.size() < kHeader + 1) {
    AnswerLocally(lun, kSendMessage, {kRequestTooShort});
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
  AnswerLocally(lun, kSendMessage, {0});
  return kSuccess;
}

/// Get Message's answer: channel, netFn/rqLUN, checksum, rsSA, rqSeq/rsLUN, command, completion code, data,
/// checksum (IPMI v2.0, 22.6).
Status KernelIpmi::GetBridged(std::uint8_t lun) {
  Answer answer;
  if (!bridged_ || bridged_->messageId != messageId_ || !WaitForAnswer(answer)) {
    AnswerLocally(lun, kGetMessage, {kQueueEmpty});
    return kSuccess;
  }
  Bridged from = *std::exchange(bridged_, std::nullopt);
  auto head = static_cast<std::uint8_t>(answer.netFunction << 2 | from.requesterLun);
  std::array<std::uint8_t, 2> addressed{0x20, head};
  std::vector<std::uint8_t> bytes{0,
                                  from.channel,
                                  head,
                                  Checksum(addressed),
                                  from.responder,
                                  static_cast<std::uint8_t>(from.sequence << 2 | from.responderLun),
                                  answer.command};
  bytes.insert(bytes.end(), answer.bytes.begin(), answer.bytes.end());
  bytes.push_back(Checksum(std::span(bytes).subspan(4)));
  AnswerLocally(lun, kGetMessage, std::move(bytes));
  return kSuccess;
}

}  // namespace varnok::host
