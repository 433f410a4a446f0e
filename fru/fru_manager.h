// The state behind the FruData front, and the one shape of its operations. For the front's own files.
#pragma once

#include <cstddef>
#include <cstdint>

#include "app/services/trace.h"
#include "firmware/pool.h"
#include "firmware/pool_list.h"
#include "firmware/pool_text.h"
#include "fru/fru.h"
#include "fru/fru_session.h"
#include "fru/fru_status.h"

namespace varnok {

struct FruManager {
  static constexpr std::size_t kNoFru = static_cast<std::size_t>(-1);

  using Images = PoolList<PoolPtr<CFru>>;

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

/// How an operation of the front fails: sets the last error, traces "NAME - Unexpected", gives `status` back.
template <class... Arguments>
Status FailFru(const char* name, Status status, const char* format, const Arguments&... arguments) {
  ReportFruError(format, arguments...);
  return Fail(name, "Unexpected", status);
}
Status FailFru(const char* name, Status status);
Status FailUnsupported(const char* name);

// An operation of the front: its trace lines, the checks of what it needs, in their order, and then
// `operation` on what was found. The first check that fails is the result.

/// Needs the manager initialised: operation(manager).
template <class Operation>
Status OnManager(const char* name, Operation operation) {
  TraceScope scope(name);
  FruManager* manager = TheFruManager();
  return manager == nullptr ? FailFru(name, fru_status::kNotInitialized) : operation(*manager);
}

/// The selected FRU, or the status of what there is not.
Status FindSelectedFru(const char* name, FruManager& manager, CFru*& fru);

/// Needs a FRU selected: operation(manager, fru).
template <class Operation>
Status OnFru(const char* name, Operation operation) {
  return OnManager(name, [&](FruManager& manager) {
    CFru* fru = nullptr;
    Status status = FindSelectedFru(name, manager, fru);
    return status == kSuccess ? operation(manager, *fru) : status;
  });
}

/// Needs an area of it selected: operation(manager, fru).
template <class Operation>
Status OnArea(const char* name, Operation operation) {
  return OnFru(name, [&](FruManager& manager, CFru& fru) {
    if (manager.area == FruAreaId::None) return FailFru(name, fru_status::kNothingSelected);
    return operation(manager, fru);
  });
}

}  // namespace varnok
