#include "app/services/text_output.h"

namespace varnok {

Status WriteText(File& file, std::u16string_view text) {
  return PutTextBytes(text, [&file](std::span<const std::uint8_t> bytes) { return file.Write(bytes); });
}

}  // namespace varnok
