// Trace lines of one method of a record class, whose name is known at run time only.
#pragma once

#include <string>
#include <string_view>

#include "app/services/trace.h"
#include "firmware/status.h"

namespace varnok {

class MethodTrace {
 public:
  MethodTrace(std::u16string_view className, std::u16string_view method)
      : name_(TraceLevel() == 0 ? std::u16string() : std::u16string(className).append(u"::").append(method)),
        scope_(name_) {}

  /// Writes the failure line and returns the status.
  Status Fail(std::u16string_view reason, Status status) const {
    Trace(u"%ls - %ls", 1, name_, reason);
    return status;
  }

 private:
  std::u16string name_;
  TraceScope scope_;
};

}  // namespace varnok
