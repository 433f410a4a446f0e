#include "firmware/uefi/console.h"

#include <string>

#include "firmware/firmware.h"
#include "firmware/uefi/runtime.h"

namespace varnok::uefi {
namespace {

// An input file of the shell begins with it; no key does.
constexpr char16_t kByteOrderMark = 0xFEFF;
constexpr UINTN kTabWidth = 8;
// A keyboard hardly ever reports a key that is none. Input from a place without characters, as the shell's
// NUL, does nothing else.
constexpr int kMostMisses = 1000;

// Under redirection the shell puts its own output in this place, so that the text reaches the file.
void Put(const std::u16string& text) {
  SIMPLE_TEXT_OUTPUT_INTERFACE* output = SystemTable().ConOut;
  if (!text.empty()) output->OutputString(output, ToEfi(text.c_str()));
}

/// A terminal follows a TAB by itself; a graphics console does not know it.
void PutTab() {
  SIMPLE_TEXT_OUTPUT_INTERFACE* output = SystemTable().ConOut;
  auto column = static_cast<UINTN>(output->Mode->CursorColumn);
  auto row = static_cast<UINTN>(output->Mode->CursorRow);
  Put(u"\t");
  UINTN columns = 0;
  UINTN rows = 0;
  UINTN stop = (column / kTabWidth + 1) * kTabWidth;
  Status status = output->QueryMode(output, static_cast<UINTN>(output->Mode->Mode), &columns, &rows);
  if (!IsError(status) && stop < columns) output->SetCursorPosition(output, stop, row);
}

}  // namespace

void Console::Write(std::u16string_view text) {
  std::u16string shown;
  shown.reserve(text.size() + 8);
  for (char16_t character : text) {
    if (character == u'\n' && previous_ != u'\r') shown += u'\r';
    shown += character;
    previous_ = character;
  }
  if (shown.find(u'\t') == std::u16string::npos || shell_.OutputIsFile()) return Put(shown);
  for (std::size_t start = 0;;) {
    std::size_t tab = shown.find(u'\t', start);
    Put(shown.substr(start, tab - start));
    if (tab == std::u16string::npos) return;
    PutTab();
    start = tab + 1;
  }
}

void Console::WriteError(std::u16string_view text) {
  std::u16string shown;
  for (char16_t character : text) {
    if (character == u'\n') shown += u'\r';
    shown += character;
  }
  SIMPLE_TEXT_OUTPUT_INTERFACE* output = SystemTable().StdErr;
  if (output == nullptr) output = SystemTable().ConOut;
  output->OutputString(output, ToEfi(shown.c_str()));
}

char16_t Console::ReadKey() {
  SIMPLE_INPUT_INTERFACE* input = SystemTable().ConIn;
  for (int misses = 0;; ++misses) {
    if (misses == kMostMisses || shell_.InputFileHasEnded())
      EndProgram(u"\r\nThe input has ended.\r\n", kInputEndedStatus);
    UINTN index = 0;
    if (IsError(BootServices().WaitForEvent(1, &input->WaitForKey, &index)))
      EndProgram(u"\r\nThe console cannot wait for a key.\r\n", uefi_status::kDeviceError);
    EFI_INPUT_KEY key{};
    Status status = input->ReadKeyStroke(input, &key);
    bool isKey = key.UnicodeChar != kByteOrderMark && (key.UnicodeChar != 0 || key.ScanCode != 0);
    if (status == kSuccess && isKey) return key.UnicodeChar;
    if (IsError(status) && status != uefi_status::kNotReady)
      EndProgram(u"\r\nThe console gives no key.\r\n", uefi_status::kDeviceError);
  }
}

}  // namespace varnok::uefi
