// Status codes of the FRU subsystem (module 07).
#pragma once

#include "firmware/status.h"

namespace varnok::fru_status {

inline constexpr Status kBase = 0xC000000000070000;

/// Common header checksum mismatch while decoding bytes; also a failed start of the manager, a device address
/// that cannot be read from arguments, and a device that cannot be displayed.
inline constexpr Status kHeaderChecksum = kBase | 0x01;
inline constexpr Status kInitializeFailed = kBase | 0x01;
inline constexpr Status kBadAddressArguments = kBase | 0x01;
inline constexpr Status kDeviceNotFound = kBase | 0x01;
inline constexpr Status kNotInitialized = kBase | 0x05;  ///< the manager was not started
inline constexpr Status kFileNotRead = kBase | 0x07;     ///< FRU file without a name, not opened or not read
inline constexpr Status kFileNotParsed = kBase | 0x08;   ///< FRU file that breaks a rule of its format
inline constexpr Status kNoListLoaded =
    kBase | 0x0B;  ///< no FRU was loaded; also a failed validation or copy
inline constexpr Status kNothingSelected = kBase | 0x0C;  ///< no FRU, area or field is selected
inline constexpr Status kNoSuchItem = kBase | 0x0D;       ///< the FRU, area or field does not exist
inline constexpr Status kOutOfMemory = kBase | 0x0E;
inline constexpr Status kInternalUseArea = kBase | 0x11;  ///< the device's internal use area is invalid
inline constexpr Status kProductInfoArea = kBase | 0x12;  ///< the device's product info area is invalid
inline constexpr Status kBoardInfoArea = kBase | 0x13;    ///< the device's board info area is invalid
inline constexpr Status kChassisInfoArea = kBase | 0x14;  ///< the device's chassis info area is invalid
inline constexpr Status kMultiRecordArea =
    kBase | 0x15;  ///< the device's records are invalid, or no such record
inline constexpr Status kInvalidHeader = kBase | 0x16;  ///< the device's common header does not sum to zero
inline constexpr Status kMultiRecordMemory = kBase | 0x20;  ///< no memory for records, for an image or a name
inline constexpr Status kNotIpmiFru = kBase | 0x25;         ///< the header's format version is not 1
inline constexpr Status kGetFieldFailed = kBase | 0x26;
inline constexpr Status kSetFieldFailed = kBase | 0x27;
inline constexpr Status kReadFailed = kBase | 0x28;   ///< the device refused a read, or answered it short
inline constexpr Status kWriteFailed = kBase | 0x29;  ///< the device refused a write; also a failed commit
inline constexpr Status kBlockTagMissing = kBase | 0x2A;  ///< the line given does not open the area block
inline constexpr Status kBlockTooBig = kBase | 0x2B;      ///< an area block of more than 512 bytes
inline constexpr Status kBlockCharacter =
    kBase | 0x2C;  ///< a character of an area block is no hexadecimal digit
inline constexpr Status kAreaNotWritten = kBase | 0x2E;  ///< a block of an area could not be written
inline constexpr Status kUnexpected = kBase | 0x2F;  ///< missing or short buffer, broken list, differing area
inline constexpr Status kUnsupported = kBase | 0x30;   ///< the area has no such operation
inline constexpr Status kOutputFile = kBase | 0x31;    ///< the output file cannot be opened
inline constexpr Status kFieldsTooBig = kBase | 0x32;  ///< the fields do not fit into the requested size
inline constexpr Status kAreasTooBig = kBase | 0x33;   ///< the areas do not fit into the device

}  // namespace varnok::fru_status
