#include "boards/sdr_codes.h"

#include <span>

#include "boards/field_text.h"
#include "sdr/decode_tables.h"

namespace varnok::boards {
namespace {

struct CodeRow {
  std::uint8_t code;
  const char* text;
};

// Section 42.2, table 42-3.
constexpr CodeRow kSensorTypes[] = {{0x28, "Management Subsystem Health"},
                                    {0x29, "Battery"},
                                    {0x2A, "Session Audit"},
                                    {0x2B, "Version Change"},
                                    {0x2C, "FRU State"}};
// Section 42.1, table 42-2.
constexpr CodeRow kEventTypes[] = {{0x02, "Transition to Active"},
                                   {0x03, "State Assertion"},
                                   {0x04, "Predictive Failure"},
                                   {0x05, "Limit Exceeded"},
                                   {0x06, "Performance"},
                                   {0x07, "Severity"},
                                   {0x08, "Presence"},
                                   {0x09, "Enabled"},
                                   {0x0A, "Availability"},
                                   {0x0B, "Redundancy"},
                                   {0x0C, "ACPI Power State"}};
// Section 43.14, table 43-13.
constexpr CodeRow kEntityIds[] = {{0x26, "Remote Management Communication Device"},
                                  {0x27, "External Environment"},
                                  {0x28, "Battery"},
                                  {0x29, "Processing Blade"},
                                  {0x2A, "Connectivity Switch"},
                                  {0x2B, "Processor/Memory Module"},
                                  {0x2C, "I/O Module"},
                                  {0x2D, "Processor/IO Module"},
                                  {0x2E, "Management Controller Firmware"},
                                  {0x2F, "IPMI Channel"},
                                  {0x30, "PCI Bus"},
                                  {0x31, "PCI Express Bus"},
                                  {0x32, "SCSI Bus"},
                                  {0x33, "SATA/SAS Bus"},
                                  {0x34, "Processor / Front-side Bus"},
                                  {0x35, "Real Time Clock"},
                                  {0x37, "Air Inlet"},
                                  {0x40, "Air Inlet"},
                                  {0x41, "Processor"},
                                  {0x42, "Baseboard"}};
// Section 43.17, table 43-15.
constexpr CodeRow kUnits[] = {{91, "fatal error"}, {92, "grams"}};
constexpr CodeRow kSdrRecordTypes[] = {{0x01, "Full Sensor"},
                                       {0x02, "Compact Sensor"},
                                       {0x03, "Event-Only Sensor"},
                                       {0x08, "Entity Association"},
                                       {0x09, "Device-relative Entity Association"},
                                       {0x10, "Generic Device Locator"},
                                       {0x11, "FRU Device Locator"},
                                       {0x12, "Management Controller Device Locator"},
                                       {0x13, "Management Controller Confirmation"},
                                       {0x14, "BMC Message Channel Info"},
                                       {0xC0, "OEM"}};

struct CodeTable {
  std::span<const CodeRow> rows;  ///< asked first
  const SdrTable* program;        ///< the program's table; null: none
};

CodeTable TableOf(SdrCode table) {
  static constexpr SdrTable kPrograms[] = {SdrTable::SensorType, SdrTable::EventType,
                                           SdrTable::EntityId,   SdrTable::Unit,
                                           SdrTable::DeviceType, SdrTable::InterruptType};
  switch (table) {
    case SdrCode::SensorType:
      return {kSensorTypes, &kPrograms[0]};
    case SdrCode::EventType:
      return {kEventTypes, &kPrograms[1]};
    case SdrCode::EntityId:
      return {kEntityIds, &kPrograms[2]};
    case SdrCode::Unit:
      return {kUnits, &kPrograms[3]};
    case SdrCode::DeviceType:
      return {{}, &kPrograms[4]};
    case SdrCode::Interrupt:
      return {{}, &kPrograms[5]};
    case SdrCode::RecordType:
      return {kSdrRecordTypes, nullptr};
  }
  return {{}, nullptr};
}

}  // namespace

std::string SdrCodeText(SdrCode table, std::uint8_t code) {
  const CodeTable found = TableOf(table);
  for (const CodeRow& row : found.rows)
    if (row.code == code) return row.text;
  const char* text =
      found.program == nullptr ? nullptr : FindDecodeText(SdrDecodeTable(*found.program, 0), code);
  return text == nullptr ? "reserved " + Hex(code) : text;
}

std::string DeviceModifierText(std::uint8_t deviceType, std::uint8_t modifier) {
  const char* text = FindDecodeText(SdrDecodeTable(SdrTable::DeviceTypeModifier, deviceType), modifier);
  return text == nullptr || std::string(text) == " " ? Hex(modifier) : text;
}

}  // namespace varnok::boards
