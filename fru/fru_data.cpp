// The manager: its start, its images and the selection.
#include "fru/fru_data.h"

#include <algorithm>
#include <array>
#include <utility>

#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "firmware/lasting.h"
#include "fru/fru_encoding.h"
#include "fru/fru_manager.h"

namespace varnok {
namespace {

PoolPtr<FruManager>& Manager() {
  return Lasting<PoolPtr<FruManager>>();
}

/// Stores one setting once the manager is initialised.
template <class Setting>
Status SetInSession(const char* operation, Setting FruSession::*setting, Setting value) {
  TraceScope scope(operation);
  FruManager* manager = nullptr;
  Status status = CheckFruManager(operation, manager);
  if (status == kSuccess) TheFruSession().*setting = value;
  return status;
}

}  // namespace

FruManager* TheFruManager() {
  return Manager().get();
}

void FruManager::SelectList(FruList which) {
  list = which;
  fru = kNoFru;
  area = FruAreaId::None;
  field = kInvalidFieldIndex;
}

std::size_t FruManager::Find(const FruDeviceAddress& address) {
  Images& images = ImagesOf(list);
  auto found = std::find_if(images.begin(), images.end(), [&](const PoolPtr<CFru>& image) {
    return image->Address().IsSameDevice(address);
  });
  return found == images.end() ? kNoFru : static_cast<std::size_t>(found - images.begin());
}

Status FailFru(const char* operation, Status status, std::u16string_view text) {
  SetFruError(text);
  Trace("%s - Unexpected", 1, operation);
  return status;
}

Status FailFru(const char* operation, Status status, const char* text) {
  return FailFru(operation, status, Widen(text));
}

Status CheckFruManager(const char* operation, FruManager*& manager) {
  manager = TheFruManager();
  return manager == nullptr ? FailFru(operation, fru_status::kNotInitialized) : kSuccess;
}

Status CheckSelectedFru(const char* operation, FruManager*& manager, CFru*& fru) {
  if (Status status = CheckFruManager(operation, manager); status != kSuccess) return status;
  if (!manager->isAnyLoaded) return FailFru(operation, fru_status::kNoListLoaded);
  if (manager->list == FruList::None || manager->fru == FruManager::kNoFru)
    return FailFru(operation, fru_status::kNothingSelected);
  FruManager::Images& images = manager->ImagesOf(manager->list);
  if (manager->fru >= images.size()) return FailFru(operation, fru_status::kNoSuchItem);
  fru = images[manager->fru].get();
  return kSuccess;
}

Status CheckSelectedArea(const char* operation, FruManager*& manager, CFru*& fru) {
  if (Status status = CheckSelectedFru(operation, manager, fru); status != kSuccess) return status;
  return manager->area == FruAreaId::None ? FailFru(operation, fru_status::kNothingSelected) : kSuccess;
}

// --- Start ---

Status FruData::Initialize() {
  TraceScope scope("FruData::Initialize");
  Reset();
  Manager() = MakeInPool<FruManager>();
  if (TheFruManager() != nullptr) return kSuccess;
  Trace("FruData::Initialize - Out of memory", 1);
  return fru_status::kInitializeFailed;
}

void FruData::Reset() {
  Manager().reset();
  TheFruSession() = {};
}

Status FruData::SetProgressCallback(ProgressCallback callback) {
  return SetInSession("FruData::SetProgressCallback", &FruSession::progress, callback);
}

Status FruData::SetDisplayHexCallback(DisplayHexCallback callback) {
  return SetInSession("FruData::SetDisplayHexCallback", &FruSession::displayHex, callback);
}

Status FruData::SetOutputFile(std::string_view fileName) {
  constexpr const char* kOperation = "FruData::SetOutputFile";
  TraceScope scope(kOperation);
  FruManager* manager = nullptr;
  if (Status status = CheckFruManager(kOperation, manager); status != kSuccess) return status;
  bool isCopied = manager->outputFileName.Assign(Widen(fileName));
  TheFruSession().outputFileName = manager->outputFileName.View();
  return isCopied ? kSuccess : FailFru(kOperation, fru_status::kMultiRecordMemory, fru_text::kNoMemory);
}

Status FruData::SetPagingMode(bool on) {
  return SetInSession("FruData::SetPagingMode", &FruSession::isPagingOn, on);
}

void FruData::SetLastError(std::u16string_view text) {
  TraceScope scope("FruData::SetLastError");
  SetFruError(text);
}

Status FruData::GetLastErrorMessage(const char16_t*& text) {
  constexpr const char* kOperation = "FruData::GetLastErrorMessage";
  TraceScope scope(kOperation);
  FruSession& session = TheFruSession();
  text = session.lastError[0] == u'\0' ? nullptr : session.lastError.data();
  if (TheFruManager() != nullptr) return kSuccess;
  // The text is given all the same: it tells of the call that came too early.
  Trace("%s - Unexpected", 1, kOperation);
  return fru_status::kNotInitialized;
}

// --- Images ---

Status FruData::LoadFruAtAddress(const FruDeviceAddress& address, bool& isImageInvalid) {
  constexpr const char* kOperation = "FruData::LoadFruAtAddress";
  TraceScope scope(kOperation);
  isImageInvalid = false;
  FruManager* manager = nullptr;
  if (Status status = CheckFruManager(kOperation, manager); status != kSuccess) return status;
  PoolPtr<CFru> fru = MakeInPool<CFru>();
  if (fru == nullptr) return FailFru(kOperation, fru_status::kMultiRecordMemory, fru_text::kNoMemory);
  Status status = fru->LoadFromSystem(address.Untitled());
  if (status != kSuccess) {
    isImageInvalid = fru->IsImageInvalid();
    Trace("FruData::LoadFruAtAddress - LoadFromSystem failed", 1);
  }
  manager->systemFrus.push_back(std::move(fru));
  manager->isAnyLoaded = true;
  return status;
}

Status FruData::FindFruAtAddressAndChecksumHeader(const FruDeviceAddress& address) {
  constexpr const char* kOperation = "FruData::FindFruAtAddressAndChecksumHeader";
  TraceScope scope(kOperation);
  FruManager* manager = nullptr;
  if (Status status = CheckFruManager(kOperation, manager); status != kSuccess) return status;
  std::array<std::uint8_t, CFruHeader::kLength> bytes{};
  if (Status status = CFru::ReadDataFromFRU(address, 0, bytes); status != kSuccess)
    return FailFru(kOperation, status, "Unable to read FRU.");
  CFruHeader header;
  header.SetData(bytes);
  if (!header.IsIpmiFru()) return FailFru(kOperation, fru_status::kNotIpmiFru, fru_text::kNotIpmiFru);
  if (header.IsValid()) return kSuccess;
  std::array<char16_t, FruSession::kLastErrorCapacity> name;
  const FruDeviceAddress untitled = address.Untitled();
  return FailFru(kOperation, fru_status::kInvalidHeader,
                 FormatWide(fru_text::kInvalidHeader, CFru::GetFriendlyFruIdentifier(&untitled, name)));
}

Status FruData::LoadConfigurationFromFile(std::string_view fileName) {
  constexpr const char* kOperation = "FruData::LoadConfigurationFromFile";
  TraceScope scope(kOperation);
  FruManager* manager = nullptr;
  if (Status status = CheckFruManager(kOperation, manager); status != kSuccess) return status;
  PoolPtr<CFru> fru = MakeInPool<CFru>();
  if (fru == nullptr) return FailFru(kOperation, fru_status::kOutOfMemory, fru_text::kNoMemory);
  if (Status status = fru->ReadFRUFromFile(fileName); status != kSuccess) {
    Trace("FruData::LoadConfigurationFromFile - ReadFRUFromFile failed", 1);
    return status;
  }
  manager->fileFrus.push_back(std::move(fru));
  manager->isAnyLoaded = true;
  manager->SelectList(FruList::File);
  manager->fru = manager->fileFrus.size() - 1;
  return kSuccess;
}

Status FruData::CommitConfigurationToSystem(bool force) {
  constexpr const char* kOperation = "FruData::CommitConfigurationToSystem";
  TraceScope scope(kOperation);
  FruManager* manager = nullptr;
  CFru* fru = nullptr;
  if (Status status = CheckSelectedFru(kOperation, manager, fru); status != kSuccess) return status;
  if (manager->list != FruList::System && !force) return kSuccess;
  if (fru->WriteToSystem() == kSuccess) return kSuccess;
  Trace("FruData::CommitConfigurationToSystem - WriteToSystem failed", 1);
  return fru_status::kWriteFailed;
}

// --- Selection ---

Status FruData::SelectList(FruList list) {
  constexpr const char* kOperation = "FruData::SelectList";
  TraceScope scope(kOperation);
  FruManager* manager = nullptr;
  if (Status status = CheckFruManager(kOperation, manager); status != kSuccess) return status;
  if (list != FruList::System && list != FruList::File) return FailFru(kOperation, fru_status::kNoSuchItem);
  manager->SelectList(list);
  return kSuccess;
}

Status FruData::SelectFruByAddress(const FruDeviceAddress& address) {
  constexpr const char* kOperation = "FruData::SelectFruByAddress";
  TraceScope scope(kOperation);
  FruManager* manager = nullptr;
  if (Status status = CheckFruManager(kOperation, manager); status != kSuccess) return status;
  if (!manager->isAnyLoaded) return FailFru(kOperation, fru_status::kNoListLoaded);
  if (manager->list == FruList::None) return FailFru(kOperation, fru_status::kNothingSelected);
  manager->SelectList(manager->list);
  manager->record = kAllMultiRecords;
  manager->fru = manager->Find(address);
  if (manager->fru != FruManager::kNoFru) return kSuccess;
  return FailFru(kOperation, fru_status::kNoSuchItem,
                 "A FRU was requested which does not exist on the system.");
}

Status FruData::GetFruAddress(FruDeviceAddress& address) {
  constexpr const char* kOperation = "FruData::GetFruAddress";
  TraceScope scope(kOperation);
  address = {.deviceAddress = 0,
             .bus = 0,
             .deviceId = 0,
             .controller = 0,
             .lun = 0,
             .nvsType = nvs_type::kRefused,
             .displayName = std::nullopt};
  FruManager* manager = nullptr;
  CFru* fru = nullptr;
  Status status = CheckSelectedFru(kOperation, manager, fru);
  if (status == kSuccess) address = fru->Address();
  return status;
}

Status FruData::SelectAreaEnum(FruAreaId area) {
  constexpr const char* kOperation = "FruData::SelectAreaEnum";
  TraceScope scope(kOperation);
  FruManager* manager = nullptr;
  CFru* fru = nullptr;
  if (Status status = CheckSelectedFru(kOperation, manager, fru); status != kSuccess) return status;
  manager->area = FruAreaId::None;
  manager->field = kInvalidFieldIndex;
  if (area < FruAreaId::CommonHeaderArea || area > FruAreaId::MultiRecordArea)
    return FailFru(kOperation, fru_status::kNoSuchItem);
  if (fru->HasArea(area)) manager->area = area;
  return kSuccess;
}

namespace {

Status HasArea(const char* operation, FruAreaId area, bool& isPresent) {
  TraceScope scope(operation);
  isPresent = false;
  FruManager* manager = nullptr;
  CFru* fru = nullptr;
  Status status = CheckSelectedFru(operation, manager, fru);
  if (status == kSuccess) isPresent = fru->HasArea(area);
  return status;
}

}  // namespace

Status FruData::HasInternalUseArea(bool& isPresent) {
  return HasArea("FruData::HasInternalUseArea", FruAreaId::InternalUseArea, isPresent);
}
Status FruData::HasChassisArea(bool& isPresent) {
  return HasArea("FruData::HasChassisArea", FruAreaId::ChassisInfoArea, isPresent);
}
Status FruData::HasBoardArea(bool& isPresent) {
  return HasArea("FruData::HasBoardArea", FruAreaId::BoardInfoArea, isPresent);
}
Status FruData::HasProductArea(bool& isPresent) {
  return HasArea("FruData::HasProductArea", FruAreaId::ProductInfoArea, isPresent);
}
Status FruData::HasMultiRecordArea(bool& isPresent) {
  return HasArea("FruData::HasMultiRecordArea", FruAreaId::MultiRecordArea, isPresent);
}

Status FruData::SelectMultiRecNum(std::uint32_t number) {
  constexpr const char* kOperation = "FruData::SelectMultiRecNum";
  TraceScope scope(kOperation);
  FruManager* manager = nullptr;
  CFru* fru = nullptr;
  if (Status status = CheckSelectedArea(kOperation, manager, fru); status != kSuccess) return status;
  if (manager->area != FruAreaId::MultiRecordArea)
    return FailFru(kOperation, fru_status::kUnsupported, fru_text::kUnsupported);
  if (number == 0 || number > fru->MultiRecords().size()) {
    PrintText("\nInvalid MultiRecord Number\n");
    return FailFru(kOperation, fru_status::kUnexpected);
  }
  manager->record = number;
  return kSuccess;
}

}  // namespace varnok
