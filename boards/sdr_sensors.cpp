// Full, compact and event-only sensor records (IPMI v2.0, sections 43.1 to 43.3).
#include <iterator>

#include "boards/field_text.h"
#include "boards/sdr_codes.h"
#include "boards/sdr_decoder.h"
#include "boards/sensor_conversion.h"

namespace varnok::boards {
namespace {

constexpr std::uint8_t kThresholdEvents = 0x01;

std::string Listed(std::uint32_t bits, std::span<const char* const> names) {
  std::string list;
  for (std::size_t bit = 0; bit < names.size(); ++bit)
    if ((bits >> bit & 1) != 0) list += (list.empty() ? "" : ", ") + std::string(names[bit]);
  return list.empty() ? "none" : list;
}

/// The numbers of the states in a mask.
std::string States(std::uint32_t mask) {
  std::string list;
  for (int state = 0; state < 15; ++state)
    if ((mask >> state & 1) != 0) list += (list.empty() ? "" : ", ") + std::to_string(state);
  return list.empty() ? "none" : list;
}

// As people know them from the tools that list sensors: lower or upper, non-critical, critical or
// non-recoverable, going low or going high.
constexpr const char* kThresholdEventNames[] = {"lnc-", "lnc+", "lcr-", "lcr+", "lnr-", "lnr+",
                                                "unc-", "unc+", "ucr-", "ucr+", "unr-", "unr+"};
constexpr const char* kThresholdNames[] = {"lnc", "lcr", "lnr", "unc", "ucr", "unr"};
constexpr const char* kInitializationNames[] = {"scanning on",     "events on",      "set type",
                                                "set hysteresis",  "set thresholds", "set events",
                                                "set scanning on", "settable"};
constexpr const char* kAccess[] = {"none", "readable", "readable and settable", "fixed"};
constexpr const char* kEventControl[] = {"per state", "for the whole sensor", "global only", "none"};

void PutOwner(SdrDecoder& decoder) {
  const std::uint8_t owner = decoder.At(6);
  const std::string who = (owner & 1) != 0 ? ", system software"
                          : owner == 0x20  ? ", the BMC"
                                           : ", IPMB address";
  decoder.Put("Sensor Owner ID", 6, 1, Hex(owner) + who);
  decoder.Put("Sensor Owner LUN", 7, 1,
              std::to_string(decoder.At(7) & 3) + ", channel " + std::to_string(decoder.At(7) >> 4));
  decoder.Put("Sensor Number", 8, 1, Hex(decoder.At(8)));
  decoder.PutEntity("Entity", 9);
}

void PutTypes(SdrDecoder& decoder, std::size_t byte) {
  decoder.PutCode("Sensor Type", byte, SdrCodeText(SdrCode::SensorType, decoder.At(byte)));
  decoder.PutCode("Event/Reading Type", byte + 1, SdrCodeText(SdrCode::EventType, decoder.At(byte + 1)));
}

/// Masks of 16 bits, whose meaning the event/reading type and the threshold access decide.
void PutMasks(SdrDecoder& decoder, bool hasThresholds) {
  auto text = [](std::uint32_t mask, std::string list) {
    return std::move(list) + " (" + Hex(mask, 4) + ")";
  };
  const std::uint32_t first = decoder.Word(15);
  const std::uint32_t second = decoder.Word(17);
  const std::uint32_t third = decoder.Word(19);
  if (!hasThresholds) {
    decoder.Put("Assertion Events", 15, 2, text(first, States(first)));
    decoder.Put("Deassertion Events", 17, 2, text(second, States(second)));
    decoder.Put("Readable States", 19, 2, text(third, States(third)));
    return;
  }
  decoder.Put("Assertion Events", 15, 2, text(first, Listed(first & 0xFFF, kThresholdEventNames)));
  decoder.Put("Deassertion Events", 17, 2, text(second, Listed(second & 0xFFF, kThresholdEventNames)));
  decoder.Put("Readable Thresholds", 19, 1, Listed(third & 0x3F, kThresholdNames));
  decoder.Put("Settable Thresholds", 20, 1, Listed(third >> 8 & 0x3F, kThresholdNames));
}

void PutReading(SdrDecoder& decoder) {
  const std::uint8_t initialization = decoder.At(11);
  decoder.Put("Sensor Initialization", 11, 1, Listed(initialization, kInitializationNames));
  const std::uint8_t capabilities = decoder.At(12);
  std::string text = std::string("thresholds ") + kAccess[capabilities >> 2 & 3] + ", hysteresis " +
                     kAccess[capabilities >> 4 & 3] + ", events " + kEventControl[capabilities & 3];
  if ((capabilities & 0x40) != 0) text += ", auto re-arm";
  if ((capabilities & 0x80) != 0) text += ", ignored without its entity";
  decoder.Put("Sensor Capabilities", 12, 1, text);
  PutTypes(decoder, 13);
  PutMasks(decoder, decoder.At(14) == kThresholdEvents);
  std::string unit = UnitName(decoder.At(21), decoder.At(22), decoder.At(23));
  constexpr const char* kFormats[] = {"unsigned", "1's complement", "2's complement", "no analogue reading"};
  decoder.Put("Data Format", 21, 1, kFormats[decoder.At(21) >> 6]);
  decoder.Put("Units", 21, 3, unit.empty() ? "unspecified" : unit);
}

void PutFactors(SdrDecoder& decoder, const SensorConversion& conversion) {
  decoder.Put("Linearization", 24, 1, conversion.LinearizationName());
  decoder.Put("M", 25, 2, std::to_string(conversion.Multiplier()));
  decoder.Put("Tolerance", 26, 1, NumberText((decoder.At(26) & 0x3F) / 2.0) + " counts");
  decoder.Put("B", 27, 2, std::to_string(conversion.Offset()));
  const unsigned accuracy = (decoder.At(29) >> 4) << 6 | (decoder.At(28) & 0x3F);
  double percent = accuracy / 100.0;
  for (int exponent = decoder.At(29) >> 2 & 3; exponent > 0; --exponent) percent *= 10;
  decoder.Put("Accuracy", 28, 2, NumberText(percent) + " %");
  constexpr const char* kDirections[] = {"not given", "input", "output", "reserved"};
  decoder.Put("Sensor Direction", 29, 1, kDirections[decoder.At(29) & 3]);
  decoder.Put("R Exponent", 30, 1, std::to_string(conversion.ResultExponent()));
  decoder.Put("B Exponent", 30, 1, std::to_string(conversion.OffsetExponent()));
}

struct SensorValueRow {
  const char* label;
  std::size_t byte;
  std::uint8_t bit;  ///< that says that the sensor has it; FFh: it always has
};
constexpr std::uint8_t kAlways = 0xFF;
/// By bits of byte 31.
constexpr SensorValueRow kReadings[] = {{"Nominal Reading", 32, 0},
                                        {"Normal Maximum", 33, 1},
                                        {"Normal Minimum", 34, 2},
                                        {"Sensor Maximum", 35, kAlways},
                                        {"Sensor Minimum", 36, kAlways}};
/// By bits of the readable thresholds.
constexpr SensorValueRow kThresholds[] = {
    {"Upper Non-Recoverable Threshold", 37, 5}, {"Upper Critical Threshold", 38, 4},
    {"Upper Non-Critical Threshold", 39, 3},    {"Lower Non-Recoverable Threshold", 40, 2},
    {"Lower Critical Threshold", 41, 1},        {"Lower Non-Critical Threshold", 42, 0}};

void PutValue(SdrDecoder& decoder, const char* label, std::size_t byte, std::optional<double> number) {
  const std::uint8_t raw = decoder.At(byte);
  const std::string unit = UnitName(decoder.At(21), decoder.At(22), decoder.At(23));
  if (!number) {
    decoder.Put(label, byte, 1, "raw " + Hex(raw));
    return;
  }
  Field& field = decoder.Put(label, byte, 1, NumberText(*number) + (unit.empty() ? "" : " " + unit));
  field.number = *number;
  field.unit = unit;
}

void PutValues(SdrDecoder& decoder, const SensorConversion& conversion, std::span<const SensorValueRow> rows,
               std::uint8_t present) {
  for (const SensorValueRow& row : rows) {
    if (row.bit == kAlways || (present >> row.bit & 1) != 0)
      PutValue(decoder, row.label, row.byte, conversion.Convert(decoder.At(row.byte)));
    else
      decoder.PutQuiet(row.label, row.byte, 1, "none (raw " + Hex(decoder.At(row.byte)) + ")");
  }
}

void PutSharing(SdrDecoder& decoder, std::size_t byte) {
  const std::uint8_t first = decoder.At(byte);
  const std::uint8_t second = decoder.At(byte + 1);
  const unsigned count = first & 0xF;
  std::string value = Plural(count == 0 ? 1 : count, "sensor");
  if (count > 1) {
    const std::uint8_t number = decoder.At(8);
    value += ", numbers " + Hex(number) + " to " + Hex((number + count - 1) & 0xFF);
    value += (first >> 4 & 3) == 1 ? ", letters" : ", numbers";
    value += " from " + std::to_string(second & 0x7F) + " behind the name";
    if ((second & 0x80) != 0) value += ", an entity instance each";
  }
  decoder.Put("Record Sharing", byte, 2, value);
}

}  // namespace

void DecodeFullSensor(SdrDecoder& decoder) {
  const SensorConversion conversion(decoder.Record());
  PutOwner(decoder);
  PutReading(decoder);
  PutFactors(decoder, conversion);
  decoder.Put("Analog Characteristics", 31, 1, Hex(decoder.At(31)));
  PutValues(decoder, conversion, kReadings, decoder.At(31));
  const bool hasThresholds = decoder.At(14) == kThresholdEvents && (decoder.At(12) >> 2 & 3) != 0;
  PutValues(decoder, conversion, kThresholds, hasThresholds ? decoder.At(19) : std::uint8_t{0});
  PutValue(decoder, "Positive Hysteresis", 43, conversion.ConvertDifference(decoder.At(43)));
  PutValue(decoder, "Negative Hysteresis", 44, conversion.ConvertDifference(decoder.At(44)));
  decoder.Put("OEM", 47, 1, Hex(decoder.At(47)));
}

void DecodeCompactSensor(SdrDecoder& decoder) {
  PutOwner(decoder);
  PutReading(decoder);
  PutSharing(decoder, 24);
  decoder.Put("Positive Hysteresis", 26, 1, "raw " + Hex(decoder.At(26)));
  decoder.Put("Negative Hysteresis", 27, 1, "raw " + Hex(decoder.At(27)));
  decoder.Put("OEM", 31, 1, Hex(decoder.At(31)));
}

void DecodeEventOnlySensor(SdrDecoder& decoder) {
  PutOwner(decoder);
  PutTypes(decoder, 11);
  PutSharing(decoder, 13);
  decoder.Put("OEM", 16, 1, Hex(decoder.At(16)));
}

}  // namespace varnok::boards
