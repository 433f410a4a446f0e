// Single keys from standard input: a terminal in raw mode, or the characters of a pipe or file.
#pragma once

#include <optional>

namespace varnok::host {

/// The next key's Unicode character, 0 for a key without one (cursor and function keys, Escape); nothing when
/// the input has ended, or gives only zeros. The first call on a terminal turns off its line editing and
/// echo; the terminal is put back when the program ends, stops or is killed by a signal that can be caught.
std::optional<char16_t> ReadKey();

/// Puts the terminal back and ends by the signal's default action. A handler may call it.
[[noreturn]] void EndBySignal(int number);

/// The same for an end at once, with a status: nothing else that runs at the end does.
[[noreturn]] void EndAtOnce(int status);

}  // namespace varnok::host
