#include "app/services/trace.h"

#include <array>
#include <memory>
#include <string>

#include "app/services/text.h"
#include "app/services/text_output.h"
#include "firmware/firmware.h"

namespace varnok {
namespace {

constexpr std::u16string_view kLogName = u"DBGLOG.txt";
constexpr std::size_t kRowLength = 16;
// The fill pattern of uninitialised memory, blanked so that data stands out.
constexpr std::uint8_t kFillPattern = 0xCC;

std::uint32_t currentLevel = 1;

void AppendToLog(std::u16string_view text) {
  std::unique_ptr<File> log;
  if (TheFirmware().OpenFile(kLogName, FileMode::Append, log) == kSuccess) WriteText(*log, text);
}

}  // namespace

std::uint32_t TraceLevel() {
  return currentLevel;
}

std::uint32_t TraceSelectLevel(int argc, const char* const argv[]) {
  static constexpr std::array<std::string_view, 3> kSwitches{"-debug1", "-debug2", "-debug3"};
  currentLevel = 0;
  for (int i = 1; i < argc && currentLevel == 0; ++i) {
    for (std::uint32_t level = 1; level <= kSwitches.size(); ++level)
      if (EqualsIgnoreCase(argv[i], kSwitches[level - 1])) currentLevel = level;
  }
  std::unique_ptr<File> log;
  if (currentLevel != 0) (void)TheFirmware().OpenFile(kLogName, FileMode::Write, log);
  return currentLevel;
}

void TraceWith(const char* format, std::uint32_t level, const FormatArgument* arguments, std::size_t count) {
  if (level <= currentLevel) AppendToLog(FormatWideWith(format, arguments, count) + u"\r\n");
}

void Trace(const char* text, std::uint32_t level) {
  TraceWith(text, level, nullptr, 0);
}

Status Fail(const char* operation, const char* reason, Status status) {
  Trace("%s - %s", 1, operation, reason);
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
  if (currentLevel < 2) return;
  std::u16string dump = FormatWide("%s\r\n", title);
  for (std::size_t start = 0; start < length; start += kRowLength) {
    std::u16string characters;
    for (std::size_t i = start; i < start + kRowLength; ++i) {
      std::uint8_t byte = i < buffer.size() ? buffer[i] : std::uint8_t{0};
      dump += byte == kFillPattern ? std::u16string(3, u' ') : FormatWide(" %02X", byte);
      characters += byte >= 32 && byte <= 126 ? static_cast<char16_t>(byte) : u'.';
    }
    dump += u'\t' + characters + u"\r\n";
  }
  AppendToLog(dump + u"\r\n");
}

}  // namespace varnok
