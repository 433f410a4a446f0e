#include "sdr/commit.h"

#include <algorithm>
#include <string>

#include "app/services/text.h"
#include "app/services/trace.h"
#include "sdr/read_system.h"
#include "sdr/utility.h"

namespace varnok {
namespace {

constexpr const char* kOperation = "SdrData::CommitConfigurationToSystem";
constexpr std::u16string_view kUpdateFailed = u"Unable to update SDRs";
constexpr std::size_t kBufferSize = 256;

using RecordBuffer = std::array<std::uint8_t, kBufferSize>;

bool IsSelected(const CSdr& record, const SdrDataSet& set) {
  return SdrUtility::SDRTagsCheck(record, set) == kSuccess;
}

std::uint32_t CountSelected(const SdrDataSet& set) {
  std::uint32_t count = 0;
  for (const auto& list : *set.lists)
    for (const PoolPtr<CSdr>& record : list) count += IsSelected(*record, set);
  return count;
}

void WriteRecord(const CSdr& record, std::uint32_t number) {
  RecordBuffer buffer{};
  std::size_t length = 0;
  (void)record.WriteSDRToBuffer(buffer, length);
  std::span<const std::uint8_t> bytes = std::span(buffer).first(length);
  if (TheSdr().output != nullptr) {
    SdrUtility::WriteOutput(FormatWide("Writing SDR Record # %d\n", number));
    SdrUtility::DisplayHex(bytes, TheSdr().output.get());
  }
  if (SdrReadSystem::SendRecordToBMC(bytes) != kSuccess) SdrUtility::PrintText("\n SendRecordToBMC failed\n");
}

void WriteSelected(const SdrDataSet& set, std::uint32_t total) {
  std::uint32_t number = 0;
  for (const auto& list : *set.lists) {
    for (const PoolPtr<CSdr>& record : list) {
      if (!IsSelected(*record, set)) continue;
      WriteRecord(*record, ++number);
      SdrUtility::DisplayProgress(ProgressStyle::CountOfTotal, "   Updating the SDRs..........", number,
                                  total);
    }
  }
}

/// Whether a record reads back as it was written, but for the record ID, which the BMC assigns. As many bytes
/// are compared as the read-back record has; the file's record counts as followed by zeros.
bool IsSame(const CSdr& written, const CSdr& readBack) {
  constexpr std::size_t kRecordIdLength = 2;
  RecordBuffer expected{};
  std::size_t length = 0;
  (void)written.WriteSDRToBuffer(expected, length);
  std::span<const std::uint8_t> actual = readBack.Raw();
  return std::equal(actual.begin() + kRecordIdLength, actual.end(), expected.begin() + kRecordIdLength);
}

bool IsSame(const SdrDataSet& set, const SdrTypeList& readBack) {
  for (std::size_t type = 0; type < kSdrTypeOrder.size(); ++type) {
    auto cursor = readBack[type].begin();
    for (const PoolPtr<CSdr>& record : (*set.lists)[type]) {
      if (!IsSelected(*record, set)) continue;
      if (cursor == readBack[type].end() || !IsSame(*record, **cursor)) return false;
      ++cursor;
    }
  }
  return true;
}

Status ReadBack(SdrDataSet& set) {
  if (Status status = SdrUtility::InitializeSdrList(set.lists); status != kSuccess) return status;
  // The fresh lists have emptied the text; a difference is still to be reported with it.
  TheSdr().SetLastError(kUpdateFailed);
  // What cannot be read is missing in the comparison.
  (void)SdrReadSystem::LoadSdrProperties(set.info);
  (void)SdrReadSystem::LoadSdrRecordsToList(*set.lists);
  SdrUtility::WriteOutput("Reading SDR information ...\n");
  return kSuccess;
}

}  // namespace

Status OpenSdrOutput(const char* operation) {
  SdrState& state = TheSdr();
  if (!state.outputName.IsAllocated()) return kSuccess;
  std::string name(state.outputName.data(), state.outputName.data() + state.outputName.size());
  if (TheFirmware().OpenFile(Widen(name), FileMode::Append, state.output) == kSuccess) return kSuccess;
  Trace("%s - Error Opening File", 1, operation);
  return sdr_status::kCannotOpenFile;
}

Status CommitSdrDataSet(SdrDataSet& set) {
  if (!set.isCompareOnly && SdrReadSystem::ClearSDRRepository() != kSuccess)
    SdrUtility::Print("\n%s\n\n", "\nClearSDR repository failed\n");
  TheSdr().SetLastError(kUpdateFailed);
  std::uint32_t total = CountSelected(set);
  SdrUtility::DisplayProgress(ProgressStyle::Text, "Processing SDR Update.........Please wait\n");
  if (!set.isCompareOnly) WriteSelected(set, total);
  SdrUtility::DisplayProgress(ProgressStyle::Text, "\n");
  (void)SdrReadSystem::LoadSdrProperties(set.info);
  PoolPtr<SdrDataSet> readBack = MakeInPool<SdrDataSet>();
  if (readBack == nullptr) {
    Trace("%s - Error Allocating Memory", 1, kOperation);
    return sdr_status::kOutOfMemory;
  }
  if (Status status = ReadBack(*readBack); status != kSuccess) return status;
  if (!IsSame(set, *readBack->lists)) {
    SdrUtility::Print("\n%s\n\n", set.isCompareOnly
                                      ? "\nSDR file does not match with what was programmed in the memory.\n"
                                      : "\nSDR Verification failed\n");
    Trace("%s - SDR Verification failed", 1, kOperation);
    return sdr_status::kDifferent;
  }
  SdrUtility::DisplayProgress(ProgressStyle::Text, "\n");
  SdrUtility::PrintText(set.isCompareOnly ? "\nSDR file was compared successfully!\n"
                                          : "\nSDRs written successfully.\n");
  TheSdr().output = nullptr;
  return kSuccess;
}

}  // namespace varnok
