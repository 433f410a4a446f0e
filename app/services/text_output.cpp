#include "app/services/text_output.h"

#include <vector>

namespace varnok {

Status WriteText(File& file, std::u16string_view text) {
  std::vector<std::uint8_t> bytes;
  bytes.reserve(2 * text.size());
  for (char16_t character : text) {
    bytes.push_back(static_cast<std::uint8_t>(character & 0xFF));
    bytes.push_back(static_cast<std::uint8_t>(character >> 8));
  }
  return file.Write(bytes);
}

}  // namespace varnok
