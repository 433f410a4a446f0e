// The three pages of the usage text.
#pragma once

#include <string_view>

namespace varnok {

extern const std::u16string_view kShortUsage;
extern const std::u16string_view kFruAddressUsage;
extern const std::u16string_view kExamplesUsage;

}  // namespace varnok
