#include "fru/fru_session.h"

#include <algorithm>

#include "app/services/text.h"

namespace varnok {
namespace {

constinit FruSession session;

}  // namespace

FruSession& TheFruSession() {
  return session;
}

void SetFruError(std::u16string_view text) {
  std::size_t length = std::min(text.size(), session.lastError.size() - 1);
  // The text may be a part of the buffer itself.
  std::copy(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length), session.lastError.begin());
  session.lastError[length] = u'\0';
}

void SetFruError(const char* text) {
  SetFruError(Widen(text));
}

void ReportFruErrorWith(const char* format, const FormatArgument* arguments, std::size_t count) {
  SetFruError(FormatWideWith(format, arguments, count));
}

}  // namespace varnok
