// Texts that more than one run mode prints.
#pragma once

#include <string_view>

namespace varnok {

inline constexpr const char* kResetRequired =
    "\nA system reset is required for the update to take effect.\n\n";

}  // namespace varnok
