// The messages that several commands share.
#pragma once

#include <cstdint>

namespace varnok::cfg_message {

/// What the engine is called in its internal errors.
inline constexpr const char* kModuleName = "cfgfile.dll";

inline constexpr const char* kMissingParameter = "The %s command is missing its %s parameter.";
inline constexpr const char* kTooManyParameters =
    "Too many parameters for the %s command.\n   The parameters '%s' were not accepted.";
inline constexpr const char* kReadFailed = "Reading from file failed.";
inline constexpr const char* kLineTooLong = "Too many characters on the line: %d.  Must be less than 255.";
inline constexpr const char* kOddQuotes = "Invalid number of quotes in line.";
inline constexpr const char* kInternalError = "Unrecoverable interanl error in '%s' - command %s.";
inline constexpr const char* kInternalFileError = "Internal file error in '%s'.";
inline constexpr const char* kUnknownCommand = "%s is not a valid command.";
inline constexpr const char* kInvalidInput = "%s is not a valid input for the %s command.";
inline constexpr const char* kNullFileName = "%s file name is null.";
inline constexpr const char* kFileNotFound = "The file '%s' was not found.";
inline constexpr const char* kCannotRetrieve = "Unable to retrieve file %s.";
// FRUADDRESS without a FRUNAME is reported under this name, too.
inline constexpr const char* kNoFruName = "FRUAREA command found without matching FRUNAME.";
inline constexpr const char* kNoFruArea = "FRUFIELD command found without matching FRUAREA.";
inline constexpr const char* kNotHexadecimal =
    "%s is not a valid input for the %s command.  The value must be a valid hexidecimal number.";

/// The bus that stands for none; it goes with the BMC's own address only.
inline constexpr std::uint8_t kNoBus = 0xFF;
inline constexpr const char* kBadBus = "The bus address %02X is not valid with the slave address %02X.";

}  // namespace varnok::cfg_message
