#include "fru/internal_use_area.h"

#include <algorithm>

#include "app/services/trace.h"

namespace varnok {

std::uint32_t CInternalUseArea::GetFieldIndexFromEnum(FruFieldId field) const {
  TraceScope scope("CInternalUseArea::GetFieldIndexFromEnum");
  return field == FruFieldId::InternalUseData ? 0 : kInvalidFieldIndex;
}

bool CInternalUseArea::SetData(std::span<const std::uint8_t> bytes, bool markModified) {
  TraceScope scope("CInternalUseArea::SetData");
  if (bytes.size() > buffer_.size()) {
    Trace("CInternalUseArea::SetData - Area Data too long", 1);
    return false;
  }
  buffer_.fill(0);
  std::copy(bytes.begin(), bytes.end(), buffer_.begin());
  length_ = bytes.size();
  if (markModified) isModified_ = true;
  return true;
}

}  // namespace varnok
