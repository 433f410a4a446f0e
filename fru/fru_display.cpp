// Showing an image on the console, area by area.
#include <algorithm>
#include <string>

#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "firmware/bytes.h"
#include "fru/fru.h"
#include "fru/fru_encoding.h"
#include "fru/fru_output.h"
#include "fru/fru_session.h"
#include "fru/fru_status.h"

namespace varnok {
namespace {

struct HeaderLine {
  const char* label;
  std::size_t index;  ///< of the byte in the header
};
constexpr HeaderLine kHeaderLines[] = {
    {"Internal Area Offset", 1},
    {"Chasis Area Offset", 2},  // Kept: spelled so in every transcript
    {"Board Area Offset", 3},
    {"Product Area Offset", 4},
    {"MultiRecord Offset", 5},
    {"Pad", 6},
    {"Checksum", 7},
};

constexpr const char* kCustomLabel = "Additional Field";

constexpr std::uint8_t kShownVersion = 1;
constexpr const char* kByteLine = " %-31s= %02Xh\n";

void PrintBytes(std::span<const std::uint8_t> bytes) {
  constexpr std::size_t kRowLength = 16;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    Print("%02X", bytes[i]);
    if (i % kRowLength == kRowLength - 1 || i + 1 == bytes.size()) PrintText("\n");
  }
}

void PrintBcdDigit(unsigned digit) {
  constexpr unsigned kDash = 0xB;
  constexpr unsigned kPeriod = 0xC;
  if (digit <= 9)
    Print("%01d", digit);
  else
    PrintText(digit == kDash ? "-" : digit == kPeriod ? "." : "\b");
}

/// Kept: only the first digit is shown, and then the field as 6-bit text; a first digit of 0 is shown as
/// often as the field has digits, where it once went on for ever.
void PrintBcdPlus(std::span<const std::uint8_t> data) {
  unsigned first = data.empty() ? 0 : data[0] >> 4;
  std::size_t count = first == 0 ? std::max<std::size_t>(1, 2 * data.size()) : 1;
  PrintText("(BCD+)        = ");
  for (; count > 0; --count) PrintBcdDigit(first);
}

Status PrintField(const char* label, std::uint8_t typeLength, std::span<const std::uint8_t> data) {
  if (data.data() == nullptr) {
    return Fail("CFru::Display", "Unexpected", fru_status::kUnexpected);
  }
  Print(" %-17s", label);
  switch (FruDefs::DecodeType(typeLength)) {
    case FruFieldType::Binary:
      PrintText("(binary)      = ");
      for (std::uint8_t byte : data) Print("%02X ", byte);
      break;
    case FruFieldType::BcdPlus:
      PrintBcdPlus(data);
      [[fallthrough]];
    case FruFieldType::SixBitAscii:
      Print("(6 bit ASCII) = %s", UnpackSixBitAscii(data));
      break;
    case FruFieldType::Text:
      Print("(ASCII)       = %s", UpToNul(std::string(data.begin(), data.end())));
      break;
  }
  PrintText("\n");
  return kSuccess;
}

/// The fields of the layout's rows, then the custom fields.
Status PrintFields(const InfoArea& info) {
  Status status = kSuccess;
  auto print = [&](const char* label, std::uint8_t typeLength, std::span<const std::uint8_t> data) {
    if (typeLength == FruDefs::kEndOfFields) {
      PrintText("END OF FIELDS CODE\n");
      return false;
    }
    status = PrintField(label, typeLength, data);
    return status == kSuccess;
  };
  std::uint32_t index = info.Layout().FirstRowIndex();
  for (const InfoFieldRow& row : info.Layout().fields) {
    std::span<const std::uint8_t> data;
    (void)info.GetFieldData(index, data);
    if (!print(row.label, info.GetFieldTypeLength(index++), data)) return status;
  }
  for (const InfoArea::CustomField& field : info.CustomFields())
    if (!print(kCustomLabel, field.typeLength, field.Bytes())) return status;
  return kSuccess;
}

void ShowHeader(const CFruHeader& header) {
  PrintText("\nDisplaying Header Area \n");
  Print("Common Header Area (Version %d, Length %d)\n", header.FormatVersion(), header.GetLength());
  for (const HeaderLine& line : kHeaderLines)
    Print("%-31s= %02Xh\n", line.label, header.GetData()[line.index]);
}

Status ShowInternalUse(CFru& fru) {
  PrintText("Displaying Internal Use Area \n");
  if (!fru.HasInternalArea()) {
    PrintText("Internal Use Information Area not present in FRU Device\n\n");
    return kSuccess;
  }
  std::span<const std::uint8_t> bytes = fru.InternalUse().GetData();
  Print("Internal Information Area (Version %d, Length %d)\n", bytes.empty() ? 0 : bytes[0] & 0x0F,
        bytes.size());
  PrintBytes(bytes);
  return kSuccess;
}

Status ShowChassis(CFru& fru) {
  PrintText("Display Chassis Area \n");
  if (!fru.HasChassisArea()) {
    PrintText("Chassis Information Area not present in FRU Device\n\n");
    return kSuccess;
  }
  const CChassisInfoArea& chassis = fru.Chassis();
  Print("Chassis Information Area (Version %d, Length %d)\n", chassis.GetFormatVersion(),
        chassis.GetLength());
  Print(kByteLine, "Chassis Type", chassis.GetType());
  return PrintFields(chassis);
}

/// The start of a board or product area; false when there is nothing more to show of it.
bool ShowVersionedArea(bool isPresent, const char* name, const InfoArea& info, std::uint8_t languageCode) {
  Print("Display %s Area \n", name);
  if (!isPresent) {
    Print("%s Information Area not present in FRU Device\n\n", name);
    return false;
  }
  if (info.GetFormatVersion() != kShownVersion) {
    PrintText("EEPROM not initialized\n");
    return false;
  }
  Print(kByteLine, "Unicode Country Base", languageCode);
  return true;
}

Status ShowBoard(CFru& fru) {
  const CBoardInfoArea& board = fru.Board();
  if (!ShowVersionedArea(fru.HasBoardArea(), "Board", board, board.GetLanguageCode())) return kSuccess;
  auto minutes = static_cast<std::uint32_t>(NumberAt(board.GetMfgDateTime(), 0, 3));
  Print(" %-31s= %lu\n", "Manufacturing Time(mins)", minutes);
  return PrintFields(board);
}

Status ShowProduct(CFru& fru) {
  const CProductInfoArea& product = fru.Product();
  if (!ShowVersionedArea(fru.HasProductArea(), "Product", product, product.GetLanguageCode()))
    return kSuccess;
  return PrintFields(product);
}

Status ShowMultiRec(CFru& fru) {
  PrintText("Display MultiRecord Area \n");
  if (!fru.HasMultiRecArea()) {
    PrintText("MultiRecord Area not present in FRU Device\n\n");
    return kSuccess;
  }
  MultiRecordList& records = fru.MultiRecords();
  Print("MultiRecord Area (Version %d, Length %d)\n",
        records.IsEmpty() ? 0 : records.begin()->FormatVersion(), fru.MultiRecLength());
  // By the number under which scripts know a record.
  std::uint32_t number = 0;
  for (const MultiRecord& record : records) {
    Print(" Record %d (Type %02Xh, Version %d, Length %d)\n", ++number, record.Type(), record.FormatVersion(),
          record.Length());
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
  FruOutput().PrintAddress("", address_);
  ShowHeader(header_);
  for (auto show : {ShowInternalUse, ShowChassis, ShowBoard, ShowProduct, ShowMultiRec}) {
    if (!AskToGoOn()) return kSuccess;
    if (Status status = show(*this); status != kSuccess) return status;
  }
  (void)AskToGoOn();
  return kSuccess;
}

}  // namespace varnok
