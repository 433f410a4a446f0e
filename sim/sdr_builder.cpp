#include "sim/sdr_builder.h"

#include <algorithm>
#include <cmath>

#include "platform/ipmi_message.h"
#include "sim/error.h"
#include "sim/sdr_repository.h"

namespace varnok::sim {
namespace {

constexpr std::uint8_t kThresholdEvents = 0x01;
constexpr std::uint8_t kText = 0xC0;  // 8-bit ASCII, Latin 1

std::uint8_t Low(unsigned value) {
  return static_cast<std::uint8_t>(value);
}
std::uint8_t High(unsigned value) {
  return static_cast<std::uint8_t>(value >> 8);
}

std::uint8_t CountOf(const AnalogSensor& sensor, double value) {
  if (value == AnalogSensor::kNone) return 0;
  return static_cast<std::uint8_t>(
      std::clamp(std::lround(value / (sensor.m * std::pow(10, sensor.exponent))), 0L, 255L));
}

/// What Settable / Readable Threshold Mask and the two event masks say of the thresholds that a sensor has.
struct ThresholdMasks {
  unsigned readable = 0;  ///< bit 0 lower non-critical ... bit 5 upper non-recoverable
  unsigned lowEvents = 0;
  unsigned highEvents = 0;
};

ThresholdMasks MasksOf(const AnalogSensor& sensor) {
  // Of each threshold in the order of AnalogSensor: its bit in the mask, the bit of its event.
  constexpr unsigned kReadableBit[] = {2, 1, 0, 3, 4, 5};
  constexpr unsigned kEventBit[] = {4, 2, 0, 7, 9, 11};
  constexpr std::size_t kFirstUpper = 3;
  ThresholdMasks masks;
  for (std::size_t i = 0; i < sensor.thresholds.size(); ++i) {
    if (sensor.thresholds[i] == AnalogSensor::kNone) continue;
    masks.readable |= 1u << kReadableBit[i];
    (i < kFirstUpper ? masks.lowEvents : masks.highEvents) |= 1u << kEventBit[i];
  }
  return masks;
}

}  // namespace

void SdrBuilder::Add(const AnalogSensor& sensor) {
  const ThresholdMasks masks = MasksOf(sensor);
  const unsigned events = masks.lowEvents | masks.highEvents;
  // Bits 14 to 12 say which comparisons a reading returns.
  const unsigned lower = events | (masks.readable & 0x07) << 12;
  const unsigned upper = events | (masks.readable & 0x38) << 9;
  Bytes body = {kBmcAddress,
                0x00,
                sensor.number,
                sensor.entity.id,
                sensor.entity.instance,
                0x7F,  // initialise all of it, events and scanning on
                0x68,  // re-arms itself; hysteresis and thresholds can be read and set
                sensor.type,
                kThresholdEvents,
                Low(lower),
                High(lower),
                Low(upper),
                High(upper),
                Low(masks.readable),
                Low(masks.readable),
                0x00,
                sensor.unit,
                0x00,
                0x00,  // linear
                Low(sensor.m),
                static_cast<std::uint8_t>((sensor.m >> 8 & 3) << 6),
                0x00,
                0x00,
                0x00,
                static_cast<std::uint8_t>((sensor.exponent & 0x0F) << 4),
                0x01,  // the nominal reading is given
                CountOf(sensor, sensor.nominal),
                0xFF,
                0x00,
                0xFF,
                0x00};
  for (std::size_t i = sensor.thresholds.size(); i-- > 3;)
    body.push_back(CountOf(sensor, sensor.thresholds[i]));
  for (std::size_t i = 0; i < 3; ++i) body.push_back(CountOf(sensor, sensor.thresholds[i]));
  body.insert(body.end(), {0x02, 0x02, 0x00, 0x00, 0x00});  // hysteresis, reserved, OEM
  Append(0x01, std::move(body), sensor.name);
}

void SdrBuilder::Add(const DiscreteSensor& sensor) {
  Append(0x02,
         {kBmcAddress,
          0x00,
          sensor.number,
          sensor.entity.id,
          sensor.entity.instance,
          0x67,  // initialise events and type, events and scanning on
          0x40,
          sensor.type,
          sensor.eventType,
          Low(sensor.states),
          High(sensor.states),
          Low(sensor.states),
          High(sensor.states),
          Low(sensor.states),
          High(sensor.states),
          0xC0,  // no analog reading
          0x00,
          0x00,  // no units
          0x01,
          0x00,  // one sensor
          0x00,
          0x00,  // no hysteresis
          0x00,
          0x00,
          0x00,  // reserved
          0x00},
         sensor.name);
}

void SdrBuilder::AddEventOnly(const DiscreteSensor& sensor) {
  Append(0x03,
         {kBmcAddress, 0x00, sensor.number, sensor.entity.id, sensor.entity.instance, sensor.type,
          sensor.eventType, 0x01, 0x00, 0x00, 0x00},
         sensor.name);
}

void SdrBuilder::AddNamed(std::uint8_t type, std::initializer_list<std::uint8_t> body,
                          std::string_view name) {
  Append(type, body, name);
}

void SdrBuilder::AddPlain(std::uint8_t type, std::initializer_list<std::uint8_t> body) {
  AppendRecord(type, body);
}

void SdrBuilder::Append(std::uint8_t type, Bytes body, std::string_view name) {
  constexpr std::size_t kLongestName = 16;
  if (name.size() > kLongestName) throw BoardError("SDR name of more than 16 characters");
  body.push_back(static_cast<std::uint8_t>(kText | name.size()));
  body.insert(body.end(), name.begin(), name.end());
  AppendRecord(type, body);
}

void SdrBuilder::AppendRecord(std::uint8_t type, const Bytes& body) {
  const Bytes header = {Low(nextId_), High(nextId_), kSdrVersion, type,
                        static_cast<std::uint8_t>(body.size())};
  records_.insert(records_.end(), header.begin(), header.end());
  records_.insert(records_.end(), body.begin(), body.end());
  ++nextId_;
}

}  // namespace varnok::sim
