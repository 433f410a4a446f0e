// The trace log: diagnostic lines in DBGLOG.txt, 16-bit text, opened and closed for every line so that the
// log survives a hang or a reset. Level 1 names failures, level 2 adds hex dumps, level 3 the way in and out
// of operations. Names and formats are 8-bit literals: there are hundreds, and an image on a board has little
// room.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "app/services/format.h"

namespace varnok {

/// Chooses the level, 0 (off) to 3 and 1 until then, by the first of "-debug1", "-debug2" and "-debug3"
/// behind argv[0], in any case, and empties the log then; without one the level is 0 and the log is not
/// touched. Returns the level.
std::uint32_t TraceSelectLevel(int argc, const char* const argv[]);

/// Appends one formatted line to the log when the level is at least `level`; below it nothing is formatted.
/// The line is dropped when the log cannot be opened.
void TraceWith(const char* format, std::uint32_t level, const FormatArgument* arguments, std::size_t count);

/// The same for a line that has no arguments, as most.
void Trace(const char* text, std::uint32_t level);

template <class... Arguments>
void Trace(const char* format, std::uint32_t level, const Arguments&... arguments) {
  const FormatArguments<sizeof...(Arguments)> list{FormatArgument(arguments)...};
  TraceWith(format, level, list.data(), list.size());
}

/// Writes "NAME - REASON" at level 1.
void TraceFailure(const char* operation, const char* reason);

/// The same, and gives `status` back: how an operation ends that failed.
Status Fail(const char* operation, const char* reason, Status status);

/// At level 2 and above: the title, then rows of 16 bytes. The last row is always full: it shows what follows
/// `length` in `buffer`, and zeros past its end. A byte CCh shows as blanks.
void TraceHexDump(const char* title, std::span<const std::uint8_t> buffer, std::size_t length);

/// Writes "NAME [ENTRY]" when built and "NAME [EXIT]" when destroyed, at level 3. The name is given whole, or
/// in parts as "OWNER::METHOD" where the class is known at run time only. The texts must outlive the scope;
/// literals do.
class TraceScope {
 public:
  explicit TraceScope(const char* name);
  TraceScope(const char* owner, const char* method);
  ~TraceScope();
  TraceScope(const TraceScope&) = delete;
  TraceScope& operator=(const TraceScope&) = delete;

 private:
  void Write(const char* way) const;

  const char* owner_;
  const char* method_;
};

}  // namespace varnok
