#include "cfg/last_error.h"

#include <algorithm>

#include "firmware/lasting.h"

namespace varnok {

void LastErrorMessage::Set(std::u16string_view text) {
  text = text.substr(0, kCapacity - 1);
  std::array<char16_t, kCapacity>& buffer = buffers_[current_];
  *std::copy(text.begin(), text.end(), buffer.begin()) = u'\0';
}

std::u16string_view LastErrorMessage::Current() const {
  return buffers_[current_].data();
}

const char16_t* LastErrorMessage::HandOut() {
  const char16_t* text = Current().empty() ? nullptr : buffers_[current_].data();
  current_ = 1 - current_;
  buffers_[current_].front() = u'\0';
  return text;
}

void LastErrorMessage::Reset() {
  buffers_ = {};
  current_ = 0;
}

LastErrorMessage& EngineMessage() {
  return Lasting<LastErrorMessage>();
}

}  // namespace varnok
