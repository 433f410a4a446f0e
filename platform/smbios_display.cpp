// The display of the system, board and chassis records.
#include <memory>

#include "app/services/console.h"
#include "app/services/text_output.h"
#include "app/services/trace.h"
#include "firmware/firmware.h"
#include "firmware/lasting.h"
#include "platform/smbios.h"

namespace varnok {
namespace {

constexpr std::size_t kUnknownChassis = 2;
constexpr const char* kChassisNames[] = {
    "Unknown",
    "Other",
    "Unknown",
    "Desktop",
    "Low Profile Desktop",
    "Pizza Box",
    "Mini Tower",
    "Tower",
    "Portable",
    "LapTop",
    "Notebook",
    "Hand Held",
    "Docking Station",
    "All in One",
    "Sub Notebook",
    "Space-Saving",
    "Lunch Box",
    "Main Server Chassis",
    "Expansion Chassis",
    "SubChassis",
    "Bus Expansion Chassis",
    "Peripheral Chassis",
    "RAID Chassis",
    "Rack Mount Chassis",
    "Sealed-case PC",
    "Multi-system chassis",
    "CompactPCI Chassis",
    "AdvancedTCA",
    "Blade",
    "BladeEnclosure",
};

struct Display {
  std::u16string fileName;
  std::unique_ptr<File> file;
  const char16_t* lastError = nullptr;
};

Display& TheDisplay() {
  return Lasting<Display>();
}

void ShowHeading(const char* heading) {
  SmbiosPrint("\n%s\n\n", heading);
}

void ShowLine(const char* label, std::string_view value) {
  SmbiosPrint(" %-17s = %s\n", label, value);
}

void Show(const SmbiosSystem& system) {
  ShowHeading("\nSystem Information (Type 1)\n");
  ShowLine("Manufacturer", system.manufacturer);
  ShowLine("Product Name", system.productName);
  ShowLine("Version ", system.version);
  ShowLine("Serial Number", system.serialNumber);
}

void Show(const SmbiosBoard& board) {
  ShowHeading("\nBoard Information (Type 2)\n");
  ShowLine("Manufacturer", board.manufacturer);
  ShowLine("Product ", board.product);
  ShowLine("Version ", board.version);
  ShowLine("Serial Number", board.serialNumber);
}

void Show(const SmbiosChassis& chassis) {
  ShowHeading("\nChassis Information (Type 3)\n");
  ShowLine("Manufacturer", chassis.manufacturer);
  // The lock bit stays in the number, so a lockable chassis is past the table and shows as unknown.
  ShowLine("Type", kChassisNames[chassis.type < std::size(kChassisNames) ? chassis.type : kUnknownChassis]);
  ShowLine("Version", chassis.version);
  ShowLine("Serial Number", chassis.serialNumber);
  ShowLine("Asset Tag Number", chassis.assetTag);
}

template <class Record>
Status ShowFirst(std::uint32_t type) {
  SmbiosRecord record;
  std::size_t size = 0;
  std::uint32_t cursor = 0;
  Status status = SmbiosGetStructure(type, kSmbiosAny, record, size, cursor);
  if (status == kSuccess) Show(*std::get_if<Record>(&record));
  return status;
}

Status ShowAll() {
  Status status = ShowFirst<SmbiosSystem>(1);
  if (status == kSuccess) status = ShowFirst<SmbiosBoard>(2);
  if (status == kSuccess) status = ShowFirst<SmbiosChassis>(3);
  return status;
}

}  // namespace

Status SmbiosDisplay() {
  TraceScope scope("SmbiosDisplay");
  Display& display = TheDisplay();
  SmbiosPrint("Displaying SMBIOS Area...\n");
  if (!display.fileName.empty() &&
      TheFirmware().OpenFile(display.fileName, FileMode::Append, display.file) != kSuccess) {
    return Fail("SmbiosDisplay", "Unable to open the output file", smbios_status::kNoOutputFile);
  }
  Status status = ShowAll();
  display.file = nullptr;
  if (status == kSuccess) return kSuccess;
  display.lastError = u"The requested SMBIOS structure was not found.";
  return Fail("SmbiosDisplay", "SMBIOS structure not found", status);
}

void SmbiosSetOutputFile(std::u16string_view name) {
  TraceScope scope("SmbiosSetOutputFile");
  TheDisplay().fileName = name;
}

Status SmbiosGetLastErrorMessage(const char16_t*& text) {
  TraceScope scope("SmbiosGetLastErrorMessage");
  text = TheDisplay().lastError;
  return kSuccess;
}

void SmbiosPrintText(std::u16string_view text) {
  PrintText(text);
  if (File* file = TheDisplay().file.get()) Discard(WriteText(*file, text));
}

}  // namespace varnok
