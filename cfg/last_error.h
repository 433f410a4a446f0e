// The engine's message to the user: two buffers used in turn, so that a message handed out stays valid until
// the next one is asked for.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace varnok {

class LastErrorMessage {
 public:
  static constexpr std::size_t kCapacity = 512;  ///< characters, the terminating NUL among them

  /// Replaces the current message; what does not fit is cut.
  void Set(std::u16string_view text);
  std::u16string_view Current() const;
  /// The current message, null when it is empty. The other buffer becomes current, and empty.
  const char16_t* HandOut();
  /// Empties both buffers.
  void Reset();

 private:
  std::array<std::array<char16_t, kCapacity>, 2> buffers_{};
  std::size_t current_ = 0;
};

/// The engine's one message.
LastErrorMessage& EngineMessage();

}  // namespace varnok
