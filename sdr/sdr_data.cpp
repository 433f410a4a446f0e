#include "sdr/sdr_data.h"

#include <algorithm>
#include <string>

#include "app/services/text.h"
#include "app/services/trace.h"
#include "platform/smbios.h"
#include "sdr/commit.h"
#include "sdr/data_set.h"
#include "sdr/file_lines.h"
#include "sdr/read_file.h"
#include "sdr/read_system.h"
#include "sdr/utility.h"

namespace varnok {
namespace {

bool IsInitialized() {
  const SdrState& state = TheSdr();
  return state.fileSet != nullptr && state.systemSet != nullptr && state.fileSet->isInitialized &&
         state.systemSet->isInitialized;
}

/// kNotInitialized with its trace line, or success.
Status Guard(const char* operation) {
  if (IsInitialized()) return kSuccess;
  Trace("%s - Uninitialized", 1, operation);
  return sdr_status::kNotInitialized;
}

PoolPtr<SdrDataSet> MakeDataSet() {
  PoolPtr<SdrDataSet> set = MakeInPool<SdrDataSet>();
  if (set == nullptr) return nullptr;
  (void)SdrUtility::InitializeSdrProperties();
  set->isInitialized = true;
  return set;
}

/// Makes the set that was current at its start current again, unless it is told to leave things as they are.
class CurrentSetKeeper {
 public:
  CurrentSetKeeper() : previous_(TheSdr().current) {}
  ~CurrentSetKeeper() {
    if (previous_ != nullptr) TheSdr().current = previous_;
  }
  CurrentSetKeeper(const CurrentSetKeeper&) = delete;
  CurrentSetKeeper& operator=(const CurrentSetKeeper&) = delete;
  void Restore() { TheSdr().current = previous_; }
  void Release() { previous_ = nullptr; }

 private:
  SdrDataSet* previous_;
};

Status LoadFile(File& file, SdrDataSet& set) {
  if (set.lists == nullptr) return sdr_status::kOutOfMemory;
  SdrFileLines lines(file);
  TheSdr().lineCounter = 0;
  if (Status status = SdrReadFile::ReadSdrRecordsFromFile(lines, *set.lists); status != kSuccess)
    return status;
  // A file load asks the BMC for its repository, too: a board without one is found before anything is
  // cleared.
  return SdrReadSystem::LoadSdrProperties(set.info);
}

}  // namespace

Status SdrData::Initialize() {
  TraceScope scope("SdrData::Initialize");
  SdrState& state = TheSdr();
  if (state.fileSet != nullptr || state.systemSet != nullptr) (void)DeInitialize();
  state.fileSet = MakeDataSet();
  state.systemSet = state.fileSet == nullptr ? nullptr : MakeDataSet();
  state.current = state.fileSet.get();
  if (!IsInitialized()) {
    state.fileSet = nullptr;
    state.current = nullptr;
    Trace("SdrData::Initialize - Error Loading SDRDATA", 1);
    return sdr_status::kNoDataSet;
  }
  state.SetLastError(u"");
  return kSuccess;
}

Status SdrData::DeInitialize() {
  TraceScope scope("SdrData::DeInitialize");
  if (Status status = Guard("SdrData::DeInitialize"); status != kSuccess) return status;
  SdrState& state = TheSdr();
  state.current = nullptr;
  state.fileSet = nullptr;
  state.systemSet = nullptr;
  state.outputName.Reset();
  state.output = nullptr;
  return kSuccess;
}

Status SdrData::IsLoaded(bool& isLoaded) {
  TraceScope scope("SdrData::IsLoaded");
  if (Status status = Guard("SdrData::IsLoaded"); status != kSuccess) return status;
  isLoaded = TheSdr().current->isLoaded;
  return kSuccess;
}

Status SdrData::SetProgressCallback(ProgressCallback callback) {
  TraceScope scope("SdrData::SetProgressCallback");
  if (Status status = Guard("SdrData::SetProgressCallback"); status != kSuccess) return status;
  TheSdr().fileSet->progress = callback;
  TheSdr().systemSet->progress = callback;
  return kSuccess;
}

Status SdrData::SetDisplayHexCallback(DisplayHexCallback callback) {
  TraceScope scope("SdrData::SetDisplayHexCallback");
  if (Status status = Guard("SdrData::SetDisplayHexCallback"); status != kSuccess) return status;
  TheSdr().fileSet->displayHex = callback;
  TheSdr().systemSet->displayHex = callback;
  return kSuccess;
}

Status SdrData::GetLastErrorMessage(const char16_t*& text) {
  TraceScope scope("SdrData::GetLastErrorMessage");
  text = nullptr;
  if (Status status = Guard("SdrData::GetLastErrorMessage"); status != kSuccess) return status;
  text = TheSdr().lastError.data();
  return kSuccess;
}

Status SdrData::SelectSysData() {
  TraceScope scope("SdrData::SelectSysData");
  if (Status status = Guard("SdrData::SelectSysData"); status != kSuccess) return status;
  TheSdr().current = TheSdr().systemSet.get();
  return kSuccess;
}

Status SdrData::SelectFileData() {
  TraceScope scope("SdrData::SelectFileData");
  if (Status status = Guard("SdrData::SelectFileData"); status != kSuccess) return status;
  TheSdr().current = TheSdr().fileSet.get();
  return kSuccess;
}

Status SdrData::SetOutputFile(std::string_view name) {
  TraceScope scope("SdrData::SetOutputFile");
  PoolBuffer copy;
  if (!name.empty() && !copy.Allocate(name.size())) {
    Trace("SdrData::SetOutputFile - Error Allocating Memory", 1);
    return sdr_status::kOutOfMemory;
  }
  std::copy(name.begin(), name.end(), copy.data());
  TheSdr().outputName = std::move(copy);
  return kSuccess;
}

Status SdrData::SetPaging(bool on) {
  TraceScope scope("SdrData::SetPaging");
  TheSdr().isPaging = on;
  return kSuccess;
}

Status SdrData::SetCompareOnly(bool on) {
  TraceScope scope("SdrData::SetCompareOnly");
  if (TheSdr().fileSet == nullptr) return Guard("SdrData::SetCompareOnly");
  TheSdr().fileSet->isCompareOnly = on;
  return kSuccess;
}

Status SdrData::ClearRepository() {
  TraceScope scope("SdrData::ClearRepository");
  return SdrReadSystem::ClearSDRRepository();
}

Status SdrData::SetTag(std::u16string_view tag) {
  constexpr std::size_t kLongestTag = 255;
  TraceScope scope("SdrData::SetTag");
  if (Status status = Guard("SdrData::SetTag"); status != kSuccess) return status;
  TheSdr().fileSet->selectedTags.push_back(Narrow(tag.substr(0, kLongestTag)));
  return kSuccess;
}

Status SdrData::LoadConfigurationFromSystem() {
  TraceScope scope("SdrData::LoadConfigurationFromSystem");
  if (Status status = Guard("SdrData::LoadConfigurationFromSystem"); status != kSuccess) return status;
  CurrentSetKeeper keeper;
  (void)SelectSysData();
  SdrDataSet& set = *TheSdr().systemSet;
  set.isLoaded = false;
  set.isFromSystem = true;
  set.recordBytes = set.counter = 0;
  (void)SdrUtility::InitializeSdrProperties();
  if (SdrUtility::InitializeSdrList(set.lists) != kSuccess) {
    Trace("SdrData::LoadConfigurationFromSystem - Uninitialized", 1);
    return sdr_status::kNotInitialized;
  }
  if (Status status = SdrReadSystem::LoadSdrProperties(set.info); status != kSuccess) return status;
  if (set.info.recordCount == 0) {
    Trace("SdrData::LoadConfigurationFromSystem - No SDRs available", 1);
    SdrUtility::PrintText("\nNo Sensor Data Records found in this server.\n");
    // The system set stays the current one here, and only here.
    keeper.Release();
    return sdr_status::kRepositoryEmpty;
  }
  if (Status status = SdrReadSystem::LoadSdrRecordsToList(*set.lists); status != kSuccess) return status;
  set.isLoaded = true;
  keeper.Restore();
  SdrUtility::DisplayProgress(ProgressStyle::Text, Format("\r%-79s\r", " ").c_str());
  return kSuccess;
}

Status SdrData::LoadConfigurationFromFile(std::u16string_view fileName) {
  TraceScope scope("SdrData::LoadConfigurationFromFile");
  if (Status status = Guard("SdrData::LoadConfigurationFromFile"); status != kSuccess) return status;
  CurrentSetKeeper keeper;
  (void)SelectFileData();
  SdrDataSet& set = *TheSdr().fileSet;
  (void)SdrUtility::InitializeSdrProperties();
  (void)SdrUtility::InitializeSdrList(set.lists);
  set.recordBytes = set.counter = 0;
  set.isLoaded = false;
  std::unique_ptr<File> file;
  if (TheFirmware().OpenFile(Widen(Narrow(fileName)), FileMode::Read, file) != kSuccess) {
    Trace("SdrData::LoadConfigurationFromFile - Error Writing File", 1);
    SmbiosFormat(TheSdr().lastError, "Could not open file %s", fileName);
    return sdr_status::kCannotOpenFile;
  }
  if (Status status = LoadFile(*file, set); status != kSuccess) return status;
  set.isLoaded = true;
  return kSuccess;
}

Status SdrData::DisplaySdrArea() {
  TraceScope scope("SdrData::DisplaySdrArea");
  SdrState& state = TheSdr();
  if (Status status = OpenSdrOutput("SdrData::DisplaySdrArea"); status != kSuccess) return status;
  state.isDisplaying = true;
  SdrUtility::PrintText("Displaying SDR area ...\n");
  // A failure leaves display mode on and the output file open: what follows is shown and mirrored, too.
  if (Status status = LoadConfigurationFromSystem(); status != kSuccess) return status;
  state.isDisplaying = false;
  state.output = nullptr;
  return kSuccess;
}

Status SdrData::CommitConfigurationToSystem() {
  constexpr const char* kOperation = "SdrData::CommitConfigurationToSystem";
  TraceScope scope(kOperation);
  if (Status status = OpenSdrOutput(kOperation); status != kSuccess) return status;
  if (Status status = Guard(kOperation); status != kSuccess) return status;
  SdrDataSet& set = *TheSdr().fileSet;
  if (!set.isLoaded) {
    Trace("%s - SDR File Not Loaded", 1, kOperation);
    return sdr_status::kNotLoaded;
  }
  return CommitSdrDataSet(set);
}

}  // namespace varnok
