// The callbacks that managers and the script engine are given at start, so that none of them knows a console.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "firmware/firmware.h"

namespace varnok {

enum class ProgressStyle : std::uint32_t {
  Text = 1,          ///< the prefix alone
  CountOfTotal = 2,  ///< "current of total", rewritten in place
  Percent = 3,       ///< "current% Done", rewritten in place until 100
};

/// Shows how far a long operation is; returns 0.
using ProgressCallback = int (*)(ProgressStyle style, std::u16string_view prefix, std::uint32_t current,
                                 std::uint32_t total);

/// Shows a text as it is.
using DisplayCallback = void (*)(std::u16string_view text);

/// Reads one key as an 8-bit character; returns the number of bytes stored, 0 or less on failure.
using InputCharCallback = int (*)(char& character);

/// Reads an environment variable, at most `capacity` characters of it; false when there is none.
using GetEnvVarCallback = bool (*)(std::u16string_view name, std::u16string& value, std::size_t capacity);

/// Dumps `length` bytes to an open file, or to the console when `stream` is null.
using DisplayHexCallback = void (*)(const std::uint8_t* bytes, std::size_t length, File* stream);

}  // namespace varnok
