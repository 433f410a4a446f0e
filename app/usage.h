// The three pages of the usage text.
#pragma once

#include <string_view>

namespace varnok {

extern const char* const kShortUsage;
extern const char* const kFruAddressUsage;
extern const char* const kExamplesUsage;

}  // namespace varnok
