// Showing an image on the console, area by area.
#include <algorithm>
#include <string>

#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "fru/fru.h"
#include "fru/fru_encoding.h"
#include "fru/fru_output.h"
#include "fru/fru_session.h"
#include "fru/fru_status.h"

namespace varnok {
namespace {

struct HeaderLine {
  std::u16string_view label;
  std::size_t index;  ///< of the byte in the header
};
constexpr HeaderLine kHeaderLines[] = {
    {u"Internal Area Offset", 1},
    {u"Chasis Area Offset", 2},
    {u"Board Area Offset", 3},
    {u"Product Area Offset", 4},
    {u"MultiRecord Offset", 5},
    {u"Pad", 6},
    {u"Checksum", 7},
};

constexpr std::u16string_view kChassisLabels[] = {u"Part Number", u"Serial Number"};
constexpr std::u16string_view kBoardLabels[] = {u"Manufacturer Name", u"Product Name", u"Serial Number",
                                                u"Part Number", u"Mftr FRU File ID"};
constexpr std::u16string_view kProductLabels[] = {u"Manufacturer Name", u"Product Name",  u"Part Number",
                                                  u"Product Version",   u"Serial Number", u"Asset Tag",
                                                  u"Mftr FRU File ID"};
constexpr std::u16string_view kCustomLabel = u"Additional Field";

constexpr std::uint8_t kShownVersion = 1;
constexpr std::u16string_view kByteLine = u" %-31s= %02Xh\n";

void PrintBytes(std::span<const std::uint8_t> bytes) {
  constexpr std::size_t kRowLength = 16;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    Print(u"%02X", bytes[i]);
    if (i % kRowLength == kRowLength - 1 || i + 1 == bytes.size()) PrintText(u"\n");
  }
}

void PrintBcdDigit(unsigned digit) {
  constexpr unsigned kDash = 0xB;
  constexpr unsigned kPeriod = 0xC;
  if (digit <= 9)
    Print(u"%01d", digit);
  else
    PrintText(digit == kDash ? u"-" : digit == kPeriod ? u"." : u"\b");
}

/// Only the first digit is shown, and then the field as 6-bit text; a first digit of 0 is shown as often as
/// the field has digits, where it once went on for ever.
void PrintBcdPlus(std::span<const std::uint8_t> data) {
  unsigned first = data.empty() ? 0 : data[0] >> 4;
  std::size_t count = first == 0 ? std::max<std::size_t>(1, 2 * data.size()) : 1;
  PrintText(u"(BCD+)        = ");
  for (; count > 0; --count) PrintBcdDigit(first);
}

Status PrintField(std::u16string_view label, std::uint8_t typeLength, std::span<const std::uint8_t> data) {
  if (data.data() == nullptr) {
    Trace("CFru::DisplayField - Unexpected", 1);
    return fru_status::kUnexpected;
  }
  Print(u" %-17s", label);
  switch (FruDefs::DecodeType(typeLength)) {
    case FruFieldType::Binary:
      PrintText(u"(binary)      = ");
      for (std::uint8_t byte : data) Print(u"%02X ", byte);
      break;
    case FruFieldType::BcdPlus:
      PrintBcdPlus(data);
      [[fallthrough]];
    case FruFieldType::SixBitAscii:
      Print(u"(6 bit ASCII) = %s", UnpackSixBitAscii(data));
      break;
    case FruFieldType::Text:
      Print(u"(ASCII)       = %s", UpToNul(std::string(data.begin(), data.end())));
      break;
  }
  PrintText(u"\n");
  return kSuccess;
}

/// The fixed fields with their labels from index `first` on, then the custom fields.
Status PrintFields(const InfoArea& info, std::uint32_t first, std::span<const std::u16string_view> labels) {
  Status status = kSuccess;
  auto print = [&](std::u16string_view label, std::uint8_t typeLength, std::span<const std::uint8_t> data) {
    if (typeLength == FruDefs::kEndOfFields) {
      PrintText(u"END OF FIELDS CODE\n");
      return false;
    }
    status = PrintField(label, typeLength, data);
    return status == kSuccess;
  };
  for (std::u16string_view label : labels) {
    std::span<const std::uint8_t> data;
    (void)info.GetFieldData(first, data);
    if (!print(label, info.GetFieldTypeLength(first++), data)) return status;
  }
  for (const InfoArea::CustomField& field : info.CustomFields())
    if (!print(kCustomLabel, field.typeLength, field.Bytes())) return status;
  return kSuccess;
}

void ShowHeader(const CFruHeader& header) {
  PrintText(u"\nDisplaying Header Area \n");
  Print(u"Common Header Area (Version %d, Length %d)\n", header.FormatVersion(), CFruHeader::GetLength());
  for (const HeaderLine& line : kHeaderLines)
    Print(u"%-31s= %02Xh\n", line.label, header.GetData()[line.index]);
}

Status ShowInternalUse(CFru& fru) {
  PrintText(u"Displaying Internal Use Area \n");
  if (!fru.HasInternalArea()) {
    PrintText(u"Internal Use Information Area not present in FRU Device\n\n");
    return kSuccess;
  }
  std::span<const std::uint8_t> bytes = fru.InternalUse().GetData();
  Print(u"Internal Information Area (Version %d, Length %d)\n", bytes.empty() ? 0 : bytes[0] & 0x0F,
        bytes.size());
  PrintBytes(bytes);
  return kSuccess;
}

Status ShowChassis(CFru& fru) {
  PrintText(u"Display Chassis Area \n");
  if (!fru.HasChassisArea()) {
    PrintText(u"Chassis Information Area not present in FRU Device\n\n");
    return kSuccess;
  }
  const CChassisInfoArea& chassis = fru.Chassis();
  Print(u"Chassis Information Area (Version %d, Length %d)\n", chassis.GetFormatVersion(),
        chassis.GetLength());
  Print(kByteLine, u"Chassis Type", chassis.GetType());
  return PrintFields(chassis, 1, kChassisLabels);
}

/// The start of a board or product area; false when there is nothing more to show of it.
bool ShowVersionedArea(bool isPresent, std::u16string_view name, const InfoArea& info,
                       std::uint8_t languageCode) {
  Print(u"Display %ls Area \n", name);
  if (!isPresent) {
    Print(u"%ls Information Area not present in FRU Device\n\n", name);
    return false;
  }
  if (info.GetFormatVersion() != kShownVersion) {
    PrintText(u"EEPROM not initialized\n");
    return false;
  }
  Print(kByteLine, u"Unicode Country Base", languageCode);
  return true;
}

Status ShowBoard(CFru& fru) {
  const CBoardInfoArea& board = fru.Board();
  if (!ShowVersionedArea(fru.HasBoardArea(), u"Board", board, board.GetLanguageCode())) return kSuccess;
  std::span<const std::uint8_t> date = board.GetMfgDateTime();
  std::uint32_t minutes = date[0] | date[1] << 8 | date[2] << 16;
  Print(u" %-31s= %lu\n", u"Manufacturing Time(mins)", minutes);
  return PrintFields(board, 1, kBoardLabels);
}

Status ShowProduct(CFru& fru) {
  const CProductInfoArea& product = fru.Product();
  if (!ShowVersionedArea(fru.HasProductArea(), u"Product", product, product.GetLanguageCode()))
    return kSuccess;
  return PrintFields(product, 0, kProductLabels);
}

Status ShowMultiRec(CFru& fru) {
  PrintText(u"Display MultiRecord Area \n");
  if (!fru.HasMultiRecArea()) {
    PrintText(u"MultiRecord Area not present in FRU Device\n\n");
    return kSuccess;
  }
  MultiRecordList& records = fru.MultiRecords();
  Print(u"MultiRecord Area (Version %d, Length %d)\n",
        records.IsEmpty() ? 0 : records.begin()->FormatVersion(), fru.MultiRecLength());
  // By the number under which scripts know a record.
  std::uint32_t number = 0;
  for (const MultiRecord& record : records) {
    Print(u" Record %d (Type %02Xh, Version %d, Length %d)\n", ++number, record.Type(),
          record.FormatVersion(), record.Length());
    PrintBytes(record.header);
    PrintBytes(record.Data());
  }
  return kSuccess;
}

/// After an area: true to go on.
bool AskToGoOn() {
  FruSession& session = TheFruSession();
  if (!session.isPagingOn) return true;
  SetPaging(true);
  bool goesOn = PromptMore();
  // Non-stop clears the program's flag, and with it this one.
  session.isPagingOn = IsPagingOn();
  return goesOn;
}

}  // namespace

Status CFru::Display() {
  TraceScope scope("CFru::Display");
  FruOutput().PrintAddress(u"", address_);
  ShowHeader(header_);
  for (auto show : {ShowInternalUse, ShowChassis, ShowBoard, ShowProduct, ShowMultiRec}) {
    if (!AskToGoOn()) return kSuccess;
    if (Status status = show(*this); status != kSuccess) return status;
  }
  (void)AskToGoOn();
  return kSuccess;
}

}  // namespace varnok
