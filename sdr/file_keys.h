// The keys of an SDR file.
#pragma once

#include <string_view>

namespace varnok::sdr_key {

/// The header, in the order that it must have.
inline constexpr std::string_view kHeader[] = {"_LF_NAME", "_LF_VERSION", "_LF_FMT_VER", "_IPMI_VERSION",
                                               "_SDR (",   "_START_ADDR", "_DATA_LEN",   "_NVS_TYPE",
                                               "_DEV_BUS", "_DEV_ADDRESS"};
inline constexpr std::string_view kType = "_SDR_TYPE";
inline constexpr std::string_view kTag = "_SDR_TAG";
inline constexpr std::string_view kLength = "_REC_LEN";

}  // namespace varnok::sdr_key
