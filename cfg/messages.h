// The messages that several commands share.
#pragma once

#include <string_view>

namespace varnok::cfg_message {

/// What the engine is called in its internal errors.
inline constexpr const char* kModuleName = "cfgfile.dll";

inline constexpr std::u16string_view kMissingParameter = u"The %hs command is missing its %ls parameter.";
inline constexpr std::u16string_view kTooManyParameters =
    u"Too many parameters for the %hs command.\n   The parameters '%hs' were not accepted.";
inline constexpr std::u16string_view kReadFailed = u"Reading from file failed.";
inline constexpr std::u16string_view kLineTooLong =
    u"Too many characters on the line: %d.  Must be less than 255.";
inline constexpr std::u16string_view kOddQuotes = u"Invalid number of quotes in line.";
inline constexpr std::u16string_view kInternalError = u"Unrecoverable interanl error in '%hs' - command %hs.";
inline constexpr std::u16string_view kInternalFileError = u"Internal file error in '%hs'.";
inline constexpr std::u16string_view kUnknownCommand = u"%hs is not a valid command.";
inline constexpr std::u16string_view kInvalidInput = u"%hs is not a valid input for the %hs command.";
inline constexpr std::u16string_view kNullFileName = u"%ls file name is null.";
inline constexpr std::u16string_view kFileNotFound = u"The file '%ls' was not found.";
inline constexpr std::u16string_view kCannotRetrieve = u"Unable to retrieve file %ls.";
// FRUADDRESS without a FRUNAME is reported under this name, too.
inline constexpr std::u16string_view kNoFruName = u"FRUAREA command found without matching FRUNAME.";
inline constexpr std::u16string_view kNoFruArea = u"FRUFIELD command found without matching FRUAREA.";
inline constexpr std::u16string_view kNotHexadecimal =
    u"%hs is not a valid input for the %hs command.  The value must be a valid hexidecimal number.";

inline constexpr std::u16string_view kBadBus =
    u"The bus address %02X is not valid with the slave address %02X.";

}  // namespace varnok::cfg_message
