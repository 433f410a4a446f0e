// 16-bit text for the console, 8-bit text for files: conversion and comparison. 8-bit text is Latin-1, so
// that every byte of a device or a file has a character and comes back as the same byte.
#pragma once

#include <string>
#include <string_view>

namespace varnok {

/// Each byte becomes the character of the same number.
std::u16string Widen(std::string_view text);

/// Each character becomes one byte; one above FFh becomes '?'.
std::string Narrow(std::u16string_view text);

/// The text up to its first NUL, for the fixed buffers of devices and tables.
std::string_view UpToNul(std::string_view text);

// ASCII case only: keywords, options, tags and file extensions are ASCII.
char ToUpper(char character);
char16_t ToUpper(char16_t character);
bool EqualsIgnoreCase(std::string_view left, std::string_view right);
bool EqualsIgnoreCase(std::u16string_view left, std::u16string_view right);

/// The value of a hexadecimal digit, either case; -1 for any other character.
int HexDigitValue(char character);

/// Blank or tab: what separates words and is trimmed from lines.
constexpr bool IsBlank(char character) {
  return character == ' ' || character == '\t';
}

}  // namespace varnok
