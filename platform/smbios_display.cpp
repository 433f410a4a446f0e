// The display of the system, board and chassis records.
#include <memory>

#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/text_output.h"
#include "app/services/trace.h"
#include "firmware/firmware.h"
#include "firmware/lasting.h"
#include "platform/smbios.h"

namespace varnok {
namespace {

constexpr std::size_t kUnknownChassis = 2;
constexpr std::u16string_view kChassisNames[] = {
    u"Unknown",
    u"Other",
    u"Unknown",
    u"Desktop",
    u"Low Profile Desktop",
    u"Pizza Box",
    u"Mini Tower",
    u"Tower",
    u"Portable",
    u"LapTop",
    u"Notebook",
    u"Hand Held",
    u"Docking Station",
    u"All in One",
    u"Sub Notebook",
    u"Space-Saving",
    u"Lunch Box",
    u"Main Server Chassis",
    u"Expansion Chassis",
    u"SubChassis",
    u"Bus Expansion Chassis",
    u"Peripheral Chassis",
    u"RAID Chassis",
    u"Rack Mount Chassis",
    u"Sealed-case PC",
    u"Multi-system chassis",
    u"CompactPCI Chassis",
    u"AdvancedTCA",
    u"Blade",
    u"BladeEnclosure",
};

struct Display {
  std::u16string fileName;
  std::unique_ptr<File> file;
  const char16_t* lastError = nullptr;
};

Display& TheDisplay() {
  return Lasting<Display>();
}

void ShowHeading(std::u16string_view heading) {
  SmbiosPrint(u"\n%ls\n\n", heading);
}

void ShowLine(std::u16string_view label, std::u16string_view value) {
  SmbiosPrint(u" %-17s = %s\n", label, value);
}

void ShowLine(std::u16string_view label, const std::string& value) {
  ShowLine(label, Widen(value));
}

void Show(const SmbiosSystem& system) {
  ShowHeading(u"\nSystem Information (Type 1)\n");
  ShowLine(u"Manufacturer", system.manufacturer);
  ShowLine(u"Product Name", system.productName);
  ShowLine(u"Version ", system.version);
  ShowLine(u"Serial Number", system.serialNumber);
}

void Show(const SmbiosBoard& board) {
  ShowHeading(u"\nBoard Information (Type 2)\n");
  ShowLine(u"Manufacturer", board.manufacturer);
  ShowLine(u"Product ", board.product);
  ShowLine(u"Version ", board.version);
  ShowLine(u"Serial Number", board.serialNumber);
}

void Show(const SmbiosChassis& chassis) {
  ShowHeading(u"\nChassis Information (Type 3)\n");
  ShowLine(u"Manufacturer", chassis.manufacturer);
  // The lock bit stays in the number, so a lockable chassis is past the table and shows as unknown.
  ShowLine(u"Type", kChassisNames[chassis.type < std::size(kChassisNames) ? chassis.type : kUnknownChassis]);
  ShowLine(u"Version", chassis.version);
  ShowLine(u"Serial Number", chassis.serialNumber);
  ShowLine(u"Asset Tag Number", chassis.assetTag);
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
  SmbiosPrint(u"Displaying SMBIOS Area...\n");
  if (!display.fileName.empty() &&
      TheFirmware().OpenFile(display.fileName, FileMode::Append, display.file) != kSuccess) {
    Trace("SmbiosDisplay - Unable to open the output file", 1);
    return smbios_status::kNoOutputFile;
  }
  Status status = ShowAll();
  display.file = nullptr;
  if (status != kSuccess) {
    display.lastError = u"The requested SMBIOS structure was not found.";
    Trace("SmbiosDisplay - SMBIOS structure not found", 1);
  }
  return status;
}

void SmbiosSetOutputFile(std::u16string_view name) {
  TraceScope scope("SmbiosSetOutputFile");
  TheDisplay().fileName = name;
}

const char16_t* SmbiosGetLastErrorMessage() {
  TraceScope scope("SmbiosGetLastErrorMessage");
  return TheDisplay().lastError;
}

void SmbiosPrintText(std::u16string_view text) {
  PrintText(text);
  if (File* file = TheDisplay().file.get()) WriteText(*file, text);
}

}  // namespace varnok
