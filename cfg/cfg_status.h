// The status codes of the script engine, 0xC0000000000900nn.
#pragma once

#include "firmware/status.h"

namespace varnok::cfg_status {

inline constexpr Status kModuleBits = 0xC000000000090000;

inline constexpr Status kNotLoaded = kModuleBits | 0x01;        ///< no module state, or no script loaded
inline constexpr Status kNoBmcVersion = kModuleBits | 0x04;     ///< BMC type and version could not be read
inline constexpr Status kNoBridgedAnswer = kModuleBits | 0x04;  ///< a probe's bridged request got no answer
inline constexpr Status kNotInitialized = kModuleBits | 0x05;   ///< engine not initialised, or no parser
inline constexpr Status kFileNotFound = kModuleBits | 0x07;  ///< file missing, unnamed, or its path too long
inline constexpr Status kBadExtension = kModuleBits | 0x08;  ///< the script's name does not end in ".CFG"
inline constexpr Status kTooManyParameters =
    kModuleBits | 0x0B;                                    ///< extra token; a few commands' missing token too
inline constexpr Status kBadValue = kModuleBits | 0x0C;    ///< a value that is empty or out of its range
inline constexpr Status kBadLine = kModuleBits | 0x0D;     ///< line, token or number could not be read
inline constexpr Status kNoVariable = kModuleBits | 0x0E;  ///< environment variable missing
inline constexpr Status kNoInput = kModuleBits | 0x0F;     ///< the operator's input could not be read
inline constexpr Status kBadProbeType = kModuleBits | 0x10;  ///< unknown probe keyword; probe not made
inline constexpr Status kCommitRefused =
    kModuleBits | 0x11;                                    ///< nothing processed, or the BMC refresh failed
inline constexpr Status kNoSuchTag = kModuleBits | 0x12;   ///< tag index out of range, or an empty tag
inline constexpr Status kNoEndIf = kModuleBits | 0x13;     ///< block open at the end of the file
inline constexpr Status kOutOfPlace = kModuleBits | 0x15;  ///< command where it may not stand
inline constexpr Status kUnknownCommand =
    kModuleBits | 0x16;  ///< unknown keyword; too many menu items; a processor record without core count
inline constexpr Status kOutOfBlock = kModuleBits | 0x17;     ///< FRU command without its FRUNAME or FRUAREA
inline constexpr Status kBadNvsType = kModuleBits | 0x18;     ///< unknown NVS type
inline constexpr Status kBadFruArea = kModuleBits | 0x19;     ///< unknown area, or one that the FRU lacks
inline constexpr Status kBadFruField = kModuleBits | 0x1A;    ///< unknown field, or a value it cannot hold
inline constexpr Status kNoParser = kModuleBits | 0x1C;       ///< command created without a parser
inline constexpr Status kFruLoadFailed = kModuleBits | 0x20;  ///< FRU not loaded, or its header differs
inline constexpr Status kFruCommitFailed = kModuleBits | 0x21;  ///< FRU not written
inline constexpr Status kSdrLoadFailed = kModuleBits | 0x24;    ///< SDR file not loaded
inline constexpr Status kSdrCommitFailed =
    kModuleBits | 0x25;                                     ///< SDR tags not selected, or records not written
inline constexpr Status kNoProductId = kModuleBits | 0x26;  ///< the base board's product ID is 0
inline constexpr Status kBadMultiRecord = kModuleBits | 0x26;    ///< multi-record missing
inline constexpr Status kOutOfMemory = kModuleBits | 0x32;       ///< memory allocation failed
inline constexpr Status kSecondFruAddress = kModuleBits | 0x35;  ///< a FRUNAME with two FRUADDRESS commands
inline constexpr Status kResizeFailed = kModuleBits | 0x36;      ///< FRU area could not be resized
/// Processing stopped by ERRORLEVEL; the command itself returns this plus its level.
inline constexpr Status kErrorLevel = kModuleBits | 0x3E8;

/// The factory's answer at the end of the script; not a failure.
inline constexpr Status kEndOfScript = ~std::uint64_t{0};

}  // namespace varnok::cfg_status
