// Raw sensor values in real units (IPMI v2.0, sections 36.3 to 36.5): signed formats, M, B and their
// exponents, the linearisation, and the unit's name.
#pragma once

#include <optional>
#include <string>

#include "boards/decoded.h"

namespace varnok::boards {

class SensorConversion {
 public:
  /// Of a full sensor record with all of its fixed bytes.
  explicit SensorConversion(ByteView fullRecord);

  /// False for a sensor without analogue readings.
  bool IsAnalog() const { return format_ != Format::None; }
  /// A raw reading or threshold; nothing where the factors stand elsewhere (non-linear and OEM sensors).
  std::optional<double> Convert(std::uint8_t raw) const;
  /// A raw difference, such as a hysteresis, of a linear sensor.
  std::optional<double> ConvertDifference(std::uint8_t raw) const;
  std::string LinearizationName() const;
  int Multiplier() const { return m_; }
  int Offset() const { return b_; }
  int OffsetExponent() const { return bExponent_; }
  int ResultExponent() const { return rExponent_; }

 private:
  enum class Format { Unsigned, OnesComplement, TwosComplement, None };

  Format format_;
  std::uint8_t linearization_;
  int m_;
  int b_;
  int bExponent_;
  int rExponent_;
};

/// "degrees C", "RPM", "% ", "Volts per second": of the three units bytes of a sensor record.
std::string UnitName(std::uint8_t units1, std::uint8_t base, std::uint8_t modifier);

}  // namespace varnok::boards
