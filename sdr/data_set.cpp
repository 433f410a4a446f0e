#include "sdr/data_set.h"

#include <algorithm>

#include "firmware/lasting.h"

namespace varnok {

SdrState& TheSdr() {
  return Lasting<SdrState>();
}

void SdrState::SetLastError(std::u16string_view text) {
  std::size_t length = std::min(text.size(), kMessageCapacity - 1);
  std::copy_n(text.begin(), length, lastError.begin());
  lastError[length] = 0;
}

}  // namespace varnok
