#include "sdr/decode_tables.h"

namespace varnok {
namespace {

constexpr SdrDecodeRow kSensorTypes[] = {
    {u"Reserved", 0x00, 0x00},
    {u"Temperature", 0x01, 0x01},
    {u"Voltage", 0x02, 0x02},
    {u"Current", 0x03, 0x03},
    {u"Fan", 0x04, 0x04},
    {u"Physical Security (Chassis Intrusion)", 0x05, 0x05},
    {u"Platform Security Violation Attempt", 0x06, 0x06},
    {u"Processor", 0x07, 0x07},
    {u"Power Supply", 0x08, 0x08},
    {u"Power Unit", 0x09, 0x09},
    {u"Cooling Device", 0x0A, 0x0A},
    {u"Other Units-based Sensor", 0x0B, 0x0B},
    {u"Memory", 0x0C, 0x0C},
    {u"Drive Slot (Bay)", 0x0D, 0x0D},
    {u"POST Memory Resize", 0x0E, 0x0E},
    {u"POST Error", 0x0F, 0x0F},
    {u"Event Logging Disabled", 0x10, 0x10},
    {u"Watchdog 1", 0x11, 0x11},
    {u"System Event", 0x12, 0x12},
    {u"Critical Interrupt", 0x13, 0x13},
    {u"Button", 0x14, 0x14},
    {u"Module / Board", 0x15, 0x15},
    {u"Microcontroller / Coprocessor", 0x16, 0x16},
    {u"Add-in Card", 0x17, 0x17},
    {u"Chassis", 0x18, 0x18},
    {u"Chip Set", 0x19, 0x19},
    {u"Other FRU", 0x1A, 0x1A},
    {u"Cable / Interconnect", 0x1B, 0x1B},
    {u"Terminator", 0x1C, 0x1C},
    {u"System Boot Initiated", 0x1D, 0x1D},
    {u"Boot Error", 0x1E, 0x1E},
    {u"OS Boot", 0x1F, 0x1F},
    {u"OS Critical Stop", 0x20, 0x20},
    {u"Slot / Connector", 0x21, 0x21},
    {u"System ACPI Power State", 0x22, 0x22},
    {u"Watchdog 2", 0x23, 0x23},
    {u"Platform Alert", 0x24, 0x24},
    {u"Entity Presence", 0x25, 0x25},
    {u"Monitor ASIC / IC", 0x26, 0x26},
    {u"LAN", 0x27, 0x27},
    {u"Reserved", 0x28, 0xBF},
    {u"OEM RESERVED", 0xC0, 0xFF},
};

constexpr SdrDecodeRow kDeviceTypes[] = {
    {u"Reserved", 0x00, 0x01},
    {u"DS1624 temperature sensor / EEPROM or equivalent", 0x02, 0x02},
    {u"DS1621 temperature sensor or equivalent", 0x03, 0x03},
    {u"LM75 Temperature Sensor or equivalent", 0x04, 0x04},
    {u"'Heceta' ASIC or similar", 0x05, 0x05},
    {u"Reserved", 0x06, 0x07},
    {u"EEPROM, 24C01 or equivalent", 0x08, 0x08},
    {u"EEPROM, 24C02 or equivalent", 0x09, 0x09},
    {u"EEPROM, 24C04 or equivalent", 0x0A, 0x0A},
    {u"EEPROM, 24C08 or equivalent", 0x0B, 0x0B},
    {u"EEPROM, 24C16 or equivalent", 0x0C, 0x0C},
    {u"EEPROM, 24C17 or equivalent", 0x0D, 0x0D},
    {u"EEPROM, 24C32 or equivalent", 0x0E, 0x0E},
    {u"EEPROM, 24C64 or equivalent", 0x0F, 0x0F},
    {u"FRU Inventory Device", 0x10, 0x10},
    {u"Reserved", 0x11, 0x13},
    {u"PCF 8570 256 byte RAM or equivalent", 0x14, 0x14},
    {u"PCF 8573 clock/calendar or equivalent", 0x15, 0x15},
    {u"PCF 8574A 'i/o port' or equivalent", 0x16, 0x16},
    {u"PCF 8583 clock/calendar or equivalent", 0x17, 0x17},
    {u"PCF 8593 clock/calendar or equivalent", 0x18, 0x18},
    {u"Clock calendar, type not specified", 0x19, 0x19},
    {u"PCF8591 A/D, D/A Converter or equivalent", 0x1A, 0x1A},
    {u"i/o port, specific device not specified", 0x1B, 0x1B},
    {u"A/D Converter, specific device not specified", 0x1C, 0x1C},
    {u"D/A Converter, specific device not specified", 0x1D, 0x1D},
    {u"A/D, D/A Converter, specific device not specified", 0x1E, 0x1E},
    {u"LCD controller / Driver, specific device not specified", 0x1F, 0x1F},
    {u"Core Logic (Chip set) Device, specific device not specified", 0x20, 0x20},
    {u"LMC6874 Intelligent Battery controller, or equivalent", 0x21, 0x21},
    {u"Intelligent Battery controller, specific device not supported", 0x22, 0x22},
    {u"Combo Management ASCI, specific device not specified", 0x23, 0x23},
    {u"Maxim 1617 Temperature Sensor", 0x24, 0x24},
    {u"Reserved", 0x25, 0xBE},
    {u"Other / unspecified device", 0xBF, 0xBF},
    {u"OEM specified device", 0xC0, 0xFF},
};

constexpr SdrDecodeRow kHecetaModifiers[] = {
    {u"Heceta 1", 0x00, 0x00}, {u"Heceta 2", 0x01, 0x01}, {u"LM80", 0x02, 0x02},
    {u"Heceta 3", 0x03, 0x03}, {u"Heceta 4", 0x04, 0x04}, {u"Heceta 5", 0x05, 0x05},
};

constexpr SdrDecodeRow kEepromModifiers[] = {
    {u"unspecified", 0x00, 0x00},
    {u"DIMM Memory ID", 0x01, 0x01},
    {u"FRU Inventory", 0x02, 0x02},
    {u"System Processor Cartridge FRU/PIROM (processor information ROM)", 0x03, 0x03},
    {u"reserved", 0x04, 0xFF},
};

constexpr SdrDecodeRow kOtherModifiers[] = {
    {u"n/a", 0x00, 0x01}, {u" ", 0x02, 0x04},   {u"n/a", 0x06, 0x07},
    {u" ", 0x10, 0x10},   {u"n/a", 0x11, 0x13}, {u" ", 0x14, 0x24},
    {u"n/a", 0x25, 0xBE}, {u"00h", 0xBF, 0xBF}, {u"OEM specific", 0xC0, 0xFF},
};

constexpr SdrDecodeRow kEntityIds[] = {
    {u"Unspecified", 0x00, 0x00},
    {u"Other", 0x01, 0x01},
    {u"Unknown", 0x02, 0x02},
    {u"Processor", 0x03, 0x03},
    {u"Disk or Disk Bay", 0x04, 0x04},
    {u"Peripheral Bay", 0x05, 0x05},
    {u"System Management Module", 0x06, 0x06},
    {u"System Board", 0x07, 0x07},
    {u"Memory Module", 0x08, 0x08},
    {u"Processor Module", 0x09, 0x09},
    {u"Power Supply", 0x0A, 0x0A},
    {u"Add-in Card", 0x0B, 0x0B},
    {u"Front Panel Board", 0x0C, 0x0C},
    {u"Back Panel Board", 0x0D, 0x0D},
    {u"Power System Board", 0x0E, 0x0E},
    {u"Drive Backplane", 0x0F, 0x0F},
    {u"System Internal Expansion Board", 0x10, 0x10},
    {u"Other System Board", 0x11, 0x11},
    {u"Processor Board", 0x12, 0x12},
    {u"Power Unit / Power Domain", 0x13, 0x13},
    {u"Power Module / Converter", 0x14, 0x14},
    {u"Power Management / Power Distribution Board", 0x15, 0x15},
    {u"Chassis Back Panel Board", 0x16, 0x16},
    {u"System Chassis", 0x17, 0x17},
    {u"Sub-Chassis", 0x18, 0x18},
    {u"Other Chassis Board", 0x19, 0x19},
    {u"Disk Drive Bay", 0x1A, 0x1A},
    {u"Peripheral Bay", 0x1B, 0x1B},
    {u"Device Bay", 0x1C, 0x1C},
    {u"Fan / cooling device", 0x1D, 0x1D},
    {u"Cooling Unit", 0x1E, 0x1E},
    {u"Cable / Interconnect", 0x1F, 0x1F},
    {u"Memory Device", 0x20, 0x20},
    {u"System Management Software", 0x21, 0x21},
    {u"BIOS", 0x22, 0x22},
    {u"Operating System", 0x23, 0x23},
    {u"System Bus", 0x24, 0x24},
    {u"Group", 0x25, 0x25},
    {u"Reserved", 0x26, 0x8F},
    {u"Chassis-specific Entities", 0x90, 0xAF},
    {u"Board-set specific Entities", 0xB0, 0xCF},
    {u"OEM System Integrator defined", 0xD0, 0xFF},
};

constexpr SdrDecodeRow kUnspecified[] = {
    {u"Unspecified", 0x00, 0x00},
};

constexpr SdrDecodeRow kEventTypes[] = {
    {u"Unspecified", 0x00, 0x00},     {u"Threshold", 0x01, 0x01}, {u"Generic", 0x02, 0x0B},
    {u"Sensor-specific", 0x6F, 0x6F}, {u"OEM", 0x70, 0x7F},
};

constexpr SdrDecodeRow kUnits[] = {
    {u"unspecified", 0x00, 0x00},
    {u"degrees C", 0x01, 0x01},
    {u"degrees F", 0x02, 0x02},
    {u"degrees K", 0x03, 0x03},
    {u"Volts", 0x04, 0x04},
    {u"Amps", 0x05, 0x05},
    {u"Watts", 0x06, 0x06},
    {u"Joules", 0x07, 0x07},
    {u"Coulombs", 0x08, 0x08},
    {u"VA", 0x09, 0x09},
    {u"Nits", 0x0A, 0x0A},
    {u"lumen", 0x0B, 0x0B},
    {u"lux", 0x0C, 0x0C},
    {u"Candela", 0x0D, 0x0D},
    {u"kPa", 0x0E, 0x0E},
    {u"PSI", 0x0F, 0x0F},
    {u"Newton", 0x10, 0x10},
    {u"CFM", 0x11, 0x11},
    {u"RPM", 0x12, 0x12},
    {u"Hz", 0x13, 0x13},
    {u"microsecond", 0x14, 0x14},
    {u"millisecond", 0x15, 0x15},
    {u"second", 0x16, 0x16},
    {u"minute", 0x17, 0x17},
    {u"hour", 0x18, 0x18},
    {u"day", 0x19, 0x19},
    {u"week", 0x1A, 0x1A},
    {u"mil", 0x1B, 0x1B},
    {u"inches", 0x1C, 0x1C},
    {u"feet", 0x1D, 0x1D},
    {u"cu in", 0x1E, 0x1E},
    {u"cu feet", 0x1F, 0x1F},
    {u"mm", 0x20, 0x20},
    {u"cm", 0x21, 0x21},
    {u"m", 0x22, 0x22},
    {u"cu cm", 0x23, 0x23},
    {u"cu m", 0x24, 0x24},
    {u"liters", 0x25, 0x25},
    {u"fluid ounce", 0x26, 0x26},
    {u"radians", 0x27, 0x27},
    {u"steradians", 0x28, 0x28},
    {u"revolutions", 0x29, 0x29},
    {u"cycles", 0x2A, 0x2A},
    {u"gravities", 0x2B, 0x2B},
    {u"ounce", 0x2C, 0x2C},
    {u"pound", 0x2D, 0x2D},
    {u"ft-lb", 0x2E, 0x2E},
    {u"oz-in", 0x2F, 0x2F},
    {u"gauss", 0x30, 0x30},
    {u"gilberts", 0x31, 0x31},
    {u"henry", 0x32, 0x32},
    {u"millihenry", 0x33, 0x33},
    {u"farad", 0x34, 0x34},
    {u"microfarad", 0x35, 0x35},
    {u"ohms", 0x36, 0x36},
    {u"siemens", 0x37, 0x37},
    {u"mole", 0x38, 0x38},
    {u"becquerel", 0x39, 0x39},
    {u"PPM (parts/million)", 0x3A, 0x3A},
    {u"reserved", 0x3B, 0x3B},
    {u"Decibels", 0x3C, 0x3C},
    {u"DbA", 0x3D, 0x3D},
    {u"DbC", 0x3E, 0x3E},
    {u"gray", 0x3F, 0x3F},
    {u"sievert", 0x40, 0x40},
    {u"color temp deg K", 0x41, 0x41},
    {u"bit", 0x42, 0x42},
    {u"kilobit", 0x43, 0x43},
    {u"megabit", 0x44, 0x44},
    {u"gigabit", 0x45, 0x45},
    {u"byte", 0x46, 0x46},
    {u"kilobyte", 0x47, 0x47},
    {u"megabyte", 0x48, 0x48},
    {u"gigabyte", 0x49, 0x49},
    {u"word (data)", 0x4A, 0x4A},
    {u"dword", 0x4B, 0x4B},
    {u"qword", 0x4C, 0x4C},
    {u"line (re. mem. line)", 0x4D, 0x4D},
    {u"hit", 0x4E, 0x4E},
    {u"miss", 0x4F, 0x4F},
    {u"retry", 0x50, 0x50},
    {u"reset", 0x51, 0x51},
    {u"overrun/overflow", 0x52, 0x52},
    {u"underrun", 0x53, 0x53},
    {u"collision", 0x54, 0x54},
    {u"packets", 0x55, 0x55},
    {u"messages", 0x56, 0x56},
    {u"characters", 0x57, 0x57},
    {u"error", 0x58, 0x58},
    {u"correctable error", 0x59, 0x59},
    {u"uncorrectable error", 0x5A, 0x5A},
};

constexpr SdrDecodeRow kInterruptTypes[] = {
    {u"00h - IRQ 0", 0x00, 0x00},
    {u"01h - IRQ 1", 0x01, 0x01},
    {u"02h - IRQ 2", 0x02, 0x02},
    {u"03h - IRQ 3", 0x03, 0x03},
    {u"04h - IRQ 4", 0x04, 0x04},
    {u"05h - IRQ 5", 0x05, 0x05},
    {u"06h - IRQ 6", 0x06, 0x06},
    {u"07h - IRQ 7", 0x07, 0x07},
    {u"08h - IRQ 8", 0x08, 0x08},
    {u"09h - IRQ 9", 0x09, 0x09},
    {u"0Ah - IRQ 10", 0x0A, 0x0A},
    {u"0Bh - IRQ 11", 0x0B, 0x0B},
    {u"0Ch - IRQ 12", 0x0C, 0x0C},
    {u"0Dh - IRQ 13", 0x0D, 0x0D},
    {u"0Eh - IRQ 14", 0x0E, 0x0E},
    {u"0Fh - IRQ 15", 0x0F, 0x0F},
    {u"10h - PCI A", 0x10, 0x10},
    {u"11h - PCI B", 0x11, 0x11},
    {u"12h - PCI C", 0x12, 0x12},
    {u"13h - PCI D", 0x13, 0x13},
    {u"14h - SMI", 0x14, 0x14},
    {u"15h - SCI", 0x15, 0x15},
    {u"20h - System interrupt 0", 0x20, 0x20},
    {u"reserved", 0x21, 0x5E},
    {u"5Fh - System interrupt 63", 0x5F, 0x5F},
    {u"60h - Assigned by ACPI/Plug'n Play BIOS", 0x60, 0x60},
    {u"reserved", 0x61, 0xFE},
    {u"FFh - No interrupt", 0xFF, 0xFF},
};

}  // namespace

std::span<const SdrDecodeRow> SdrDecodeTable(SdrTable table, std::uint8_t deviceType) {
  switch (table) {
    case SdrTable::SensorType:
      return kSensorTypes;
    case SdrTable::DeviceType:
      return kDeviceTypes;
    case SdrTable::DeviceTypeModifier:
      if (deviceType == 0x05) return kHecetaModifiers;
      if (deviceType >= 0x08 && deviceType <= 0x0F) return kEepromModifiers;
      return kOtherModifiers;
    case SdrTable::EntityId:
      return kEntityIds;
    case SdrTable::Unspecified:
      return kUnspecified;
    case SdrTable::EventType:
      return kEventTypes;
    case SdrTable::Unit:
      return kUnits;
    case SdrTable::InterruptType:
      return kInterruptTypes;
  }
  return {};
}

}  // namespace varnok
