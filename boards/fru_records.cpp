// The multi-records that the standard defines (FRU storage definition v1.0, section 18).
#include <array>
#include <cmath>
#include <iterator>

#include "boards/field_text.h"
#include "boards/fru_image.h"

namespace varnok::boards {
namespace {

/// A number of a record: the low byte first, then its bits by `mask`, times `scale`.
struct NumberRow {
  const char* label;
  std::size_t offset;
  std::size_t length;
  double scale;
  const char* unit;
  bool isSigned = false;
  std::uint32_t mask = 0xFFFFFFFF;
  std::uint32_t unspecified = 0xFFFFFFFF;
};

constexpr NumberRow kPowerSupplyRows[] = {
    {"Overall Capacity", 0, 2, 1, "W", false, 0x0FFF},   {"Peak VA", 2, 2, 1, "VA", false, 0xFFFF, 0xFFFF},
    {"Inrush Current", 4, 1, 1, "A", false, 0xFF, 0xFF}, {"Inrush Interval", 5, 1, 1, "ms"},
    {"Low End Input Voltage 1", 6, 2, 0.01, "V"},        {"High End Input Voltage 1", 8, 2, 0.01, "V"},
    {"Low End Input Voltage 2", 10, 2, 0.01, "V"},       {"High End Input Voltage 2", 12, 2, 0.01, "V"},
    {"Low End Input Frequency", 14, 1, 1, "Hz"},         {"High End Input Frequency", 15, 1, 1, "Hz"},
    {"A/C Dropout Tolerance", 16, 1, 1, "ms"},
};
constexpr std::size_t kPowerSupplyLength = 24;

constexpr NumberRow kOutputRows[] = {
    {"Nominal Voltage", 1, 2, 0.01, "V", true},
    {"Maximum Negative Deviation", 3, 2, 0.01, "V", true},
    {"Maximum Positive Deviation", 5, 2, 0.01, "V", true},
    {"Ripple and Noise", 7, 2, 1, "mV"},
    {"Minimum Current Draw", 9, 2, 0.001, "A"},
    {"Maximum Current Draw", 11, 2, 0.001, "A"},
};
constexpr NumberRow kLoadRows[] = {
    {"Nominal Voltage", 1, 2, 0.01, "V", true}, {"Minimum Voltage", 3, 2, 0.01, "V", true},
    {"Maximum Voltage", 5, 2, 0.01, "V", true}, {"Ripple and Noise", 7, 2, 1, "mV"},
    {"Minimum Current Load", 9, 2, 0.001, "A"}, {"Maximum Current Load", 11, 2, 0.001, "A"},
};
constexpr std::size_t kOutputLength = 13;

constexpr const char* kAccessTypes[] = {nullptr,
                                        "System Management URL",
                                        "System Name",
                                        "System Ping Address",
                                        "Component Management URL",
                                        "Component Name",
                                        "Component Ping Address",
                                        "System Unique ID"};
constexpr std::uint8_t kSystemUniqueId = 7;

class RecordDecoder {
 public:
  RecordDecoder(ByteView data, std::size_t offset, Section& section)
      : data_(data), offset_(offset), section_(section) {}

  std::size_t Size() const { return data_.size(); }
  std::uint8_t At(std::size_t at) const { return data_[at]; }
  ByteView From(std::size_t at) const { return data_.subspan(at); }

  Field& Add(const char* label, std::string value, std::size_t at, std::size_t length) {
    Field& field = section_.fields.emplace_back();
    field.label = label;
    field.value = std::move(value);
    field.offset = offset_ + at;
    field.length = length;
    return field;
  }

  void AddNumber(const NumberRow& row) {
    std::uint32_t raw = LittleEndian(data_.subspan(row.offset, row.length)) & row.mask;
    if (raw == row.unspecified) {
      Add(row.label, "not given", row.offset, row.length);
      return;
    }
    double number = row.isSigned ? static_cast<std::int16_t>(raw) : static_cast<double>(raw);
    number = std::round(number * row.scale * 1000) / 1000;
    Field& field = Add(row.label, NumberText(number) + " " + row.unit, row.offset, row.length);
    field.number = number;
    field.unit = row.unit;
  }

  void AddRest(const char* label, std::size_t at) {
    if (at < Size()) Add(label, HexBytes(From(at)), at, Size() - at);
  }

 private:
  ByteView data_;
  std::size_t offset_;
  Section& section_;
};

std::string FlagNames(std::uint8_t flags) {
  constexpr const char* kNames[] = {"predictive fail pin", "power factor correction", "autoswitch",
                                    "hot swap"};
  std::string names;
  for (std::size_t bit = 0; bit < std::size(kNames); ++bit)
    if ((flags >> bit & 1) != 0) names += std::string(names.empty() ? "" : ", ") + kNames[bit];
  // What bit 4 says depends on whether the predictive fail pin is there.
  if ((flags & 1) != 0) names += (flags & 0x10) != 0 ? ", failure asserts high" : ", failure asserts low";
  return names.empty() ? "none" : names;
}

void DecodePowerSupply(RecordDecoder& record) {
  for (const NumberRow& row : kPowerSupplyRows) record.AddNumber(row);
  record.Add("Flags", FlagNames(record.At(17)), 17, 1);
  const std::uint32_t peak = LittleEndian(record.From(18).first(2));
  record.Add("Peak Capacity", NumberText(peak & 0x0FFF) + " W for " + NumberText(peak >> 12) + " s", 18, 2);
  const std::uint8_t voltages = record.At(20);
  const std::uint32_t combined = LittleEndian(record.From(21).first(2));
  constexpr const char* kVoltages[] = {"12 V", "-12 V", "5 V", "3.3 V"};
  auto name = [&](std::uint8_t code) {
    return code < 4 ? std::string(kVoltages[code]) : "voltage " + Hex(code, 1);
  };
  record.Add("Combined Wattage",
             voltages == 0 && combined == 0
                 ? "none"
                 : NumberText(combined) + " W on " + name(voltages >> 4) + " and " + name(voltages & 0xF),
             20, 3);
  record.Add("Predictive Fail Tachometer Threshold", NumberText(record.At(23)) + " RPS", 23, 1);
  record.AddRest("Further Bytes", kPowerSupplyLength);
}

void DecodeOutput(RecordDecoder& record, std::span<const NumberRow> rows, bool hasStandby) {
  const std::uint8_t first = record.At(0);
  const bool isStandby = hasStandby && (first & 0x80) != 0;
  record.Add("Output Number", std::to_string(first & 0x0F) + (isStandby ? ", standby" : ""), 0, 1);
  for (const NumberRow& row : rows) record.AddNumber(row);
  record.AddRest("Further Bytes", kOutputLength);
}

void DecodeAccess(RecordDecoder& record) {
  const std::uint8_t type = record.At(0);
  const bool isKnown = type > 0 && type < std::size(kAccessTypes);
  record.Add("Access Record", isKnown ? kAccessTypes[type] : "type " + Hex(type), 0, 1);
  if (record.Size() == 1) return;
  if (!isKnown || type == kSystemUniqueId) return record.AddRest("Access Data", 1);
  record.Add("Access Data", TextFromLatin1(record.From(1)), 1, record.Size() - 1);
}

void DecodeCompatibility(RecordDecoder& record) {
  record.Add("Manufacturer ID", Hex(LittleEndian(record.From(0).first(3)), 6), 0, 3);
  record.Add("Entity ID", Hex(record.At(3)), 3, 1);
  record.Add("Compatibility Base", Hex(record.At(4)), 4, 1);
  record.Add("Compatibility Code Start", Hex(record.At(5)), 5, 1);
  record.AddRest("Code Range Mask", 6);
}

void DecodeOem(RecordDecoder& record) {
  record.Add("Manufacturer ID", Hex(LittleEndian(record.From(0).first(3)), 6), 0, 3);
  if (record.Size() == 3) return;
  ByteView data = record.From(3);
  bool isText = true;
  for (std::uint8_t byte : data) isText = isText && byte >= 0x20 && byte < 0x7F;
  record.Add("OEM Data", isText ? TextFromLatin1(data) : HexBytes(data), 3, data.size());
}

struct RecordTypeRow {
  std::uint8_t first;
  std::uint8_t last;
  const char* name;
  std::size_t shortest;
  void (*decode)(RecordDecoder&);
};
constexpr RecordTypeRow kFruRecordTypes[] = {
    {0x00, 0x00, "Power Supply Information", kPowerSupplyLength, DecodePowerSupply},
    {0x01, 0x01, "DC Output", kOutputLength,
     [](RecordDecoder& record) { DecodeOutput(record, kOutputRows, true); }},
    {0x02, 0x02, "DC Load", kOutputLength,
     [](RecordDecoder& record) { DecodeOutput(record, kLoadRows, false); }},
    {0x03, 0x03, "Management Access Record", 1, DecodeAccess},
    {0x04, 0x04, "Base Compatibility Record", 6, DecodeCompatibility},
    {0x05, 0x05, "Extended Compatibility Record", 6, DecodeCompatibility},
    {0xC0, 0xFF, "OEM Record", 3, DecodeOem},
};

const RecordTypeRow* FindRecordType(std::uint8_t type) {
  for (const RecordTypeRow& row : kFruRecordTypes)
    if (type >= row.first && type <= row.last) return &row;
  return nullptr;
}

}  // namespace

std::string RecordTypeName(std::uint8_t type) {
  const RecordTypeRow* row = FindRecordType(type);
  return row == nullptr ? "Record of Type " + Hex(type) : row->name;
}

void DecodeRecordData(std::uint8_t type, ByteView data, std::size_t offset, Section& section) {
  RecordDecoder record(data, offset, section);
  const RecordTypeRow* row = FindRecordType(type);
  if (row != nullptr && data.size() >= row->shortest)
    row->decode(record);
  else
    record.AddRest("Data", 0);
}

}  // namespace varnok::boards
