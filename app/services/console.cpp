#include "app/services/console.h"

#include <algorithm>
#include <array>
#include <span>

#include "app/services/text.h"
#include "app/services/text_output.h"
#include "app/services/trace.h"
#include "firmware/firmware.h"
#include "firmware/lasting.h"
#include "firmware/pool.h"

namespace varnok {
namespace {

constexpr std::size_t kProgressLength = 255;

struct ConsoleState {
  bool isPagingOn = false;
  bool isTemporaryFileOn = false;
  char16_t pushedKey = 0;
};

ConsoleState& TheConsole() {
  return Lasting<ConsoleState>();
}

bool IsControl(char16_t character) {
  return character < 0x20 || (character >= 0x7F && character <= 0x9F);
}

/// Hands text to the machine by `write`, with '?' for every control character but those of `kept`.
template <void (Firmware::*write)(std::u16string_view)>
void Show(std::span<char16_t> text, std::u16string_view kept) {
  std::replace_if(
      text.begin(), text.end(),
      [kept](char16_t character) {
        return IsControl(character) && kept.find(character) == std::u16string_view::npos;
      },
      u'?');
  (TheFirmware().*write)({text.data(), text.size()});
}

void ShowOnConsole(std::span<char16_t> text) {
  Show<&Firmware::WriteConsole>(text, u"\b\t\n\r");
}

void ShowAsError(std::span<char16_t> text) {
  Show<&Firmware::WriteErrorOutput>(text, {});
}

void FormatByte(TextSink& sink, const char* format, FormatArgument byte) {
  FormatTo(sink, format, &byte, 1);
}

/// Rows of 16 bytes; a blank shows as '.', unlike in the trace log.
void PutHexRows(TextSink& sink, std::span<const std::uint8_t> bytes) {
  constexpr std::size_t kRowLength = 16;
  for (; !bytes.empty(); bytes = bytes.subspan(std::min(kRowLength, bytes.size()))) {
    auto row = bytes.first(std::min(kRowLength, bytes.size()));
    auto putMissing = [&] {
      for (std::size_t i = row.size(); i < kRowLength; ++i) sink.Append(u"   ");
    };
    for (std::uint8_t byte : row) FormatByte(sink, " %02X", byte);
    putMissing();
    sink.Append(u"   ");
    for (std::uint8_t byte : row)
      FormatByte(sink, "%c", byte >= 33 && byte <= 126 ? static_cast<char>(byte) : '.');
    putMissing();
    sink.Append(u"\n");
  }
}

}  // namespace

void PrintText(std::u16string_view text) {
  GatheredText(ShowOnConsole).Append(text);
}

void PrintText(const char* text) {
  Print("%s", text);
}

void PrintWith(const char* format, const FormatArgument* arguments, std::size_t count) {
  GatheredText console(ShowOnConsole);
  FormatTo(console, format, arguments, count);
}

void WarnWith(const char* format, const FormatArgument* arguments, std::size_t count) {
  TheFirmware().WriteErrorOutput(u"varnok: ");
  {
    GatheredText line(ShowAsError);
    FormatTo(line, format, arguments, count);
  }
  TheFirmware().WriteErrorOutput(u"\n");
}

bool IsPagingOn() {
  return TheConsole().isPagingOn;
}
void SetPaging(bool on) {
  TheConsole().isPagingOn = on;
}

bool IsTemporaryFileOn() {
  return TheConsole().isTemporaryFileOn;
}
void SetTemporaryFile(bool on) {
  TheConsole().isTemporaryFileOn = on;
}

void DisplayText(std::u16string_view text) {
  if (text.data() != nullptr) PrintText(text);
}

char16_t GetKey(char16_t push) {
  char16_t& pushed = TheConsole().pushedKey;
  if (push != 0) return pushed = push;
  TheFirmware().FlushConsole();
  char16_t key = pushed != 0 ? pushed : TheFirmware().ReadKey();
  pushed = 0;
  TheFirmware().FlushConsole();
  return key;
}

int InputChar(char& character) {
  char16_t key = GetKey(0);
  character = key > 0xFF ? '\0' : static_cast<char>(key);
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
  if (stream == nullptr) {
    GatheredText console(ShowOnConsole);
    return PutHexRows(console, {bytes, length});
  }
  // A file that cannot take the dump does not stop the display.
  GatheredText file([stream](std::span<char16_t> text) {
    (void)WriteText(*stream, {text.data(), text.size()});
  });
  PutHexRows(file, {bytes, length});
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
  std::array<char16_t, kProgressLength> room;
  switch (style) {
    case ProgressStyle::Text:
      Print("%s", prefix);
      break;
    case ProgressStyle::CountOfTotal:
      Print("%s\r", FormatInto(room, "%s%d of %d.", prefix, current, total));
      break;
    case ProgressStyle::Percent:
      if (current < 100)
        Print("%s\r", FormatInto(room, "%s%d%% Done", prefix, current));
      else
        Print("%s%d%% Done\n", prefix, 100);
      break;
  }
  return 0;
}

}  // namespace varnok
