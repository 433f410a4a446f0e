// The manager: its start, its images and the selection.
#include "fru/fru_data.h"

#include <algorithm>
#include <array>
#include <utility>

#include "app/services/console.h"
#include "app/services/text.h"
#include "firmware/lasting.h"
#include "fru/fru_manager.h"

namespace varnok {
namespace {

PoolPtr<FruManager>& Manager() {
  return Lasting<PoolPtr<FruManager>>();
}

/// Stores one setting once the manager is initialised.
template <class Setting>
Status SetInSession(const char* name, Setting FruSession::*setting, Setting value) {
  return OnManager(name, [&](FruManager&) {
    TheFruSession().*setting = value;
    return kSuccess;
  });
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
  return found == images.end() ? kNoFru : static_cast<std::size_t>(std::distance(images.begin(), found));
}

Status FailFru(const char* name, Status status) {
  return FailFru(name, status, fru_text::kUnexpected);
}

Status FailUnsupported(const char* name) {
  return FailFru(name, fru_status::kUnsupported, fru_text::kUnsupported);
}

Status FindSelectedFru(const char* name, FruManager& manager, CFru*& fru) {
  if (!manager.isAnyLoaded) return FailFru(name, fru_status::kNoListLoaded);
  if (manager.list == FruList::None || manager.fru == FruManager::kNoFru)
    return FailFru(name, fru_status::kNothingSelected);
  PoolPtr<CFru>* image = manager.ImagesOf(manager.list).At(manager.fru);
  if (image == nullptr) return FailFru(name, fru_status::kNoSuchItem);
  fru = image->get();
  return kSuccess;
}

// --- Start ---

Status FruData::Initialize() {
  constexpr const char* kName = "FruData::Initialize";
  TraceScope scope(kName);
  Manager().reset();
  TheFruSession() = {};
  Manager() = MakeInPool<FruManager>();
  if (TheFruManager() != nullptr) return kSuccess;
  return Fail(kName, "Out of memory", fru_status::kInitializeFailed);
}

Status FruData::SetProgressCallback(ProgressCallback callback) {
  return SetInSession("FruData::SetProgressCallback", &FruSession::progress, callback);
}

Status FruData::SetDisplayHexCallback(DisplayHexCallback callback) {
  return SetInSession("FruData::SetDisplayHexCallback", &FruSession::displayHex, callback);
}

Status FruData::SetOutputFile(std::string_view fileName) {
  constexpr const char* kName = "FruData::SetOutputFile";
  return OnManager(kName, [&](FruManager& manager) {
    bool isCopied = manager.outputFileName.Assign(Widen(fileName));
    TheFruSession().outputFileName = manager.outputFileName.View();
    return isCopied ? kSuccess : FailFru(kName, fru_status::kMultiRecordMemory, fru_text::kNoMemory);
  });
}

Status FruData::SetPagingMode(bool on) {
  return SetInSession("FruData::SetPagingMode", &FruSession::isPagingOn, on);
}

void FruData::SetLastError(std::u16string_view text) {
  TraceScope scope("FruData::SetLastError");
  SetFruError(text);
}

Status FruData::GetLastErrorMessage(const char16_t*& text) {
  constexpr const char* kName = "FruData::GetLastErrorMessage";
  TraceScope scope(kName);
  FruSession& session = TheFruSession();
  text = session.lastError[0] == u'\0' ? nullptr : session.lastError.data();
  // Before the start the text is given all the same: it tells of the call that came too early.
  return TheFruManager() != nullptr ? kSuccess : Fail(kName, "Unexpected", fru_status::kNotInitialized);
}

// --- Images ---

Status FruData::LoadFruAtAddress(const FruDeviceAddress& address, bool& isImageInvalid) {
  constexpr const char* kName = "FruData::LoadFruAtAddress";
  isImageInvalid = false;
  return OnManager(kName, [&](FruManager& manager) {
    PoolPtr<CFru> image = MakeInPool<CFru>();
    PoolPtr<CFru>* place = image == nullptr ? nullptr : manager.systemFrus.Append();
    if (place == nullptr) return FailFru(kName, fru_status::kMultiRecordMemory, fru_text::kNoMemory);
    CFru& fru = *(*place = std::move(image));
    manager.isAnyLoaded = true;
    Status status = fru.LoadFromSystem(address.Untitled());
    if (status == kSuccess) return kSuccess;
    isImageInvalid = fru.IsImageInvalid();
    return Fail(kName, "LoadFromSystem failed", status);
  });
}

Status FruData::FindFruAtAddressAndChecksumHeader(const FruDeviceAddress& address) {
  constexpr const char* kName = "FruData::FindFruAtAddressAndChecksumHeader";
  return OnManager(kName, [&](FruManager&) {
    std::array<std::uint8_t, CFruHeader::kLength> bytes{};
    if (Status status = CFru::ReadDataFromFRU(address, 0, bytes); status != kSuccess)
      return FailFru(kName, status, "Unable to read FRU.");
    CFruHeader header;
    header.SetData(bytes);
    if (!header.IsIpmiFru()) return FailFru(kName, fru_status::kNotIpmiFru, fru_text::kNotIpmiFru);
    if (header.IsValid()) return kSuccess;
    return FailFru(kName, fru_status::kInvalidHeader, fru_text::kInvalidHeader,
                   FruName(address.Untitled()).Text());
  });
}

Status FruData::LoadConfigurationFromFile(std::string_view fileName) {
  constexpr const char* kName = "FruData::LoadConfigurationFromFile";
  return OnManager(kName, [&](FruManager& manager) {
    auto failForMemory = [] { return FailFru(kName, fru_status::kOutOfMemory, fru_text::kNoMemory); };
    PoolPtr<CFru> image = MakeInPool<CFru>();
    if (image == nullptr) return failForMemory();
    if (Status status = image->ReadFRUFromFile(fileName); status != kSuccess)
      return Fail(kName, "ReadFRUFromFile failed", status);
    PoolPtr<CFru>* place = manager.fileFrus.Append();
    if (place == nullptr) return failForMemory();
    *place = std::move(image);
    manager.isAnyLoaded = true;
    manager.SelectList(FruList::File);
    manager.fru = manager.fileFrus.size() - 1;
    return kSuccess;
  });
}

Status FruData::CommitConfigurationToSystem(bool force) {
  constexpr const char* kName = "FruData::CommitConfigurationToSystem";
  return OnFru(kName, [&](FruManager& manager, CFru& fru) {
    if (manager.list != FruList::System && !force) return kSuccess;
    if (fru.WriteToSystem() == kSuccess) return kSuccess;
    return Fail(kName, "WriteToSystem failed", fru_status::kWriteFailed);
  });
}

// --- Selection ---

Status FruData::SelectList(FruList list) {
  constexpr const char* kName = "FruData::SelectList";
  return OnManager(kName, [&](FruManager& manager) {
    if (list != FruList::System && list != FruList::File) return FailFru(kName, fru_status::kNoSuchItem);
    manager.SelectList(list);
    return kSuccess;
  });
}

Status FruData::SelectFruByAddress(const FruDeviceAddress& address) {
  constexpr const char* kName = "FruData::SelectFruByAddress";
  return OnManager(kName, [&](FruManager& manager) {
    if (!manager.isAnyLoaded) return FailFru(kName, fru_status::kNoListLoaded);
    if (manager.list == FruList::None) return FailFru(kName, fru_status::kNothingSelected);
    manager.SelectList(manager.list);
    manager.record = kAllMultiRecords;
    manager.fru = manager.Find(address);
    if (manager.fru != FruManager::kNoFru) return kSuccess;
    return FailFru(kName, fru_status::kNoSuchItem, "A FRU was requested which does not exist on the system.");
  });
}

Status FruData::GetFruAddress(FruDeviceAddress& address) {
  address = {.deviceAddress = 0,
             .bus = 0,
             .deviceId = 0,
             .controller = 0,
             .lun = 0,
             .nvsType = nvs_type::kRefused,
             .displayName = std::nullopt};
  return OnFru("FruData::GetFruAddress", [&](FruManager&, CFru& fru) {
    address = fru.Address();
    return kSuccess;
  });
}

Status FruData::SelectAreaEnum(FruAreaId area) {
  constexpr const char* kName = "FruData::SelectAreaEnum";
  return OnFru(kName, [&](FruManager& manager, CFru& fru) {
    manager.area = FruAreaId::None;
    manager.field = kInvalidFieldIndex;
    if (area < FruAreaId::CommonHeaderArea || area > FruAreaId::MultiRecordArea)
      return FailFru(kName, fru_status::kNoSuchItem);
    if (fru.HasArea(area)) manager.area = area;
    return kSuccess;
  });
}

namespace {

Status HasArea(const char* name, FruAreaId area, bool& isPresent) {
  isPresent = false;
  return OnFru(name, [&](FruManager&, CFru& fru) {
    isPresent = fru.HasArea(area);
    return kSuccess;
  });
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
  constexpr const char* kName = "FruData::SelectMultiRecNum";
  return OnArea(kName, [&](FruManager& manager, CFru& fru) {
    if (manager.area != FruAreaId::MultiRecordArea) return FailUnsupported(kName);
    if (number == 0 || number > fru.MultiRecords().size()) {
      PrintText("\nInvalid MultiRecord Number\n");
      return FailFru(kName, fru_status::kUnexpected);
    }
    manager.record = number;
    return kSuccess;
  });
}

}  // namespace varnok
