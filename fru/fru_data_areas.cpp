// The manager: fields and areas of the selected FRU.
#include <algorithm>

#include "app/services/console.h"
#include "fru/fru_data.h"
#include "fru/fru_manager.h"

namespace varnok {
namespace {

/// Type code 3, 8-bit text: the one encoding in which fields are set.
constexpr std::uint8_t kTextTypeBits = 0xC0;

const char* AreaName(FruAreaId area) {
  switch (area) {
    case FruAreaId::ChassisInfoArea:
      return "chassis";
    case FruAreaId::BoardInfoArea:
      return "board";
    default:
      return "product";
  }
}

/// Needs a field of the chassis, board or product area selected: operation(manager, info).
template <class Operation>
Status OnField(const char* name, Operation operation) {
  return OnArea(name, [&](FruManager& manager, CFru& fru) {
    InfoArea* info = fru.FindInfoArea(manager.area);
    if (info == nullptr) return FailUnsupported(name);
    if (manager.field == kInvalidFieldIndex) return FailFru(name, fru_status::kNothingSelected);
    return operation(manager, *info);
  });
}

/// The bytes of the selected record or of all; false when the selected one is not there.
bool MultiRecordSize(CFru& fru, std::uint32_t number, std::uint32_t& size) {
  size = 0;
  std::uint32_t current = 0;
  for (const MultiRecord& record : fru.MultiRecords()) {
    if (++current == number || number == kAllMultiRecords)
      size += static_cast<std::uint32_t>(MultiRecord::kHeaderLength + record.Length());
  }
  return number == kAllMultiRecords || size != 0;
}

}  // namespace

Status FruData::SelectFieldEnum(FruFieldId field) {
  constexpr const char* kName = "FruData::SelectFieldEnum";
  return OnArea(kName, [&](FruManager& manager, CFru& fru) {
    manager.field = kInvalidFieldIndex;
    if (manager.area == FruAreaId::InternalUseArea)
      manager.field = fru.InternalUse().GetFieldIndexFromEnum(field);
    else if (const InfoArea* info = fru.FindInfoArea(manager.area))
      manager.field = info->GetFieldIndexFromEnum(field);
    else
      return FailUnsupported(kName);
    if (manager.field != kInvalidFieldIndex) return kSuccess;
    return FailFru(kName, fru_status::kNoSuchItem, fru_text::kNoSuchField);
  });
}

Status FruData::SelectFieldInteger(std::uint32_t index) {
  constexpr const char* kName = "FruData::SelectFieldInteger";
  return OnArea(kName, [&](FruManager& manager, CFru& fru) {
    manager.field = kInvalidFieldIndex;
    std::uint32_t count = 0;
    if (manager.area == FruAreaId::InternalUseArea)
      count = fru.InternalUse().GetNumberOfFields();
    else if (const InfoArea* info = fru.FindInfoArea(manager.area))
      count = info->GetNumberOfFields();
    else
      return FailUnsupported(kName);
    if (index >= count) return FailFru(kName, fru_status::kNoSuchItem, fru_text::kNoSuchField);
    manager.field = index;
    return kSuccess;
  });
}

Status FruData::GetFieldDataValue(const std::uint8_t*& data, std::uint32_t& length) {
  constexpr const char* kName = "FruData::GetFieldDataValue";
  data = nullptr;
  length = 0;
  return OnField(kName, [&](FruManager& manager, InfoArea& info) {
    std::span<const std::uint8_t> value;
    // A field of an area that could not be parsed has no data.
    if (!info.GetFieldData(manager.field, value) || value.data() == nullptr)
      return FailFru(kName, fru_status::kGetFieldFailed,
                     "An error occurred getting a field from the FRU %s area.", AreaName(manager.area));
    data = value.data();
    length = static_cast<std::uint32_t>(value.size());
    return kSuccess;
  });
}

Status FruData::SetFieldDataValue(const std::uint8_t* data, std::uint32_t length) {
  constexpr const char* kName = "FruData::SetFieldDataValue";
  return OnField(kName, [&](FruManager& manager, InfoArea& info) {
    std::span<const std::uint8_t> value(data, data == nullptr ? 0 : length);
    if (info.SetFieldData(manager.field, value, kTextTypeBits)) return kSuccess;
    return FailFru(kName, fru_status::kSetFieldFailed,
                   "Could not assign new data to the %s area.  The data is probably too long to fit in the "
                   "field or area.",
                   AreaName(manager.area));
  });
}

Status FruData::GetMaxFieldSize(std::uint32_t& size) {
  constexpr const char* kName = "FruData::GetMaxFieldSize";
  size = 0;
  return OnArea(kName, [&](FruManager& manager, CFru& fru) {
    if (manager.area == FruAreaId::CommonHeaderArea) return kSuccess;
    const InfoArea* info = fru.FindInfoArea(manager.area);
    if (info == nullptr) return FailUnsupported(kName);
    size = static_cast<std::uint32_t>(std::max<std::ptrdiff_t>(0, info->GetPadLength()));
    return kSuccess;
  });
}

Status FruData::ResizeFruArea(std::uint32_t length) {
  return OnArea("FruData::ResizeFruArea",
                [&](FruManager& manager, CFru& fru) { return fru.ResizeFruArea(manager.area, length); });
}

Status FruData::GetAreaData(std::uint8_t* buffer, std::uint32_t& size) {
  constexpr const char* kName = "FruData::GetAreaData";
  std::uint32_t room = buffer == nullptr ? 0 : size;
  size = 0;
  return OnArea(kName, [&](FruManager& manager, CFru& fru) {
    std::span<const std::uint8_t> bytes;
    if (manager.area == FruAreaId::MultiRecordArea) {
      Status status = fru.SerializeMultiRecArea(buffer, room, manager.record);
      size = room;
      return status == kSuccess ? kSuccess : FailFru(kName, status);
    }
    if (manager.area == FruAreaId::CommonHeaderArea)
      bytes = fru.Header().GetData();
    else if (manager.area == FruAreaId::InternalUseArea)
      bytes = fru.InternalUse().GetData();
    else
      return FailUnsupported(kName);
    if (buffer == nullptr || bytes.size() > room) return FailFru(kName, fru_status::kUnexpected);
    std::copy(bytes.begin(), bytes.end(), buffer);
    size = static_cast<std::uint32_t>(bytes.size());
    return kSuccess;
  });
}

Status FruData::SetAreaData(const std::uint8_t* bytes, std::uint32_t length) {
  constexpr const char* kName = "FruData::SetAreaData";
  return OnArea(kName, [&](FruManager& manager, CFru& fru) {
    if (manager.area != FruAreaId::InternalUseArea && manager.area != FruAreaId::MultiRecordArea)
      return FailUnsupported(kName);
    if (bytes == nullptr) return FailFru(kName, fru_status::kUnexpected);
    std::span<const std::uint8_t> area(bytes, length);
    if (manager.area == FruAreaId::MultiRecordArea) return fru.SetMultiRecArea(area, true, manager.record);
    bool isSet = length == fru.InternalUse().GetLength() && fru.InternalUse().SetData(area, true);
    return isSet ? kSuccess : FailFru(kName, fru_status::kUnexpected);
  });
}

Status FruData::GetAreaSize(std::uint32_t& size) {
  constexpr const char* kName = "FruData::GetAreaSize";
  size = 0;
  return OnArea(kName, [&](FruManager& manager, CFru& fru) {
    switch (manager.area) {
      case FruAreaId::CommonHeaderArea:
        size = CFruHeader::kLength;
        return kSuccess;
      case FruAreaId::InternalUseArea:
        size = static_cast<std::uint32_t>(fru.InternalUse().GetLength());
        return kSuccess;
      case FruAreaId::MultiRecordArea:
        if (MultiRecordSize(fru, manager.record, size)) return kSuccess;
        PrintText("\nInvalid MutiRecord Number.\n");
        return FailFru(kName, fru_status::kMultiRecordArea);
      default:
        return FailUnsupported(kName);
    }
  });
}

Status FruData::SetAreaWriteMode(FruWriteMode mode) {
  constexpr const char* kName = "FruData::SetAreaWriteMode";
  return OnArea(kName, [&](FruManager& manager, CFru& fru) {
    if (mode > FruWriteMode::Verify) return FailFru(kName, fru_status::kUnexpected);
    Status status = fru.SetAreaWriteMode(manager.area, mode, manager.record);
    return status == kSuccess ? kSuccess : FailFru(kName, status);
  });
}

Status FruData::ValidateSelectedArea() {
  constexpr const char* kName = "FruData::ValidateSelectedArea";
  return OnFru(kName, [&](FruManager&, CFru& fru) {
    if (fru.IsSkippedAreaValid()) return kSuccess;
    return FailFru(kName, fru_status::kNoListLoaded, "The Validation of the requested FRU area failed.\n");
  });
}

namespace {

bool CopyArea(CFru& source, CFru& target, FruAreaId area) {
  if (area == FruAreaId::CommonHeaderArea) {
    Discard(target.DecodeHeader(source.Header().GetData()));  // taken over as it is, whatever it sums to
    return true;
  }
  if (area == FruAreaId::InternalUseArea)
    return target.InternalUse().SetData(source.InternalUse().GetData(), true);
  if (InfoArea* info = source.FindInfoArea(area))
    return target.FindInfoArea(area)->SetData(
        info->GetData().first(std::min(info->GetLength(), kMaxAreaLength)));
  PoolBuffer records;
  std::uint32_t size = source.MultiRecLength();
  return records.Allocate(size) &&
         source.SerializeMultiRecArea(records.data(), size, kAllMultiRecords) == kSuccess &&
         target.SetMultiRecArea(records.Bytes().first(size), true, kAllMultiRecords) == kSuccess;
}

}  // namespace

Status FruData::CopyAreaFromFile(const FruDeviceAddress& address, FruAreaId area) {
  constexpr const char* kName = "FruData::CopyAreaFromFile";
  return OnManager(kName, [&](FruManager& manager) {
    if (area < FruAreaId::CommonHeaderArea || area > FruAreaId::MultiRecordArea)
      return FailFru(kName, fru_status::kUnexpected);
    manager.SelectList(FruList::File);
    PoolPtr<CFru>* source = manager.fileFrus.At(manager.Find(address));
    if (source == nullptr) return FailFru(kName, fru_status::kNoListLoaded);
    manager.SelectList(FruList::System);
    manager.fru = manager.Find(address);
    PoolPtr<CFru>* target = manager.systemFrus.At(manager.fru);
    if (target == nullptr) return FailFru(kName, fru_status::kNoListLoaded);
    return CopyArea(**source, **target, area) ? kSuccess : FailFru(kName, fru_status::kUnexpected);
  });
}

}  // namespace varnok
