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

Status FailFru(std::u16string_view operation, Status status, std::u16string_view text) {
  SetFruError(text);
  Trace(u"%ls - Unexpected", 1, operation);
  return status;
}

Status CheckFruManager(std::u16string_view operation, FruManager*& manager) {
  manager = TheFruManager();
  return manager == nullptr ? FailFru(operation, fru_status::kNotInitialized) : kSuccess;
}

Status CheckSelectedFru(std::u16string_view operation, FruManager*& manager, CFru*& fru) {
  if (Status status = CheckFruManager(operation, manager); status != kSuccess) return status;
  if (!manager->isAnyLoaded) return FailFru(operation, fru_status::kNoListLoaded);
  if (manager->list == FruList::None || manager->fru == FruManager::kNoFru)
    return FailFru(operation, fru_status::kNothingSelected);
  FruManager::Images& images = manager->ImagesOf(manager->list);
  if (manager->fru >= images.size()) return FailFru(operation, fru_status::kNoSuchItem);
  fru = images[manager->fru].get();
  return kSuccess;
}

Status CheckSelectedArea(std::u16string_view operation, FruManager*& manager, CFru*& fru) {
  if (Status status = CheckSelectedFru(operation, manager, fru); status != kSuccess) return status;
  return manager->area == FruAreaId::None ? FailFru(operation, fru_status::kNothingSelected) : kSuccess;
}

// --- Start ---

Status FruData::Initialize() {
  TraceScope scope(u"FruData::Initialize");
  Reset();
  Manager() = MakeInPool<FruManager>();
  if (TheFruManager() != nullptr) return kSuccess;
  Trace(u"FruData::Initialize - Out of memory", 1);
  return fru_status::kInitializeFailed;
}

void FruData::Reset() {
  Manager().reset();
  TheFruSession() = {};
}

Status FruData::SetProgressCallback(ProgressCallback callback) {
  constexpr std::u16string_view kOperation = u"FruData::SetProgressCallback";
  TraceScope scope(kOperation);
  FruManager* manager = nullptr;
  Status status = CheckFruManager(kOperation, manager);
  if (status == kSuccess) TheFruSession().progress = callback;
  return status;
}

Status FruData::SetDisplayHexCallback(DisplayHexCallback callback) {
  constexpr std::u16string_view kOperation = u"FruData::SetDisplayHexCallback";
  TraceScope scope(kOperation);
  FruManager* manager = nullptr;
  Status status = CheckFruManager(kOperation, manager);
  if (status == kSuccess) TheFruSession().displayHex = callback;
  return status;
}

Status FruData::SetOutputFile(std::string_view fileName) {
  constexpr std::u16string_view kOperation = u"FruData::SetOutputFile";
  TraceScope scope(kOperation);
  FruManager* manager = nullptr;
  if (Status status = CheckFruManager(kOperation, manager); status != kSuccess) return status;
  bool isCopied = manager->outputFileName.Assign(Widen(fileName));
  TheFruSession().outputFileName = manager->outputFileName.View();
  return isCopied ? kSuccess : FailFru(kOperation, fru_status::kMultiRecordMemory, fru_text::kNoMemory);
}

Status FruData::SetPagingMode(bool on) {
  constexpr std::u16string_view kOperation = u"FruData::SetPagingMode";
  TraceScope scope(kOperation);
  FruManager* manager = nullptr;
  Status status = CheckFruManager(kOperation, manager);
  if (status == kSuccess) TheFruSession().isPagingOn = on;
  return status;
}

void FruData::SetLastError(std::u16string_view text) {
  TraceScope scope(u"FruData::SetLastError");
  SetFruError(text);
}

Status FruData::GetLastErrorMessage(const char16_t*& text) {
  constexpr std::u16string_view kOperation = u"FruData::GetLastErrorMessage";
  TraceScope scope(kOperation);
  FruSession& session = TheFruSession();
  text = session.lastError[0] == u'\0' ? nullptr : session.lastError.data();
  if (TheFruManager() != nullptr) return kSuccess;
  // The text is given all the same: it tells of the call that came too early.
  Trace(u"%ls - Unexpected", 1, kOperation);
  return fru_status::kNotInitialized;
}

// --- Images ---

Status FruData::LoadFruAtAddress(const FruDeviceAddress& address, bool& isImageInvalid) {
  constexpr std::u16string_view kOperation = u"FruData::LoadFruAtAddress";
  TraceScope scope(kOperation);
  isImageInvalid = false;
  FruManager* manager = nullptr;
  if (Status status = CheckFruManager(kOperation, manager); status != kSuccess) return status;
  PoolPtr<CFru> fru = MakeInPool<CFru>();
  if (fru == nullptr) return FailFru(kOperation, fru_status::kMultiRecordMemory, fru_text::kNoMemory);
  Status status = fru->LoadFromSystem(address);
  if (status != kSuccess) {
    isImageInvalid = fru->IsImageInvalid();
    Trace(u"FruData::LoadFruAtAddress - LoadFromSystem failed", 1);
  }
  manager->systemFrus.push_back(std::move(fru));
  manager->isAnyLoaded = true;
  return status;
}

Status FruData::FindFruAtAddressAndChecksumHeader(const FruDeviceAddress& address) {
  constexpr std::u16string_view kOperation = u"FruData::FindFruAtAddressAndChecksumHeader";
  TraceScope scope(kOperation);
  FruManager* manager = nullptr;
  if (Status status = CheckFruManager(kOperation, manager); status != kSuccess) return status;
  std::array<std::uint8_t, CFruHeader::kLength> bytes{};
  if (Status status = CFru::ReadDataFromFRU(address, 0, bytes); status != kSuccess)
    return FailFru(kOperation, status, u"Unable to read FRU.");
  CFruHeader header;
  header.SetData(bytes);
  if (!header.IsIpmiFru()) return FailFru(kOperation, fru_status::kNotIpmiFru, fru_text::kNotIpmiFru);
  if (header.IsValid()) return kSuccess;
  std::array<char16_t, FruSession::kLastErrorCapacity> name;
  return FailFru(kOperation, fru_status::kInvalidHeader,
                 Format(fru_text::kInvalidHeader, CFru::GetFriendlyFruIdentifier(&address, name)));
}

Status FruData::LoadConfigurationFromFile(std::string_view fileName) {
  constexpr std::u16string_view kOperation = u"FruData::LoadConfigurationFromFile";
  TraceScope scope(kOperation);
  FruManager* manager = nullptr;
  if (Status status = CheckFruManager(kOperation, manager); status != kSuccess) return status;
  PoolPtr<CFru> fru = MakeInPool<CFru>();
  if (fru == nullptr) return FailFru(kOperation, fru_status::kOutOfMemory, fru_text::kNoMemory);
  if (Status status = fru->ReadFRUFromFile(fileName); status != kSuccess) {
    Trace(u"FruData::LoadConfigurationFromFile - ReadFRUFromFile failed", 1);
    return status;
  }
  manager->fileFrus.push_back(std::move(fru));
  manager->isAnyLoaded = true;
  manager->SelectList(FruList::File);
  manager->fru = manager->fileFrus.size() - 1;
  return kSuccess;
}

Status FruData::CommitConfigurationToSystem(bool force) {
  constexpr std::u16string_view kOperation = u"FruData::CommitConfigurationToSystem";
  TraceScope scope(kOperation);
  FruManager* manager = nullptr;
  CFru* fru = nullptr;
  if (Status status = CheckSelectedFru(kOperation, manager, fru); status != kSuccess) return status;
  if (manager->list != FruList::System && !force) return kSuccess;
  if (fru->WriteToSystem() == kSuccess) return kSuccess;
  Trace(u"FruData::CommitConfigurationToSystem - WriteToSystem failed", 1);
  return fru_status::kWriteFailed;
}

// --- Selection ---

Status FruData::SelectList(FruList list) {
  constexpr std::u16string_view kOperation = u"FruData::SelectList";
  TraceScope scope(kOperation);
  FruManager* manager = nullptr;
  if (Status status = CheckFruManager(kOperation, manager); status != kSuccess) return status;
  if (list != FruList::System && list != FruList::File) return FailFru(kOperation, fru_status::kNoSuchItem);
  manager->SelectList(list);
  return kSuccess;
}

Status FruData::SelectFruByAddress(const FruDeviceAddress& address) {
  constexpr std::u16string_view kOperation = u"FruData::SelectFruByAddress";
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
                 u"A FRU was requested which does not exist on the system.");
}

Status FruData::GetFruAddress(FruDeviceAddress& address) {
  constexpr std::u16string_view kOperation = u"FruData::GetFruAddress";
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
  constexpr std::u16string_view kOperation = u"FruData::SelectAreaEnum";
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

Status HasArea(std::u16string_view operation, FruAreaId area, bool& isPresent) {
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
  return HasArea(u"FruData::HasInternalUseArea", FruAreaId::InternalUseArea, isPresent);
}
Status FruData::HasChassisArea(bool& isPresent) {
  return HasArea(u"FruData::HasChassisArea", FruAreaId::ChassisInfoArea, isPresent);
}
Status FruData::HasBoardArea(bool& isPresent) {
  return HasArea(u"FruData::HasBoardArea", FruAreaId::BoardInfoArea, isPresent);
}
Status FruData::HasProductArea(bool& isPresent) {
  return HasArea(u"FruData::HasProductArea", FruAreaId::ProductInfoArea, isPresent);
}
Status FruData::HasMultiRecordArea(bool& isPresent) {
  return HasArea(u"FruData::HasMultiRecordArea", FruAreaId::MultiRecordArea, isPresent);
}

Status FruData::SelectMultiRecNum(std::uint32_t number) {
  constexpr std::u16string_view kOperation = u"FruData::SelectMultiRecNum";
  TraceScope scope(kOperation);
  FruManager* manager = nullptr;
  CFru* fru = nullptr;
  if (Status status = CheckSelectedArea(kOperation, manager, fru); status != kSuccess) return status;
  if (manager->area != FruAreaId::MultiRecordArea)
    return FailFru(kOperation, fru_status::kUnsupported, fru_text::kUnsupported);
  if (number == 0 || number > fru->MultiRecords().size()) {
    PrintText(u"\nInvalid MultiRecord Number\n");
    return FailFru(kOperation, fru_status::kUnexpected);
  }
  manager->record = number;
  return kSuccess;
}

}  // namespace varnok
