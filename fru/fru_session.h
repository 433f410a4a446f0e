// What all parts of the FRU subsystem share for the time of a run: the last-error text, the callbacks and the
// output settings. The manager sets them; images, areas and the file reader use them.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "app/services/callbacks.h"
#include "platform/smbios.h"

namespace varnok {

struct FruSession {
  static constexpr std::size_t kLastErrorCapacity = 512;

  std::array<char16_t, kLastErrorCapacity> lastError{};
  ProgressCallback progress = nullptr;
  DisplayHexCallback displayHex = nullptr;
  bool isPagingOn = false;
  bool isBusyTold = false;  ///< the operator knows of a device that stays busy
  /// The file that a commit appends to; empty = none. Owned by the manager.
  std::u16string_view outputFileName;
};

FruSession& TheFruSession();

/// Sets the last-error text, cut to its buffer.
void SetFruError(std::u16string_view text);

/// Formats the last-error text. Takes no memory: errors are reported where there is none left.
template <class... Arguments>
void ReportFruError(const char* format, const Arguments&... arguments) {
  SmbiosFormat(TheFruSession().lastError, format, arguments...);
}

/// Last-error texts that more than one place reports.
namespace fru_text {
inline constexpr const char* kUnexpected = "An unexpected error occurred while accessing FRUs.";
inline constexpr const char* kNoMemory = "There is not enough memory to complete FRU updates.";
inline constexpr const char* kNoSuchField = "No such FRU field.";
inline constexpr const char* kUnsupported = "A request was made of a unsupported FRU feature.";
inline constexpr const char* kNotIpmiFru = "The selected FRU is not an IPMI FRU.";
inline constexpr const char* kInvalidHeader = "Invalid FRU header area in system FRU %s.";
}  // namespace fru_text

}  // namespace varnok
