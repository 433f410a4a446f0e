// The IPMI transport: finds the firmware's IPMI protocol, exchanges one request and response at a time with
// the BMC, bridges requests to other controllers, and applies the program's retries and time-outs.
#pragma once

#include <cstdint>

#include "platform/ipmi_message.h"

namespace varnok {

/// Results of the transport; 0 is success.
using IpmiResult = std::int32_t;

namespace ipmi_result {
inline constexpr IpmiResult kSuccess = 0;
inline constexpr IpmiResult kNoDeviceId = -400;  ///< the BMC did not answer Get Device ID
inline constexpr IpmiResult kNotInstalled =
    -500;  ///< no handle carries the protocol, or its revision is another
inline constexpr IpmiResult kOutOfMemory = -501;       ///< no memory for the handle or the work buffer
inline constexpr IpmiResult kDriverNotStarted = -502;  ///< the driver image could not be loaded or started
inline constexpr IpmiResult kSendFailed = -503;  ///< four sends failed, or a bridged send got no good answer
inline constexpr IpmiResult kReceiveFailed =
    -504;  ///< four receives failed, or a bridged answer came too late
inline constexpr IpmiResult kWrongResponse =
    -505;  ///< eleven attempts got no response of the request's command
inline constexpr IpmiResult kCompletionCode = -507;  ///< eleven attempts got a completion code other than 0
}  // namespace ipmi_result

/// Locates the protocol, starting the driver ".\ipmi.efi" when none is installed.
[[nodiscard]] IpmiResult IpmiLoadProtocol();

/// One request and its response, up to 11 attempts. A request for a target other than the BMC is bridged.
/// With `noResponse` the call returns when the request is sent. A completion code other than 0 is retried
/// like a lost answer; after kCompletionCode the response holds it.
[[nodiscard]] IpmiResult IpmiTransaction(const IpmiMessage& request, IpmiMessage& response,
                                         bool noResponse = false);

/// One request and its response in one attempt, for callers with a patience of their own. A target other than
/// the BMC is bridged on `channel`. After kCompletionCode the response holds the code, the Send Message's own
/// when the BMC could not deliver the request; kWrongResponse is the answer to something else.
[[nodiscard]] IpmiResult IpmiTryOnce(const IpmiMessage& request, std::uint8_t channel, IpmiMessage& response);

/// As IpmiTransaction, but a target other than the BMC is reached on channel 0 with IpmiBridgedRequest.
/// `timeout` is not used.
[[nodiscard]] IpmiResult IpmiSendToController(const IpmiMessage& request, IpmiMessage& response,
                                              std::uint32_t timeout);

/// Bridges a request on an explicit channel. `timeout` is not used. When the answers that arrive are of
/// another command, the result is 0 and `response` holds the Send Message answer.
[[nodiscard]] IpmiResult IpmiBridgedRequest(const IpmiMessage& request, IpmiMessage& response,
                                            std::uint8_t channel, std::uint8_t target, std::uint32_t timeout);

/// Clear Message Flags (IPMI v2.0, section 22.3); bit 0 clears the receive message queue. The result is
/// ignored.
void IpmiClearMessageFlags(std::uint8_t flags);

/// What the BMC is, read once: type 2 for product IDs 4311h, 4312h and 4315h, 1 for any other, 0 when
/// unknown; version 1 for IPMI 1.5, 2 for IPMI 2.0.
[[nodiscard]] IpmiResult GetBmcTypeAndVersion(std::uint32_t& type, std::uint32_t& version);

void DelayMilliseconds(std::uint32_t milliseconds);

/// Seconds since midnight, by the real-time clock.
std::uint32_t SecondsOfDay();

}  // namespace varnok
