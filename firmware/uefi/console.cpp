#include "firmware/uefi/console.h"

#include <string>

#include "firmware/uefi/runtime.h"

namespace varnok::uefi {
namespace {

// An input file of the shell begins with it; no key does.
constexpr char16_t kByteOrderMark = 0xFEFF;

}  // namespace

void Console::Write(std::u16string_view text) {
  std::u16string shown;
  shown.reserve(text.size() + 8);
  for (char16_t character : text) {
    if (character == u'\n' && previous_ != u'\r') shown += u'\r';
    shown += character;
    previous_ = character;
  }
  // Under redirection the shell puts its own output in this place, so that the text reaches the file.
  SIMPLE_TEXT_OUTPUT_INTERFACE* output = SystemTable().ConOut;
  if (!shown.empty()) output->OutputString(output, ToEfi(shown.c_str()));
}

char16_t Console::ReadKey() {
  SIMPLE_INPUT_INTERFACE* input = SystemTable().ConIn;
  for (;;) {
    if (shell_.InputFileHasEnded()) EndProgram(u"\r\nThe input has ended.\r\n", uefi_status::kEndOfFile);
    UINTN index = 0;
    if (IsError(BootServices().WaitForEvent(1, &input->WaitForKey, &index)))
      EndProgram(u"\r\nThe console cannot wait for a key.\r\n", uefi_status::kDeviceError);
    EFI_INPUT_KEY key{};
    Status status = input->ReadKeyStroke(input, &key);
    if (status == kSuccess && key.UnicodeChar == kByteOrderMark) continue;
    if (status == kSuccess) return key.UnicodeChar;
    if (status != uefi_status::kNotReady)
      EndProgram(u"\r\nThe console gives no key.\r\n", uefi_status::kDeviceError);
  }
}

}  // namespace varnok::uefi
