// The walk through the BMC's whole SDR repository.
#include <bitset>

#include "app/services/console.h"
#include "app/services/trace.h"
#include "sdr/output.h"
#include "sdr/read_system.h"
#include "sdr/record_lists.h"
#include "sdr/repository_request.h"

namespace varnok {
namespace {

constexpr const char* kWalk = "SdrReadSystem::LoadSdrRecordsToList";
constexpr std::uint16_t kFirstRecord = 0x0000;
constexpr std::uint16_t kNoMoreRecords = 0xFFFF;

struct Walk {
  std::array<std::uint8_t, SdrReadSystem::kRecordCapacity> record{};
  std::uint16_t recordId = kFirstRecord;
  std::uint16_t shownNumber = 1;
  std::uint16_t counter = 0;
  std::bitset<std::size_t{kNoMoreRecords} + 1> isAsked;
};

/// Appends each record to the list of its type.
class ListFiller final : public SdrRecordTaker {
 public:
  explicit ListFiller(SdrTypeList& lists) : lists_(lists) {}
  Status Take(std::span<const std::uint8_t> raw) override {
    PoolPtr<CSdr> record;
    if (Status status = SdrUtility::MakeRecord(raw, {}, record); status != kSuccess) return status;
    lists_[SdrUtility::PositionOfType(raw[3])].push_back(std::move(record));
    return kSuccess;
  }

 private:
  SdrTypeList& lists_;
};

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
  // Kept: the next record goes under its record ID, not under its position.
  walk.shownNumber = walk.recordId;
  bool isPageFull = walk.counter != 0 && walk.counter % kRecordsPerPage == 0;
  goesOn = !TheSdr().isPaging || !isPageFull || SdrUtility::PagingPrompt();
  return kSuccess;
}

/// Shows the record, or how far the walk is; `goesOn` as above.
Status Tell(Walk& walk, const SdrDataSet* set, bool& goesOn) {
  if (TheSdr().isDisplaying) return Show(walk, goesOn);
  SdrUtility::DisplayProgress(ProgressStyle::CountOfTotal, u"Reading SDRs from system......", walk.counter,
                              set == nullptr ? 0U : set->info.recordCount);
  return kSuccess;
}

}  // namespace

Status SdrReadSystem::LoadSdrRecordsToList(SdrTypeList& lists) {
  ListFiller filler(lists);
  return WalkRepository(filler);
}

Status SdrReadSystem::WalkRepository(SdrRecordTaker& taker) {
  TraceScope scope(kWalk);
  SdrDataSet* set = TheSdr().current;
  if (set != nullptr) set->recordBytes = 0;
  Walk walk;
  for (;;) {
    walk.isAsked[walk.recordId] = true;
    walk.record.fill(0);
    std::uint16_t asked = walk.recordId;
    Status readStatus = ReadRecFromBMC(walk.record, walk.recordId);
    if (readStatus == kSuccess) {
      if (Status status = taker.Take(walk.record); status != kSuccess) return status;
      if (set != nullptr)
        set->recordBytes = static_cast<std::uint16_t>(set->recordBytes + SdrRecordSize(walk.record));
    }
    ++walk.counter;
    bool goesOn = true;
    if (Status status = Tell(walk, set, goesOn); status != kSuccess || !goesOn) return status;
    if (walk.recordId == kNoMoreRecords || readStatus != kSuccess) return readStatus;
    if (walk.isAsked[walk.recordId]) {
      // A record that was read already comes next: without an end the walk would go round for ever.
      TheSdr().LastFailingRecordId = asked;
      Warn("the SDR repository has no end: its record %04xh leads back to %04xh", asked, walk.recordId);
      return Fail(kWalk, "Error Reading SDR", sdr_status::kReadFailed);
    }
  }
}

}  // namespace varnok
