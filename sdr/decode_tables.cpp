#include "sdr/decode_tables.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

namespace varnok {
namespace {

struct SdrDecodeRow {
  std::string_view text;
  std::uint8_t low;
  std::uint8_t high;
};

/// The two codes before the text of a row.
constexpr std::size_t kCodeBytes = 2;

consteval std::size_t PackedSize(std::span<const SdrDecodeRow> rows) {
  std::size_t size = 0;
  for (const SdrDecodeRow& row : rows) size += kCodeBytes + row.text.size() + 1;
  return size;
}

template <const auto& rows>
consteval auto Pack() {
  std::array<char, PackedSize(rows)> packed{};
  char* next = packed.data();
  for (const SdrDecodeRow& row : rows) {
    *next++ = static_cast<char>(row.low);
    *next++ = static_cast<char>(row.high);
    next = std::copy(row.text.begin(), row.text.end(), next) + 1;
  }
  return packed;
}

template <const auto& rows>
constexpr auto kPacked = Pack<rows>();

template <const auto& rows>
std::string_view Packed() {
  return {kPacked<rows>.data(), kPacked<rows>.size()};
}

constexpr SdrDecodeRow kSensorTypes[] = {
    {"Reserved", 0x00, 0x00},
    {"Temperature", 0x01, 0x01},
    {"Voltage", 0x02, 0x02},
    {"Current", 0x03, 0x03},
    {"Fan", 0x04, 0x04},
    {"Physical Security (Chassis Intrusion)", 0x05, 0x05},
    {"Platform Security Violation Attempt", 0x06, 0x06},
    {"Processor", 0x07, 0x07},
    {"Power Supply", 0x08, 0x08},
    {"Power Unit", 0x09, 0x09},
    {"Cooling Device", 0x0A, 0x0A},
    {"Other Units-based Sensor", 0x0B, 0x0B},
    {"Memory", 0x0C, 0x0C},
    {"Drive Slot (Bay)", 0x0D, 0x0D},
    {"POST Memory Resize", 0x0E, 0x0E},
    {"POST Error", 0x0F, 0x0F},
    {"Event Logging Disabled", 0x10, 0x10},
    {"Watchdog 1", 0x11, 0x11},
    {"System Event", 0x12, 0x12},
    {"Critical Interrupt", 0x13, 0x13},
    {"Button", 0x14, 0x14},
    {"Module / Board", 0x15, 0x15},
    {"Microcontroller / Coprocessor", 0x16, 0x16},
    {"Add-in Card", 0x17, 0x17},
    {"Chassis", 0x18, 0x18},
    {"Chip Set", 0x19, 0x19},
    {"Other FRU", 0x1A, 0x1A},
    {"Cable / Interconnect", 0x1B, 0x1B},
    {"Terminator", 0x1C, 0x1C},
    {"System Boot Initiated", 0x1D, 0x1D},
    {"Boot Error", 0x1E, 0x1E},
    {"OS Boot", 0x1F, 0x1F},
    {"OS Critical Stop", 0x20, 0x20},
    {"Slot / Connector", 0x21, 0x21},
    {"System ACPI Power State", 0x22, 0x22},
    {"Watchdog 2", 0x23, 0x23},
    {"Platform Alert", 0x24, 0x24},
    {"Entity Presence", 0x25, 0x25},
    {"Monitor ASIC / IC", 0x26, 0x26},
    {"LAN", 0x27, 0x27},
    {"Reserved", 0x28, 0xBF},
    {"OEM RESERVED", 0xC0, 0xFF},
};

constexpr SdrDecodeRow kDeviceTypes[] = {
    {"Reserved", 0x00, 0x01},
    {"DS1624 temperature sensor / EEPROM or equivalent", 0x02, 0x02},
    {"DS1621 temperature sensor or equivalent", 0x03, 0x03},
    {"LM75 Temperature Sensor or equivalent", 0x04, 0x04},
    {"'Heceta' ASIC or similar", 0x05, 0x05},
    {"Reserved", 0x06, 0x07},
    {"EEPROM, 24C01 or equivalent", 0x08, 0x08},
    {"EEPROM, 24C02 or equivalent", 0x09, 0x09},
    {"EEPROM, 24C04 or equivalent", 0x0A, 0x0A},
    {"EEPROM, 24C08 or equivalent", 0x0B, 0x0B},
    {"EEPROM, 24C16 or equivalent", 0x0C, 0x0C},
    {"EEPROM, 24C17 or equivalent", 0x0D, 0x0D},
    {"EEPROM, 24C32 or equivalent", 0x0E, 0x0E},
    {"EEPROM, 24C64 or equivalent", 0x0F, 0x0F},
    {"FRU Inventory Device", 0x10, 0x10},
    {"Reserved", 0x11, 0x13},
    {"PCF 8570 256 byte RAM or equivalent", 0x14, 0x14},
    {"PCF 8573 clock/calendar or equivalent", 0x15, 0x15},
    {"PCF 8574A 'i/o port' or equivalent", 0x16, 0x16},
    {"PCF 8583 clock/calendar or equivalent", 0x17, 0x17},
    {"PCF 8593 clock/calendar or equivalent", 0x18, 0x18},
    {"Clock calendar, type not specified", 0x19, 0x19},
    {"PCF8591 A/D, D/A Converter or equivalent", 0x1A, 0x1A},
    {"i/o port, specific device not specified", 0x1B, 0x1B},
    {"A/D Converter, specific device not specified", 0x1C, 0x1C},
    {"D/A Converter, specific device not specified", 0x1D, 0x1D},
    {"A/D, D/A Converter, specific device not specified", 0x1E, 0x1E},
    {"LCD controller / Driver, specific device not specified", 0x1F, 0x1F},
    {"Core Logic (Chip set) Device, specific device not specified", 0x20, 0x20},
    {"LMC6874 Intelligent Battery controller, or equivalent", 0x21, 0x21},
    {"Intelligent Battery controller, specific device not supported", 0x22, 0x22},
    {"Combo Management ASCI, specific device not specified", 0x23, 0x23},
    {"Maxim 1617 Temperature Sensor", 0x24, 0x24},
    {"Reserved", 0x25, 0xBE},
    {"Other / unspecified device", 0xBF, 0xBF},
    {"OEM specified device", 0xC0, 0xFF},
};

constexpr SdrDecodeRow kHecetaModifiers[] = {
    {"Heceta 1", 0x00, 0x00}, {"Heceta 2", 0x01, 0x01}, {"LM80", 0x02, 0x02},
    {"Heceta 3", 0x03, 0x03}, {"Heceta 4", 0x04, 0x04}, {"Heceta 5", 0x05, 0x05},
};

constexpr SdrDecodeRow kEepromModifiers[] = {
    {"unspecified", 0x00, 0x00},
    {"DIMM Memory ID", 0x01, 0x01},
    {"FRU Inventory", 0x02, 0x02},
    {"System Processor Cartridge FRU/PIROM (processor information ROM)", 0x03, 0x03},
    {"reserved", 0x04, 0xFF},
};

constexpr SdrDecodeRow kOtherModifiers[] = {
    {"n/a", 0x00, 0x01}, {" ", 0x02, 0x04},   {"n/a", 0x06, 0x07},
    {" ", 0x10, 0x10},   {"n/a", 0x11, 0x13}, {" ", 0x14, 0x24},
    {"n/a", 0x25, 0xBE}, {"00h", 0xBF, 0xBF}, {"OEM specific", 0xC0, 0xFF},
};

constexpr SdrDecodeRow kEntityIds[] = {
    {"Unspecified", 0x00, 0x00},
    {"Other", 0x01, 0x01},
    {"Unknown", 0x02, 0x02},
    {"Processor", 0x03, 0x03},
    {"Disk or Disk Bay", 0x04, 0x04},
    {"Peripheral Bay", 0x05, 0x05},
    {"System Management Module", 0x06, 0x06},
    {"System Board", 0x07, 0x07},
    {"Memory Module", 0x08, 0x08},
    {"Processor Module", 0x09, 0x09},
    {"Power Supply", 0x0A, 0x0A},
    {"Add-in Card", 0x0B, 0x0B},
    {"Front Panel Board", 0x0C, 0x0C},
    {"Back Panel Board", 0x0D, 0x0D},
    {"Power System Board", 0x0E, 0x0E},
    {"Drive Backplane", 0x0F, 0x0F},
    {"System Internal Expansion Board", 0x10, 0x10},
    {"Other System Board", 0x11, 0x11},
    {"Processor Board", 0x12, 0x12},
    {"Power Unit / Power Domain", 0x13, 0x13},
    {"Power Module / Converter", 0x14, 0x14},
    {"Power Management / Power Distribution Board", 0x15, 0x15},
    {"Chassis Back Panel Board", 0x16, 0x16},
    {"System Chassis", 0x17, 0x17},
    {"Sub-Chassis", 0x18, 0x18},
    {"Other Chassis Board", 0x19, 0x19},
    {"Disk Drive Bay", 0x1A, 0x1A},
    {"Peripheral Bay", 0x1B, 0x1B},
    {"Device Bay", 0x1C, 0x1C},
    {"Fan / cooling device", 0x1D, 0x1D},
    {"Cooling Unit", 0x1E, 0x1E},
    {"Cable / Interconnect", 0x1F, 0x1F},
    {"Memory Device", 0x20, 0x20},
    {"System Management Software", 0x21, 0x21},
    {"BIOS", 0x22, 0x22},
    {"Operating System", 0x23, 0x23},
    {"System Bus", 0x24, 0x24},
    {"Group", 0x25, 0x25},
    {"Reserved", 0x26, 0x8F},
    {"Chassis-specific Entities", 0x90, 0xAF},
    {"Board-set specific Entities", 0xB0, 0xCF},
    {"OEM System Integrator defined", 0xD0, 0xFF},
};

constexpr SdrDecodeRow kUnspecified[] = {
    {"Unspecified", 0x00, 0x00},
};

constexpr SdrDecodeRow kEventTypes[] = {
    {"Unspecified", 0x00, 0x00},     {"Threshold", 0x01, 0x01}, {"Generic", 0x02, 0x0B},
    {"Sensor-specific", 0x6F, 0x6F}, {"OEM", 0x70, 0x7F},
};

constexpr SdrDecodeRow kUnits[] = {
    {"unspecified", 0x00, 0x00},
    {"degrees C", 0x01, 0x01},
    {"degrees F", 0x02, 0x02},
    {"degrees K", 0x03, 0x03},
    {"Volts", 0x04, 0x04},
    {"Amps", 0x05, 0x05},
    {"Watts", 0x06, 0x06},
    {"Joules", 0x07, 0x07},
    {"Coulombs", 0x08, 0x08},
    {"VA", 0x09, 0x09},
    {"Nits", 0x0A, 0x0A},
    {"lumen", 0x0B, 0x0B},
    {"lux", 0x0C, 0x0C},
    {"Candela", 0x0D, 0x0D},
    {"kPa", 0x0E, 0x0E},
    {"PSI", 0x0F, 0x0F},
    {"Newton", 0x10, 0x10},
    {"CFM", 0x11, 0x11},
    {"RPM", 0x12, 0x12},
    {"Hz", 0x13, 0x13},
    {"microsecond", 0x14, 0x14},
    {"millisecond", 0x15, 0x15},
    {"second", 0x16, 0x16},
    {"minute", 0x17, 0x17},
    {"hour", 0x18, 0x18},
    {"day", 0x19, 0x19},
    {"week", 0x1A, 0x1A},
    {"mil", 0x1B, 0x1B},
    {"inches", 0x1C, 0x1C},
    {"feet", 0x1D, 0x1D},
    {"cu in", 0x1E, 0x1E},
    {"cu feet", 0x1F, 0x1F},
    {"mm", 0x20, 0x20},
    {"cm", 0x21, 0x21},
    {"m", 0x22, 0x22},
    {"cu cm", 0x23, 0x23},
    {"cu m", 0x24, 0x24},
    {"liters", 0x25, 0x25},
    {"fluid ounce", 0x26, 0x26},
    {"radians", 0x27, 0x27},
    {"steradians", 0x28, 0x28},
    {"revolutions", 0x29, 0x29},
    {"cycles", 0x2A, 0x2A},
    {"gravities", 0x2B, 0x2B},
    {"ounce", 0x2C, 0x2C},
    {"pound", 0x2D, 0x2D},
    {"ft-lb", 0x2E, 0x2E},
    {"oz-in", 0x2F, 0x2F},
    {"gauss", 0x30, 0x30},
    {"gilberts", 0x31, 0x31},
    {"henry", 0x32, 0x32},
    {"millihenry", 0x33, 0x33},
    {"farad", 0x34, 0x34},
    {"microfarad", 0x35, 0x35},
    {"ohms", 0x36, 0x36},
    {"siemens", 0x37, 0x37},
    {"mole", 0x38, 0x38},
    {"becquerel", 0x39, 0x39},
    {"PPM (parts/million)", 0x3A, 0x3A},
    {"reserved", 0x3B, 0x3B},
    {"Decibels", 0x3C, 0x3C},
    {"DbA", 0x3D, 0x3D},
    {"DbC", 0x3E, 0x3E},
    {"gray", 0x3F, 0x3F},
    {"sievert", 0x40, 0x40},
    {"color temp deg K", 0x41, 0x41},
    {"bit", 0x42, 0x42},
    {"kilobit", 0x43, 0x43},
    {"megabit", 0x44, 0x44},
    {"gigabit", 0x45, 0x45},
    {"byte", 0x46, 0x46},
    {"kilobyte", 0x47, 0x47},
    {"megabyte", 0x48, 0x48},
    {"gigabyte", 0x49, 0x49},
    {"word (data)", 0x4A, 0x4A},
    {"dword", 0x4B, 0x4B},
    {"qword", 0x4C, 0x4C},
    {"line (re. mem. line)", 0x4D, 0x4D},
    {"hit", 0x4E, 0x4E},
    {"miss", 0x4F, 0x4F},
    {"retry", 0x50, 0x50},
    {"reset", 0x51, 0x51},
    {"overrun/overflow", 0x52, 0x52},
    {"underrun", 0x53, 0x53},
    {"collision", 0x54, 0x54},
    {"packets", 0x55, 0x55},
    {"messages", 0x56, 0x56},
    {"characters", 0x57, 0x57},
    {"error", 0x58, 0x58},
    {"correctable error", 0x59, 0x59},
    {"uncorrectable error", 0x5A, 0x5A},
};

constexpr SdrDecodeRow kInterruptTypes[] = {
    {"00h - IRQ 0", 0x00, 0x00},
    {"01h - IRQ 1", 0x01, 0x01},
    {"02h - IRQ 2", 0x02, 0x02},
    {"03h - IRQ 3", 0x03, 0x03},
    {"04h - IRQ 4", 0x04, 0x04},
    {"05h - IRQ 5", 0x05, 0x05},
    {"06h - IRQ 6", 0x06, 0x06},
    {"07h - IRQ 7", 0x07, 0x07},
    {"08h - IRQ 8", 0x08, 0x08},
    {"09h - IRQ 9", 0x09, 0x09},
    {"0Ah - IRQ 10", 0x0A, 0x0A},
    {"0Bh - IRQ 11", 0x0B, 0x0B},
    {"0Ch - IRQ 12", 0x0C, 0x0C},
    {"0Dh - IRQ 13", 0x0D, 0x0D},
    {"0Eh - IRQ 14", 0x0E, 0x0E},
    {"0Fh - IRQ 15", 0x0F, 0x0F},
    {"10h - PCI A", 0x10, 0x10},
    {"11h - PCI B", 0x11, 0x11},
    {"12h - PCI C", 0x12, 0x12},
    {"13h - PCI D", 0x13, 0x13},
    {"14h - SMI", 0x14, 0x14},
    {"15h - SCI", 0x15, 0x15},
    {"20h - System interrupt 0", 0x20, 0x20},
    {"reserved", 0x21, 0x5E},
    {"5Fh - System interrupt 63", 0x5F, 0x5F},
    {"60h - Assigned by ACPI/Plug'n Play BIOS", 0x60, 0x60},
    {"reserved", 0x61, 0xFE},
    {"FFh - No interrupt", 0xFF, 0xFF},
};

}  // namespace

std::string_view SdrDecodeTable(SdrTable table, std::uint8_t deviceType) {
  switch (table) {
    case SdrTable::SensorType:
      return Packed<kSensorTypes>();
    case SdrTable::DeviceType:
      return Packed<kDeviceTypes>();
    case SdrTable::DeviceTypeModifier:
      if (deviceType == 0x05) return Packed<kHecetaModifiers>();
      if (deviceType >= 0x08 && deviceType <= 0x0F) return Packed<kEepromModifiers>();
      return Packed<kOtherModifiers>();
    case SdrTable::EntityId:
      return Packed<kEntityIds>();
    case SdrTable::Unspecified:
      return Packed<kUnspecified>();
    case SdrTable::EventType:
      return Packed<kEventTypes>();
    case SdrTable::Unit:
      return Packed<kUnits>();
    case SdrTable::InterruptType:
      return Packed<kInterruptTypes>();
  }
  return {};
}

const char* FindDecodeText(std::string_view table, std::uint8_t code) {
  while (!table.empty()) {
    auto low = static_cast<std::uint8_t>(table[0]);
    auto high = static_cast<std::uint8_t>(table[1]);
    if (low <= code && code <= high) return table.data() + kCodeBytes;
    table.remove_prefix(table.find('\0', kCodeBytes) + 1);
  }
  return nullptr;
}

}  // namespace varnok
