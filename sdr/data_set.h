// What the SDR subsystem keeps between its operations: a data set for the BMC and one for the file, the set
// that is current, and the state of displays and of the output file.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <list>
#include <memory>
#include <string_view>

#include "app/services/callbacks.h"
#include "firmware/pool.h"
#include "sdr/record_types.h"

namespace varnok {

/// A list of records for each type, in the order of kSdrTypes.
using SdrTypeList = std::array<std::list<PoolPtr<CSdr>>, kSdrTypeCount>;

/// Get SDR Repository Info (IPMI v2.0, section 33.9).
struct SdrRepositoryInfo {
  std::uint8_t version = 0;
  std::uint16_t recordCount = 0;
  std::uint16_t freeSpace = 0;  ///< bytes
  std::uint32_t lastAddition = 0;
  std::uint32_t lastErase = 0;
  std::uint8_t support = 0;
  std::uint8_t extra = 0;  ///< cleared by every read
};

struct SdrDataSet {
  static constexpr std::int64_t kNothingSelected = std::numeric_limits<std::int64_t>::max();

  bool isInitialized = false;
  bool isLoaded = false;
  bool isFromSystem = false;
  bool isCompareOnly = false;
  std::array<std::int64_t, 4> selection{kNothingSelected, kNothingSelected, kNothingSelected, 0};
  SdrRepositoryInfo info;
  std::uint16_t recordBytes = 0;  ///< read from the BMC
  std::uint16_t counter = 0;
  std::array<std::uint8_t, 2> owner{0xFF, 0x20};
  PoolPtr<SdrTypeList> lists;
  SdrTagList selectedTags;
  std::u16string_view language = u"en";
  std::u16string_view country = u"us";
  ProgressCallback progress = nullptr;
  DisplayHexCallback displayHex = nullptr;
};

struct SdrState {
  static constexpr std::size_t kMessageCapacity = 256;

  PoolPtr<SdrDataSet> fileSet;
  PoolPtr<SdrDataSet> systemSet;
  SdrDataSet* current = nullptr;
  PoolBuffer outputName;
  std::unique_ptr<File> output;  ///< open while a display or a commit writes into it
  bool isPaging = false;
  bool isDisplaying = false;
  /// A title and a place each have a text of their own, so that they can be held beside a value.
  std::array<char16_t, 64> fieldTitle{};
  std::array<char16_t, 64> fieldLocation{};
  std::uint32_t lineCounter = 0;          ///< of the SDR file
  std::uint32_t LastFailingRecordId = 0;  ///< of a read, or of a decode with its bytes exchanged
  std::array<char16_t, kMessageCapacity> lastError{u"ERROR: DLL not initialized."};

  void SetLastError(std::u16string_view text);
};

/// The state of this process.
SdrState& TheSdr();

}  // namespace varnok
