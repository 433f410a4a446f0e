#include "firmware/host/linux_machine.h"

#include <fcntl.h>
#include <linux/ipmi.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>
#include <span>
#include <stdexcept>
#include <utility>

#include "firmware/host/smbios_dump.h"

namespace varnok::host {
namespace {

// IPMI v2.0, table 5-1 and appendix G.
constexpr std::uint8_t kApplication = 0x06;
constexpr std::uint8_t kGetMessage = 0x33;
constexpr std::uint8_t kSendMessage = 0x34;
constexpr std::uint8_t kQueueEmpty = 0x80;
constexpr std::uint8_t kRequestTooShort = 0xC7;

// Longer than the kernel's own time-outs, which answer C3h.
constexpr int kAnswerMilliseconds = 10'000;
constexpr std::size_t kLargestMessage = 272;

std::uint8_t Checksum(std::span<const std::uint8_t> bytes) {
  std::uint8_t sum = 0;
  for (std::uint8_t byte : bytes) sum = static_cast<std::uint8_t>(sum + byte);
  return static_cast<std::uint8_t>(0 - sum);
}

struct Answer {
  std::uint8_t netFunction = 0;
  std::uint8_t lun = 0;
  std::uint8_t command = 0;
  std::vector<std::uint8_t> bytes;  ///< completion code, then data
};

/// The kernel's IPMI device as the firmware's IPMI protocol. The kernel keeps Send Message and Get Message to
/// itself and bridges on its own, so the two are translated: a Send Message becomes a request to the
/// controller's IPMB address, the next Get Message hands out its answer.
class KernelIpmi {
 public:
  explicit KernelIpmi(int descriptor) : descriptor_(descriptor) {}
  ~KernelIpmi() { close(descriptor_); }
  KernelIpmi(const KernelIpmi&) = delete;
  KernelIpmi& operator=(const KernelIpmi&) = delete;

  Status Send(std::uint8_t netFunction, std::uint8_t lun, std::uint8_t command,
              std::span<const std::uint8_t> data) {
    ready_.reset();
    isWaiting_ = false;
    if (netFunction == kApplication && command == kSendMessage) return SendBridged(lun, data);
    if (netFunction == kApplication && command == kGetMessage) return GetBridged(lun);
    ipmi_system_interface_addr address{};
    address.addr_type = IPMI_SYSTEM_INTERFACE_ADDR_TYPE;
    address.channel = IPMI_BMC_CHANNEL;
    address.lun = lun;
    isWaiting_ = Submit(&address, sizeof address, netFunction, command, data);
    waitingLun_ = lun;
    return isWaiting_ ? kSuccess : uefi_status::kDeviceError;
  }

  Status Receive(Answer& answer) {
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

 private:
  struct Bridged {
    long messageId = 0;
    std::uint8_t channel = 0;
    std::uint8_t responder = 0;
    std::uint8_t requesterLun = 0;
    std::uint8_t responderLun = 0;
    std::uint8_t sequence = 0;
  };

  template <class Address>
  bool Submit(Address* address, unsigned size, std::uint8_t netFunction, std::uint8_t command,
              std::span<const std::uint8_t> data) {
    ipmi_req request{};
    request.addr = reinterpret_cast<unsigned char*>(address);
    request.addr_len = size;
    request.msgid = ++messageId_;
    request.msg.netfn = netFunction;
    request.msg.cmd = command;
    request.msg.data = const_cast<unsigned char*>(data.data());
    request.msg.data_len = static_cast<unsigned short>(data.size());
    return ioctl(descriptor_, IPMICTL_SEND_COMMAND, &request) == 0;
  }

  /// The answer to the latest request; answers to earlier ones come too late for anybody and are dropped.
  bool WaitForAnswer(Answer& answer) {
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

  void AnswerLocally(std::uint8_t lun, std::uint8_t command, std::vector<std::uint8_t> bytes) {
    ready_ = Answer{kApplication + 1, lun, command, std::move(bytes)};
  }

  /// `frame`: channel, rsSA, netFn/rsLUN, checksum, rqSA, rqSeq/rqLUN, command, data, checksum (IPMI
  /// v2.0, 22.7).
  Status SendBridged(std::uint8_t lun, std::span<const std::uint8_t> frame) {
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
    if (!Submit(&address, sizeof address, static_cast<std::uint8_t>(frame[2] >> 2), frame[6], data))
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
  Status GetBridged(std::uint8_t lun) {
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

  int descriptor_;
  long messageId_ = 0;
  bool isWaiting_ = false;
  std::uint8_t waitingLun_ = 0;
  std::optional<Answer> ready_;
  std::optional<Bridged> bridged_;
};

std::vector<std::uint8_t> ReadFile(const char* path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// This machine's tables; nothing without them.
std::optional<SmbiosDump> ReadSmbios() {
  try {
    return SmbiosDump(ReadFile("/sys/firmware/dmi/tables/smbios_entry_point"),
                      ReadFile("/sys/firmware/dmi/tables/DMI"));
  } catch (const std::runtime_error&) {
    return std::nullopt;
  }
}

class LinuxMachine : public Machine {
 public:
  explicit LinuxMachine(int descriptor) : kernel_(descriptor), smbios_(ReadSmbios()) {
    protocol_.interface = {kIpmiProtocolRevision, Send, Receive};
    protocol_.kernel = &kernel_;
  }

  IpmiProtocol* InstalledIpmi() override { return &protocol_.interface; }
  std::span<const std::uint8_t> SmbiosEntryPoint() override {
    return smbios_ ? smbios_->EntryPoint() : std::span<const std::uint8_t>();
  }
  std::span<const std::uint8_t> PhysicalMemory(std::uint64_t address, std::size_t length) override {
    return smbios_ ? smbios_->Memory(address, length) : std::span<const std::uint8_t>();
  }

  void Stall(std::uint64_t microseconds, StallKind kind) override {
    // The kernel's driver paces itself, and receiving waits for the answer.
    if (kind == StallKind::Pacing) return;
    timespec rest{static_cast<time_t>(microseconds / 1'000'000),
                  static_cast<long>(microseconds % 1'000'000 * 1000)};
    while (nanosleep(&rest, &rest) != 0 && errno == EINTR) {
    }
  }

  WallClock Now() override {
    time_t now = time(nullptr);
    tm local{};
    localtime_r(&now, &local);
    return {static_cast<std::uint16_t>(local.tm_year + 1900), static_cast<std::uint8_t>(local.tm_mon + 1),
            static_cast<std::uint8_t>(local.tm_mday),         static_cast<std::uint8_t>(local.tm_hour),
            static_cast<std::uint8_t>(local.tm_min),          static_cast<std::uint8_t>(local.tm_sec)};
  }

 private:
  /// The protocol comes first, so that its address leads to the rest.
  struct Protocol {
    IpmiProtocol interface;
    KernelIpmi* kernel;
  };

  static KernelIpmi& KernelOf(IpmiProtocol* self) { return *reinterpret_cast<Protocol*>(self)->kernel; }

  static Status Send(IpmiProtocol* self, std::uint8_t netFunction, std::uint8_t lun, std::uint8_t command,
                     const std::uint8_t* data, std::uint32_t dataLength) {
    return KernelOf(self).Send(netFunction, lun, command, {data, dataLength});
  }

  static Status Receive(IpmiProtocol* self, std::uint8_t* netFunction, std::uint8_t* lun,
                        std::uint8_t* command, std::uint8_t* completionCode, std::uint8_t* data,
                        std::uint32_t* dataLength) {
    Answer answer;
    if (Status status = KernelOf(self).Receive(answer); status != kSuccess) return status;
    if (answer.bytes.empty()) return uefi_status::kDeviceError;
    std::size_t count = std::min<std::size_t>(answer.bytes.size() - 1, *dataLength);
    *netFunction = answer.netFunction;
    *lun = answer.lun;
    *command = answer.command;
    *completionCode = answer.bytes.front();
    std::memcpy(data, answer.bytes.data() + 1, count);
    *dataLength = static_cast<std::uint32_t>(count);
    return kSuccess;
  }

  KernelIpmi kernel_;
  std::optional<SmbiosDump> smbios_;
  Protocol protocol_{};
};

}  // namespace

std::unique_ptr<Machine> OpenLinuxMachine(const std::string& device, std::string& error) {
  int descriptor = open(device.c_str(), O_RDWR | O_CLOEXEC);
  if (descriptor < 0) {
    error = device + ": " + std::strerror(errno);
    return nullptr;
  }
  return std::make_unique<LinuxMachine>(descriptor);
}

}  // namespace varnok::host
