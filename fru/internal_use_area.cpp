#include "fru/internal_use_area.h"

#include <algorithm>

#include "app/services/trace.h"

namespace varnok {

std::uint32_t CInternalUseArea::GetNumberOfFields() const {
  TraceScope scope("CInternalUseArea::GetNumberOfFields");
  return length_ != 0 ? 1 : 0;
}

std::uint32_t CInternalUseArea::GetFieldIndexFromEnum(FruFieldId field) const {
  TraceScope scope("CInternalUseArea::GetFieldIndexFromEnum");
  return field == FruFieldId::InternalUseData ? 0 : kInvalidFieldIndex;
}

bool CInternalUseArea::SetData(std::span<const std::uint8_t> bytes, bool markModified) {
  TraceScope scope("CInternalUseArea::SetData");
  if (bytes.size() > buffer_.size()) {
    TraceFailure("CInternalUseArea::SetData", "Area Data too long");
    return false;
  }
  buffer_.fill(0);
  std::copy(bytes.begin(), bytes.end(), buffer_.begin());
  length_ = bytes.size();
  if (markModified) isModified_ = true;
  return true;
}

std::span<const std::uint8_t> CInternalUseArea::GetData() const {
  TraceScope scope("CInternalUseArea::GetData");
  return std::span(buffer_).first(length_);
}

std::size_t CInternalUseArea::GetLength() const {
  TraceScope scope("CInternalUseArea::GetLength");
  return length_;
}

}  // namespace varnok
