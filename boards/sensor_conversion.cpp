#include "boards/sensor_conversion.h"

#include <cmath>
#include <iterator>

#include "boards/field_text.h"
#include "boards/sdr_codes.h"

namespace varnok::boards {
namespace {

/// Byte `number`, counted from 1 as the standard counts.
std::uint8_t ByteOf(ByteView record, std::size_t number) {
  return number <= record.size() ? record[number - 1] : std::uint8_t{0};
}

int SignExtend(unsigned value, unsigned bits) {
  const int sign = 1 << (bits - 1);
  return (static_cast<int>(value) ^ sign) - sign;
}

struct LinearizationRow {
  const char* name;
  double (*apply)(double);
};
constexpr LinearizationRow kLinearizations[] = {
    {"linear", [](double x) { return x; }},
    {"ln", [](double x) { return std::log(x); }},
    {"log10", [](double x) { return std::log10(x); }},
    {"log2", [](double x) { return std::log2(x); }},
    {"e^x", [](double x) { return std::exp(x); }},
    {"10^x", [](double x) { return std::pow(10, x); }},
    {"2^x", [](double x) { return std::exp2(x); }},
    {"1/x", [](double x) { return 1 / x; }},
    {"x^2", [](double x) { return x * x; }},
    {"x^3", [](double x) { return x * x * x; }},
    {"square root", [](double x) { return std::sqrt(x); }},
    {"cube root", [](double x) { return std::cbrt(x); }},
};
constexpr std::uint8_t kNonLinear = 0x70;

constexpr const char* kRates[] = {"",          " per us",  " per ms", " per s", " per minute",
                                  " per hour", " per day", ""};

}  // namespace

SensorConversion::SensorConversion(ByteView record)
    : format_(static_cast<Format>(ByteOf(record, 21) >> 6)),
      linearization_(ByteOf(record, 24) & 0x7F),
      m_(SignExtend((ByteOf(record, 26) >> 6) << 8 | ByteOf(record, 25), 10)),
      b_(SignExtend((ByteOf(record, 28) >> 6) << 8 | ByteOf(record, 27), 10)),
      bExponent_(SignExtend(ByteOf(record, 30) & 0xF, 4)),
      rExponent_(SignExtend(ByteOf(record, 30) >> 4, 4)) {}

std::optional<double> SensorConversion::Convert(std::uint8_t raw) const {
  if (!IsAnalog() || linearization_ >= std::size(kLinearizations)) return std::nullopt;
  int x = raw;
  if (format_ == Format::TwosComplement) x = SignExtend(raw, 8);
  if (format_ == Format::OnesComplement && x >= 0x80) x -= 0xFF;
  const double y = (m_ * x + b_ * std::pow(10, bExponent_)) * std::pow(10, rExponent_);
  return kLinearizations[linearization_].apply(y);
}

std::optional<double> SensorConversion::ConvertDifference(std::uint8_t raw) const {
  if (!IsAnalog() || linearization_ != 0) return std::nullopt;
  return m_ * raw * std::pow(10, rExponent_);
}

std::string SensorConversion::LinearizationName() const {
  if (linearization_ < std::size(kLinearizations)) return kLinearizations[linearization_].name;
  if (linearization_ == kNonLinear) return "non-linear";
  return (linearization_ > kNonLinear ? "OEM non-linear " : "reserved ") + Hex(linearization_);
}

std::string UnitName(std::uint8_t units1, std::uint8_t base, std::uint8_t modifier) {
  const std::string modifierName = SdrCodeText(SdrCode::Unit, modifier);
  std::string name = base == 0 ? "" : SdrCodeText(SdrCode::Unit, base);
  switch (units1 >> 1 & 3) {
    case 1:
      name += "/" + modifierName;
      break;
    case 2:
      name += " x " + modifierName;
      break;
    default:
      break;
  }
  name += kRates[units1 >> 3 & 7];
  if ((units1 & 1) != 0) name = name.empty() ? "%" : "% " + name;
  return name;
}

}  // namespace varnok::boards
