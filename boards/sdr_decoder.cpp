#include "boards/sdr_decoder.h"

#include <algorithm>

#include "boards/field_text.h"
#include "boards/sdr_codes.h"

namespace varnok::boards {

SdrDecoder::SdrDecoder(ByteView record) : record_(record) {
  result_.bytes.assign(record.begin(), record.end());
  Section& section = result_.sections.emplace_back();
  section.id = "record";
  section.title = "Record";
  section.length = record.size();
}

Field& SdrDecoder::Put(std::string label, std::size_t byte, std::size_t length, std::string value) {
  Field& field = result_.sections.front().fields.emplace_back();
  field.label = std::move(label);
  field.value = std::move(value);
  field.offset = byte - 1;
  field.length = length;
  return field;
}

void SdrDecoder::PutQuiet(std::string label, std::size_t byte, std::size_t length, std::string value) {
  Put(std::move(label), byte, length, std::move(value)).role = Role::Layout;
}

void SdrDecoder::PutCode(std::string label, std::size_t byte, const std::string& text) {
  Put(std::move(label), byte, 1, Hex(At(byte)) + ", " + text);
}

void SdrDecoder::PutEntity(const char* label, std::size_t byte) {
  const std::uint8_t instance = At(byte + 1);
  std::string value = SdrCodeText(SdrCode::EntityId, At(byte)) + " " + std::to_string(instance & 0x7F);
  if ((instance & 0x7F) >= 0x60) value += " (device-relative)";
  if ((instance & 0x80) != 0) value += " (logical)";
  Put(label, byte, 2, value + " (" + Hex(At(byte)) + ")");
}

void SdrDecoder::Complain(std::size_t offset, std::string text) {
  result_.problems.push_back({offset, std::move(text)});
}

Decoded SdrDecoder::Finish() {
  std::vector<bool> isCovered(record_.size());
  for (const Field& field : result_.sections.front().fields)
    for (std::size_t i = field.offset; i < std::min(field.offset + field.length, isCovered.size()); ++i)
      isCovered[i] = true;
  for (std::size_t i = 0; i < isCovered.size(); ++i) {
    if (isCovered[i]) continue;
    std::size_t end = i;
    while (end < isCovered.size() && !isCovered[end]) isCovered[end++] = true;
    ByteView bytes = record_.subspan(i, end - i);
    bool isZero = std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; });
    // Reserved bytes are zero and of no interest then.
    Field& field =
        Put("Bytes " + std::to_string(i + 1) + "-" + std::to_string(end), i + 1, end - i, HexBytes(bytes));
    if (isZero) field.role = Role::Layout;
  }
  return std::move(result_);
}

}  // namespace varnok::boards
