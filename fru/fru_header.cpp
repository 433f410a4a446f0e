#include "fru/fru_header.h"

#include <algorithm>

#include "app/services/trace.h"
#include "firmware/ipmi.h"
#include "fru/fru_encoding.h"

namespace varnok {

bool CFruHeader::IsValid() const {
  TraceScope scope("CFruHeader::IsValid");
  return SumOf(bytes_) == 0;
}

std::span<const std::uint8_t, CFruHeader::kLength> CFruHeader::GetData() const {
  TraceScope scope("CFruHeader::GetData");
  return bytes_;
}

std::size_t CFruHeader::GetLength() const {
  TraceScope scope("CFruHeader::GetLength");
  return kLength;
}

void CFruHeader::SetData(std::span<const std::uint8_t, kLength> bytes) {
  std::copy(bytes.begin(), bytes.end(), bytes_.begin());
}

void CFruHeader::UpdateChecksum() {
  bytes_[7] = IpmiChecksum(std::span(bytes_).first(7));
}

}  // namespace varnok
