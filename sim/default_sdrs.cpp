// The default board's SDR repository: its sensors, devices and controllers, every record type at least once.
#include "sim/default_board.h"
#include "sim/sdr_builder.h"

namespace varnok::sim {
namespace {

// Entities (IPMI v2.0, table 43-13).
constexpr std::uint8_t kProcessor = 0x03, kSystemBoard = 0x07, kMemory = 0x20, kAddInCard = 0x0B,
                       kFrontPanel = 0x0C, kSupply = 0x0A, kBackplane = 0x0F, kChassis = 0x17,
                       kDriveBay = 0x1A, kFanDevice = 0x1D, kCooling = 0x1E, kPowerDomain = 0x13,
                       kController = 0x06;
// Sensor types (table 42-3).
constexpr std::uint8_t kTemperature = 0x01, kVoltage = 0x02, kFan = 0x04, kOther = 0x0B;
// Units (table 43-15).
constexpr std::uint8_t kCelsius = 1, kVolts = 4, kWatts = 6, kRpm = 18;
// Event/reading types (table 42-1).
constexpr std::uint8_t kSpecific = 0x6F, kRedundancy = 0x0B;
constexpr double kNone = AnalogSensor::kNone;

constexpr AnalogSensor kAnalogSensors[] = {
    {"Inlet Temp", 0x20, {kFrontPanel, 1}, kTemperature, kCelsius, 1, 0, 24, {kNone, 2, 5, 40, 45, kNone}},
    {"Outlet Temp",
     0x21,
     {kSystemBoard, 1},
     kTemperature,
     kCelsius,
     1,
     0,
     35,
     {kNone, kNone, kNone, 65, 70, kNone}},
    {"CPU1 Temp",
     0x22,
     {kProcessor, 1},
     kTemperature,
     kCelsius,
     1,
     0,
     50,
     {kNone, kNone, kNone, 90, 95, 100}},
    {"CPU2 Temp",
     0x23,
     {kProcessor, 2},
     kTemperature,
     kCelsius,
     1,
     0,
     50,
     {kNone, kNone, kNone, 90, 95, 100}},
    {"CPU1 VRM Temp",
     0x24,
     {kSystemBoard, 1},
     kTemperature,
     kCelsius,
     1,
     0,
     55,
     {kNone, kNone, kNone, 100, 110, kNone}},
    {"CPU2 VRM Temp",
     0x25,
     {kSystemBoard, 1},
     kTemperature,
     kCelsius,
     1,
     0,
     55,
     {kNone, kNone, kNone, 100, 110, kNone}},
    {"DIMM A-D Temp",
     0x26,
     {kMemory, 1},
     kTemperature,
     kCelsius,
     1,
     0,
     40,
     {kNone, kNone, kNone, 80, 85, kNone}},
    {"DIMM E-H Temp",
     0x27,
     {kMemory, 2},
     kTemperature,
     kCelsius,
     1,
     0,
     40,
     {kNone, kNone, kNone, 80, 85, kNone}},
    {"Chipset Temp",
     0x28,
     {kSystemBoard, 1},
     kTemperature,
     kCelsius,
     1,
     0,
     50,
     {kNone, kNone, kNone, 85, 95, kNone}},
    {"Riser Temp",
     0x29,
     {kAddInCard, 1},
     kTemperature,
     kCelsius,
     1,
     0,
     40,
     {kNone, kNone, kNone, 70, 75, kNone}},
    {"+12V", 0x30, {kSystemBoard, 1}, kVoltage, kVolts, 63, -3, 12.0, {kNone, 10.8, 11.2, 12.8, 13.2, kNone}},
    {"+5V", 0x31, {kSystemBoard, 1}, kVoltage, kVolts, 26, -3, 5.0, {kNone, 4.5, 4.7, 5.3, 5.5, kNone}},
    {"+3.3V", 0x32, {kSystemBoard, 1}, kVoltage, kVolts, 17, -3, 3.3, {kNone, 2.97, 3.1, 3.5, 3.63, kNone}},
    {"+3.3V AUX",
     0x33,
     {kSystemBoard, 1},
     kVoltage,
     kVolts,
     17,
     -3,
     3.3,
     {kNone, 2.97, 3.1, 3.5, 3.63, kNone}},
    {"CPU1 Vcore", 0x34, {kProcessor, 1}, kVoltage, kVolts, 98, -4, 1.8, {kNone, 1.5, 1.6, 2.0, 2.1, kNone}},
    {"CPU2 Vcore", 0x35, {kProcessor, 2}, kVoltage, kVolts, 98, -4, 1.8, {kNone, 1.5, 1.6, 2.0, 2.1, kNone}},
    {"DIMM VDD", 0x36, {kMemory, 1}, kVoltage, kVolts, 98, -4, 1.2, {kNone, 1.08, 1.14, 1.26, 1.32, kNone}},
    {"Battery",
     0x37,
     {kSystemBoard, 1},
     kVoltage,
     kVolts,
     17,
     -3,
     3.0,
     {kNone, 2.0, 2.5, kNone, kNone, kNone}},
    {"Fan 1", 0x40, {kFanDevice, 1}, kFan, kRpm, 60, 0, 6000, {kNone, 900, 1200, kNone, kNone, kNone}},
    {"Fan 2", 0x41, {kFanDevice, 2}, kFan, kRpm, 60, 0, 6000, {kNone, 900, 1200, kNone, kNone, kNone}},
    {"Fan 3", 0x42, {kFanDevice, 3}, kFan, kRpm, 60, 0, 6000, {kNone, 900, 1200, kNone, kNone, kNone}},
    {"Fan 4", 0x43, {kFanDevice, 4}, kFan, kRpm, 60, 0, 6000, {kNone, 900, 1200, kNone, kNone, kNone}},
    {"Fan 5", 0x44, {kFanDevice, 5}, kFan, kRpm, 60, 0, 6000, {kNone, 900, 1200, kNone, kNone, kNone}},
    {"Fan 6", 0x45, {kFanDevice, 6}, kFan, kRpm, 60, 0, 6000, {kNone, 900, 1200, kNone, kNone, kNone}},
    {"PSU1 Input", 0x50, {kSupply, 1}, kOther, kWatts, 4, 0, 280, {kNone, kNone, kNone, 820, 900, kNone}},
    {"PSU2 Input", 0x51, {kSupply, 2}, kOther, kWatts, 4, 0, 280, {kNone, kNone, kNone, 820, 900, kNone}},
};

constexpr DiscreteSensor kDiscreteSensors[] = {
    {"CPU1 Status", 0x60, {kProcessor, 1}, 0x07, kSpecific, 0x0083},  // IERR, thermal trip, presence
    {"CPU2 Status", 0x61, {kProcessor, 2}, 0x07, kSpecific, 0x0083},
    {"PSU1 Status", 0x62, {kSupply, 1}, 0x08, kSpecific, 0x000B},  // presence, failure, input lost
    {"PSU2 Status", 0x63, {kSupply, 2}, 0x08, kSpecific, 0x000B},
    {"PSU Redundancy", 0x64, {kPowerDomain, 1}, 0x09, kRedundancy, 0x000B},
    {"Fan Redundancy", 0x65, {kCooling, 1}, 0x04, kRedundancy, 0x000B},
    {"Chassis Open", 0x66, {kChassis, 1}, 0x05, kSpecific, 0x0001},  // general chassis intrusion
    {"Buttons", 0x67, {kFrontPanel, 1}, 0x14, kSpecific, 0x0007},    // power, sleep, reset
    {"Watchdog", 0x68, {kController, 1}, 0x23, kSpecific, 0x010F},
    {"Power State", 0x69, {kSystemBoard, 1}, 0x22, kSpecific, 0x0061},  // S0, S4/S5, S5
    {"Event Log", 0x6A, {kController, 1}, 0x10, kSpecific, 0x0034},     // cleared, full, almost full
    {"Drive Bay 1", 0x6B, {kDriveBay, 1}, 0x0D, kSpecific, 0x0003},     // presence, fault
    {"Drive Bay 2", 0x6C, {kDriveBay, 2}, 0x0D, kSpecific, 0x0003},
    {"Memory ECC", 0x6D, {kMemory, 1}, 0x0C, kSpecific, 0x0003},
};

constexpr DiscreteSensor kEventSensors[] = {
    {"System Event", 0x70, {kSystemBoard, 1}, 0x12, kSpecific, 0},
    {"POST Error", 0x71, {kSystemBoard, 1}, 0x0F, kSpecific, 0},
    {"OS Stop", 0x72, {0x23, 1}, 0x20, kSpecific, 0},
};

void AddAssociations(SdrBuilder& sdrs) {
  constexpr std::uint8_t kList = 0x00, kRanges = 0x80;
  // The chassis holds the system board and the backplane; the cooling unit is the fans 1 to 6.
  sdrs.AddPlain(0x08, {kChassis, 1, kList, kSystemBoard, 1, kBackplane, 1, 0, 0, 0, 0});
  sdrs.AddPlain(0x08, {kCooling, 1, kRanges, kFanDevice, 1, kFanDevice, 6, 0, 0, 0, 0});
  // The backplane behind the hot-swap controller holds two drive bays.
  sdrs.AddPlain(0x09,
                {kBackplane, 1, 0xC0, 0x00, kRanges, 0xC0, 0x00, kDriveBay, 1, 0xC0, 0x00, kDriveBay, 2, 0,
                 0,          0, 0,    0,    0,       0,    0,    0,         0, 0,    0,    0,         0});
}

void AddLocators(SdrBuilder& sdrs) {
  constexpr std::uint8_t kDs1624 = 0x02, k24c02 = 0x09, kFruDevice = 0x10;
  constexpr std::uint8_t kFruInventory = 0x02;  // the modifier of a 24C02
  sdrs.AddNamed(0x10, {0x20, 0xA0, 0x01, 0x00, 0x00, k24c02, kFruInventory, kSupply, 1, 0}, "Supply EEPROM");
  sdrs.AddNamed(0x10, {0x20, 0x90, 0x02, 0x00, 0x00, kDs1624, 0x00, kFrontPanel, 1, 0}, "Panel Sensor");
  sdrs.AddNamed(0x10, {0x20, 0xA2, 0x01, 0x00, 0x00, 0x0A, 0x01, kMemory, 1, 0}, "DIMM A1");
  // Bit 7 of the third byte: a logical FRU device.
  sdrs.AddNamed(0x11, {0x20, 0x00, 0x80, 0x00, 0x00, kFruDevice, 0x00, kSystemBoard, 1, 0}, "System Board");
  sdrs.AddNamed(0x11, {0x20, 0x01, 0x80, 0x00, 0x00, kFruDevice, 0x00, kChassis, 1, 0}, "Spare");
  sdrs.AddNamed(0x11, {0x20, 0x02, 0x80, 0x00, 0x00, kFruDevice, 0x00, kAddInCard, 1, 0}, "Riser");
  sdrs.AddNamed(0x11, {0xC0, 0x00, 0x80, 0x00, 0x00, kFruDevice, 0x00, kBackplane, 1, 0}, "Backplane");
  sdrs.AddNamed(0x12, {0x20, 0x00, 0x00, 0xBF, 0, 0, 0, kController, 1, 0}, "BMC");
  sdrs.AddNamed(0x12, {0xC0, 0x00, 0x00, 0x28, 0, 0, 0, kBackplane, 1, 0}, "Hot-Swap Ctrl");
  sdrs.AddNamed(0x12, {0x2C, 0x06, 0x00, 0x21, 0, 0, 0, kSystemBoard, 1, 0}, "Mgmt Engine");
}

void AddControllers(SdrBuilder& sdrs) {
  // The hot-swap controller as its maker confirmed it: firmware 2.10, IPMI 2.0, its GUID.
  sdrs.AddPlain(0x13, {0xC0, 0x31, 0x01, 0x02, 0x10, 0x02, 0x40, 0xE2, 0x01, 0x01, 0x0C, 0x48, 0x65, 0x61,
                       0x72, 0x74, 0x68, 0x53, 0x32, 0x80, 0x02, 0x25, 0x04, 0x02, 0x00, 0x02, 0x77});
  // Channel 0 the primary IPMB, 1 the LAN, 6 the engine's IPMB; no interrupts.
  sdrs.AddPlain(0x14, {0x01, 0x04, 0x00, 0x00, 0x00, 0x00, 0x01, 0x05, 0xFF, 0xFF, 0x00});
  sdrs.AddPlain(0xC0, {0x40, 0xE2, 0x01, 'S', 'D', 'R', ' ', 'R', '3'});
  sdrs.AddPlain(0xC0, {0x40, 0xE2, 0x01, 0x02, 0x06, 0x10, 0x40, 0x7F, 0x00, 0xFF});
}

}  // namespace

Bytes DefaultSdrs() {
  SdrBuilder sdrs;
  for (const AnalogSensor& sensor : kAnalogSensors) sdrs.Add(sensor);
  for (const DiscreteSensor& sensor : kDiscreteSensors) sdrs.Add(sensor);
  for (const DiscreteSensor& sensor : kEventSensors) sdrs.AddEventOnly(sensor);
  AddAssociations(sdrs);
  AddLocators(sdrs);
  AddControllers(sdrs);
  return sdrs.Records();
}

}  // namespace varnok::sim
