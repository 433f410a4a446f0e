// UTF-8, Linux's text, to and from the program's 16-bit and 8-bit (Latin-1) text.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace varnok::host {

/// Ill-formed bytes become U+FFFD, characters past U+FFFF surrogate pairs.
std::u16string FromUtf8(std::string_view text);

/// An unpaired surrogate becomes U+FFFD.
std::string ToUtf8(std::u16string_view text);

/// The beginning of the text that fits into `room` (at least 4 bytes), which is taken off the text.
std::string_view TakeUtf8(std::u16string_view& text, std::span<char> room);

/// Latin-1 has a byte for the characters up to FFh; any other becomes '?'.
std::string Latin1FromUtf8(std::string_view text);
std::vector<std::string> Latin1FromUtf8(std::span<const std::string> texts);
std::string Utf8FromLatin1(std::string_view text);

}  // namespace varnok::host
