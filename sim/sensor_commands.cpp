// Sensor readings (IPMI v2.0, section 35.14).
#include "sim/commands.h"

namespace varnok::sim {
namespace {

std::uint8_t GetSensorReading(CommandContext& context) {
  for (const SensorConfig& sensor : context.self.Config().answers.sensors) {
    if (sensor.number != context.data[0]) continue;
    context.answer = sensor.reading;
    return sensor.completionCode;
  }
  return code::kNotPresent;
}

constexpr CommandRow kSensorRows[] = {
    {net_function::kSensorEvent, ipmi_command::kGetSensorReading, 1, 1, row_flag::kBmcOnly, GetSensorReading},
};

}  // namespace

std::span<const CommandRow> SensorCommands() {
  return kSensorRows;
}

}  // namespace varnok::sim
