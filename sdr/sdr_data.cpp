#include "sdr/sdr_data.h"

#include <algorithm>
#include <string>

#include "app/services/text.h"
#include "app/services/text_file.h"
#include "app/services/trace.h"
#include "platform/smbios.h"
#include "sdr/commit.h"
#include "sdr/data_set.h"
#include "sdr/file_lines.h"
#include "sdr/output.h"
#include "sdr/read_file.h"
#include "sdr/read_system.h"
#include "sdr/record_lists.h"

namespace varnok {
namespace {

bool IsInitialized() {
  const SdrState& state = TheSdr();
  return state.fileSet != nullptr && state.systemSet != nullptr && state.fileSet->isInitialized &&
         state.systemSet->isInitialized;
}

/// kNotInitialized with its trace line, or success.
Status Guard(const char* name) {
  return IsInitialized() ? kSuccess : Fail(name, "Uninitialized", sdr_status::kNotInitialized);
}

/// One operation of the front, which needs the manager initialised: its trace lines, the guard, then
/// `operation` on the state.
template <class Operation>
Status Guarded(const char* name, Operation operation) {
  TraceScope scope(name);
  Status status = Guard(name);
  return status == kSuccess ? operation(TheSdr()) : status;
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

/// Empties a set before a load.
Status Restart(SdrDataSet& set) {
  set.isLoaded = false;
  set.recordBytes = set.counter = 0;
  (void)SdrUtility::InitializeSdrProperties();
  return SdrUtility::InitializeSdrList(set.lists);
}

Status LoadFile(File& file, std::string_view name, SdrDataSet& set) {
  if (set.lists == nullptr) return sdr_status::kOutOfMemory;
  SdrFileLines lines(file, name);
  TheSdr().lineCounter = 0;
  if (Status status = SdrReadFile::ReadSdrRecordsFromFile(lines, *set.lists); status != kSuccess)
    return status;
  // A file load asks the BMC for its repository, too: a board without one is found before anything is
  // cleared.
  return SdrReadSystem::LoadSdrProperties(set.info);
}

}  // namespace

Status SdrData::Initialize() {
  constexpr const char* kName = "SdrData::Initialize";
  TraceScope scope(kName);
  SdrState& state = TheSdr();
  if (state.fileSet != nullptr || state.systemSet != nullptr) (void)DeInitialize();
  state.fileSet = MakeDataSet();
  state.systemSet = state.fileSet == nullptr ? nullptr : MakeDataSet();
  state.current = state.fileSet.get();
  if (!IsInitialized()) {
    state.fileSet = nullptr;
    state.current = nullptr;
    return Fail(kName, "Error Loading SDRDATA", sdr_status::kNoDataSet);
  }
  state.SetLastError(u"");
  return kSuccess;
}

Status SdrData::DeInitialize() {
  return Guarded("SdrData::DeInitialize", [](SdrState& state) {
    state.current = nullptr;
    state.fileSet = nullptr;
    state.systemSet = nullptr;
    state.outputName.Reset();
    state.output = nullptr;
    return kSuccess;
  });
}

Status SdrData::IsLoaded(bool& isLoaded) {
  return Guarded("SdrData::IsLoaded", [&isLoaded](SdrState& state) {
    isLoaded = state.current->isLoaded;
    return kSuccess;
  });
}

Status SdrData::SetProgressCallback(ProgressCallback callback) {
  return Guarded("SdrData::SetProgressCallback", [callback](SdrState& state) {
    state.fileSet->progress = state.systemSet->progress = callback;
    return kSuccess;
  });
}

Status SdrData::SetDisplayHexCallback(DisplayHexCallback callback) {
  return Guarded("SdrData::SetDisplayHexCallback", [callback](SdrState& state) {
    state.fileSet->displayHex = state.systemSet->displayHex = callback;
    return kSuccess;
  });
}

Status SdrData::GetLastErrorMessage(const char16_t*& text) {
  text = nullptr;
  return Guarded("SdrData::GetLastErrorMessage", [&text](SdrState& state) {
    text = state.lastError.data();
    return kSuccess;
  });
}

Status SdrData::SelectSysData() {
  return Guarded("SdrData::SelectSysData", [](SdrState& state) {
    state.current = state.systemSet.get();
    return kSuccess;
  });
}

Status SdrData::SelectFileData() {
  return Guarded("SdrData::SelectFileData", [](SdrState& state) {
    state.current = state.fileSet.get();
    return kSuccess;
  });
}

Status SdrData::SetOutputFile(std::string_view name) {
  constexpr const char* kName = "SdrData::SetOutputFile";
  TraceScope scope(kName);
  PoolBuffer copy;
  if (!name.empty() && !copy.Allocate(name.size()))
    return Fail(kName, "Error Allocating Memory", sdr_status::kOutOfMemory);
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
  constexpr const char* kName = "SdrData::SetCompareOnly";
  TraceScope scope(kName);
  if (TheSdr().fileSet == nullptr) return Guard(kName);
  TheSdr().fileSet->isCompareOnly = on;
  return kSuccess;
}

Status SdrData::ClearRepository() {
  TraceScope scope("SdrData::ClearRepository");
  return SdrReadSystem::ClearSDRRepository();
}

Status SdrData::SetTag(std::u16string_view tag) {
  return Guarded("SdrData::SetTag", [tag](SdrState& state) {
    constexpr std::size_t kLongestTag = 255;
    state.fileSet->selectedTags.push_back(Narrow(tag.substr(0, kLongestTag)));
    return kSuccess;
  });
}

Status SdrData::LoadConfigurationFromSystem() {
  constexpr const char* kName = "SdrData::LoadConfigurationFromSystem";
  return Guarded(kName, [](SdrState& state) {
    CurrentSetKeeper keeper;
    (void)SelectSysData();
    SdrDataSet& set = *state.systemSet;
    set.isFromSystem = true;
    if (Restart(set) != kSuccess) return Fail(kName, "Uninitialized", sdr_status::kNotInitialized);
    if (Status status = SdrReadSystem::LoadSdrProperties(set.info); status != kSuccess) return status;
    if (set.info.recordCount == 0) {
      SdrUtility::PrintText(u"\nNo Sensor Data Records found in this server.\n");
      // Kept: the system set stays the current one here, and only here.
      keeper.Release();
      return Fail(kName, "No SDRs available", sdr_status::kRepositoryEmpty);
    }
    if (Status status = SdrReadSystem::LoadSdrRecordsToList(*set.lists); status != kSuccess) return status;
    set.isLoaded = true;
    keeper.Restore();
    SdrUtility::DisplayProgress(ProgressStyle::Text, FormatWide("\r%-79s\r", " "));
    return kSuccess;
  });
}

Status SdrData::LoadConfigurationFromFile(std::u16string_view fileName) {
  constexpr const char* kName = "SdrData::LoadConfigurationFromFile";
  return Guarded(kName, [fileName](SdrState& state) {
    CurrentSetKeeper keeper;
    (void)SelectFileData();
    SdrDataSet& set = *state.fileSet;
    // A failure is told by LoadFile, behind that of the file itself.
    (void)Restart(set);
    const std::string name = Narrow(fileName);
    std::unique_ptr<File> file;
    if (OpenTextFile(name, file) != kSuccess) {
      SmbiosFormat(state.lastError, "Could not open file %s", fileName);
      // Kept: the line says writing.
      return Fail(kName, "Error Writing File", sdr_status::kCannotOpenFile);
    }
    if (Status status = LoadFile(*file, name, set); status != kSuccess) return status;
    set.isLoaded = true;
    return kSuccess;
  });
}

Status SdrData::DisplaySdrArea() {
  constexpr const char* kName = "SdrData::DisplaySdrArea";
  TraceScope scope(kName);
  SdrState& state = TheSdr();
  if (Status status = OpenSdrOutput(kName); status != kSuccess) return status;
  state.isDisplaying = true;
  SdrUtility::PrintText(u"Displaying SDR area ...\n");
  // Kept: a failure leaves display mode on and the output file open: what follows is shown and mirrored, too.
  if (Status status = LoadConfigurationFromSystem(); status != kSuccess) return status;
  state.isDisplaying = false;
  state.output = nullptr;
  return kSuccess;
}

Status SdrData::CommitConfigurationToSystem() {
  constexpr const char* kName = "SdrData::CommitConfigurationToSystem";
  TraceScope scope(kName);
  if (Status status = OpenSdrOutput(kName); status != kSuccess) return status;
  if (Status status = Guard(kName); status != kSuccess) return status;
  SdrDataSet& set = *TheSdr().fileSet;
  if (!set.isLoaded) return Fail(kName, "SDR File Not Loaded", sdr_status::kNotLoaded);
  return CommitSdrDataSet(set);
}

}  // namespace varnok
