#include "sim/fru_builder.h"

#include <algorithm>

#include "sim/bridging.h"
#include "sim/error.h"

namespace varnok::sim {
namespace {

constexpr std::uint8_t kFormatVersion = 1;
constexpr std::uint8_t kEndOfFields = 0xC1;
constexpr std::uint8_t kEnglish = 25;
constexpr std::uint8_t kRecordVersion = 2;
constexpr std::uint8_t kEndOfList = 0x80;

void PadToUnits(Bytes& bytes) {
  bytes.resize((bytes.size() + 7) / 8 * 8);
}

void AppendFields(Bytes& area, const std::vector<FruField>& fields) {
  for (FruField field : fields) {
    // A text of one character would carry the code that ends the fields.
    if (field.typeCode == 3 && field.data.size() == 1) field.data += ' ';
    if (field.data.size() > 63) throw BoardError("FRU field of more than 63 bytes");
    area.push_back(static_cast<std::uint8_t>(field.typeCode << 6 | field.data.size()));
    area.insert(area.end(), field.data.begin(), field.data.end());
  }
}

/// Framing of an info area around its fixed bytes: version and length in front; fields, end marker, padding,
/// checksum.
Bytes InfoArea(const Bytes& fixed, const std::vector<FruField>& fields) {
  Bytes area(2 + fixed.size());
  area[0] = kFormatVersion;
  std::copy(fixed.begin(), fixed.end(), area.begin() + 2);
  AppendFields(area, fields);
  area.push_back(kEndOfFields);
  area.push_back(0);  // room for the checksum
  PadToUnits(area);
  area[1] = static_cast<std::uint8_t>(area.size() / 8);
  area.back() = IpmiChecksum(area);
  return area;
}

Bytes MultiRecordArea(const std::vector<FruRecord>& records) {
  Bytes area;
  for (const FruRecord& record : records) {
    const bool isLast = &record == &records.back();
    Bytes header = {record.type, static_cast<std::uint8_t>(kRecordVersion | (isLast ? kEndOfList : 0)),
                    static_cast<std::uint8_t>(record.data.size()), IpmiChecksum(record.data)};
    header.push_back(IpmiChecksum(header));
    area.insert(area.end(), header.begin(), header.end());
    area.insert(area.end(), record.data.begin(), record.data.end());
  }
  return area;
}

/// Internal use, chassis, board, product, multi-record: the order of the header's offsets.
std::vector<Bytes> Areas(const FruLayout& layout) {
  const std::uint32_t minutes = layout.boardMinutes;
  std::vector<Bytes> areas(5);
  if (!layout.internalUse.empty()) {
    areas[0] = layout.internalUse;
    areas[0].insert(areas[0].begin(), kFormatVersion);
    PadToUnits(areas[0]);
  }
  if (!layout.chassis.empty()) areas[1] = InfoArea({layout.chassisType}, layout.chassis);
  if (!layout.board.empty()) {
    areas[2] = InfoArea({kEnglish, static_cast<std::uint8_t>(minutes),
                         static_cast<std::uint8_t>(minutes >> 8), static_cast<std::uint8_t>(minutes >> 16)},
                        layout.board);
  }
  if (!layout.product.empty()) areas[3] = InfoArea({kEnglish}, layout.product);
  areas[4] = MultiRecordArea(layout.records);
  return areas;
}

}  // namespace

Bytes BuildFruImage(const FruLayout& layout, std::size_t size) {
  Bytes header = {kFormatVersion};
  Bytes body;
  for (const Bytes& area : Areas(layout)) {
    header.push_back(static_cast<std::uint8_t>(area.empty() ? 0 : 1 + body.size() / 8));
    body.insert(body.end(), area.begin(), area.end());
  }
  header.push_back(0);
  header.push_back(IpmiChecksum(header));
  header.insert(header.end(), body.begin(), body.end());
  if (header.size() > size) throw BoardError("FRU areas do not fit into " + std::to_string(size) + " bytes");
  header.resize(size, 0xFF);
  return header;
}

}  // namespace varnok::sim
