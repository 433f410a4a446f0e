#include "fru/fru_header.h"

#include <algorithm>

#include "fru/fru_encoding.h"

namespace varnok {

bool CFruHeader::IsValid() const {
  return SumOf(bytes_) == 0;
}

void CFruHeader::SetData(std::span<const std::uint8_t, kLength> bytes) {
  std::copy(bytes.begin(), bytes.end(), bytes_.begin());
}

void CFruHeader::UpdateChecksum() {
  bytes_[7] = FruChecksum(std::span(bytes_).first(7));
}

}  // namespace varnok
