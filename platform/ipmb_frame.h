// The IPMB frames that Send Message carries out and Get Message brings back (IPMI v2.0, sections 22.6
// and 22.7; IPMB v1.0, section 2.11).
#pragma once

#include <cstdint>

#include "platform/ipmi_message.h"

namespace varnok {

/// Wraps `request` for `target` into a Send Message request. `sequence` is 0 to 63. False when the frame
/// would not fit, which is so past 56 data bytes.
bool WrapInSendMessage(const IpmiMessage& request, std::uint8_t channel, std::uint8_t target,
                       std::uint8_t sequence, IpmiMessage& sendMessage);

/// A Get Message request to the BMC.
IpmiMessage MakeGetMessage();

/// Whether a Get Message answer is long enough to hold a response up to its completion code.
bool HoldsResponse(const IpmiMessage& getMessageAnswer);

/// The sequence number of the request that a Get Message answer belongs to, and that request's command.
std::uint8_t BridgedSequence(const IpmiMessage& getMessageAnswer);
std::uint8_t BridgedCommand(const IpmiMessage& getMessageAnswer);

/// The response inside a Get Message answer.
IpmiMessage UnwrapGetMessage(const IpmiMessage& getMessageAnswer);

}  // namespace varnok
