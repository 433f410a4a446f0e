#include "fru/fru.h"

#include <algorithm>
#include <array>

#include "app/services/trace.h"
#include "firmware/ipmi.h"
#include "fru/fru_encoding.h"
#include "fru/fru_session.h"
#include "fru/fru_status.h"
#include "platform/smbios.h"

namespace varnok {

InfoArea* CFru::FindInfoArea(FruAreaId area) {
  switch (area) {
    case FruAreaId::ChassisInfoArea:
      return &chassis_;
    case FruAreaId::BoardInfoArea:
      return &board_;
    case FruAreaId::ProductInfoArea:
      return &product_;
    default:
      return nullptr;
  }
}

bool CFru::HasArea(FruAreaId area) const {
  if (area == FruAreaId::CommonHeaderArea) return true;
  if (area < FruAreaId::InternalUseArea || area > FruAreaId::MultiRecordArea) return false;
  return header_.Offset(area) != 0;
}

namespace {

bool HasAreaTraced(const char* operation, const CFru& fru, FruAreaId area) {
  TraceScope scope(operation);
  return fru.HasArea(area);
}

}  // namespace

bool CFru::HasInternalArea() const {
  return HasAreaTraced("CFru::HasInternalArea", *this, FruAreaId::InternalUseArea);
}
bool CFru::HasChassisArea() const {
  return HasAreaTraced("CFru::HasChassisArea", *this, FruAreaId::ChassisInfoArea);
}
bool CFru::HasBoardArea() const {
  return HasAreaTraced("CFru::HasBoardArea", *this, FruAreaId::BoardInfoArea);
}
bool CFru::HasProductArea() const {
  return HasAreaTraced("CFru::HasProductArea", *this, FruAreaId::ProductInfoArea);
}
bool CFru::HasMultiRecArea() const {
  return HasAreaTraced("CFru::HasMultiRecArea", *this, FruAreaId::MultiRecordArea);
}

Status CFru::DecodeHeader(std::span<const std::uint8_t, CFruHeader::kLength> bytes) {
  TraceScope scope("CFru::DecodeHeader");
  header_.SetData(bytes);
  if (header_.Checksum() == CalculateChecksum(bytes.first(7))) return kSuccess;
  return Fail("CFru::DecodeHeader", "Invalid Checksum", fru_status::kHeaderChecksum);
}

std::uint8_t CFru::CalculateChecksum(std::span<const std::uint8_t> bytes) {
  TraceScope scope("CFru::CalculateChecksum");
  return IpmiChecksum(bytes);
}

Status CFru::SerializeCommonHeader(std::uint8_t* output) const {
  TraceScope scope("CFru::SerializeCommonHeader");
  if (output == nullptr) return Fail("CFru::SerializeCommonHeader", "Unexpected", fru_status::kUnexpected);
  std::copy(header_.GetData().begin(), header_.GetData().end(), output);
  return kSuccess;
}

void CFru::ComputeAreaLengths(std::uint32_t total) {
  TraceScope scope("CFru::ComputeAreaLengths");
  // From the last area to the first: each ends where the next present one begins.
  auto lengthOf = [&](FruAreaId area, std::uint32_t lengthsBehind) -> std::uint32_t {
    if (!HasArea(area)) return 0;
    return total - header_.Offset(area) * static_cast<std::uint32_t>(FruDefs::kUnit) - lengthsBehind;
  };
  multiRecLength_ = lengthOf(FruAreaId::MultiRecordArea, 0);
  std::uint32_t behind = multiRecLength_;
  for (FruAreaId area : {FruAreaId::ProductInfoArea, FruAreaId::BoardInfoArea, FruAreaId::ChassisInfoArea}) {
    std::uint32_t length = lengthOf(area, behind);
    (void)FindInfoArea(area)->SetLength(length);
    behind += length;
  }
}

bool CFru::IsSkippedAreaValid() {
  TraceScope scope("CFru::IsSkippedAreaValid");
  if (headerWriteMode_ == FruWriteMode::Skip) return header_.IsValid();
  for (FruAreaId area : {FruAreaId::ChassisInfoArea, FruAreaId::BoardInfoArea, FruAreaId::ProductInfoArea}) {
    InfoArea& info = *FindInfoArea(area);
    if (info.WriteMode() != FruWriteMode::Skip) continue;
    return SumOf(info.GetData().first(std::min(info.GetLength(), kMaxAreaLength))) == 0;
  }
  // Kept: an image in which nothing was marked for validation is not valid, unless it has records.
  if (!HasMultiRecArea()) return false;
  if (!multiRecords_.IsEmpty() && multiRecords_.begin()->writeMode != FruWriteMode::Skip) return true;
  return std::all_of(multiRecords_.begin(), multiRecords_.end(), [](const MultiRecord& record) {
    return static_cast<std::uint8_t>(record.header[3] + SumOf(record.Data())) == 0;
  });
}

Status CFru::SetAreaWriteMode(FruAreaId area, FruWriteMode mode, std::uint32_t recordNumber) {
  constexpr const char* kName = "CFru::SetAreaWriteMode";
  TraceScope scope(kName);
  if (area == FruAreaId::CommonHeaderArea) {
    headerWriteMode_ = mode;
  } else if (area == FruAreaId::InternalUseArea) {
    internalUse_.SetWriteMode(mode);
  } else if (InfoArea* info = FindInfoArea(area)) {
    info->SetWriteMode(mode);
  } else if (area == FruAreaId::MultiRecordArea && recordNumber == kAllMultiRecords) {
    for (MultiRecord& record : multiRecords_) record.writeMode = mode;
  } else if (area == FruAreaId::MultiRecordArea) {
    MultiRecord* record = recordNumber == 0 ? nullptr : multiRecords_.At(recordNumber - 1);
    if (record == nullptr) return Fail(kName, "No such record", fru_status::kMultiRecordArea);
    record->writeMode = mode;
  } else {
    return Fail(kName, "No such area", fru_status::kNoSuchItem);
  }
  return kSuccess;
}

std::u16string_view CFru::GetFriendlyFruIdentifier(const FruDeviceAddress* address,
                                                   std::span<char16_t> buffer) {
  TraceScope scope("CFru::GetFriendlyFruIdentifier");
  constexpr std::size_t kLeastBytes = 100;
  if (buffer.empty()) return {};
  buffer[0] = u'\0';
  if (address == nullptr || buffer.size_bytes() < kLeastBytes) return {};
  if (address->displayName)
    SmbiosFormat(buffer, "%s", *address->displayName);
  else
    SmbiosFormat(buffer, "ID(%X) Addr(%X) SlaveAddr(%X) Bus(%X)", address->deviceId, address->controller,
                 address->deviceAddress, address->bus);
  return buffer.data();
}

}  // namespace varnok
