// The queries that the probe types share, and their own way through the BMC to other controllers.
#include <algorithm>
#include <iterator>

#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"
#include "cfg/fru_tables.h"
#include "cfg/probe.h"
#include "firmware/bytes.h"
#include "firmware/ipmi.h"
#include "fru/fru_data.h"
#include "platform/ipmb_frame.h"

namespace varnok {
namespace {

constexpr const char* kBridge = "CCfgProbe::ProcessSendMessage";
constexpr std::size_t kLongestKey = 12;
constexpr std::uint8_t kOemKeyValue = 0x32;
constexpr std::uint8_t kGetKeyValue = 0x10;
constexpr std::uint32_t kTimeout = 1000;

/// The controllers that the transport itself reaches, with the channels on which it does.
constexpr std::uint8_t kKnownControllers[] = {kBmcAddress, 0x2C, 0x22, 0xC0, 0xC2};
constexpr std::uint8_t kKnownChannels[] = {0, 6};

/// The transport reports every completion code but 0 as one failure; the response holds the code then.
bool HasCode(IpmiResult result, const IpmiMessage& response, std::uint8_t code) {
  return result == ipmi_result::kCompletionCode && response.completionCode == code;
}

/// Get Message until the answer to the request with this sequence number comes; others, and a BMC that is
/// busy, cost one of `left` tries.
IpmiResult FetchAnswer(std::uint8_t sequence, int& left, IpmiMessage& answer) {
  for (; left > 0; --left) {
    IpmiResult result = IpmiTransaction(MakeGetMessage(), answer);
    bool isOther =
        result == ipmi_result::kSuccess && !(HoldsResponse(answer) && BridgedSequence(answer) == sequence);
    if (!isOther && !HasCode(result, answer, completion_code::kNakOnWrite)) return result;
  }
  return ipmi_result::kReceiveFailed;
}

Status RefuseKeyValue(const char* text, std::string_view key) {
  CCfgParser::SetLastError(text, key, key.size(), kLongestKey);
  return Fail("CCfgProbe::ProbeKeyValue", "Invalid key or value", cfg_status::kBadValue);
}

template <std::size_t size>
bool Holds(const std::uint8_t (&bytes)[size], std::uint8_t byte) {
  return std::find(std::begin(bytes), std::end(bytes), byte) != std::end(bytes);
}

}  // namespace

Status CCfgProbe::ProbeKeyValue(std::string_view key, std::string_view value, bool& isFound) {
  TraceScope scope("CCfgProbe::ProbeKeyValue");
  isFound = false;
  if (key.data() == nullptr || value.data() == nullptr)
    return RefuseKeyValue("Unrecoverable internal error: Probe key/value input is invalid.", "");
  if (key.empty() || key.size() > kLongestKey)
    return RefuseKeyValue("The probe key's '%s' length (%d) is not with the range of (0 - %d).", key);
  if (value.empty()) {
    // The number shown is the key's length.
    CCfgParser::SetLastError("The probe value's length (%d) is not valid.", key.size());
    return Fail("CCfgProbe::ProbeKeyValue", "Invalid key or value", cfg_status::kBadValue);
  }
  IpmiMessage request = Request(kOemKeyValue, kGetKeyValue, {}), response;
  request.dataLength = static_cast<std::uint32_t>(key.size());
  std::copy(key.begin(), key.end(), request.data.begin());
  if (IpmiSendToController(request, response, kTimeout) != ipmi_result::kSuccess) return kSuccess;
  // Compared over the answer's length: the beginning of the value is enough, and an empty answer always is.
  // The NUL that ends the value counts; what a BMC sends behind its own does not.
  std::size_t answered = std::min<std::size_t>(response.dataLength, response.data.size());
  std::string text(response.data.begin(), response.data.begin() + static_cast<std::ptrdiff_t>(answered));
  if (std::size_t end = text.find('\0'); end != text.npos)
    isFound = EqualsIgnoreCase(text.substr(0, end), value);
  else
    isFound = EqualsIgnoreCase(text, value.substr(0, answered));
  return kSuccess;
}

Status CCfgProbe::ProbeFruDevice(std::uint8_t bus, std::uint8_t slave, std::uint8_t lun, bool& isFound) {
  TraceScope scope("CCfgProbe::ProbeFruDevice");
  constexpr int kAttempts = 10;
  IpmiMessage request = Request(net_function::kApplication, ipmi_command::kMasterWriteRead, {bus, slave, 0}),
              response;
  request.lun = lun;
  IpmiResult result = IpmiSendToController(request, response, kTimeout);
  for (int i = 1; i < kAttempts && HasCode(result, response, completion_code::kNakOnWrite); ++i)
    result = IpmiSendToController(request, response, kTimeout);
  isFound = result == ipmi_result::kSuccess;
  return kSuccess;
}

Status CCfgProbe::ProbeFruHeader(std::uint8_t lun, std::uint8_t slave, std::uint8_t bus,
                                 std::uint8_t deviceId, bool& isFound) {
  TraceScope scope("CCfgProbe::ProbeFruHeader");
  FruDeviceAddress address;
  address.lun = lun;
  address.deviceAddress = slave;
  address.bus = bus;
  address.deviceId = deviceId;
  address.nvsType = GetProbeType() == ProbeType::ImbDevice ? nvs_type::kImbDevice
                    : GetProbeType() == ProbeType::Ds1624s ? nvs_type::kDs1624s
                                                           : nvs_type::kAt24c02;
  isFound = FruData::FindFruAtAddressAndChecksumHeader(address) == kSuccess;
  // A device that is not there is an answer; its message must not be taken for that of a later failure.
  ForgetFruMessage();
  return kSuccess;
}

Status CCfgProbe::ProbeIsK410V(std::uint8_t lun, bool& isFound) {
  TraceScope scope("CCfgProbe::ProbeIsK410V");
  IpmiMessage request =
                  Request(net_function::kApplication, ipmi_command::kMasterWriteRead, {0x15, 0xD0, 0x00}),
              response;
  request.lun = lun;
  // Nothing is read from the device, so the byte is there only when a BMC sends more than it was asked for.
  isFound = IpmiTransaction(request, response) == ipmi_result::kSuccess &&
            ByteAt(response, 2, /*isOptional=*/true) == 0;
  return kSuccess;
}

Status CCfgProbe::ProbeAdvanced(std::uint8_t lun, bool& isFound) {
  TraceScope scope("CCfgProbe::ProbeAdvanced");
  constexpr std::uint8_t kNotAdvanced = 0xCC;
  // Channel 3, parameter C3h, set 0, block 0.
  IpmiMessage request =
      Request(net_function::kTransport, ipmi_command::kGetLanConfiguration, {0x03, 0xC3, 0x00, 0x00});
  IpmiMessage response;
  request.lun = lun;
  isFound =
      IpmiTransaction(request, response) == ipmi_result::kSuccess && ByteAt(response, 2) != kNotAdvanced;
  return kSuccess;
}

Status CCfgProbe::ProbeDeviceId(std::uint8_t target, std::uint8_t channel, std::uint32_t& id, bool& isFound) {
  TraceScope scope("CCfgProbe::ProbeDeviceId");
  IpmiMessage request = Request(net_function::kApplication, ipmi_command::kGetDeviceId, {}), response;
  request.targetAddress = target;
  isFound = Holds(kKnownControllers, target) && Holds(kKnownChannels, channel)
                ? IpmiTransaction(request, response) == ipmi_result::kSuccess
                : ProcessSendMessage(request, response, channel, target) == kSuccess;
  // The bridged controller's own code does not count as a failure of the bridging.
  isFound = isFound && response.completionCode == completion_code::kSuccess;
  if (isFound) id = ByteAt(response, 10) * 256u + ByteAt(response, 9);
  return kSuccess;
}

std::uint8_t CCfgProbe::CalculateChecksum(std::span<const std::uint8_t> bytes) {
  TraceScope scope("CCfgProbe::CalculateChecksum");
  return IpmiChecksum(bytes);
}

/// The request as an IPMB frame (IPMB v1.0, section 2.11) within a Send Message (IPMI v2.0, section 22.7).
/// False when it would not fit.
bool CCfgProbe::WrapRequest(const IpmiMessage& request, std::uint8_t channel, std::uint8_t target,
                            std::uint8_t sequence, IpmiMessage& sendMessage) {
  // The BMC's mailbox for messages to system software is requester LUN 2.
  constexpr std::uint8_t kMailboxLun = 2;
  if (request.dataLength > request.data.size()) return false;
  std::span<const std::uint8_t> sent(sendMessage.data);
  const std::array<std::uint8_t, 2> head{target,
                                         static_cast<std::uint8_t>(request.netFunction << 2 | request.lun)};
  ByteWriter frame(sendMessage.data);
  frame.Byte(channel).Bytes(head).Byte(CalculateChecksum(head));
  const std::size_t body = frame.Length();
  frame.Byte(kBmcAddress).Byte(static_cast<std::uint8_t>(sequence << 2 | kMailboxLun)).Byte(request.command);
  frame.Bytes(std::span(request.data).first(request.dataLength));
  frame.Byte(CalculateChecksum(sent.subspan(body, frame.Length() - body)));
  sendMessage.dataLength = static_cast<std::uint32_t>(frame.Length());
  return !frame.HasFailed();
}

Status CCfgProbe::ProcessSendMessage(const IpmiMessage& message, IpmiMessage& response, std::uint8_t channel,
                                     std::uint8_t target) {
  TraceScope scope(kBridge);
  constexpr int kRounds = 50;
  // A BMC that never runs out of other answers must not hold the script for ever.
  int fetchesLeft = 256;
  std::uint8_t sequence = parser_->TakeProbeSequence();
  IpmiMessage send = Request(net_function::kApplication, ipmi_command::kSendMessage, {}), answer;
  if (!WrapRequest(message, channel, target, sequence, send))
    return Fail(kBridge, "Request too long", cfg_status::kBadValue);
  for (int round = 0; round < kRounds; ++round) {
    IpmiResult result = IpmiTransaction(send, answer);
    if (HasCode(result, answer, completion_code::kNakOnWrite)) continue;
    if (result == ipmi_result::kSuccess) {
      result = FetchAnswer(sequence, fetchesLeft, answer);
      if (HasCode(result, answer, completion_code::kQueueEmpty)) continue;
    }
    if (result != ipmi_result::kSuccess) {
      return Fail(kBridge, "Transaction failed", ToStatus(result));
    }
    response = UnwrapGetMessage(answer);
    return kSuccess;
  }
  return Fail(kBridge, "No answer", cfg_status::kNoBridgedAnswer);
}

}  // namespace varnok
