// Trace lines of one method of a record class, whose name is known at run time only.
#pragma once

#include "app/services/trace.h"
#include "firmware/status.h"

namespace varnok {

class MethodTrace {
 public:
  MethodTrace(const char* className, const char* method)
      : className_(className), method_(method), scope_(className, method) {}

  /// Writes the failure line and returns the status.
  Status Fail(const char* reason, Status status) const {
    Trace("%s::%s - %s", 1, className_, method_, reason);
    return status;
  }

 private:
  const char* className_;
  const char* method_;
  TraceScope scope_;
};

}  // namespace varnok
