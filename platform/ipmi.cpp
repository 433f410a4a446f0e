#include "platform/ipmi.h"

#include <algorithm>
#include <span>
#include <utility>

#include "firmware/bytes.h"
#include "firmware/firmware.h"
#include "firmware/ipmi.h"
#include "firmware/ipmi_protocol.h"
#include "firmware/lasting.h"
#include "firmware/pool.h"
#include "platform/answer_doubts.h"
#include "platform/ipmb_frame.h"

namespace varnok {
namespace {

constexpr int kRawAttempts = 4;
constexpr int kSendMessageAttempts = 4;
constexpr int kTransactionAttempts = 11;
constexpr int kGetMessageAttempts = 3;
constexpr std::uint64_t kRestAfterSend = 50'000;     // microseconds
constexpr std::uint64_t kRestBeforeAnswer = 10'000;  // microseconds
constexpr std::uint32_t kBridgeTimeout = 5;          // seconds
constexpr std::uint8_t kLastSequence = 63;
constexpr std::size_t kWorkBufferSize = 256;
// A controller that sits on the secondary IPMB.
constexpr std::uint8_t kSecondaryIpmbAddress = 0x2C;
constexpr std::uint8_t kPrimaryIpmb = 0;
constexpr std::uint8_t kSecondaryIpmb = 6;

constexpr std::array<std::uint32_t, 3> kType2Products = {0x4311, 0x4312, 0x4315};

struct Transport {
  IpmiProtocol* protocol = nullptr;
  PoolBuffer handles;
  PoolBuffer work;
  std::uint8_t transactionSequence = 0;  // of the last request bridged by a transaction
  std::uint8_t bridgedSequence = 1;      // of the next IpmiBridgedRequest
  std::uint32_t bmcType = 0;
  std::uint32_t bmcVersion = 0;
};

Transport& TheTransport() {
  return Lasting<Transport>();
}

std::uint8_t NextSequence(std::uint8_t sequence) {
  return sequence >= kLastSequence ? 1 : static_cast<std::uint8_t>(sequence + 1);
}

IpmiResult Locate(Transport& transport) {
  Firmware& firmware = TheFirmware();
  std::size_t bytes = 0;
  if (firmware.LocateHandles(kIpmiProtocolGuid, bytes, nullptr) != uefi_status::kBufferTooSmall)
    return ipmi_result::kNotInstalled;
  // Room for one handle at least: the first is read below, whatever size the firmware reports.
  if (!transport.handles.Allocate(std::max(bytes, sizeof(Handle)))) return ipmi_result::kOutOfMemory;
  auto* handles = reinterpret_cast<Handle*>(transport.handles.data());
  void* interface = nullptr;
  if (firmware.LocateHandles(kIpmiProtocolGuid, bytes, handles) != kSuccess ||
      firmware.OpenProtocol(handles[0], kIpmiProtocolGuid, interface) != kSuccess || interface == nullptr)
    return ipmi_result::kNotInstalled;
  auto* protocol = static_cast<IpmiProtocol*>(interface);
  if (protocol->revision != kIpmiProtocolRevision) {
    transport.handles.Reset();
    return ipmi_result::kNotInstalled;
  }
  if (!transport.work.Allocate(kWorkBufferSize)) return ipmi_result::kOutOfMemory;
  transport.protocol = protocol;
  return ipmi_result::kSuccess;
}

IpmiResult SendRaw(const IpmiMessage& request) {
  IpmiProtocol* protocol = TheTransport().protocol;
  if (protocol == nullptr) return ipmi_result::kNotInstalled;
  std::uint32_t length = std::min(request.dataLength, IpmiMessage::kCapacity);
  for (int attempt = 0; attempt < kRawAttempts; ++attempt) {
    Status status = protocol->Send(protocol, request.netFunction, request.lun, request.command,
                                   request.data.data(), length);
    TheFirmware().Stall(kRestAfterSend, StallKind::Pacing);
    if (status == kSuccess) return ipmi_result::kSuccess;
  }
  return ipmi_result::kSendFailed;
}

/// `response` changes on success only.
IpmiResult ReceiveRaw(IpmiMessage& response) {
  Transport& transport = TheTransport();
  IpmiProtocol* protocol = transport.protocol;
  if (protocol == nullptr) return ipmi_result::kNotInstalled;
  std::span<std::uint8_t> work = transport.work.Bytes();
  for (int attempt = 0; attempt < kRawAttempts; ++attempt) {
    IpmiMessage received;
    received.targetAddress = kBmcAddress;
    received.dataLength = IpmiMessage::kCapacity;
    // The driver fills the larger work buffer, so that one that overruns the room it was given does no harm,
    // and only the bytes that it counts are taken.
    std::fill(work.begin(), work.end(), std::uint8_t{0});
    Status status = protocol->Receive(protocol, &received.netFunction, &received.lun, &received.command,
                                      &received.completionCode, work.data(), &received.dataLength);
    if (status != kSuccess) continue;
    received.dataLength = std::min(received.dataLength, IpmiMessage::kCapacity);
    std::copy_n(work.begin(), received.dataLength, received.data.begin());
    response = received;
    return ipmi_result::kSuccess;
  }
  NoteDoubt(AnswerDoubt::Missing);
  return ipmi_result::kReceiveFailed;
}

/// Collects answers until one to Send Message comes.
IpmiResult AwaitSendMessageAnswer(IpmiMessage& answer) {
  // The seconds of the day start again at midnight: a wait across it has no end in time, only in answers.
  std::uint32_t limit = SecondsOfDay() + kBridgeTimeout;
  for (;;) {
    IpmiResult result = ReceiveRaw(answer);
    if (result != ipmi_result::kSuccess) return result;
    if (answer.command == ipmi_command::kSendMessage && answer.lun == 0 &&
        answer.netFunction == net_function::kApplication + 1)
      return ipmi_result::kSuccess;
    NoteDoubt(AnswerDoubt::Foreign);
    if (SecondsOfDay() >= limit) return ipmi_result::kSendFailed;
  }
}

/// A BMC that is busy to the last has not answered.
void NoteIfBusy(const IpmiMessage& answer) {
  if (answer.completionCode == completion_code::kNodeBusy) NoteDoubt(AnswerDoubt::Missing);
}

/// `answer` is that of the last Send Message.
IpmiResult SendBridged(const IpmiMessage& request, std::uint8_t channel, int attempts, IpmiMessage& answer) {
  Transport& transport = TheTransport();
  transport.transactionSequence = NextSequence(transport.transactionSequence);
  IpmiMessage sendMessage;
  if (!WrapInSendMessage(request, channel, request.targetAddress, transport.transactionSequence, sendMessage))
    return ipmi_result::kSendFailed;
  for (int attempt = 0; attempt < attempts; ++attempt) {
    IpmiResult result = SendRaw(sendMessage);
    if (result != ipmi_result::kSuccess) return result;
    result = AwaitSendMessageAnswer(answer);
    if (result != ipmi_result::kSuccess) return result;
    if (answer.completionCode == completion_code::kSuccess) return ipmi_result::kSuccess;
  }
  NoteIfBusy(answer);
  return ipmi_result::kSendFailed;
}

IpmiResult SendBridged(const IpmiMessage& request) {
  std::uint8_t channel = request.targetAddress == kSecondaryIpmbAddress ? kSecondaryIpmb : kPrimaryIpmb;
  IpmiMessage answer;
  return SendBridged(request, channel, kSendMessageAttempts, answer);
}

IpmiResult ReceiveBridged(IpmiMessage& response) {
  IpmiMessage getMessage = MakeGetMessage();
  IpmiResult result = SendRaw(getMessage);
  if (result != ipmi_result::kSuccess) return result;
  std::uint32_t limit = SecondsOfDay() + kBridgeTimeout;
  for (;;) {
    IpmiMessage answer;
    result = ReceiveRaw(answer);
    if (result != ipmi_result::kSuccess) return result;
    if (answer.completionCode == completion_code::kSuccess && answer.command == ipmi_command::kGetMessage &&
        HoldsResponse(answer) && BridgedSequence(answer) == TheTransport().transactionSequence) {
      response = UnwrapGetMessage(answer);
      return ipmi_result::kSuccess;
    }
    result = SendRaw(getMessage);
    if (result != ipmi_result::kSuccess) return result;
    if (SecondsOfDay() < limit) continue;
    NoteDoubt(AnswerDoubt::Missing);
    return ipmi_result::kReceiveFailed;
  }
}

bool Answers(const IpmiMessage& response, const IpmiMessage& request) {
  return response.command == request.command && response.completionCode == completion_code::kSuccess &&
         response.lun == request.lun && response.netFunction == request.netFunction + 1;
}

IpmiMessage MakeBmcRequest(std::uint8_t command) {
  IpmiMessage request;
  request.targetAddress = kBmcAddress;
  request.netFunction = net_function::kApplication;
  request.command = command;
  return request;
}

/// Asks for the answer to a bridged request until one of its command comes; the result is the last try's.
IpmiResult FetchBridgedAnswer(const IpmiMessage& request, IpmiMessage& response, std::uint32_t timeout) {
  IpmiResult result = ipmi_result::kSuccess;
  for (int attempt = 0; attempt < kGetMessageAttempts; ++attempt) {
    IpmiMessage answer;
    result = IpmiSendToController(MakeGetMessage(), answer, timeout);
    if (result == ipmi_result::kSuccess && HoldsResponse(answer) &&
        BridgedCommand(answer) == request.command) {
      response = UnwrapGetMessage(answer);
      return result;
    }
  }
  NoteDoubt(AnswerDoubt::Missing);
  return result;
}

/// Of a transaction whose tries are used up.
IpmiResult ResultOfLast(const IpmiMessage& response, const IpmiMessage& request) {
  NoteIfBusy(response);
  if (response.command != request.command) return ipmi_result::kWrongResponse;
  return response.completionCode != completion_code::kSuccess ? ipmi_result::kCompletionCode
                                                              : ipmi_result::kReceiveFailed;
}

}  // namespace

IpmiResult IpmiLoadProtocol() {
  Transport& transport = TheTransport();
  IpmiResult result = Locate(transport);
  if (result != ipmi_result::kNotInstalled) return result;
  if (TheFirmware().StartDriver(u".\\ipmi.efi") != kSuccess) return ipmi_result::kDriverNotStarted;
  return Locate(transport);
}

IpmiResult IpmiTransaction(const IpmiMessage& request, IpmiMessage& response, bool noResponse) {
  const bool isBridged = request.targetAddress != kBmcAddress;
  bool hasResponse = false;
  response = {};
  for (int attempt = 0; attempt < kTransactionAttempts; ++attempt) {
    // A repeated request keeps its sequence number, so that a late answer to its first copy is still its
    // answer.
    if (attempt > 0 && isBridged) --TheTransport().transactionSequence;
    IpmiResult result = isBridged ? SendBridged(request) : SendRaw(request);
    if (result != ipmi_result::kSuccess) return result;
    if (noResponse) return ipmi_result::kSuccess;
    if (request.command != ipmi_command::kGetMessage)
      TheFirmware().Stall(kRestBeforeAnswer, StallKind::Pacing);
    result = isBridged ? ReceiveBridged(response) : ReceiveRaw(response);
    if (result != ipmi_result::kSuccess) continue;
    hasResponse = true;
    if (Answers(response, request)) {
      if (request.command != ipmi_command::kMasterWriteRead) WatchForErased(response);
      return ipmi_result::kSuccess;
    }
    if (response.command != request.command) NoteDoubt(AnswerDoubt::Foreign);
  }
  return hasResponse ? ResultOfLast(response, request) : ipmi_result::kWrongResponse;
}

IpmiResult IpmiTryOnce(const IpmiMessage& request, std::uint8_t channel, IpmiMessage& response) {
  const bool isBridged = request.targetAddress != kBmcAddress;
  response = {};
  IpmiResult result = isBridged ? SendBridged(request, channel, 1, response) : SendRaw(request);
  if (result != ipmi_result::kSuccess)
    return response.completionCode != completion_code::kSuccess ? ipmi_result::kCompletionCode : result;
  TheFirmware().Stall(kRestBeforeAnswer, StallKind::Pacing);
  result = isBridged ? ReceiveBridged(response) : ReceiveRaw(response);
  if (result != ipmi_result::kSuccess) return result;
  const std::uint8_t code = std::exchange(response.completionCode, completion_code::kSuccess);
  const bool isAnswer = Answers(response, request);
  response.completionCode = code;
  if (!isAnswer) return ipmi_result::kWrongResponse;
  return code == completion_code::kSuccess ? ipmi_result::kSuccess : ipmi_result::kCompletionCode;
}

IpmiResult IpmiSendToController(const IpmiMessage& request, IpmiMessage& response, std::uint32_t timeout) {
  if (request.targetAddress == kBmcAddress) return IpmiTransaction(request, response);
  return IpmiBridgedRequest(request, response, kPrimaryIpmb, request.targetAddress, timeout);
}

IpmiResult IpmiBridgedRequest(const IpmiMessage& request, IpmiMessage& response, std::uint8_t channel,
                              std::uint8_t target, std::uint32_t timeout) {
  Transport& transport = TheTransport();
  IpmiMessage sendMessage;
  response = {};
  IpmiResult result = ipmi_result::kSendFailed;
  if (WrapInSendMessage(request, channel, target, transport.bridgedSequence, sendMessage)) {
    // A NAK needs no further try here: the transaction has already repeated every completion code but 0.
    result = IpmiTransaction(sendMessage, response);
    if (result == ipmi_result::kSuccess) result = FetchBridgedAnswer(request, response, timeout);
  }
  transport.bridgedSequence = NextSequence(transport.bridgedSequence);
  return result;
}

void IpmiClearMessageFlags(std::uint8_t flags) {
  IpmiMessage request = MakeBmcRequest(ipmi_command::kClearMessageFlags);
  request.data[0] = flags;
  request.dataLength = 1;
  IpmiMessage response;
  (void)IpmiTransaction(request, response);
}

IpmiResult GetBmcTypeAndVersion(std::uint32_t& type, std::uint32_t& version) {
  Transport& transport = TheTransport();
  IpmiResult result = ipmi_result::kSuccess;
  if (transport.bmcType == 0) {
    const IpmiMessage request = MakeBmcRequest(ipmi_command::kGetDeviceId);
    IpmiMessage response;
    if (IpmiTransaction(request, response) != ipmi_result::kSuccess) {
      result = ipmi_result::kNoDeviceId;
    } else {
      std::uint32_t product = WordAt(response.data, 9);
      bool isType2 = std::find(kType2Products.begin(), kType2Products.end(), product) != kType2Products.end();
      // The identity is read a second time for the IPMI version alone; the BMC is known once both reads
      // succeed.
      result = IpmiTransaction(request, response);
      if (result == ipmi_result::kSuccess) {
        transport.bmcType = isType2 ? 2 : 1;
        if (response.data[4] == 0x51) transport.bmcVersion = 1;
        if (response.data[4] == 0x02) transport.bmcVersion = 2;
      }
    }
  }
  type = transport.bmcType;
  version = transport.bmcVersion;
  return result;
}

void DelayMilliseconds(std::uint32_t milliseconds) {
  TheFirmware().Stall(std::uint64_t{milliseconds} * 1000, StallKind::Waiting);
}

std::uint32_t SecondsOfDay() {
  WallClock now = TheFirmware().Now();
  return (now.hour * 60u + now.minute) * 60u + now.second;
}

}  // namespace varnok
