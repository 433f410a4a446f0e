// The record classes' decoding and field queries, from the rows of their type.
#include <algorithm>

#include "app/services/format.h"
#include "app/services/text.h"
#include "sdr/data_set.h"
#include "sdr/method_trace.h"

namespace varnok {
namespace {

constexpr const char* kNotDecodedText = "SDR Type Not Decoded";
constexpr const char* kNotSelectedText = "SDR Type Field Not Selected";
constexpr const char* kBadLengthText = "Bad Record Length";
constexpr const char16_t* kNoSuchField = u"*INTERNAL SDR MANAGER DECODING ERROR*";

constexpr std::size_t kShownIdLength = 16;
constexpr std::size_t kKeptOemLength = 16;
constexpr std::size_t kSensorNumberField = 6;
// The highest entity ID that is shown as a decimal number.
constexpr std::uint32_t kLastDecimalEntity = 0x25;
constexpr SdrBits kDeviceTypeByte{11};

/// The length in an ID string's type/length byte. Kept: 31 counts as 0, a name of 31 characters is not
/// accepted as such.
std::size_t IdStringLength(std::uint8_t typeLength) {
  constexpr std::uint8_t kLengthBits = 0x1F;
  return (typeLength & kLengthBits) == kLengthBits ? 0 : typeLength & kLengthBits;
}

std::u16string HexGroups(std::span<const std::uint8_t> bytes) {
  std::u16string text;
  for (std::uint8_t byte : bytes) text += FormatWide("%02x ", byte);
  return text;
}

std::u16string TextOf(std::span<const std::uint8_t> bytes) {
  return Widen(UpToNul(std::string(bytes.begin(), bytes.end())));
}

std::u16string Decoded(const char* format, std::uint32_t code, std::uint8_t table, std::uint8_t deviceType) {
  std::u16string meaning;
  CSdr::DecodeType(table, static_cast<std::uint8_t>(code), meaning, deviceType);
  return FormatWide(format, code, meaning);
}

bool IsPrintable(std::uint8_t byte) {
  return byte >= 0x20 && byte <= 0x7E;
}

}  // namespace

bool CSdrByRows::HasLegalLength(std::span<const std::uint8_t> raw) const {
  std::size_t size = SdrRecordSize(raw);
  if (size > raw.size()) return false;
  switch (type_.lengthRule) {
    case SdrLength::WithIdString:
      return size >= type_.size && size == type_.size + IdStringLength(raw[type_.size - 1]);
    case SdrLength::Exactly:
      return size == type_.size;
    case SdrLength::AtMost:
      return size <= type_.size;
  }
  return false;
}

Status CSdrByRows::DecodeSDR(std::span<const std::uint8_t> raw) {
  MethodTrace trace(type_.className, "DecodeSDR");
  isDecoded_ = false;
  bool isLegal = type_.lengthRule != SdrLength::Exactly || HasLegalLength(raw);
  if (!isLegal || DecodeHeader(raw, header_) != kSuccess || !HasLegalLength(raw)) {
    TheSdr().LastFailingRecordId = raw.size() < 2 ? 0 : raw[0] << 8 | raw[1];
    return trace.Fail(kBadLengthText, sdr_status::kBadRecordLength);
  }
  raw_.assign(raw.begin(), raw.begin() + SdrRecordSize(raw));
  isDecoded_ = true;
  return kSuccess;
}

std::uint32_t CSdrByRows::Bits(SdrBits where) const {
  if (!isDecoded_ || where.byte == 0 || where.byte > raw_.size()) return 0;
  std::uint32_t byte = raw_[where.byte - 1];
  return (byte >> where.low) & ((1U << (where.high - where.low + 1)) - 1);
}

std::uint32_t CSdrByRows::Number(const SdrPlace& place) const {
  std::uint32_t number = 0;
  for (const SdrBits& part : place) {
    if (part.byte == 0) break;
    number = number << (part.high - part.low + 1) | Bits(part);
  }
  return number;
}

std::span<const std::uint8_t> CSdrByRows::BytesFrom(std::size_t byte) const {
  if (byte > raw_.size()) return {};
  return std::span(raw_).subspan(byte - 1);
}

std::u16string CSdrByRows::IdString() const {
  std::span<const std::uint8_t> bytes = BytesFrom(type_.size + std::size_t{1});
  return TextOf(bytes.first(std::min(bytes.size(), kShownIdLength)));
}

std::span<const std::uint8_t> CSdrByRows::OemData() const {
  constexpr std::size_t kFirstDataByte = 9;
  std::span<const std::uint8_t> bytes = BytesFrom(kFirstDataByte);
  return bytes.first(std::min(bytes.size(), kKeptOemLength));
}

bool CSdrByRows::IsOemText() const {
  std::span<const std::uint8_t> data = OemData();
  return !data.empty() && IsPrintable(data[0]);
}

bool CSdrByRows::HasTitlesOfItsOwn() const {
  return std::any_of(type_.rows.begin(), type_.rows.end(), [](const SdrFieldRow& row) {
    return row.show == SdrShow::Mask || row.show == SdrShow::SettableMask;
  });
}

const char* CSdrByRows::TitleOf(const SdrFieldRow& row) const {
  bool isMask = row.show == SdrShow::Mask || row.show == SdrShow::SettableMask;
  return isMask && Bits(kThresholdAccess) == 0 ? type_.rows.Text(row.alternative)
                                               : type_.rows.Text(row.title);
}

std::u16string CSdrByRows::ValueOf(const SdrFieldRow& row) const {
  constexpr std::uint32_t kMaskBits = 0x7FFF;
  constexpr std::uint32_t kThresholdBits = 0x3F3F;
  constexpr std::uint32_t kUnspecifiedSensor = 0xFF;
  std::uint32_t number = Number(row.place);
  auto deviceType = static_cast<std::uint8_t>(Bits(kDeviceTypeByte));
  std::u16string text;
  switch (row.show) {
    case SdrShow::Byte:
      return FormatWide("%02xh", number);
    case SdrShow::EvenByte:
      return FormatWide("%02xh", number & 0xFE);
    case SdrShow::Word:
      return FormatWide("%04xh", number);
    case SdrShow::SwappedWord:
      return FormatWide("%02x%02xh", number & 0xFF, number >> 8);
    case SdrShow::Triple:
      return FormatWide("%06xh", number);
    case SdrShow::Mask:
      return FormatWide("%04xh", number & kMaskBits);
    case SdrShow::SettableMask:
      return FormatWide("%04xh", number & (Bits(kThresholdAccess) != 0 ? kThresholdBits : kMaskBits));
    case SdrShow::SensorNumber:
      return number == kUnspecifiedSensor ? Widen(type_.rows.Text(row.alternative))
                                          : FormatWide("%02xh", number);
    case SdrShow::Entity:
      return Decoded(number <= kLastDecimalEntity ? "%d - %s" : "%02xh - %s", number,
                     TableIndex(SdrTable::EntityId), 0);
    case SdrShow::Code:
      return Decoded("%02xh - %s", number, row.detail, deviceType);
    case SdrShow::DecimalCode:
      return Decoded("%d - %s", number, row.detail, 0);
    case SdrShow::CodeText:
      DecodeType(row.detail, static_cast<std::uint8_t>(number), text);
      return text;
    case SdrShow::Binary:
      (void)BinaryFormat(number, row.detail, text);
      return text;
    case SdrShow::Threshold:
      return Bits(kInitializeThresholds) != 0 ? FormatWide("%02xh", number) : text;
    case SdrShow::Reserved:
      return u"XX";
    case SdrShow::IdString:
      return IdString();
    case SdrShow::Guid:
      return HexGroups(BytesFrom(row.place[0].byte));
    case SdrShow::OemData:
      return IsOemText() ? TextOf(OemData()) : HexGroups(OemData());
  }
  return text;
}

Status CSdrByRows::GetNumberOfFields(std::int64_t& count) const {
  MethodTrace trace(type_.className, "GetNumberOfFields");
  if (!isDecoded_) return trace.Fail(kNotDecodedText, sdr_status::kNotDecoded);
  count = static_cast<std::int64_t>(type_.FieldCount());
  return kSuccess;
}

namespace {

/// The row of a selected field; null for a number that the type does not have.
const SdrFieldRow* RowOf(const SdrTypeRows& type, std::int64_t field) {
  bool isField = field >= 0 && field < static_cast<std::int64_t>(type.FieldCount());
  return isField ? &type.rows[static_cast<std::size_t>(field)] : nullptr;
}

/// The text in 16 bits, cut to the room.
const char16_t* WidenInto(std::span<char16_t> room, std::string_view text) {
  text = text.substr(0, room.size() - 1);
  room[text.size()] = 0;
  std::copy(text.begin(), text.end(), room.begin());
  return room.data();
}

}  // namespace

Status CSdrByRows::GetFieldTitle(const char16_t*& text) {
  MethodTrace trace(type_.className, "GetFieldTitle");
  // Titles that do not depend on the record are known without it.
  if (!isDecoded_ && HasTitlesOfItsOwn()) return trace.Fail(kNotDecodedText, sdr_status::kNotDecoded);
  if (selectedField_ == FieldNotSelected) return trace.Fail(kNotSelectedText, sdr_status::kFieldNotSelected);
  const SdrFieldRow* row = RowOf(type_, selectedField_);
  text = row == nullptr ? kNoSuchField : WidenInto(TheSdr().fieldTitle, TitleOf(*row));
  return kSuccess;
}

Status CSdrByRows::GetFieldLocation(const char16_t*& text) {
  MethodTrace trace(type_.className, "GetFieldLocation");
  if (!isDecoded_ && HasTitlesOfItsOwn()) return trace.Fail(kNotDecodedText, sdr_status::kNotDecoded);
  if (selectedField_ == FieldNotSelected) return trace.Fail(kNotSelectedText, sdr_status::kFieldNotSelected);
  const SdrFieldRow* row = RowOf(type_, selectedField_);
  text = row == nullptr ? kNoSuchField : WidenInto(TheSdr().fieldLocation, type_.rows.Text(row->location));
  return kSuccess;
}

Status CSdrByRows::GetFieldValue(const char16_t*& text) {
  MethodTrace trace(type_.className, "GetFieldValue");
  if (!isDecoded_) return trace.Fail(kNotDecodedText, sdr_status::kNotDecoded);
  if (selectedField_ == FieldNotSelected) return trace.Fail(kNotSelectedText, sdr_status::kFieldNotSelected);
  const SdrFieldRow* row = RowOf(type_, selectedField_);
  text = StoreText(row == nullptr ? kNoSuchField : ValueOf(*row));
  return kSuccess;
}

Status CSdrByRows::GetName(const char16_t*& text) {
  MethodTrace trace(type_.className, "GetName");
  if (!isDecoded_) return trace.Fail(kNotDecodedText, sdr_status::kNotDecoded);
  std::u16string named = ValueOfField(type_.namedField);
  std::u16string recordId = ValueOfField(0);
  switch (type_.nameForm) {
    case SdrNameForm::Sensor: {
      std::u16string number = ValueOfField(kSensorNumberField);
      text = StoreText(IdString().empty()
                           ? FormatWide(" %s (%s)(Sensor #%s)", named, recordId, number)
                           : FormatWide(" %s (%s)(%s)(Sensor #%s)", named, IdString(), recordId, number));
      break;
    }
    case SdrNameForm::Locator:
      text = StoreText(IdString().empty() ? FormatWide(" %s (%s)", named, recordId)
                                          : FormatWide(" %s (%s)(%s)", named, IdString(), recordId));
      break;
    case SdrNameForm::RecordId:
      text = StoreText(FormatWide(type_.nameFormat, header_.recordId));
      break;
    case SdrNameForm::Guid:
      text = StoreText(FormatWide(" %s (%s)", named, recordId));
      break;
  }
  return kSuccess;
}

Status CSdrByRows::GetSdrTitle(const char16_t*& text) {
  MethodTrace trace(type_.className, "GetSdrTitle");
  if (!isDecoded_) return trace.Fail(kNotDecodedText, sdr_status::kNotDecoded);
  constexpr const char* kPair = "%s - %s";
  switch (type_.titleForm) {
    case SdrTitleForm::IdStringIfAny:
      text = StoreText(IdString().empty() ? FormatWide("%s", type_.title)
                                          : FormatWide(kPair, type_.title, IdString()));
      break;
    case SdrTitleForm::IdString:
      text = StoreText(FormatWide(kPair, type_.title, IdString()));
      break;
    case SdrTitleForm::RecordId:
      text = StoreText(FormatWide(kPair, type_.title, ValueOfField(0)));
      break;
    case SdrTitleForm::Guid:
      text = StoreText(FormatWide(kPair, type_.title, ValueOfField(type_.namedField)));
      break;
    case SdrTitleForm::Fixed:
      text = StoreText(Widen(type_.title));
      break;
  }
  return kSuccess;
}

Status CSdrByRows::GetTypeAsInteger(std::uint32_t& code) const {
  MethodTrace trace(type_.className, "GetTypeAsInteger");
  if (!isDecoded_) return trace.Fail(kNotDecodedText, sdr_status::kNotDecoded);
  code = std::find_if(std::begin(kSdrTypes), std::end(kSdrTypes), [this](const SdrType& each) {
           return &each.rows == &type_;
         })->type;
  return kSuccess;
}

Status CSdrByRows::GetOEMData(std::span<const std::uint8_t>& data) const {
  if (type_.rows.back().show != SdrShow::OemData) return CSdr::GetOEMData(data);
  MethodTrace trace(type_.className, "GetOEMData");
  if (!isDecoded_) return trace.Fail(kNotDecodedText, sdr_status::kNotDecoded);
  data = OemData();
  return kSuccess;
}

}  // namespace varnok
