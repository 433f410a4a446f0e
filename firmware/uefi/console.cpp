#include "firmware/uefi/console.h"

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

/// Text for one output device, in room of its own. Under redirection the shell puts its own output in
/// ConOut's place, so that the text reaches the file.
class Output {
 public:
  explicit Output(SIMPLE_TEXT_OUTPUT_INTERFACE* device) : device_(device) {}
  ~Output() { Flush(); }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  void Put(char16_t character) {
    if (count_ == kRoom) Flush();
    room_[count_++] = character;
  }
  void Flush() {
    room_[count_] = 0;
    if (count_ > 0) device_->OutputString(device_, ToEfi(room_));
    count_ = 0;
  }
  SIMPLE_TEXT_OUTPUT_INTERFACE* Device() { return device_; }

 private:
  static constexpr std::size_t kRoom = 128;
  SIMPLE_TEXT_OUTPUT_INTERFACE* device_;
  char16_t room_[kRoom + 1] = {};
  std::size_t count_ = 0;
};

/// A terminal follows a TAB by itself; a graphics console does not know it.
void PutTab(Output& out) {
  out.Flush();
  SIMPLE_TEXT_OUTPUT_INTERFACE* output = out.Device();
  auto column = static_cast<UINTN>(output->Mode->CursorColumn);
  auto row = static_cast<UINTN>(output->Mode->CursorRow);
  out.Put(u'\t');
  out.Flush();
  UINTN columns = 0;
  UINTN rows = 0;
  UINTN stop = (column / kTabWidth + 1) * kTabWidth;
  Status status = output->QueryMode(output, static_cast<UINTN>(output->Mode->Mode), &columns, &rows);
  if (!IsError(status) && stop < columns) output->SetCursorPosition(output, stop, row);
}

}  // namespace

void Console::Write(std::u16string_view text) {
  Output output(SystemTable().ConOut);
  const bool isScreen = !shell_.OutputIsFile();
  for (char16_t character : text) {
    if (character == u'\n' && previous_ != u'\r') output.Put(u'\r');
    if (character == u'\t' && isScreen)
      PutTab(output);
    else
      output.Put(character);
    previous_ = character;
  }
}

void Console::WriteError(std::u16string_view text) {
  Output output(SystemTable().StdErr != nullptr ? SystemTable().StdErr : SystemTable().ConOut);
  for (char16_t character : text) {
    if (character == u'\n') output.Put(u'\r');
    output.Put(character);
  }
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
