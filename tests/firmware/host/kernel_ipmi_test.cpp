// What the kernel's IPMI device may hand out, through an ioctl of our own.
#include "firmware/host/kernel_ipmi.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <linux/ipmi.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <deque>

#include "firmware/host/linux_machine.h"

namespace varnok::host {
namespace {

using ::testing::ElementsAre;

struct Message {
  int type;
  long age;  ///< in requests
  std::vector<std::uint8_t> bytes;
};

ipmi_req_settime sent;
std::deque<Message> queue;
bool isTakenAway = false;

int HandOut(ipmi_recv& received) {
  Message message = queue.front();
  queue.pop_front();
  received.recv_type = message.type;
  received.msgid = sent.req.msgid - message.age;
  received.msg.netfn = sent.req.msg.netfn | 1;
  received.msg.cmd = sent.req.msg.cmd;
  std::size_t count = std::min<std::size_t>(received.msg.data_len, message.bytes.size());
  std::copy_n(message.bytes.begin(), count, received.msg.data);
  received.msg.data_len = static_cast<unsigned short>(count);
  errno = EMSGSIZE;
  return count < message.bytes.size() ? -1 : 0;
}

}  // namespace

extern "C" int ioctl(int, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* argument = va_arg(arguments, void*);
  va_end(arguments);
  if (isTakenAway) {
    errno = ENODEV;
    return -1;
  }
  if (request == IPMICTL_RECEIVE_MSG_TRUNC) return HandOut(*static_cast<ipmi_recv*>(argument));
  sent = {*static_cast<ipmi_req*>(argument), -1, 0};
  if (request == IPMICTL_SEND_COMMAND_SETTIME) sent = *static_cast<ipmi_req_settime*>(argument);
  return 0;
}

// /dev/zero is always ready to be read.
TEST(KernelIpmi, TakesTheAnswerToItsLastRequestOnly) {
  KernelIpmi kernel(open("/dev/zero", O_RDWR | O_CLOEXEC));
  KernelIpmi::Answer answer;
  EXPECT_EQ(kernel.Receive(answer), uefi_status::kNotReady);
  EXPECT_EQ(kernel.Send(6, 0, 1, {}), kSuccess);
  EXPECT_EQ(kernel.Send(6, 2, 1, {}), kSuccess);
  queue = {{IPMI_RESPONSE_RECV_TYPE, 1, {1}},
           {IPMI_ASYNC_EVENT_RECV_TYPE, 0, {2}},
           {IPMI_CMD_RECV_TYPE, 0, {3}},
           {IPMI_RESPONSE_RECV_TYPE, 0, {0, 4}}};
  EXPECT_EQ(kernel.Receive(answer), kSuccess);
  EXPECT_THAT(answer.Bytes(), ElementsAre(0, 4));
  EXPECT_EQ(answer.lun, 2);
  EXPECT_EQ(kernel.Receive(answer), uefi_status::kNotReady);
  EXPECT_EQ(kernel.Send(6, 0, 1, {}), kSuccess);
  queue = {{IPMI_RESPONSE_RECV_TYPE, 0, std::vector<std::uint8_t>(300)}};
  EXPECT_EQ(kernel.Receive(answer), kSuccess);
  EXPECT_EQ(answer.count, 272u) << "the kernel cut it";
}

TEST(KernelIpmi, WaitsForAControllerAsLongAsItsCaller) {
  KernelIpmi kernel(open("/dev/zero", O_RDWR | O_CLOEXEC));
  const std::vector<std::uint8_t> sendMessage{0, 0xB4, 0x18, 0x34, 0x20, 0x06, 0x01, 0xD9};
  EXPECT_EQ(kernel.Send(6, 0, 0x34, sendMessage), kSuccess);
  EXPECT_GE((sent.retries + 1) * static_cast<int>(sent.retry_time_ms), 5'000);
  EXPECT_LT((sent.retries + 1) * static_cast<int>(sent.retry_time_ms), 8'000)
      << "the device is given up after 10 seconds";

  // The kernel answers for the controller that did not, and the same frame goes no further.
  KernelIpmi::Answer answer;
  EXPECT_EQ(kernel.Receive(answer), kSuccess);
  queue = {{IPMI_RESPONSE_RECV_TYPE, 0, {0xC3}}};
  EXPECT_EQ(kernel.Send(6, 0, 0x33, {}), kSuccess);
  EXPECT_EQ(kernel.Receive(answer), kSuccess);
  EXPECT_THAT(answer.Bytes(), ElementsAre(0, 0, 0x1E, 0xC2, 0xB4, 0x04, 0x01, 0xC3, 0x84));
  const long lastSent = sent.req.msgid;
  auto completionCode = [&](const std::vector<std::uint8_t>& frame) {
    EXPECT_EQ(kernel.Send(6, 0, 0x34, frame), kSuccess);
    EXPECT_EQ(kernel.Receive(answer), kSuccess);
    EXPECT_EQ(answer.count, 1u);
    return answer.room[0];
  };
  EXPECT_EQ(completionCode(sendMessage), 0x83);
  EXPECT_EQ(completionCode(sendMessage), 0x83);
  EXPECT_EQ(sent.req.msgid, lastSent);
  EXPECT_EQ(completionCode({0, 0xB4, 0x18, 0x34, 0x20, 0x0A, 0x01, 0xD5}), 0) << "a new request is tried";
  EXPECT_EQ(completionCode(sendMessage), 0) << "and the old one again";
}

TEST(LinuxMachine, SaysOnceThatTheDeviceWasTakenAway) {
  std::string error;
  auto machine = OpenLinuxMachine("/dev/zero", error);
  IpmiProtocol* ipmi = machine->InstalledIpmi();
  isTakenAway = true;
  ::testing::internal::CaptureStderr();
  for (int times = 0; times < 2; ++times) EXPECT_NE(ipmi->Send(ipmi, 6, 0, 1, nullptr, 0), kSuccess);
  isTakenAway = false;
  const std::string said = ::testing::internal::GetCapturedStderr();
  EXPECT_NE(said.find("/dev/zero was taken away (No such device); load the kernel's drivers"),
            std::string::npos);
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
}

}  // namespace varnok::host
