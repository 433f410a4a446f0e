#include "boards/fru_image.h"

#include <algorithm>
#include <iterator>
#include <numeric>

#include "boards/field_text.h"

namespace varnok::boards {
namespace {

struct InfoFieldRow {
  const char* label;
  /// Serial numbers and their like are English in every area.
  bool isAlwaysEnglish = false;
};

struct InfoAreaRow {
  const char* name;
  std::size_t fixedLength;  ///< bytes between the length byte and the first field
  std::span<const InfoFieldRow> fields;
};

constexpr InfoFieldRow kChassisFields[] = {{"Chassis Part Number", true}, {"Chassis Serial Number", true}};
constexpr InfoFieldRow kBoardFields[] = {{"Board Manufacturer"},
                                         {"Board Product Name"},
                                         {"Board Serial Number", true},
                                         {"Board Part Number", true},
                                         {"Board FRU File ID", true}};
constexpr InfoFieldRow kProductFields[] = {{"Product Manufacturer"},        {"Product Name"},
                                           {"Product Part/Model Number"},   {"Product Version"},
                                           {"Product Serial Number", true}, {"Product Asset Tag"},
                                           {"Product FRU File ID", true}};
/// By row of kFruAreas less one.
constexpr InfoAreaRow kInfoAreas[] = {
    {"Chassis", 1, kChassisFields}, {"Board", 4, kBoardFields}, {"Product", 1, kProductFields}};
constexpr std::size_t kChassisRow = 1;
constexpr std::size_t kBoardRow = 2;

std::uint8_t SumOf(ByteView bytes) {
  return std::accumulate(
      bytes.begin(), bytes.end(), std::uint8_t{0},
      [](std::uint8_t sum, std::uint8_t byte) { return static_cast<std::uint8_t>(sum + byte); });
}

bool IsEnglish(std::uint8_t language) {
  return language == 0 || language == 25;
}

/// Decodes one image into its sections.
class FruDecoder {
 public:
  explicit FruDecoder(ByteView image) { result_.bytes.assign(image.begin(), image.end()); }

  Decoded Decode() {
    DecodeHeader();
    for (std::size_t row = 0; row < std::size(kFruAreas); ++row) {
      if (StartOf(row) == 0) continue;
      if (StartOf(row) >= Size())
        Complain(1 + row, std::string(kFruAreas[row].title) + " at byte " + std::to_string(StartOf(row)) +
                              ", behind the end of the image (" + Plural(Size(), "byte") + ")");
      else if (row == kInternalUseRow)
        DecodeInternalUse();
      else if (row == kMultiRecordRow)
        DecodeMultiRecords();
      else
        DecodeInfoArea(row);
    }
    auto byOffset = [](const auto& a, const auto& b) { return a.offset < b.offset; };
    std::stable_sort(result_.sections.begin(), result_.sections.end(), byOffset);
    FindOverlaps();
    std::stable_sort(result_.problems.begin(), result_.problems.end(), byOffset);
    return std::move(result_);
  }

 private:
  std::size_t Size() const { return result_.bytes.size(); }
  std::uint8_t At(std::size_t offset) const { return result_.bytes[offset]; }
  ByteView View(std::size_t offset, std::size_t length) const { return Part(result_.bytes, offset, length); }
  void Complain(std::size_t offset, std::string text) {
    result_.problems.push_back({offset, std::move(text)});
  }
  /// The first byte of an area by the header; 0: absent.
  std::size_t StartOf(std::size_t row) const {
    return Size() < kFruHeaderLength ? 0 : At(1 + row) * kFruUnit;
  }

  Section& Open(std::string id, std::string title, std::size_t offset, std::size_t length) {
    Section& section = result_.sections.emplace_back();
    section.id = std::move(id);
    section.title = std::move(title);
    section.offset = offset;
    section.length = length;
    return section;
  }

  static Field& Add(Section& section, std::string label, std::string value, std::size_t offset,
                    std::size_t length) {
    Field& field = section.fields.emplace_back();
    field.label = std::move(label);
    field.value = std::move(value);
    field.offset = offset;
    field.length = length;
    return field;
  }
  static void AddLayout(Section& section, std::string label, std::string value, std::size_t offset) {
    Add(section, std::move(label), std::move(value), offset, 1).role = Role::Layout;
  }
  static void AddConsequence(Section& section, std::string label, std::string value, std::size_t offset,
                             std::size_t length = 1) {
    Add(section, std::move(label), std::move(value), offset, length).role = Role::Consequence;
  }

  /// The format version in the low four bits of an area's first byte.
  void AddVersion(Section& section, const std::string& what) {
    const std::uint8_t version = At(section.offset);
    AddLayout(section, "Format Version", Hex(version), section.offset);
    if ((version & 0x0F) != 1)
      Complain(section.offset, what + ": format version " + Hex(version) + " instead of 01h");
  }

  /// The checksum in the section's last byte, over all of it.
  void AddChecksum(Section& section, const std::string& what) {
    const std::size_t last = section.End() - 1;
    const std::uint8_t sum = SumOf(View(section.offset, section.length));
    section.isChecksumGood = sum == 0;
    AddConsequence(section, "Checksum", Hex(At(last)), last);
    if (sum != 0)
      Complain(last, what + ": checksum " + Hex(At(last)) + ", the bytes ask for " +
                         Hex(static_cast<std::uint8_t>(At(last) - sum)));
  }

  void DecodeHeader() {
    if (Size() < kFruHeaderLength) {
      Complain(0, "no common header: the image has " + Plural(Size(), "byte"));
      return;
    }
    Section& header = Open("header", "Common Header", 0, kFruHeaderLength);
    AddVersion(header, header.title);
    for (std::size_t row = 0; row < std::size(kFruAreas); ++row)
      AddLayout(header, std::string(kFruAreas[row].title) + " Offset",
                StartOf(row) == 0 ? "none" : std::to_string(StartOf(row)), 1 + row);
    AddLayout(header, "Pad", Hex(At(6)), 6);
    AddChecksum(header, header.title);
  }

  void DecodeInternalUse() {
    const std::size_t start = StartOf(kInternalUseRow);
    std::size_t end = Size();
    for (std::size_t row = kInternalUseRow + 1; row < std::size(kFruAreas); ++row)
      if (StartOf(row) > start) end = std::min(end, StartOf(row));
    Section& section = Open("internal", kFruAreas[kInternalUseRow].title, start, end - start);
    AddVersion(section, section.title);
    Add(section, "Internal Use Data", HexBytes(View(start + 1, end - start - 1)), start + 1, end - start - 1);
  }

  /// One wrong byte, the format version, leaves the rest of an area readable. What is also wrong in other
  /// ways is no such area, and its "fields" would be noise.
  void DecodeInfoArea(std::size_t row) {
    const std::size_t start = StartOf(row);
    const std::size_t problems = result_.problems.size();
    ReadInfoArea(row);
    constexpr std::size_t kVersionAndChecksum = 2;
    if ((At(start) & 0x0F) == 1 || result_.problems.size() <= problems + kVersionAndChecksum) return;
    result_.sections.pop_back();
    result_.problems.resize(problems);
    Complain(start, std::string(kFruAreas[row].title) +
                        ": not read, these bytes are no such area (format version " + Hex(At(start)) + ")");
  }

  void ReadInfoArea(std::size_t row) {
    const std::size_t start = StartOf(row);
    const std::size_t room = Size() - start;
    const std::string title = kFruAreas[row].title;
    const std::size_t stated = room < 2 ? 0 : At(start + 1) * kFruUnit;
    Section& section = Open(kFruAreas[row].id, title, start, std::min(stated == 0 ? room : stated, room));
    AddVersion(section, title);
    if (room < 2) return Complain(start, title + ": the image ends behind its first byte");
    AddLayout(section, "Area Length", Plural(stated, "byte"), start + 1);
    if (stated == 0) Complain(start + 1, title + ": its length is 0");
    if (stated > room)
      Complain(start + 1, title + ": its length is " + std::to_string(stated) + ", the image ends " +
                              Plural(room, "byte") + " behind its start");
    const bool isWhole = stated > 0 && stated <= room;
    const InfoAreaRow& layout = kInfoAreas[row - 1];
    std::size_t position = start + 2;
    if (position + layout.fixedLength > section.End())
      return Complain(position, title + ": no room for its fixed bytes");
    const bool isEnglish = AddFixedBytes(section, row);
    position += layout.fixedLength;
    // The last byte of a whole area is its checksum.
    const std::size_t end = section.End() - (isWhole ? 1 : 0);
    if (AddFields(section, layout, isEnglish, position, end))
      AddPadding(section, position, end);
    else if (position < end)
      Add(section, "Unread Bytes", HexBytes(View(position, end - position)), position, end - position);
    if (isWhole) AddChecksum(section, title);
  }

  /// The bytes in front of the fields; true when the area's text is English.
  bool AddFixedBytes(Section& section, std::size_t row) {
    const std::size_t offset = section.offset + 2;
    const std::uint8_t first = At(offset);
    if (row == kChassisRow) {
      Add(section, "Chassis Type", ChassisTypeName(first), offset, 1);
      return true;
    }
    Add(section, "Language Code", std::to_string(first) + (IsEnglish(first) ? " (English)" : ""), offset, 1);
    if (row == kBoardRow)
      Add(section, "Board Mfg Date/Time", DateFromMinutes(LittleEndian(View(offset + 1, 3))), offset + 1, 3);
    return IsEnglish(first);
  }

  /// Fields up to the end marker, which `position` then stands behind. False when there is none.
  bool AddFields(Section& section, const InfoAreaRow& layout, bool isEnglish, std::size_t& position,
                 std::size_t end) {
    for (std::size_t index = 0;; ++index) {
      const bool isCustom = index >= layout.fields.size();
      std::string label = isCustom ? std::string(layout.name) + " Custom Field " +
                                         std::to_string(index - layout.fields.size() + 1)
                                   : layout.fields[index].label;
      if (position >= end) {
        Complain(position, section.title + ": it ends without an end of fields (C1h)");
        return false;
      }
      const std::uint8_t typeLength = At(position);
      if (typeLength == kFruEndOfFields) {
        if (!isCustom) Complain(position, section.title + ": the fields end before the " + label);
        AddConsequence(section, "End of Fields", Hex(typeLength), position++);
        return true;
      }
      const std::size_t length = typeLength & 0x3F;
      if (position + 1 + length > end) {
        Complain(position, section.title + ": " + label + " has " + Plural(length, "byte") + ", " +
                               std::to_string(end - position - 1) + " left");
        return false;
      }
      const bool isLatin = isEnglish || (!isCustom && layout.fields[index].isAlwaysEnglish);
      FieldText text = TextOfField(typeLength, View(position + 1, length),
                                   isLatin ? TextRules::FruEnglish : TextRules::FruOtherLanguage);
      Add(section, std::move(label), std::move(text.text), position, 1 + length).encoding = text.encoding;
      position += 1 + length;
    }
  }

  void AddPadding(Section& section, std::size_t position, std::size_t end) {
    section.freeBytes = end - position;
    if (end == position) return;
    ByteView padding = View(position, end - position);
    const auto first =
        std::find_if(padding.begin(), padding.end(), [](std::uint8_t byte) { return byte != 0; });
    AddConsequence(section, "Padding",
                   first == padding.end() ? Plural(padding.size(), "zero byte") : HexBytes(padding), position,
                   padding.size());
    if (first != padding.end())
      Complain(position + static_cast<std::size_t>(first - padding.begin()),
               section.title + ": its padding is not zero");
  }

  void DecodeMultiRecords() {
    std::size_t position = StartOf(kMultiRecordRow);
    bool isLast = false;
    for (std::size_t number = 1; !isLast; ++number) {
      const std::string id = "multi-record " + std::to_string(number);
      const std::string title = "Multi-Record " + std::to_string(number);
      constexpr std::size_t kHeader = 5;
      if (position + kHeader > Size() || IsFill(View(position, kHeader)))
        return Complain(position, title + ": there is none, and no record is marked as the last");
      const std::size_t length = At(position + 2);
      Section& section = Open(id, title + ": " + RecordTypeName(At(position)), position, kHeader);
      isLast = (At(position + 1) & 0x80) != 0;
      if (!AddRecordHeader(section, title)) return;
      if (length > Size() - section.End())
        return Complain(position + 2, title + ": " + Plural(length, "byte") + " of data, the image has " +
                                          std::to_string(Size() - section.End()));
      section.length += length;
      AddRecordData(section, title);
      position = section.End();
    }
  }

  /// False for a header that is no record's: what follows it cannot be told.
  bool AddRecordHeader(Section& section, const std::string& title) {
    const std::size_t offset = section.offset;
    Add(section, "Record Type", Hex(At(offset)) + ", " + RecordTypeName(At(offset)), offset, 1);
    AddLayout(section, "Format Version",
              Hex(At(offset + 1) & 0x7F) + ((At(offset + 1) & 0x80) != 0 ? ", last record" : ""), offset + 1);
    AddConsequence(section, "Data Length", Plural(At(offset + 2), "byte"), offset + 2);
    const std::uint8_t sum = SumOf(View(offset, 5));
    if ((At(offset + 1) & 0x0F) != 2)
      Complain(offset + 1, title + ": format version " + Hex(At(offset + 1) & 0x0F) + " instead of 02h");
    section.isChecksumGood = sum == 0;
    if (sum == 0) return true;
    Complain(offset + 4, title + ": header checksum " + Hex(At(offset + 4)) + ", the bytes ask for " +
                             Hex(static_cast<std::uint8_t>(At(offset + 4) - sum)));
    // A damaged byte in the header of a record whose data are right is not the end of the area.
    const std::size_t length = At(offset + 2);
    return length <= Size() - section.End() &&
           static_cast<std::uint8_t>(At(offset + 3) + SumOf(View(offset + 5, length))) == 0;
  }

  void AddRecordData(Section& section, const std::string& title) {
    const std::size_t offset = section.offset;
    ByteView data = View(offset + 5, section.length - 5);
    const auto sum = static_cast<std::uint8_t>(At(offset + 3) + SumOf(data));
    AddConsequence(section, "Data Checksum", Hex(At(offset + 3)), offset + 3);
    AddConsequence(section, "Header Checksum", Hex(At(offset + 4)), offset + 4);
    if (sum != 0) {
      section.isChecksumGood = false;
      Complain(offset + 3, title + ": data checksum " + Hex(At(offset + 3)) + ", the bytes ask for " +
                               Hex(static_cast<std::uint8_t>(At(offset + 3) - sum)));
    }
    DecodeRecordData(At(offset), data, offset + 5, section);
  }

  void FindOverlaps() {
    const Section* before = nullptr;
    for (const Section& section : result_.sections) {
      if (before != nullptr && section.offset < before->End())
        Complain(section.offset, section.title + " begins inside " + before->title + ", which ends at byte " +
                                     std::to_string(before->End()));
      if (before == nullptr || section.End() > before->End()) before = &section;
    }
  }

  Decoded result_;
};

constexpr const char* kChassisTypes[] = {nullptr,
                                         "Other",
                                         "Unknown",
                                         "Desktop",
                                         "Low Profile Desktop",
                                         "Pizza Box",
                                         "Mini Tower",
                                         "Tower",
                                         "Portable",
                                         "Laptop",
                                         "Notebook",
                                         "Hand Held",
                                         "Docking Station",
                                         "All in One",
                                         "Sub Notebook",
                                         "Space-saving",
                                         "Lunch Box",
                                         "Main Server Chassis",
                                         "Expansion Chassis",
                                         "SubChassis",
                                         "Bus Expansion Chassis",
                                         "Peripheral Chassis",
                                         "RAID Chassis",
                                         "Rack Mount Chassis",
                                         "Sealed-case PC",
                                         "Multi-system Chassis",
                                         "Compact PCI",
                                         "Advanced TCA",
                                         "Blade",
                                         "Blade Enclosure",
                                         "Tablet",
                                         "Convertible",
                                         "Detachable",
                                         "IoT Gateway",
                                         "Embedded PC",
                                         "Mini PC",
                                         "Stick PC"};

}  // namespace

Decoded DecodeFru(ByteView image) {
  return FruDecoder(image).Decode();
}

std::string ChassisTypeName(std::uint8_t type) {
  if (type == 0 || type >= std::size(kChassisTypes)) return "type " + Hex(type);
  return kChassisTypes[type];
}

}  // namespace varnok::boards
