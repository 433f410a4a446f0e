#include "fru/fru_session.h"

#include <algorithm>

#include "firmware/lasting.h"

namespace varnok {

FruSession& TheFruSession() {
  return Lasting<FruSession>();
}

void SetFruError(std::u16string_view text) {
  auto& lastError = TheFruSession().lastError;
  std::size_t length = std::min(text.size(), lastError.size() - 1);
  // The text may be a part of the buffer itself.
  std::copy(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length), lastError.begin());
  lastError[length] = u'\0';
}

}  // namespace varnok
