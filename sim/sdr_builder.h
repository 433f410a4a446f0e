// Builds sensor data records from readable descriptions (IPMI v2.0, chapter 43).
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <string_view>

#include "sim/image.h"

namespace varnok::sim {

/// What a sensor watches.
struct SdrEntity {
  std::uint8_t id;
  std::uint8_t instance;
};

/// A sensor with thresholds. Readings are unsigned: value = count x m x 10^exponent.
struct AnalogSensor {
  static constexpr double kNone = -1;

  std::string_view name;
  std::uint8_t number;
  SdrEntity entity;
  std::uint8_t type;
  std::uint8_t unit;
  std::uint16_t m;
  int exponent;
  double nominal;
  /// In the sensor's unit: lower non-recoverable, critical, non-critical, upper non-critical, critical,
  /// non-recoverable; kNone for one that it does not have.
  std::array<double, 6> thresholds;
};

/// A sensor that reports states.
struct DiscreteSensor {
  std::string_view name;
  std::uint8_t number;
  SdrEntity entity;
  std::uint8_t type;
  std::uint8_t eventType;
  std::uint16_t states;  ///< those that it knows, and reports as events
};

/// Appends records, under record IDs from 1 on.
class SdrBuilder {
 public:
  void Add(const AnalogSensor& sensor);    // type 01h
  void Add(const DiscreteSensor& sensor);  // type 02h
  /// Type 03h: the sensor only sends events.
  void AddEventOnly(const DiscreteSensor& sensor);
  /// A record of any type: its bytes behind the header, then the type/length byte and the name.
  void AddNamed(std::uint8_t type, std::initializer_list<std::uint8_t> body, std::string_view name);
  /// A record of any type without a name.
  void AddPlain(std::uint8_t type, std::initializer_list<std::uint8_t> body);

  const Bytes& Records() const { return records_; }

 private:
  void Append(std::uint8_t type, Bytes body, std::string_view name);
  void AppendRecord(std::uint8_t type, const Bytes& body);

  Bytes records_;
  std::uint16_t nextId_ = 1;
};

}  // namespace varnok::sim
