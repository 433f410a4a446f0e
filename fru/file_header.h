// What the head of a FRU file says about the file itself.
#pragma once

#include <string_view>

#include "app/services/trace.h"
#include "firmware/pool_text.h"

namespace varnok {

class CFileHeader {
 public:
  // Each setter keeps a copy; false for a missing text (null data) and when the pool is exhausted.
  bool SetLfName(std::u16string_view text) { return Set("CFileHeader::SetLfName", lfName_, text); }
  bool SetLfVersion(std::u16string_view text) { return Set("CFileHeader::SetLfVersion", lfVersion_, text); }
  bool SetLfFmtVersion(std::u16string_view text) {
    return Set("CFileHeader::SetLfFmtVersion", lfFmtVersion_, text);
  }
  bool SetIpmiVersion(std::u16string_view text) {
    return Set("CFileHeader::SetIpmiVersion", ipmiVersion_, text);
  }

  std::u16string_view LfName() const { return lfName_.View(); }
  std::u16string_view LfVersion() const { return lfVersion_.View(); }
  std::u16string_view LfFmtVersion() const { return lfFmtVersion_.View(); }
  std::u16string_view IpmiVersion() const { return ipmiVersion_.View(); }

 private:
  static bool Set(const char* operation, PoolText& member, std::u16string_view text) {
    TraceScope scope(operation);
    return text.data() != nullptr && member.Assign(text);
  }

  PoolText lfName_;
  PoolText lfVersion_;
  PoolText lfFmtVersion_;
  PoolText ipmiVersion_;
};

}  // namespace varnok
