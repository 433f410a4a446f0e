#include "boards/sdr_record.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "boards/field_text.h"
#include "boards/sdr_codes.h"
#include "boards/sdr_decoder.h"

namespace varnok::boards {
namespace {

/// What a record type is made of.
struct SdrTypeRow {
  std::uint8_t type;
  bool hasIdString;
  std::size_t keyLength;
  std::size_t fixedLength;  ///< of the whole record, up to and with the ID string's type/length byte
  void (*decode)(SdrDecoder&);
};
constexpr SdrTypeRow kTypes[] = {
    {0x01, true, 3, 48, DecodeFullSensor},      {0x02, true, 3, 32, DecodeCompactSensor},
    {0x03, true, 3, 17, DecodeEventOnlySensor}, {0x08, false, 5, 16, DecodeAssociation},
    {0x09, false, 9, 32, DecodeDeviceRelative}, {0x10, true, 3, 16, DecodeGenericLocator},
    {0x11, true, 4, 16, DecodeFruLocator},      {0x12, true, 2, 16, DecodeControllerLocator},
    {0x13, false, 3, 32, DecodeConfirmation},   {0x14, false, 0, 16, DecodeChannelInfo},
    {0xC0, false, 3, 8, DecodeOemRecord}};

const SdrTypeRow* FindType(std::uint8_t type) {
  const auto* row = std::find_if(std::begin(kTypes), std::end(kTypes),
                                 [type](const SdrTypeRow& candidate) { return candidate.type == type; });
  return row == std::end(kTypes) ? nullptr : row;
}

std::string IdStringOf(ByteView record, const SdrTypeRow& row) {
  if (!row.hasIdString || record.size() < row.fixedLength) return {};
  const std::uint8_t typeLength = record[row.fixedLength - 1];
  return TextOfField(typeLength, Part(record, row.fixedLength, typeLength & 0x1F), TextRules::RecordId).text;
}

/// What a record without an ID string is about.
std::string SubjectOf(ByteView record, std::uint8_t type) {
  auto byte = [&](std::size_t number) {
    return number <= record.size() ? record[number - 1] : std::uint8_t{0};
  };
  switch (type) {
    case 0x08:
    case 0x09:
      return SdrCodeText(SdrCode::EntityId, byte(6)) + " " + std::to_string(byte(7) & 0x7F);
    case 0x13:
      return "controller " + Hex(byte(6));
    case 0x01:
    case 0x02:
    case 0x03:
      return "sensor " + Hex(byte(8));
    case 0xC0:
      return "manufacturer " + Hex(LittleEndian(Part(record, 5, 3)), 6);
    default:
      return {};
  }
}

void DecodeHeader(SdrDecoder& decoder) {
  decoder.Put("Record ID", 1, 2, Hex(decoder.Word(1), 4));
  const std::uint8_t version = decoder.At(3);
  decoder.Put("SDR Version", 3, 1, std::to_string(version & 0xF) + "." + std::to_string(version >> 4));
  decoder.Put("Record Type", 4, 1,
              Hex(decoder.At(4)) + ", " + SdrCodeText(SdrCode::RecordType, decoder.At(4)));
  decoder.Put("Record Length", 5, 1, Plural(decoder.At(5), "byte")).role = Role::Consequence;
}

void DecodeIdString(SdrDecoder& decoder, std::size_t at) {
  const std::uint8_t typeLength = decoder.At(at);
  const std::size_t length = typeLength & 0x1F;
  const std::size_t room = decoder.Size() - at;
  FieldText text = TextOfField(typeLength, Part(decoder.Record(), at, length), TextRules::RecordId);
  if (length > room)
    decoder.Complain(at - 1, "the ID string has " + Plural(length, "byte") + ", the record ends after " +
                                 std::to_string(room));
  decoder.Put("ID String", at, 1 + std::min(length, room), std::move(text.text)).encoding = text.encoding;
}

}  // namespace

std::size_t SdrKeyLength(std::uint8_t type) {
  const SdrTypeRow* row = FindType(type);
  return row == nullptr ? 0 : row->keyLength;
}

SdrHead HeadOf(ByteView record) {
  SdrHead head;
  if (record.size() < kSdrHeaderLength) return head;
  head.id = static_cast<std::uint16_t>(LittleEndian(record.first(2)));
  head.type = record[3];
  head.typeName = SdrCodeText(SdrCode::RecordType, head.type);
  if (const SdrTypeRow* row = FindType(head.type)) head.name = IdStringOf(record, *row);
  if (head.name.empty()) head.name = SubjectOf(record, head.type);
  ByteView key = Part(record, kSdrHeaderLength, SdrKeyLength(head.type));
  head.key.assign(1, static_cast<char>(head.type));
  head.key.append(key.begin(), key.end());
  return head;
}

Decoded DecodeSdr(ByteView record) {
  SdrDecoder decoder(record);
  if (record.size() < kSdrHeaderLength) {
    decoder.Complain(0, "no record: " + Plural(record.size(), "byte") + " instead of a header of 5");
    return decoder.Finish();
  }
  DecodeHeader(decoder);
  const std::size_t stated = kSdrHeaderLength + record[4];
  if (stated != record.size())
    decoder.Complain(4, "the record's length is " + std::to_string(stated) + ", there are " +
                            Plural(record.size(), "byte"));
  const SdrTypeRow* row = FindType(record[3]);
  if (row == nullptr) {
    decoder.Complain(3, "no known record type: " + Hex(record[3]));
  } else if (record.size() < row->fixedLength) {
    decoder.Complain(4, "the record has " + Plural(record.size(), "byte") + ", its type needs " +
                            std::to_string(row->fixedLength));
  } else {
    row->decode(decoder);
    if (row->hasIdString) DecodeIdString(decoder, row->fixedLength);
  }
  return decoder.Finish();
}

}  // namespace varnok::boards
