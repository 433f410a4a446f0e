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

constexpr const char* kTooLong =
    "Could not assign new data to the %s because the data was too long to fit in the field or area.";

/// The trace lines of an operation that is named after a field.
class FieldScope {
 public:
  FieldScope(const char* className, const char* verb, const char* field, const char* suffix = "")
      : className_(className), verb_(verb), field_(field), suffix_(suffix) {
    Write("ENTRY");
  }
  ~FieldScope() { Write("EXIT"); }
  FieldScope(const FieldScope&) = delete;
  FieldScope& operator=(const FieldScope&) = delete;

 private:
  void Write(const char* way) const { Trace("%s::%s%s%s [%s]", 3, className_, verb_, field_, suffix_, way); }

  const char* className_;
  const char* verb_;
  const char* field_;
  const char* suffix_;
};

}  // namespace

bool InfoArea::IsValid() const {
  TraceScope scope(layout_->className, "IsValid");
  return static_cast<std::uint8_t>(SumWithoutChecksum() + checksum_ - kEndMarkerComplement) == 0;
}

std::uint32_t InfoArea::GetNumberOfFields() const {
  TraceScope scope(layout_->className, "GetNumberOfFields");
  return layout_->FirstCustomIndex() + static_cast<std::uint32_t>(customFields_.size());
}

std::uint8_t InfoArea::GetFormatVersion() const {
  TraceScope scope(layout_->className, "GetFormatVersion");
  return formatVersion_;
}

std::size_t InfoArea::GetLength() const {
  TraceScope scope(layout_->className, "GetLength");
  return Length();
}

std::uint8_t InfoArea::GetChecksum() const {
  TraceScope scope(layout_->className, "GetChecksum");
  return checksum_;
}

void InfoArea::SetChecksum(std::uint8_t checksum) {
  TraceScope scope(layout_->className, "SetChecksum");
  checksum_ = checksum;
}

std::uint32_t InfoArea::GetNumberOfCustomFields() const {
  TraceScope scope(layout_->className, "GetNumberOfCustomFields");
  return static_cast<std::uint32_t>(customFields_.size());
}

std::uint32_t InfoArea::GetFieldIndexFromEnum(FruFieldId field) const {
  TraceScope scope(layout_->className, "GetFieldIndexFromEnum");
  if (layout_->fixedField.length != 0 && layout_->fixedField.id == field) return 0;
  std::size_t row = RowOf(field);
  if (row < layout_->fields.size()) return layout_->FirstRowIndex() + static_cast<std::uint32_t>(row);
  if (layout_->tracesInvalidSelection)
    Trace("%s::GetFieldIndexFromEnum - Invalid Selection", 1, layout_->className);
  return kInvalidFieldIndex;
}

std::size_t InfoArea::RowOf(FruFieldId field) const {
  auto row = std::find_if(layout_->fields.begin(), layout_->fields.end(),
                          [field](const InfoFieldRow& candidate) { return candidate.id == field; });
  return static_cast<std::size_t>(row - layout_->fields.begin());
}

std::ptrdiff_t InfoArea::GetPadLength() const {
  TraceScope scope(layout_->className, "GetPadLength");
  return PadLength();
}

std::ptrdiff_t InfoArea::PadLength() const {
  std::size_t used = layout_->LeastLength();
  for (const Field& field : Rows()) used += FruDefs::DecodeLength(field.typeLength);
  for (const CustomField& field : customFields_) used += 1 + FruDefs::DecodeLength(field.typeLength);
  return static_cast<std::ptrdiff_t>(Length()) - static_cast<std::ptrdiff_t>(used);
}

std::uint8_t InfoArea::SumWithoutChecksum() const {
  unsigned sum = formatVersion_ + lengthUnits_ + SumOf(std::span(fixedBytes_).first(layout_->fixedLength));
  for (const Field& field : Rows()) sum += field.typeLength + SumOf(field.Bytes());
  for (const CustomField& field : customFields_) sum += field.typeLength + SumOf(field.Bytes());
  return static_cast<std::uint8_t>(sum);
}

void InfoArea::UpdateChecksum() {
  TraceScope scope(layout_->className, "UpdateChecksum");
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
  if (index < layout_->FirstRowIndex()) {
    data = FixedFieldBytes();
    return true;
  }
  if (index < layout_->FirstCustomIndex()) {
    data = fields_[index - layout_->FirstRowIndex()].Bytes();
    return true;
  }
  std::size_t k = index - layout_->FirstCustomIndex();
  if (k >= customFields_.size()) {
    Trace("%s::GetFieldData - No such field", 1, layout_->className);
    return false;
  }
  // Kept: every custom field behind the first reads as the second; scripts rely on what this index gives.
  data = customFields_.At(std::min<std::size_t>(k, 1))->Bytes();
  return true;
}

std::uint8_t InfoArea::GetFieldTypeLength(std::uint32_t index) const {
  if (index < layout_->FirstRowIndex()) return 0;
  if (index < layout_->FirstCustomIndex()) return fields_[index - layout_->FirstRowIndex()].typeLength;
  const CustomField* field = customFields_.At(index - layout_->FirstCustomIndex());
  return field == nullptr ? std::uint8_t{0} : field->typeLength;
}

Status InfoArea::GetCustomField(std::uint32_t k, PoolText& text) const {
  TraceScope scope(layout_->className, "GetCustomField");
  if (k > customFields_.size()) {
    ReportFruError(fru_text::kNoSuchField);
    Trace("%s::GetCustomField - No such field", 1, layout_->className);
    return fru_status::kNoSuchItem;
  }
  const CustomField* field = customFields_.At(k);
  if (field == nullptr) {
    ReportFruError(fru_text::kUnexpected);
    Trace("%s::GetCustomField - Unexpected", 1, layout_->className);
    return fru_status::kUnexpected;
  }
  std::span<const std::uint8_t> bytes = field->Bytes();
  if (!text.Assign(Widen(UpToNul(std::string(bytes.begin(), bytes.end()))))) {
    ReportFruError(fru_text::kNoMemory);
    Trace("%s::GetCustomField - Out of memory", 1, layout_->className);
    return fru_status::kOutOfMemory;
  }
  return kSuccess;
}

std::uint8_t InfoArea::FixedByte(const char* operation, std::size_t offset) const {
  TraceScope scope(layout_->className, operation);
  return fixedBytes_[offset];
}

std::span<const std::uint8_t> InfoArea::FixedField(const char* operation) const {
  TraceScope scope(layout_->className, operation);
  return FixedFieldBytes();
}

bool InfoArea::SetFixedField(const char* operation, std::span<const std::uint8_t> data) {
  TraceScope scope(layout_->className, operation);
  return StoreFixedField(data);
}

std::uint8_t InfoArea::TypeLengthOf(FruFieldId field) const {
  std::size_t row = RowOf(field);
  FieldScope scope(layout_->className, "Get", layout_->fields[row].name, "TL");
  return fields_[row].typeLength;
}

std::span<const std::uint8_t> InfoArea::DataOf(FruFieldId field) const {
  std::size_t row = RowOf(field);
  FieldScope scope(layout_->className, "Get", layout_->fields[row].name);
  return fields_[row].Bytes();
}

bool InfoArea::SetDataOf(FruFieldId field, std::span<const std::uint8_t> data, std::uint8_t typeBits) {
  return SetRow(RowOf(field), data, typeBits);
}

std::span<const std::uint8_t> InfoArea::FixedFieldBytes() const {
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
  std::size_t length = std::min(Length(), buffer_.size());
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

bool InfoArea::ReserveFor(const InfoArea& image) {
  for (Field& field : std::span(fields_).first(layout_->fields.size()))
    if (!field.reserved.Allocate(FruDefs::kMaxFieldLength + 1)) return false;
  return customFields_.Reserve(image.customFields_.size());
}

bool InfoArea::ParseFraming(std::span<const std::uint8_t> bytes, std::size_t& position) {
  if (bytes.empty() || bytes.size() > kMaxAreaLength) return false;
  formatVersion_ = bytes[0];
  if (bytes.size() < 2) return false;
  lengthUnits_ = bytes[1];
  if (bytes.size() > Length() || Length() > kMaxAreaLength || bytes.size() < layout_->minimumLength)
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
  PoolBuffer data = std::move(field.reserved);
  if (!data.IsAllocated() && !data.Allocate(length + 1)) return false;
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
    if (Length() <= bytes.size()) return false;
    UpdateChecksum();
    return IsValid();
  }
  std::span<const std::uint8_t> padding = rest.first(rest.size() - 1);
  bool isPaddedWithZeros =
      std::all_of(padding.begin(), padding.end(), [](std::uint8_t byte) { return byte == 0; });
  if (!isPaddedWithZeros || bytes.size() != Length()) return false;
  checksum_ = bytes.back();
  // The sum of the bytes is that of the fields, end marker included; a reserved list may not hold them all.
  return SumOf(bytes) == 0;
}

bool InfoArea::HasRoom(std::uint8_t oldTypeLength, std::size_t newLength) const {
  if (newLength > FruDefs::kMaxFieldLength) return false;
  return PadLength() + FruDefs::DecodeLength(oldTypeLength) >= static_cast<std::ptrdiff_t>(newLength);
}

void InfoArea::Report(const char* text) const {
  if (layout_->reportsErrors) ReportFruError(text);
}

void InfoArea::ReportTooLong(const char* field) const {
  if (layout_->reportsErrors) ReportFruError(kTooLong, field);
}

bool InfoArea::FailRow(const InfoFieldRow& row, const char* what) const {
  Trace("%s::Set%s - %s", 1, layout_->className, row.name, what);
  return false;
}

bool InfoArea::SetRow(std::size_t row, std::span<const std::uint8_t> data, std::uint8_t typeBits) {
  const InfoFieldRow& names = layout_->fields[row];
  FieldScope scope(layout_->className, "Set", names.name);
  Field& field = fields_[row];
  if (data.data() == nullptr) {
    Report(fru_text::kUnexpected);
    return FailRow(names, "Unexpected");
  }
  if (!HasRoom(field.typeLength, data.size())) {
    ReportTooLong(names.messageName);
    return FailRow(names, layout_->tooLongTrace);
  }
  PoolBuffer copy;
  if (!copy.Allocate(data.size() + 1)) {
    Report(fru_text::kNoMemory);
    return FailRow(names, "Out of memory");
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
    ReportTooLong(layout_->customFieldName);
    Trace("%s::SetCustomField - %s", 1, layout_->className, layout_->tooLongTrace);
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

bool InfoArea::StoreFixedField(std::span<const std::uint8_t> data) {
  const InfoFixedFieldRow& fixed = layout_->fixedField;
  if (data.data() == nullptr || data.size() != fixed.length) return false;
  if (fixed.length == 1 && (data[0] < fixed.least || data[0] > fixed.most)) return false;
  std::copy(data.begin(), data.end(), fixedBytes_.begin() + static_cast<std::ptrdiff_t>(fixed.offset));
  UpdateChecksum();
  return true;
}

bool InfoArea::SetFieldData(std::uint32_t index, std::span<const std::uint8_t> data, std::uint8_t typeBits) {
  TraceScope scope(layout_->className, "SetFieldData");
  if (index < layout_->FirstRowIndex()) {
    if (!StoreFixedField(data)) {
      Report(layout_->fixedField.message);
      Trace("%s::SetFieldData - %s", 1, layout_->className, layout_->fixedField.traceText);
      return false;
    }
    if (layout_->fixedField.marksModified) isModified_ = true;
    return true;
  }
  const std::uint32_t firstCustom = layout_->FirstCustomIndex();
  if (index >= firstCustom + customFields_.size()) {
    Report(fru_text::kNoSuchField);
    Trace("%s::SetFieldData - No such field", 1, layout_->className);
    return false;
  }
  bool isSet = index < firstCustom ? SetRow(index - layout_->FirstRowIndex(), data, typeBits)
                                   : SetCustomField(index - firstCustom, data, typeBits);
  if (isSet) isModified_ = true;
  return isSet;
}

}  // namespace varnok
