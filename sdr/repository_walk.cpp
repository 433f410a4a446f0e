// The walk through the BMC's whole SDR repository.
#include <algorithm>
#include <vector>

#include "app/services/trace.h"
#include "sdr/read_system.h"
#include "sdr/repository_request.h"
#include "sdr/utility.h"

namespace varnok {
namespace {

constexpr const char* kOperation = "SdrReadSystem::LoadSdrRecordsToList";
constexpr std::uint16_t kFirstRecord = 0x0000;
constexpr std::uint16_t kNoMoreRecords = 0xFFFF;

struct Walk {
  std::array<std::uint8_t, SdrReadSystem::kRecordCapacity> record{};
  std::uint16_t recordId = kFirstRecord;
  std::uint16_t shownNumber = 1;
  std::uint16_t counter = 0;
  std::vector<bool> isAsked = std::vector<bool>(std::size_t{kNoMoreRecords} + 1);
};

Status Keep(std::span<const std::uint8_t> record, SdrTypeList& lists) {
  PoolPtr<CSdr> object;
  std::uint8_t type = record[3];
  if (Status status = SdrUtility::CreateSDRTypeObject(type, object); status != kSuccess) return status;
  if (Status status = object->DecodeSDR(record); status != kSuccess) return status;
  (void)object->CopyrawSDR(record);
  lists[SdrUtility::PositionOfType(type)].push_back(std::move(object));
  if (SdrDataSet* set = TheSdr().current; set != nullptr)
    set->recordBytes = static_cast<std::uint16_t>(set->recordBytes + SdrRecordSize(record));
  return kSuccess;
}

/// Shows the record just read. `goesOn` is false when the operator stops the display.
Status Show(Walk& walk, bool& goesOn) {
  constexpr std::size_t kLargestShown = 256;
  constexpr std::uint16_t kRecordsPerPage = 3;
  std::size_t size = SdrRecordSize(walk.record);
  if (size > kLargestShown) return sdr_status::kBadRecordLength;
  SdrUtility::Print("\nDisplaying SDR Record #%d\n\n", walk.shownNumber);
  std::span<const std::uint8_t> bytes = std::span(walk.record).first(size);
  SdrUtility::DisplayHex(bytes, nullptr);
  if (TheSdr().output != nullptr) SdrUtility::DisplayHex(bytes, TheSdr().output.get());
  // The next record goes under its record ID, not under its position.
  walk.shownNumber = walk.recordId;
  bool isPageFull = walk.counter != 0 && walk.counter % kRecordsPerPage == 0;
  goesOn = !TheSdr().isPaging || !isPageFull || SdrUtility::PagingPrompt();
  return kSuccess;
}

}  // namespace

Status SdrReadSystem::LoadSdrRecordsToList(SdrTypeList& lists) {
  TraceScope scope(kOperation);
  SdrDataSet* set = TheSdr().current;
  if (set != nullptr) set->recordBytes = 0;
  Walk walk;
  for (;;) {
    walk.isAsked[walk.recordId] = true;
    walk.record.fill(0);
    std::uint16_t asked = walk.recordId;
    Status readStatus = ReadRecFromBMC(walk.record, walk.recordId);
    if (readStatus == kSuccess) {
      if (Status status = Keep(walk.record, lists); status != kSuccess) return status;
    }
    ++walk.counter;
    if (TheSdr().isDisplaying) {
      bool goesOn = true;
      if (Status status = Show(walk, goesOn); status != kSuccess) return status;
      if (!goesOn) return kSuccess;
    } else {
      SdrUtility::DisplayProgress(ProgressStyle::CountOfTotal, "Reading SDRs from system......", walk.counter,
                                  set == nullptr ? 0U : set->info.recordCount);
    }
    if (walk.recordId == kNoMoreRecords || readStatus != kSuccess) return readStatus;
    if (walk.isAsked[walk.recordId]) {
      // A record that was read already comes next: without an end the walk would go round for ever.
      LastFailingRecordId = asked;
      return SdrFailure(kOperation, "Error Reading SDR", sdr_status::kReadFailed);
    }
  }
}

}  // namespace varnok
