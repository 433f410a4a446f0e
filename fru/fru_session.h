// What all parts of the FRU subsystem share for the time of a run: the last-error text, the callbacks and the
// output settings. The manager sets them; images, areas and the file reader use them.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "app/services/callbacks.h"
#include "app/services/format.h"

namespace varnok {

struct FruSession {
  static constexpr std::size_t kLastErrorCapacity = 512;

  std::array<char16_t, kLastErrorCapacity> lastError{};
  ProgressCallback progress = nullptr;
  DisplayHexCallback displayHex = nullptr;
  bool isPagingOn = false;
  /// The file that a commit appends to; empty = none. Owned by the manager.
  std::u16string_view outputFileName;
};

FruSession& TheFruSession();

/// Sets the last-error text, cut to its buffer.
void SetFruError(std::u16string_view text);

template <class... Arguments>
void ReportFruError(std::u16string_view format, const Arguments&... arguments) {
  SetFruError(Format(format, arguments...));
}

/// Last-error texts that more than one place reports.
namespace fru_text {
inline constexpr std::u16string_view kUnexpected = u"An unexpected error occurred while accessing FRUs.";
inline constexpr std::u16string_view kNoMemory = u"There is not enough memory to complete FRU updates.";
inline constexpr std::u16string_view kNoSuchField = u"No such FRU field.";
inline constexpr std::u16string_view kUnsupported = u"A request was made of a unsupported FRU feature.";
inline constexpr std::u16string_view kNotIpmiFru = u"The selected FRU is not an IPMI FRU.";
inline constexpr std::u16string_view kInvalidHeader = u"Invalid FRU header area in system FRU %ls.";
}  // namespace fru_text

}  // namespace varnok
