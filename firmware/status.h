// The 64-bit status that every operation returns, and the platform's own values (UEFI 2.10, appendix D).
#pragma once

#include <compare>
#include <cstdint>

namespace varnok {

/// 0 is success. Module failures are 0xC000000000MMCCCC (each module's *_status.h names its own);
/// platform failures have only the top bit of the first byte set and pass through unchanged. One register
/// wide and trivially copied, so it crosses the platform's calling convention as the number that it is.
struct [[nodiscard]] Status {
  std::uint64_t value = 0;

  constexpr Status() = default;
  constexpr Status(std::uint64_t number) : value(number) {}

  // NOLINTNEXTLINE(modernize-use-nullptr): the comparison's own 0
  friend constexpr auto operator<=>(Status, Status) = default;
  friend constexpr Status operator|(Status base, std::uint64_t code) { return base.value | code; }
  friend constexpr Status operator+(Status base, std::uint64_t code) { return base.value + code; }
};
static_assert(sizeof(Status) == sizeof(std::uint64_t));

inline constexpr Status kSuccess = 0;

/// A result that is dropped on purpose; the line says why where it is not plain.
constexpr void Discard(Status) {}

namespace uefi_status {
inline constexpr Status kError = 0x8000000000000000;
inline constexpr Status kLoadError = kError | 1;
inline constexpr Status kInvalidParameter = kError | 2;
inline constexpr Status kUnsupported = kError | 3;
inline constexpr Status kBadBufferSize = kError | 4;
inline constexpr Status kBufferTooSmall = kError | 5;
inline constexpr Status kNotReady = kError | 6;
inline constexpr Status kDeviceError = kError | 7;
inline constexpr Status kWriteProtected = kError | 8;
inline constexpr Status kOutOfResources = kError | 9;
inline constexpr Status kVolumeFull = kError | 11;
inline constexpr Status kNotFound = kError | 14;
inline constexpr Status kAccessDenied = kError | 15;
inline constexpr Status kTimeout = kError | 18;
inline constexpr Status kAlreadyStarted = kError | 20;
inline constexpr Status kAborted = kError | 21;
inline constexpr Status kSecurityViolation = kError | 26;
inline constexpr Status kEndOfFile = kError | 31;
}  // namespace uefi_status

}  // namespace varnok
