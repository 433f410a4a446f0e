#include "fru/info_area.h"

#include <algorithm>
#include <limits>

#include "app/services/text.h"
#include "app/services/trace.h"
#include "fru/fru_session.h"
#include "fru/fru_status.h"

namespace varnok {
namespace {

// 100h less the end marker: what the checksum of an area starts from.
constexpr std::uint8_t kEndMarkerComplement = 0x3F;
// Version and length byte in front, end marker and checksum behind.
constexpr std::size_t kFramingLength = 4;

constexpr const char* kTooLong =
    "Could not assign new data to the %s because the data was too long to fit in the field or area.";

}  // namespace

bool InfoArea::IsValid() const {
  return static_cast<std::uint8_t>(SumWithoutChecksum() + checksum_ - kEndMarkerComplement) == 0;
}

std::uint32_t InfoArea::GetNumberOfFields() const {
  return static_cast<std::uint32_t>(FirstCustomIndex()) + GetNumberOfCustomFields();
}

std::uint32_t InfoArea::GetFieldIndexFromEnum(FruFieldId field) const {
  TraceScope scope(layout_->className, "GetFieldIndexFromEnum");
  if (layout_->fixedField.length != 0 && layout_->fixedField.id == field) return 0;
  auto row = std::find_if(layout_->fields.begin(), layout_->fields.end(),
                          [field](const InfoFieldRow& candidate) { return candidate.id == field; });
  if (row != layout_->fields.end())
    return static_cast<std::uint32_t>(FirstRowIndex()) +
           static_cast<std::uint32_t>(row - layout_->fields.begin());
  if (layout_->tracesInvalidSelection)
    Trace("%s::GetFieldIndexFromEnum - Invalid Selection", 1, layout_->className);
  return kInvalidFieldIndex;
}

std::ptrdiff_t InfoArea::GetPadLength() const {
  std::size_t used = kFramingLength + layout_->fixedLength;
  for (const Field& field : Rows()) used += 1 + FruDefs::DecodeLength(field.typeLength);
  for (const CustomField& field : customFields_) used += 1 + FruDefs::DecodeLength(field.typeLength);
  return static_cast<std::ptrdiff_t>(GetLength()) - static_cast<std::ptrdiff_t>(used);
}

std::uint8_t InfoArea::SumWithoutChecksum() const {
  unsigned sum = formatVersion_ + lengthUnits_ + SumOf(std::span(fixedBytes_).first(layout_->fixedLength));
  for (const Field& field : Rows()) sum += field.typeLength + SumOf(field.Bytes());
  for (const CustomField& field : customFields_) sum += field.typeLength + SumOf(field.Bytes());
  return static_cast<std::uint8_t>(sum);
}

void InfoArea::UpdateChecksum() {
  checksum_ = static_cast<std::uint8_t>(kEndMarkerComplement - SumWithoutChecksum());
}

bool InfoArea::SetLength(std::size_t bytes) {
  TraceScope scope(layout_->className, "SetLength");
  if (bytes % FruDefs::kUnit != 0) {
    Trace("%s::SetLength - Invalid Length", 1, layout_->className);
    return false;
  }
  lengthUnits_ = static_cast<std::uint8_t>(bytes / FruDefs::kUnit);
  UpdateChecksum();
  isModified_ = true;
  return true;
}

bool InfoArea::GetFieldData(std::uint32_t index, std::span<const std::uint8_t>& data) const {
  TraceScope scope(layout_->className, "GetFieldData");
  data = {};
  if (index < FirstRowIndex()) {
    data = FixedField();
    return true;
  }
  if (index < FirstCustomIndex()) {
    data = RowData(index - FirstRowIndex());
    return true;
  }
  std::size_t k = index - FirstCustomIndex();
  if (k >= customFields_.size()) {
    Trace("%s::GetFieldData - No such field", 1, layout_->className);
    return false;
  }
  // Every custom field behind the first reads as the second: scripts rely on what this index gives.
  data = customFields_.At(std::min<std::size_t>(k, 1))->Bytes();
  return true;
}

std::uint8_t InfoArea::GetFieldTypeLength(std::uint32_t index) const {
  if (index < FirstRowIndex()) return 0;
  if (index < FirstCustomIndex()) return RowTypeLength(index - FirstRowIndex());
  const CustomField* field = customFields_.At(index - FirstCustomIndex());
  return field == nullptr ? std::uint8_t{0} : field->typeLength;
}

Status InfoArea::GetCustomField(std::uint32_t k, PoolText& text) const {
  TraceScope scope(layout_->className, "GetCustomField");
  if (k > customFields_.size()) {
    SetFruError(fru_text::kNoSuchField);
    Trace("%s::GetCustomField - No such field", 1, layout_->className);
    return fru_status::kNoSuchItem;
  }
  const CustomField* field = customFields_.At(k);
  if (field == nullptr) {
    SetFruError(fru_text::kUnexpected);
    Trace("%s::GetCustomField - Unexpected", 1, layout_->className);
    return fru_status::kUnexpected;
  }
  std::span<const std::uint8_t> bytes = field->Bytes();
  if (!text.Assign(Widen(UpToNul(std::string(bytes.begin(), bytes.end()))))) {
    SetFruError(fru_text::kNoMemory);
    Trace("%s::GetCustomField - Out of memory", 1, layout_->className);
    return fru_status::kOutOfMemory;
  }
  return kSuccess;
}

std::span<const std::uint8_t> InfoArea::FixedField() const {
  return std::span(fixedBytes_).subspan(layout_->fixedField.offset, layout_->fixedField.length);
}

std::span<const std::uint8_t> InfoArea::GetData() {
  TraceScope scope(layout_->className, "GetData");
  buffer_.fill(0);
  std::size_t position = 0;
  // Fields can outgrow the buffer once SetLength has made the area longer than it; what is past it is
  // dropped.
  auto put = [&](std::uint8_t byte) {
    if (position < buffer_.size()) buffer_[position++] = byte;
  };
  auto putAll = [&](std::span<const std::uint8_t> bytes) { std::for_each(bytes.begin(), bytes.end(), put); };
  put(formatVersion_);
  put(lengthUnits_);
  putAll(std::span(fixedBytes_).first(layout_->fixedLength));
  for (const Field& field : Rows()) {
    put(field.typeLength);
    putAll(field.Bytes());
  }
  for (const CustomField& field : customFields_) {
    put(field.typeLength);
    putAll(field.Bytes());
  }
  put(FruDefs::kEndOfFields);
  std::size_t length = std::min(GetLength(), buffer_.size());
  if (length > 0) buffer_[length - 1] = checksum_;
  return buffer_;
}

bool InfoArea::SetData(std::span<const std::uint8_t> bytes) {
  TraceScope scope(layout_->className, "SetData");
  std::size_t position = 0;
  bool isParsed = ParseFraming(bytes, position);
  for (std::size_t row = 0; isParsed && row < layout_->fields.size(); ++row)
    isParsed = ParseField(bytes, position, fields_[row]);
  isParsed = isParsed && ParseCustomField(bytes, position) && ParseEnd(bytes, position);
  if (!isParsed) Trace("%s::SetData - Invalid Area", 1, layout_->className);
  return isParsed;
}

bool InfoArea::ParseFraming(std::span<const std::uint8_t> bytes, std::size_t& position) {
  if (bytes.empty() || bytes.size() > kMaxAreaLength) return false;
  formatVersion_ = bytes[0];
  if (bytes.size() < 2) return false;
  lengthUnits_ = bytes[1];
  if (bytes.size() > GetLength() || GetLength() > kMaxAreaLength || bytes.size() < layout_->minimumLength)
    return false;
  std::span<const std::uint8_t> fixed = bytes.subspan(2, layout_->fixedLength);
  std::copy(fixed.begin(), fixed.end(), fixedBytes_.begin());
  position = 2 + layout_->fixedLength;
  return true;
}

bool InfoArea::ParseField(std::span<const std::uint8_t> bytes, std::size_t& position, Field& field) {
  TraceScope scope(layout_->className, "ParseField");
  if (position >= bytes.size()) return false;
  std::uint8_t typeLength = bytes[position];
  std::size_t length = FruDefs::DecodeLength(typeLength);
  if (position + length >= bytes.size()) return false;
  PoolBuffer data;
  if (!data.Allocate(length + 1)) return false;
  std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(position) + 1, length, data.data());
  field.typeLength = typeLength;
  field.data = std::move(data);
  position += 1 + length;
  return true;
}

bool InfoArea::ParseCustomField(std::span<const std::uint8_t> bytes, std::size_t& position) {
  TraceScope scope(layout_->className, "ParseCustomField");
  customFields_.Clear();
  while (position < bytes.size() && bytes[position] != FruDefs::kEndOfFields) {
    std::uint8_t typeLength = bytes[position];
    std::size_t length = FruDefs::DecodeLength(typeLength);
    if (position + length >= bytes.size()) return false;
    CustomField* field = customFields_.Append();
    if (field == nullptr) return false;
    field->typeLength = typeLength;
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(position) + 1, length, field->data.begin());
    position += 1 + length;
  }
  return position < bytes.size();
}

bool InfoArea::ParseEnd(std::span<const std::uint8_t> bytes, std::size_t position) {
  std::span<const std::uint8_t> rest = bytes.subspan(position + 1);
  if (rest.empty()) {
    // The bytes stop at the end marker: the area is completed, if there is room for its checksum.
    if (GetLength() <= bytes.size()) return false;
    UpdateChecksum();
    return IsValid();
  }
  std::span<const std::uint8_t> padding = rest.first(rest.size() - 1);
  bool isPaddedWithZeros =
      std::all_of(padding.begin(), padding.end(), [](std::uint8_t byte) { return byte == 0; });
  if (!isPaddedWithZeros || bytes.size() != GetLength()) return false;
  checksum_ = bytes.back();
  return IsValid();
}

bool InfoArea::HasRoom(std::uint8_t oldTypeLength, std::size_t newLength) const {
  if (newLength > FruDefs::kMaxFieldLength) return false;
  return GetPadLength() + FruDefs::DecodeLength(oldTypeLength) >= static_cast<std::ptrdiff_t>(newLength);
}

void InfoArea::Report(const char* text) const {
  if (layout_->reportsErrors) SetFruError(text);
}

void InfoArea::ReportTooLong(const char* setter, const char* field) const {
  if (layout_->reportsErrors) ReportFruError(kTooLong, field);
  Trace("%s::%s - %s", 1, layout_->className, setter, layout_->tooLongTrace);
}

bool InfoArea::SetRow(std::size_t row, std::span<const std::uint8_t> data, std::uint8_t typeBits) {
  const InfoFieldRow& names = layout_->fields[row];
  TraceScope scope(layout_->className, names.setterName);
  Field& field = fields_[row];
  if (data.data() == nullptr) {
    Report(fru_text::kUnexpected);
    Trace("%s::%s - Unexpected", 1, layout_->className, names.setterName);
    return false;
  }
  if (!HasRoom(field.typeLength, data.size())) {
    ReportTooLong(names.setterName, names.messageName);
    return false;
  }
  PoolBuffer copy;
  if (!copy.Allocate(data.size() + 1)) {
    Report(fru_text::kNoMemory);
    Trace("%s::%s - Out of memory", 1, layout_->className, names.setterName);
    return false;
  }
  std::copy(data.begin(), data.end(), copy.data());
  field.data = std::move(copy);
  field.typeLength = static_cast<std::uint8_t>((typeBits & 0xC0) | data.size());
  UpdateChecksum();
  return true;
}

bool InfoArea::SetCustomField(std::uint32_t k, std::span<const std::uint8_t> data, std::uint8_t typeBits) {
  TraceScope scope(layout_->className, "SetCustomField");
  CustomField* field = customFields_.At(k);
  if (field == nullptr) {
    Report(fru_text::kNoSuchField);
    Trace("%s::SetCustomField - No such field", 1, layout_->className);
    return false;
  }
  if (data.data() == nullptr) {
    Report(fru_text::kUnexpected);
    Trace("%s::SetCustomField - Unexpected", 1, layout_->className);
    return false;
  }
  if (!HasRoom(field->typeLength, data.size())) {
    ReportTooLong("SetCustomField", layout_->customFieldName);
    return false;
  }
  // The new value may be a view of the old one.
  std::array<std::uint8_t, kMaxAreaLength> copy{};
  std::copy(data.begin(), data.end(), copy.begin());
  field->data = copy;
  field->typeLength = static_cast<std::uint8_t>((typeBits & 0xC0) | data.size());
  UpdateChecksum();
  return true;
}

bool InfoArea::SetFixedField(std::span<const std::uint8_t> data) {
  const InfoFixedFieldRow& fixed = layout_->fixedField;
  if (data.data() == nullptr || data.size() != fixed.length) return false;
  if (fixed.length == 1 && (data[0] < fixed.least || data[0] > fixed.most)) return false;
  std::copy(data.begin(), data.end(), fixedBytes_.begin() + static_cast<std::ptrdiff_t>(fixed.offset));
  UpdateChecksum();
  return true;
}

bool InfoArea::SetFieldData(std::uint32_t index, std::span<const std::uint8_t> data, std::uint8_t typeBits) {
  TraceScope scope(layout_->className, "SetFieldData");
  if (index < FirstRowIndex()) {
    if (!SetFixedField(data)) {
      Report(layout_->fixedField.message);
      Trace("%s::SetFieldData - %s", 1, layout_->className, layout_->fixedField.traceText);
      return false;
    }
    if (layout_->fixedField.marksModified) isModified_ = true;
    return true;
  }
  if (index >= GetNumberOfFields()) {
    Report(fru_text::kNoSuchField);
    Trace("%s::SetFieldData - No such field", 1, layout_->className);
    return false;
  }
  bool isSet = index < FirstCustomIndex()
                   ? SetRow(index - FirstRowIndex(), data, typeBits)
                   : SetCustomField(index - static_cast<std::uint32_t>(FirstCustomIndex()), data, typeBits);
  if (isSet) isModified_ = true;
  return isSet;
}

}  // namespace varnok
