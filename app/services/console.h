// Console services: printed text, progress, keys, hex dumps and the paging prompt. Showing text takes no
// memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "app/services/callbacks.h"
#include "app/services/format.h"

namespace varnok {

/// Shows text on the console. Of the control characters only BS, TAB, LF and CR reach it; any other shows as
/// '?', whatever a device, a table or a script holds.
void PrintText(std::u16string_view text);

void PrintText(const char* text);

/// Formats and shows text.
void PrintWith(const char* format, const FormatArgument* arguments, std::size_t count);
template <class... Arguments>
void Print(const char* format, const Arguments&... arguments) {
  const FormatArguments<sizeof...(Arguments)> list{FormatArgument(arguments)...};
  PrintWith(format, list.data(), list.size());
}

/// Formats and shows one line on the error output, with the program's name in front: what the operator must
/// know and the console's own texts do not say. Control characters show as '?'.
void WarnWith(const char* format, const FormatArgument* arguments, std::size_t count);
template <class... Arguments>
void Warn(const char* format, const Arguments&... arguments) {
  const FormatArguments<sizeof...(Arguments)> list{FormatArgument(arguments)...};
  WarnWith(format, list.data(), list.size());
}

/// The paging flag: long displays stop at every page while it is set. No option sets it today.
bool IsPagingOn();
void SetPaging(bool on);

/// The temporary-file flag: displays and loads write to a temporary file while it is set. No option sets it
/// today.
bool IsTemporaryFileOn();
void SetTemporaryFile(bool on);

/// The display callback.
void DisplayText(std::u16string_view text);

/// The key reader. With `push` not 0 the character is kept for the next call and returned; else the kept
/// character or the next key stroke, 0 for a key without a character.
char16_t GetKey(char16_t push);

/// The input-character callback: one key as an 8-bit character. A key that has none, on a keyboard of another
/// script, reads as 0, as cursor keys do: no question takes it for an answer. Returns the number of bytes
/// stored, 1.
int InputChar(char& character);

/// The environment-variable callback: `value` receives at most `capacity` characters.
bool GetEnvVar(std::u16string_view name, std::u16string& value, std::size_t capacity);

/// The hex-dump callback: rows of 16 bytes, into `stream` or on the console when it is null.
void DisplayHex(const std::uint8_t* bytes, std::size_t length, File* stream);

/// The paging prompt: true to go on, false to stop. Non-stop clears the paging flag.
bool PromptMore();

namespace Dornquist {
/// The progress callback; returns 0.
int DisplayProgress(ProgressStyle style, std::u16string_view prefix, std::uint32_t current,
                    std::uint32_t total);
}  // namespace Dornquist

}  // namespace varnok
