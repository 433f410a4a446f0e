// Reading a FRU device into an image: the common header, then each area that it names, each bounded by its
// own framing. What a device says about its lengths is checked before it is believed.
#include <algorithm>
#include <array>

#include "app/services/trace.h"
#include "fru/fru.h"
#include "fru/fru_encoding.h"
#include "fru/fru_session.h"
#include "fru/fru_status.h"

namespace varnok {
namespace {

constexpr const char* kInvalidInternalArea = "Invalid FRU internal area in system FRU %s.";
constexpr const char* kInvalidMultiRecArea = "Invalid FRU multi-record area in system FRU %s.";

// Buses without a device of another controller behind them.
constexpr std::uint8_t kFirstReservedBus = 0xFE;

}  // namespace

/// How the reading of an info area fails.
struct CFru::InfoAreaReading {
  FruAreaId area;
  const char* operation;
  Status invalid;
  const char* message;  ///< null: a failed reading is reported by its own status, without a text
  const char* failure;
};

Status CFru::LoadFromSystem(const FruDeviceAddress& address) {
  TraceScope scope("CFru::LoadFromSystem");
  address_ = address;
  return ReadFruFromSystem();
}

Status CFru::ReadFruFromSystem() {
  TraceScope scope("CFru::ReadFruFromSystem");
  if (address_.nvsType == nvs_type::kImbDevice && address_.bus >= kFirstReservedBus &&
      address_.deviceAddress != kBmcAddress) {
    ReportFruError("Invalid BMC Address found.");
    return Fail("CFru::ReadFruFromSystem", "Invalid BMC Address", fru_status::kReadFailed);
  }
  Status status = GetCommonHeader();
  if (status == kSuccess && HasBoardArea()) status = GetBoardArea();
  if (status == kSuccess && HasProductArea()) status = GetProductArea();
  if (status == kSuccess && HasChassisArea()) status = GetChassisArea();
  if (status == kSuccess) status = GetInternalUseArea();
  if (status == kSuccess && HasMultiRecArea()) status = GetMultiRecArea();
  return status;
}

Status CFru::GetCommonHeader() {
  constexpr const char* kName = "CFru::GetCommonHeader";
  TraceScope scope(kName);
  std::array<std::uint8_t, CFruHeader::kLength> bytes{};
  if (Status status = ReadDataFromFRU(address_, 0, bytes); status != kSuccess)
    return Fail(kName, "Error Reading FRU", status);
  CFruHeader header;
  header.SetData(bytes);
  if (!header.IsIpmiFru()) {
    ReportFruError(fru_text::kNotIpmiFru);
    return Fail(kName, "Not an IPMI FRU", fru_status::kNotIpmiFru);
  }
  header_ = header;
  if (header_.IsValid()) return kSuccess;
  ReportFruError(fru_text::kInvalidHeader, FruName(address_).Text());
  isImageInvalid_ = true;
  return Fail(kName, "Invalid Common Header", fru_status::kInvalidHeader);
}

Status CFru::GetBoardArea() {
  return GetInfoArea({FruAreaId::BoardInfoArea, "CFru::GetBoardArea", fru_status::kBoardInfoArea,
                      "Invalid FRU board area in system FRU %s.", "Invalid Board Area"});
}

Status CFru::GetProductArea() {
  return GetInfoArea({FruAreaId::ProductInfoArea, "CFru::GetProductArea", fru_status::kProductInfoArea,
                      nullptr, "Invalid Product Area"});
}

Status CFru::GetChassisArea() {
  return GetInfoArea({FruAreaId::ChassisInfoArea, "CFru::GetChassisArea", fru_status::kChassisInfoArea,
                      "Invalid FRU chassis area in system FRU %s.", "Invalid Chassis Area"});
}

Status CFru::GetInfoArea(const InfoAreaReading& reading) {
  TraceScope scope(reading.operation);
  std::array<std::uint8_t, kMaxAreaLength> buffer{};
  std::span<std::uint8_t> bytes(buffer);
  Status status = ReadInfoArea(reading.area, bytes);
  if (status == kSuccess) {
    if (FindInfoArea(reading.area)->SetData(bytes)) return kSuccess;
    isImageInvalid_ = true;
    status = reading.invalid;
  } else if (status != uefi_status::kBadBufferSize && reading.message != nullptr) {
    status = reading.invalid;
  }
  if (reading.message != nullptr) ReportFruError(reading.message, FruName(address_).Text());
  return Fail(reading.operation, reading.failure, status);
}

Status CFru::ReadInfoArea(FruAreaId area, std::span<std::uint8_t>& bytes) {
  std::uint32_t offset = header_.Offset(area) * static_cast<std::uint32_t>(FruDefs::kUnit);
  if (Status status = ReadDataFromFRU(address_, offset, bytes.first(2)); status != kSuccess) return status;
  std::size_t length = bytes[1] * FruDefs::kUnit;
  if (length > bytes.size()) {
    isImageInvalid_ = true;
    return uefi_status::kBadBufferSize;
  }
  bytes = bytes.first(length);
  return ReadDataFromFRU(address_, offset, bytes);
}

Status CFru::GetInternalUseArea() {
  constexpr const char* kName = "CFru::GetInternalUseArea";
  TraceScope scope(kName);
  if (!HasInternalArea()) {
    (void)internalUse_.SetData({}, false);  // nothing is never too long
    return kSuccess;
  }
  // Kept: the area ends where the first present one of the others begins: first by number, not by place.
  std::int64_t length = 0;
  for (FruAreaId next : {FruAreaId::ChassisInfoArea, FruAreaId::BoardInfoArea, FruAreaId::ProductInfoArea,
                         FruAreaId::MultiRecordArea}) {
    if (!HasArea(next)) continue;
    length = (std::int64_t{header_.Offset(next)} - header_.Offset(FruAreaId::InternalUseArea)) *
             static_cast<std::int64_t>(FruDefs::kUnit);
    break;
  }
  // An area placed behind that one has no length by this rule; boards in the field have it there.
  length = std::max<std::int64_t>(length, 0);
  std::array<std::uint8_t, kMaxAreaLength> bytes{};
  bool isRead = false;
  if (length > static_cast<std::int64_t>(bytes.size())) {
    isImageInvalid_ = true;
  } else {
    std::span<std::uint8_t> area = std::span(bytes).first(static_cast<std::size_t>(length));
    std::uint32_t offset =
        header_.Offset(FruAreaId::InternalUseArea) * static_cast<std::uint32_t>(FruDefs::kUnit);
    isRead = ReadDataFromFRU(address_, offset, area) == kSuccess && internalUse_.SetData(area, false);
  }
  if (isRead) return kSuccess;
  ReportFruError(kInvalidInternalArea, FruName(address_).Text());
  return Fail(kName, "Invalid Internal Use Area", fru_status::kInternalUseArea);
}

Status CFru::GetMultiRecArea() {
  constexpr const char* kName = "CFru::GetMultiRecArea";
  TraceScope scope(kName);
  multiRecords_.Clear();
  const std::uint32_t start =
      header_.Offset(FruAreaId::MultiRecordArea) * static_cast<std::uint32_t>(FruDefs::kUnit);
  std::uint32_t position = start;
  Status result = kSuccess;
  // Records that never end are followed until the device's 16 bits of offset run out, which fails the
  // reading. A reserved list does not keep them all, so each is also checked as it passes.
  bool isEachSound = true;
  for (bool isLast = false; !isLast && result == kSuccess;) {
    bool isSound = true;
    result = ReadMultiRecord(position, isLast, isSound);
    isEachSound = isEachSound && isSound;
  }
  multiRecLength_ = position - start;
  if (result == kSuccess && !(isEachSound && CheckMultiRecCheckSum())) {
    isImageInvalid_ = true;
    result = fru_status::kMultiRecordArea;
  }
  if (result == fru_status::kMultiRecordArea) ReportFruError(kInvalidMultiRecArea, FruName(address_).Text());
  return result == kSuccess ? kSuccess : Fail(kName, "Invalid Multi Record Area", result);
}

Status CFru::ReadMultiRecord(std::uint32_t& position, bool& isLast, bool& isSound) {
  std::array<std::uint8_t, MultiRecord::kHeaderLength + 0xFF> bytes{};
  if (ReadDataFromFRU(address_, position, std::span(bytes).first(3)) != kSuccess)
    return fru_status::kMultiRecordArea;
  if (bytes[2] == 0) {
    isLast = true;
    return kSuccess;
  }
  std::size_t length = MultiRecord::kHeaderLength + bytes[2];
  std::uint8_t declared = bytes[2];
  // The second reading has to give the record that the first one announced.
  if (ReadDataFromFRU(address_, position, std::span(bytes).first(length)) != kSuccess || bytes[2] != declared)
    return fru_status::kMultiRecordArea;
  MultiRecord* record = multiRecords_.Append();
  if (record == nullptr) {
    ReportFruError(fru_text::kNoMemory);
    return Fail("CFru::GetMultiRecArea", "Out of memory", fru_status::kOutOfMemory);
  }
  std::copy_n(bytes.begin(), record->header.size(), record->header.begin());
  std::copy_n(bytes.begin() + record->header.size(), declared, record->data.begin());
  position += static_cast<std::uint32_t>(length);
  isLast = record->IsLast();
  isSound = IsValid(*record);
  return kSuccess;
}

}  // namespace varnok
