// The program's console: text output and key strokes (UEFI 2.10, sections 12.3 and 12.4).
#pragma once

#include <string_view>

#include "firmware/uefi/shell.h"

namespace varnok::uefi {

class Console {
 public:
  explicit Console(const Shell& shell) : shell_(shell) {}

  void Write(std::u16string_view text);
  /// On the error console, or on the ordinary one where the firmware has none.
  void WriteError(std::u16string_view text);
  /// Waits for a key stroke; ends the program when the input can give none any more.
  char16_t ReadKey();

 private:
  const Shell& shell_;
  char16_t previous_ = 0;
};

}  // namespace varnok::uefi
