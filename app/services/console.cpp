#include "app/services/console.h"

#include <algorithm>

#include "app/services/text.h"
#include "app/services/text_output.h"
#include "app/services/trace.h"
#include "firmware/firmware.h"
#include "firmware/pool.h"

namespace varnok {
namespace {

constexpr std::size_t kProgressLength = 255;

bool pagingOn = false;
char16_t pushedKey = 0;

bool IsHarmless(char16_t character) {
  if (character == u'\b' || character == u'\t' || character == u'\n' || character == u'\r') return true;
  return character >= 0x20 && (character < 0x7F || character > 0x9F);
}

std::u16string WithoutControls(std::u16string text) {
  std::replace_if(text.begin(), text.end(), [](char16_t character) { return !IsHarmless(character); }, u'?');
  return text;
}

}  // namespace

void PrintText(std::u16string_view text) {
  TheFirmware().WriteConsole(WithoutControls(std::u16string(text)));
}

void PrintText(const char* text) {
  PrintText(Widen(text));
}

void PrintWith(const char* format, const FormatArgument* arguments, std::size_t count) {
  PrintText(FormatWideWith(format, arguments, count));
}

void WarnWith(const char* format, const FormatArgument* arguments, std::size_t count) {
  TheFirmware().WriteErrorOutput(u"varnok: " + WithoutControls(FormatWideWith(format, arguments, count)) + u"\n");
}

bool IsPagingOn() {
  return pagingOn;
}
void SetPaging(bool on) {
  pagingOn = on;
}

void DisplayText(std::u16string_view text) {
  if (text.data() != nullptr) PrintText(text);
}

char16_t GetKey(char16_t push) {
  if (push != 0) return pushedKey = push;
  TheFirmware().FlushConsole();
  char16_t key = pushedKey != 0 ? pushedKey : TheFirmware().ReadKey();
  pushedKey = 0;
  TheFirmware().FlushConsole();
  return key;
}

int InputChar(char& character) {
  char16_t key = GetKey(0);
  if (key > 0xFF) return -1;
  character = static_cast<char>(key);
  return 1;
}

bool GetEnvVar(std::u16string_view name, std::u16string& value, std::size_t capacity) {
  value.clear();
  PoolBuffer narrowName;
  if (!narrowName.Allocate(name.size() + 1)) return false;
  std::transform(name.begin(), name.end(), narrowName.data(), [](char16_t character) {
    return static_cast<std::uint8_t>(character > 0xFF ? '?' : character);
  });
  std::u16string found;
  if (!TheFirmware().GetEnvironmentVariable(std::string(narrowName.data(), narrowName.data() + name.size()),
                                            found))
    return false;
  value = found.substr(0, capacity);
  return true;
}

void DisplayHex(const std::uint8_t* bytes, std::size_t length, File* stream) {
  constexpr std::size_t kRowLength = 16;
  std::u16string dump;
  for (std::size_t start = 0; start < length; start += kRowLength) {
    std::size_t count = std::min(kRowLength, length - start);
    std::u16string missing(3 * (kRowLength - count), u' ');
    std::u16string characters;
    for (std::size_t i = start; i < start + count; ++i) {
      dump += FormatWide(" %02X", bytes[i]);
      // A blank shows as '.', unlike in the trace log.
      characters += bytes[i] >= 33 && bytes[i] <= 126 ? static_cast<char16_t>(bytes[i]) : u'.';
    }
    dump += missing + u"   " + characters + missing + u"\n";
  }
  if (stream == nullptr)
    PrintText(dump);
  else
    (void)WriteText(*stream, dump);
}

bool PromptMore() {
  PrintText("\n[S]top, [N]on-stop, or [M]ore");
  for (;;) {
    switch (ToUpper(GetKey(0))) {
      case u'M':
        PrintText("\n\n");
        return true;
      case u'N':
        PrintText("\n\n");
        SetPaging(false);
        return true;
      case u'S':
        return false;
      default:
        break;
    }
  }
}

int Dornquist::DisplayProgress(ProgressStyle style, std::u16string_view prefix, std::uint32_t current,
                               std::uint32_t total) {
  TraceScope scope("Dornquist::DisplayProgress");
  switch (style) {
    case ProgressStyle::Text:
      Print("%s", prefix);
      break;
    case ProgressStyle::CountOfTotal:
      Print("%s\r", FormatUpTo(kProgressLength, "%s%d of %d.", prefix, current, total));
      break;
    case ProgressStyle::Percent:
      if (current < 100)
        Print("%s\r", FormatUpTo(kProgressLength, "%s%d%% Done", prefix, current));
      else
        Print("%s%d%% Done\n", prefix, 100);
      break;
  }
  return 0;
}

}  // namespace varnok
