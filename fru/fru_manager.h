// The state behind the FruData front, and the checks that its operations begin with. For the front's own
// files.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "firmware/pool.h"
#include "fru/fru.h"
#include "fru/fru_session.h"
#include "fru/fru_status.h"
#include "firmware/pool_text.h"

namespace varnok {

struct FruManager {
  static constexpr std::size_t kNoFru = static_cast<std::size_t>(-1);

  using Images = std::vector<PoolPtr<CFru>>;

  bool isAnyLoaded = false;
  Images systemFrus;
  Images fileFrus;
  PoolText outputFileName;
  /// The device that the display reads; a parse changes only what its arguments give.
  FruDeviceAddress commandLineAddress;

  FruList list = FruList::None;
  std::size_t fru = kNoFru;
  FruAreaId area = FruAreaId::None;
  std::uint32_t field = kInvalidFieldIndex;
  std::uint32_t record = kAllMultiRecords;

  Images& ImagesOf(FruList which) { return which == FruList::System ? systemFrus : fileFrus; }
  void SelectList(FruList which);
  /// The place of the first image at `address` in the selected list; kNoFru without one.
  std::size_t Find(const FruDeviceAddress& address);
};

/// The manager; null until it is initialised.
FruManager* TheFruManager();

/// Sets the last error, traces "OPERATION - Unexpected" and gives `status` back.
Status FailFru(const char* operation, Status status, std::u16string_view text);
Status FailFru(const char* operation, Status status, const char* text = fru_text::kUnexpected);

// Each gives the first failing status of its checks, reported, or 0 with its out-arguments set.
Status CheckFruManager(const char* operation, FruManager*& manager);
Status CheckSelectedFru(const char* operation, FruManager*& manager, CFru*& fru);
/// The selected area of the selected FRU.
Status CheckSelectedArea(const char* operation, FruManager*& manager, CFru*& fru);

}  // namespace varnok
