// Statuses of the BMC firmware state module (0A).
#pragma once

#include "firmware/status.h"

namespace varnok::fw_status {

inline constexpr Status kNoBmcIdentity = 0xC0000000000A0004;    ///< BMC type and version could not be read
inline constexpr Status kOutOfMemory = 0xC0000000000A0007;      ///< no memory for the module's object
inline constexpr Status kNotInitialized = 0xC0000000000A0008;   ///< Initialize has not run
inline constexpr Status kNotLoaded = 0xC0000000000A000B;        ///< the versions have not been read
inline constexpr Status kInvalidVersion = 0xC0000000000A000C;   ///< a version or a pattern has the wrong form
inline constexpr Status kNothingSelected = 0xC0000000000A0013;  ///< no device address or no area selected
inline constexpr Status kExchangeFailed =
    0xC0000000000A0019;  ///< a BMC exchange failed, or its mode is the wrong one

}  // namespace varnok::fw_status
