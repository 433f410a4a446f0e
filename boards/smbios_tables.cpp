#include "boards/smbios_tables.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <map>
#include <string_view>

#include "boards/field_text.h"
#include "boards/fru_image.h"

namespace varnok::boards {
namespace {

enum class Show { String, Uuid, ChassisType, Number, Megahertz, MemorySize };

struct SmbiosValueRow {
  const char* label;
  std::size_t offset;  ///< in the structure
  Show show = Show::String;
};

constexpr SmbiosValueRow kFirmware[] = {{"Vendor", 4}, {"Version", 5}, {"Release Date", 8}};
constexpr SmbiosValueRow kSystem[] = {{"Manufacturer", 4},  {"Product Name", 5},     {"Version", 6},
                                      {"Serial Number", 7}, {"UUID", 8, Show::Uuid}, {"SKU Number", 25},
                                      {"Family", 26}};
constexpr SmbiosValueRow kBoard[] = {
    {"Manufacturer", 4}, {"Product Name", 5}, {"Version", 6}, {"Serial Number", 7}, {"Asset Tag", 8}};
constexpr SmbiosValueRow kChassis[] = {{"Manufacturer", 4},
                                       {"Type", 5, Show::ChassisType},
                                       {"Version", 6},
                                       {"Serial Number", 7},
                                       {"Asset Tag", 8}};
constexpr SmbiosValueRow kProcessor[] = {{"Socket", 4},
                                         {"Manufacturer", 7},
                                         {"Version", 16},
                                         {"Maximum Speed", 20, Show::Megahertz},
                                         {"Cores", 35, Show::Number},
                                         {"Threads", 37, Show::Number}};
constexpr SmbiosValueRow kMemory[] = {
    {"Locator", 16},      {"Size", 12, Show::MemorySize}, {"Speed", 21, Show::Megahertz},
    {"Manufacturer", 23}, {"Serial Number", 24},          {"Part Number", 26}};

struct StructureRow {
  std::uint8_t type;
  const char* title;
  std::span<const SmbiosValueRow> values;
};
constexpr StructureRow kStructures[] = {
    {0, "BIOS Information", kFirmware},   {1, "System Information", kSystem},
    {2, "Baseboard Information", kBoard}, {3, "System Enclosure", kChassis},
    {4, "Processor", kProcessor},         {17, "Memory Device", kMemory}};
constexpr std::uint8_t kEndOfTable = 127;
constexpr std::size_t kStructureHeader = 4;

const StructureRow* FindStructure(std::uint8_t type) {
  const auto* row = std::find_if(std::begin(kStructures), std::end(kStructures),
                                 [type](const StructureRow& candidate) { return candidate.type == type; });
  return row == std::end(kStructures) ? nullptr : row;
}

/// One structure: its formatted bytes and the strings behind them.
struct Structure {
  std::size_t offset;
  ByteView formatted;
  ByteView strings;

  /// String `number`, counted from 1, and where it begins behind the formatted bytes.
  std::string_view String(std::uint8_t number, std::size_t& start) const {
    std::string_view text(reinterpret_cast<const char*>(strings.data()), strings.size());
    for (start = 0; start < text.size(); --number) {
      std::string_view current = text.substr(start, text.find('\0', start) - start);
      if (number <= 1 || current.empty()) return number == 1 ? current : std::string_view();
      start += current.size() + 1;
    }
    return {};
  }
};

std::string UuidText(ByteView bytes) {
  // The first three groups have the low byte first (section 7.2.1).
  constexpr std::size_t kOrder[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
  std::string text;
  for (std::size_t i = 0; i < std::size(kOrder); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += HexBytes(bytes.subspan(kOrder[i], 1));
  }
  return text;
}

std::string MemorySizeText(ByteView structure) {
  constexpr std::uint32_t kExtended = 0x7FFF;
  std::uint32_t size = LittleEndian(structure.subspan(12, 2));
  if (size == 0) return "not fitted";
  if (size == 0xFFFF) return "unknown";
  if (size == kExtended && structure.size() >= 32)
    size = LittleEndian(structure.subspan(28, 4));
  else if ((size & 0x8000) != 0)
    return std::to_string(size & 0x7FFF) + " KiB";
  return std::to_string(size) + " MiB";
}

void AddValue(const Structure& structure, const SmbiosValueRow& row, Section& section) {
  const std::size_t length = row.show == Show::Uuid                                        ? 16
                             : row.show == Show::Megahertz || row.show == Show::MemorySize ? 2
                                                                                           : 1;
  if (row.offset + length > structure.formatted.size()) return;
  Field field;
  field.label = row.label;
  field.offset = structure.offset + row.offset;
  field.length = length;
  ByteView bytes = structure.formatted.subspan(row.offset, length);
  const std::uint32_t number = LittleEndian(bytes.first(std::min<std::size_t>(length, 4)));
  switch (row.show) {
    case Show::String: {
      std::size_t start = 0;
      std::string_view text = structure.String(bytes[0], start);
      field.value = TextFromLatin1({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
      if (text.empty()) break;
      field.offset = structure.offset + structure.formatted.size() + start;
      field.length = text.size();
      break;
    }
    case Show::Uuid:
      field.value = UuidText(bytes);
      break;
    case Show::ChassisType:
      field.value = ChassisTypeName(bytes[0] & 0x7F);
      break;
    case Show::Number:
      field.value = std::to_string(number);
      break;
    case Show::Megahertz:
      field.value = number == 0 ? "unknown" : std::to_string(number) + (row.offset == 21 ? " MT/s" : " MHz");
      break;
    case Show::MemorySize:
      field.value = MemorySizeText(structure.formatted);
      break;
  }
  section.fields.push_back(std::move(field));
}

/// Where the entry point says that the table is; the dump's own offset, the length in bytes.
Extent TableOf(ByteView dump, Decoded& result) {
  auto begins = [&](const char* anchor) {
    return dump.size() >= 31 && std::memcmp(dump.data(), anchor, std::strlen(anchor)) == 0;
  };
  if (begins("_SM3_")) return {LittleEndian(dump.subspan(16, 4)), LittleEndian(dump.subspan(12, 4))};
  if (begins("_SM_")) return {LittleEndian(dump.subspan(24, 4)), LittleEndian(dump.subspan(22, 2))};
  result.problems.push_back({0, "no SMBIOS entry point (_SM_ or _SM3_)"});
  return {};
}

/// The structure at `offset`; the end of its strings is two zero bytes.
Structure StructureAt(ByteView table, std::size_t offset) {
  const std::size_t length = std::min<std::size_t>(table[offset + 1], table.size() - offset);
  std::size_t end = offset + length;
  while (end + 1 < table.size() && (table[end] != 0 || table[end + 1] != 0)) ++end;
  end = std::min(end + 2, table.size());
  return {offset, table.subspan(offset, length), table.subspan(offset + length, end - offset - length)};
}

}  // namespace

Decoded DecodeSmbios(ByteView dump) {
  Decoded result;
  result.bytes.assign(dump.begin(), dump.end());
  const Extent extent = TableOf(dump, result);
  if (extent.offset + extent.length > dump.size())
    result.problems.push_back({0, "the table ends at byte " + std::to_string(extent.offset + extent.length) +
                                      ", the dump has " + Plural(dump.size(), "byte")});
  ByteView table = dump.first(std::min(dump.size(), extent.offset + extent.length));
  std::map<std::uint8_t, int> counts;
  for (std::size_t offset = extent.offset; offset + kStructureHeader <= table.size();) {
    const Structure structure = StructureAt(table, offset);
    const std::uint8_t type = table[offset];
    if (type == kEndOfTable) break;
    if (structure.formatted.size() < kStructureHeader) {
      result.problems.push_back({offset, "a structure of " + Plural(structure.formatted.size(), "byte")});
      break;
    }
    Section& section = result.sections.emplace_back();
    section.id = "type " + std::to_string(type) + " #" + std::to_string(++counts[type]);
    section.offset = offset;
    section.length = structure.formatted.size() + structure.strings.size();
    const StructureRow* row = FindStructure(type);
    section.title = row == nullptr ? "Structure of Type " + std::to_string(type) : row->title;
    if (row != nullptr)
      for (const SmbiosValueRow& value : row->values) AddValue(structure, value, section);
    offset = section.End();
  }
  return result;
}

}  // namespace varnok::boards
