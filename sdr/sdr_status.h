// Status codes of the SDR subsystem.
#pragma once

#include "firmware/status.h"

namespace varnok::sdr_status {

inline constexpr Status kNoDataSet = 0xC000000000060001;        ///< a data set could not be created
inline constexpr Status kCannotReadFile = 0xC000000000060007;   ///< a line of the SDR file cannot be read
inline constexpr Status kCannotWriteFile = 0xC00000000006000A;  ///< a record could not be written to a file
inline constexpr Status kNotLoaded = 0xC00000000006000B;        ///< commit with no file loaded
inline constexpr Status kNotInitialized = 0xC00000000006000F;   ///< manager not initialised
inline constexpr Status kBadRecordLength = 0xC000000000060011;  ///< a record's length breaks its type's rule
inline constexpr Status kCompletionCode =
    0xC000000000060012;  ///< the BMC answered with a completion code not 0
inline constexpr Status kRequestFailed =
    0xC000000000060013;  ///< info, partial add or clear failed in transport
inline constexpr Status kTypeNotSupported = 0xC000000000060015;  ///< record type outside the supported eleven
inline constexpr Status kFileLength = 0xC000000000060016;      ///< the file's bytes differ from its _REC_LEN
inline constexpr Status kBadReservation = 0xC000000000060018;  ///< a reservation ID that is not 2 bytes
inline constexpr Status kReserveFailed = 0xC00000000006001F;   ///< reserve failed in transport
inline constexpr Status kReadFailed =
    0xC000000000060020;                                   ///< Get SDR failed, came short, or runs in a circle
inline constexpr Status kDifferent = 0xC000000000060021;  ///< read-back differs from the file
inline constexpr Status kOutOfMemory = 0xC000000000060023;  ///< record, list array or file name: no memory
inline constexpr Status kBadRecordInFile = 0xC000000000060026;  ///< _REC_LEN of 0, or a record's keys missing
inline constexpr Status kHeaderKeyMissing = 0xC000000000060028;  ///< end of the file, or a header key missing
inline constexpr Status kFileType = 0xC000000000060029;  ///< _SDR_TYPE differs from the record's type byte
inline constexpr Status kUnterminatedText = 0xC00000000006002A;  ///< quoted bytes without the closing quote
inline constexpr Status kValueTooWide = 0xC00000000006002B;      ///< a value wider than its binary field
inline constexpr Status kCannotOpenFile =
    0xC00000000006002E;  ///< the SDR file or the output file does not open
inline constexpr Status kRepositoryEmpty = 0xC00000000006002F;  ///< the BMC's repository holds no record
inline constexpr Status kFileTypeNotSupported =
    0xC000000000060031;                                    ///< the file names an unsupported record type
inline constexpr Status kNotDecoded = 0xC000000000060036;  ///< query before a successful decode
inline constexpr Status kFieldNotSelected = 0xC000000000060038;  ///< field query with no field selected
inline constexpr Status kTokenNotFound =
    0xC000000000060039;  ///< a key not found before ")" or the next record

}  // namespace varnok::sdr_status
