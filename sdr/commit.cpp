#include "sdr/commit.h"

#include <algorithm>

#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "platform/answer_doubts.h"
#include "sdr/output.h"
#include "sdr/read_system.h"
#include "sdr/record_lists.h"

namespace varnok {
namespace {

constexpr const char* kCommitTrace = "SdrData::CommitConfigurationToSystem";
constexpr std::u16string_view kUpdateFailed = u"Unable to update SDRs";
constexpr std::size_t kBufferSize = 256;

using RecordBuffer = std::array<std::uint8_t, kBufferSize>;

bool IsSelected(const CSdr& record, const SdrDataSet& set) {
  return SdrUtility::SDRTagsCheck(record, set) == kSuccess;
}

std::uint32_t CountSelected(const SdrDataSet& set) {
  std::uint32_t count = 0;
  for (const auto& list : *set.lists)
    for (const PoolPtr<CSdr>& record : list) count += IsSelected(*record, set) ? 1 : 0;
  return count;
}

void WriteRecord(const CSdr& record, std::uint32_t number) {
  RecordBuffer buffer{};
  std::size_t length = 0;
  (void)record.WriteSDRToBuffer(buffer, length);
  std::span<const std::uint8_t> bytes = std::span(buffer).first(length);
  if (TheSdr().output != nullptr) {
    std::array<char16_t, 64> room;
    SdrUtility::WriteOutput(FormatInto(room, "Writing SDR Record # %d\n", number));
    SdrUtility::DisplayHex(bytes, TheSdr().output.get());
  }
  if (SdrReadSystem::SendRecordToBMC(bytes) == kSuccess) return;
  NoteDoubt(AnswerDoubt::Useless);
  SdrUtility::PrintText(u"\n SendRecordToBMC failed\n");
}

void WriteSelected(const SdrDataSet& set, std::uint32_t total) {
  std::uint32_t number = 0;
  for (const auto& list : *set.lists) {
    for (const PoolPtr<CSdr>& record : list) {
      if (!IsSelected(*record, set)) continue;
      WriteRecord(*record, ++number);
      SdrUtility::DisplayProgress(ProgressStyle::CountOfTotal, u"   Updating the SDRs..........", number,
                                  total);
    }
  }
}

/// Whether a record reads back as it was written, but for the record ID, which the BMC assigns. As many bytes
/// are compared as the read-back record has; the file's record counts as followed by zeros.
bool ReadsBack(const CSdr& written, const CSdr& readBack) {
  constexpr std::size_t kRecordIdLength = 2;
  RecordBuffer expected{};
  std::size_t length = 0;
  (void)written.WriteSDRToBuffer(expected, length);
  std::span<const std::uint8_t> actual = readBack.Raw();
  return std::equal(actual.begin() + kRecordIdLength, actual.end(), expected.begin() + kRecordIdLength);
}

/// The comparison of a data set with the repository. Each record that is read back meets the next selected
/// one of its type and is let go again: behind Reserve nothing needs memory, however much the repository
/// holds.
class Comparison final : public SdrRecordTaker {
 public:
  /// Makes the temporary set, its lists, and in each list the one record that takes the records of its type
  /// in turn. kOutOfMemory with a last-error text.
  Status Reserve() {
    temporary_ = MakeInPool<SdrDataSet>();
    if (temporary_ == nullptr) return Fail(kCommitTrace, "Error Allocating Memory", sdr_status::kOutOfMemory);
    if (Status status = SdrUtility::InitializeSdrList(temporary_->lists); status != kSuccess) return status;
    // The fresh lists have emptied the text; what fails from here on is reported with it.
    TheSdr().SetLastError(kUpdateFailed);
    for (std::size_t type = 0; type < kSdrTypeCount; ++type) {
      PoolPtr<CSdr> record = kSdrTypes[type].rows.make();
      if (record == nullptr) return Fail(kCommitTrace, "Error Allocating Memory", sdr_status::kOutOfMemory);
      record->ReserveRaw();
      (*temporary_->lists)[type].push_back(std::move(record));
    }
    return kSuccess;
  }

  /// Reads the repository back.
  void Run(const SdrDataSet& set) {
    set_ = &set;
    for (std::size_t type = 0; type < kSdrTypeCount; ++type) cursors_[type] = (*set.lists)[type].begin();
    // What cannot be read is missing in the comparison.
    (void)SdrReadSystem::LoadSdrProperties(temporary_->info);
    if (SdrReadSystem::WalkRepository(*this) != kSuccess) NoteDoubt(AnswerDoubt::Useless);
    for (std::size_t type = 0; type < kSdrTypeCount; ++type)
      isSame_ = isSame_ && NextSelected(type) == nullptr;
  }

  Status Take(std::span<const std::uint8_t> raw) override {
    PoolPtr<CSdr> record;
    Status status = SdrUtility::MakeRecord(raw, {}, record, temporary_->lists.get());
    if (record == nullptr) return status;
    std::size_t type = SdrUtility::PositionOfType(raw[3]);
    if (status == kSuccess) {
      ++count_;
      const CSdr* wanted = NextSelected(type);
      isSame_ = isSame_ && (wanted == nullptr || ReadsBack(*wanted, *record));
    }
    (*temporary_->lists)[type].front() = std::move(record);
    return status;
  }

  bool IsSame() const { return isSame_; }
  std::uint32_t Count() const { return count_; }

 private:
  /// The next selected record of a type; null behind the last.
  const CSdr* NextSelected(std::size_t type) {
    auto& cursor = cursors_[type];
    while (cursor != (*set_->lists)[type].end()) {
      const CSdr& record = **cursor++;
      if (IsSelected(record, *set_)) return &record;
    }
    return nullptr;
  }

  PoolPtr<SdrDataSet> temporary_;
  const SdrDataSet* set_ = nullptr;
  std::array<SdrTypeList::value_type::const_iterator, kSdrTypeCount> cursors_;
  std::uint32_t count_ = 0;
  bool isSame_ = true;
};

}  // namespace

Status OpenSdrOutput(const char* operation) {
  SdrState& state = TheSdr();
  if (!state.outputName.IsAllocated()) return kSuccess;
  std::string name(state.outputName.data(), state.outputName.data() + state.outputName.size());
  if (TheFirmware().OpenFile(Widen(name), FileMode::Append, state.output) == kSuccess) return kSuccess;
  return Fail(operation, "Error Opening File", sdr_status::kCannotOpenFile);
}

Status CommitSdrDataSet(SdrDataSet& set) {
  TheSdr().SetLastError(kUpdateFailed);
  // From the clear on a board may be left half programmed: all memory is at hand before it.
  Comparison comparison;
  if (Status status = comparison.Reserve(); status != kSuccess) return status;
  if (!set.isCompareOnly && SdrReadSystem::ClearSDRRepository() != kSuccess) {
    SdrUtility::PrintText(u"\n\nClearSDR repository failed\n\n\n");
    Warn("the SDR repository was not cleared: records that it held stay in front of those now written");
  }
  std::uint32_t total = CountSelected(set);
  SdrUtility::DisplayProgress(ProgressStyle::Text, u"Processing SDR Update.........Please wait\n");
  if (!set.isCompareOnly) WriteSelected(set, total);
  SdrUtility::DisplayProgress(ProgressStyle::Text, u"\n");
  // Only what the progress shows comes from here.
  (void)SdrReadSystem::LoadSdrProperties(set.info);
  comparison.Run(set);
  SdrUtility::WriteOutput(u"Reading SDR information ...\n");
  if (!set.isCompareOnly && comparison.Count() > total)
    Warn("the SDR repository holds %u records, %u were written", comparison.Count(), total);
  if (comparison.Count() != set.info.recordCount)
    Warn("the SDR repository says that it holds %u records, %u were read", set.info.recordCount,
         comparison.Count());
  if (!comparison.IsSame()) {
    SdrUtility::PrintText(set.isCompareOnly
                              ? u"\n\nSDR file does not match with what was programmed in the memory.\n\n\n"
                              : u"\n\nSDR Verification failed\n\n\n");
    return Fail(kCommitTrace, "SDR Verification failed", sdr_status::kDifferent);
  }
  SdrUtility::DisplayProgress(ProgressStyle::Text, u"\n");
  SdrUtility::PrintText(set.isCompareOnly ? u"\nSDR file was compared successfully!\n"
                                          : u"\nSDRs written successfully.\n");
  TheSdr().output = nullptr;
  return kSuccess;
}

}  // namespace varnok
