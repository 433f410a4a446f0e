#include "app/services/trace.h"

#include <array>
#include <memory>
#include <span>

#include "app/services/text.h"
#include "app/services/text_output.h"
#include "firmware/firmware.h"
#include "firmware/lasting.h"

namespace varnok {
namespace {

constexpr std::u16string_view kLogName = u"DBGLOG.txt";
// Kept: every row has all its bytes, the last one too; readers of logs know rows of one width.
constexpr std::size_t kRowLength = 16;
// Kept: blanked, as the fill pattern of uninitialised memory; a fill pattern is not content.
constexpr std::uint8_t kFillPattern = 0xCC;

struct TraceState {
  std::uint32_t level = 1;
};

std::uint32_t& CurrentLevel() {
  return Lasting<TraceState>().level;
}

/// A log that cannot be opened or is full loses what does not fit.
void AppendToLog(std::span<char16_t> gathered) {
  (void)PutTextBytes({gathered.data(), gathered.size()}, [](std::span<const std::uint8_t> bytes) {
    return TheFirmware().AppendToFile(kLogName, bytes);
  });
}

/// One opening of the log for as much text as its room holds: a line, or some rows of a dump.
class LogText {
 public:
  template <class... Arguments>
  void Put(const char* format, const Arguments&... arguments) {
    const FormatArguments<sizeof...(Arguments)> list{FormatArgument(arguments)...};
    FormatTo(text_, format, list.data(), list.size());
  }
  TextSink& Sink() { return text_; }

 private:
  GatheredText<decltype(&AppendToLog)> text_{AppendToLog};
};

}  // namespace

std::uint32_t TraceSelectLevel(int argc, const char* const argv[]) {
  static constexpr std::array<std::string_view, 3> kSwitches{"-debug1", "-debug2", "-debug3"};
  std::uint32_t& chosen = CurrentLevel();
  chosen = 0;
  for (int i = 1; i < argc && chosen == 0; ++i) {
    for (std::uint32_t level = 1; level <= kSwitches.size(); ++level)
      if (EqualsIgnoreCase(argv[i], kSwitches[level - 1])) chosen = level;
  }
  std::unique_ptr<File> log;
  if (chosen != 0) (void)TheFirmware().OpenFile(kLogName, FileMode::Write, log);
  return chosen;
}

void TraceWith(const char* format, std::uint32_t level, const FormatArgument* arguments, std::size_t count) {
  if (level > CurrentLevel()) return;
  LogText line;
  FormatTo(line.Sink(), format, arguments, count);
  line.Put("\r\n");
}

void Trace(const char* text, std::uint32_t level) {
  TraceWith(text, level, nullptr, 0);
}

void TraceFailure(const char* operation, const char* reason) {
  Trace("%s - %s", 1, operation, reason);
}

Status Fail(const char* operation, const char* reason, Status status) {
  TraceFailure(operation, reason);
  return status;
}

TraceScope::TraceScope(const char* name) : TraceScope(nullptr, name) {}

TraceScope::TraceScope(const char* owner, const char* method) : owner_(owner), method_(method) {
  Write("ENTRY");
}

TraceScope::~TraceScope() {
  Write("EXIT");
}

void TraceScope::Write(const char* way) const {
  if (owner_ == nullptr)
    Trace("%s [%s]", 3, method_, way);
  else
    Trace("%s::%s [%s]", 3, owner_, method_, way);
}

void TraceHexDump(const char* title, std::span<const std::uint8_t> buffer, std::size_t length) {
  if (CurrentLevel() < 2) return;
  LogText log;
  log.Put("%s\r\n", title);
  for (std::size_t start = 0; start < length; start += kRowLength) {
    auto byteAt = [buffer](std::size_t i) { return i < buffer.size() ? buffer[i] : std::uint8_t{0}; };
    for (std::size_t i = start; i < start + kRowLength; ++i)
      byteAt(i) == kFillPattern ? log.Put("   ") : log.Put(" %02X", byteAt(i));
    log.Put("\t");
    for (std::size_t i = start; i < start + kRowLength; ++i)
      log.Put("%c", byteAt(i) >= 32 && byteAt(i) <= 126 ? static_cast<char>(byteAt(i)) : '.');
    log.Put("\r\n");
  }
  log.Put("\r\n");
}

}  // namespace varnok
