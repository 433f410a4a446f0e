// The trace log: diagnostic lines in DBGLOG.txt, 16-bit text, opened and closed for every line so that the
// log survives a hang or a reset. Level 1 names failures, level 2 adds hex dumps, level 3 the way in and out
// of operations.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "app/services/format.h"

namespace varnok {

/// 0 (off) to 3; 1 until TraceSelectLevel has run.
std::uint32_t TraceLevel();

/// Chooses the level by the first of "-debug1", "-debug2" and "-debug3" behind argv[0], in any case, and
/// empties the log then; without one the level is 0 and the log is not touched. Returns the level.
std::uint32_t TraceSelectLevel(int argc, const char* const argv[]);

/// Appends one formatted line to the log when the level is at least `level`; below it nothing is formatted.
/// The line is dropped when the log cannot be opened.
void TraceWith(std::u16string_view format, std::uint32_t level, std::span<const FormatArgument> arguments);

template <class... Arguments>
void Trace(std::u16string_view format, std::uint32_t level, const Arguments&... arguments) {
  TraceWith(format, level, FormatArguments<sizeof...(Arguments)>{FormatArgument(arguments)...});
}

/// At level 2 and above: the title, then rows of 16 bytes. The last row is always full: it shows what follows
/// `length` in `buffer`, and zeros past its end. A byte CCh shows as blanks.
void TraceHexDump(std::u16string_view title, std::span<const std::uint8_t> buffer, std::size_t length);

/// Writes "NAME [ENTRY]" when built and "NAME [EXIT]" when destroyed, at level 3.
class TraceScope {
 public:
  /// `name` must outlive the scope; a literal does.
  explicit TraceScope(std::u16string_view name);
  ~TraceScope();
  TraceScope(const TraceScope&) = delete;
  TraceScope& operator=(const TraceScope&) = delete;

 private:
  std::u16string_view name_;
};

}  // namespace varnok
