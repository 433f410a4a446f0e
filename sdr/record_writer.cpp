// The writer of SDR files: appends one record in the layout that the reader takes.
#include <algorithm>
#include <memory>

#include "app/services/format.h"
#include "app/services/text.h"
#include "sdr/file_keys.h"
#include "sdr/method_trace.h"
#include "sdr/record.h"

namespace varnok {
namespace {

constexpr std::size_t kTagLength = 17;
constexpr std::size_t kLongestText = 256;
constexpr const char* kByteLine = "   %02x                 %s %s\n";
constexpr const char* kWordLine = "   %04x               %s %s\n";
constexpr const char* kTripleLine = "   %06x             %s %s\n";
constexpr const char* kTextLine = "   '%s'     %s %s\n";
constexpr const char* kBytesLine = "   %s       %s %s\n";
constexpr const char* kComment = "//";

/// Whether the reader takes the bytes back from between quotes: no quote, line end or comment among them.
bool CanBeQuoted(std::span<const std::uint8_t> bytes) {
  std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  return text.find_first_of("'\n") == std::string_view::npos && text.find("//") == std::string_view::npos;
}

std::string BytesLine(std::span<const std::uint8_t> bytes, const char* label, bool isText) {
  if (isText && CanBeQuoted(bytes))
    return Format(kTextLine, std::string(bytes.begin(), bytes.end()), kComment, label);
  std::string groups;
  for (std::uint8_t byte : bytes) groups += Format("%02x ", byte);
  return Format(kBytesLine, groups, kComment, label);
}

bool HoldsByte(const SdrFieldRow& row, std::size_t byte) {
  return std::any_of(row.place.begin(), row.place.end(),
                     [byte](const SdrBits& part) { return part.byte != 0 && part.byte == byte; });
}

}  // namespace

Status CSdr::wfprintf(File& file, std::string_view text) {
  constexpr const char* kName = "CSdr::wfprintf";
  TraceScope scope(kName);
  text = text.substr(0, kLongestText);
  bool isWritten = !text.empty() && file.Write(std::span(reinterpret_cast<const std::uint8_t*>(text.data()),
                                                         text.size())) == kSuccess;
  return isWritten ? kSuccess : Fail(kName, "Error Writing File", sdr_status::kCannotWriteFile);
}

Status CSdr::WriteRecHdr(File& file) const {
  TraceScope scope("CSdr::WriteRecHdr");
  std::vector<std::string> lines{"\n", Format("%-.20s %02x\n", sdr_key::kType, header_.type)};
  for (const std::string& tag : tags_)
    lines.push_back(Format("%-.20s '%s'\n", sdr_key::kTag, tag.substr(0, kTagLength)));
  std::uint32_t size = header_.length + static_cast<std::uint32_t>(SdrRecordHeader::kSize);
  lines.push_back(Format("%-.20s %04x\n", sdr_key::kLength, size));
  lines.emplace_back("\n");
  lines.emplace_back("   // Sensor Record Header\n");
  lines.push_back(Format(kWordLine, header_.recordId, kComment, kHeaderRows[0].title));
  lines.push_back(Format(kByteLine, header_.version, kComment, kHeaderRows[1].title));
  lines.push_back(Format(kByteLine, header_.type, kComment, kHeaderRows[2].title));
  lines.push_back(Format(kByteLine, header_.length, kComment, kHeaderRows[3].title));
  lines.emplace_back("\n");
  for (const std::string& line : lines)
    if (Status status = wfprintf(file, line); status != kSuccess) return status;
  return kSuccess;
}

/// The titles of all fields that share the byte, reserved bits left out.
std::string CSdrByRows::LabelOfByte(std::size_t byte) const {
  std::string label;
  std::string_view last;
  for (const SdrFieldRow& row : type_.rows) {
    bool isNamed = HoldsByte(row, byte) && (row.show != SdrShow::Reserved || row.place[0].IsWholeByte());
    // A field that the type's list names twice is one byte of the record all the same.
    const char* title = type_.rows.Text(row.title);
    if (!isNamed || title == last) continue;
    if (!label.empty()) label += ", ";
    label += last = title;
  }
  return label;
}

Status CSdrByRows::WriteRowAt(File& file, std::size_t& byte) const {
  auto row = std::find_if(type_.rows.begin(), type_.rows.end(),
                          [byte](const SdrFieldRow& each) { return HoldsByte(each, byte); });
  std::string line;
  std::size_t count = 1;
  switch (row == type_.rows.end() ? SdrShow::Byte : row->show) {
    case SdrShow::Word:
    case SdrShow::SwappedWord:
    case SdrShow::Mask:
    case SdrShow::SettableMask:
      // The most significant digit first, although the record has the low byte first: a reader swaps the
      // bytes.
      count = 2;
      line = Format(kWordLine, Number(row->place), kComment, TitleOf(*row));
      break;
    case SdrShow::Triple:
      count = 3;
      line = Format(kTripleLine, Number(row->place), kComment, TitleOf(*row));
      break;
    case SdrShow::Guid:
      count = BytesFrom(byte).size();
      line = BytesLine(BytesFrom(byte), TitleOf(*row), false);
      break;
    case SdrShow::IdString:
    case SdrShow::OemData:
      count = BytesFrom(byte).size();
      line = BytesLine(BytesFrom(byte), TitleOf(*row), row->show == SdrShow::IdString || IsOemText());
      break;
    default:
      line = Format(kByteLine, raw_[byte - 1], kComment, LabelOfByte(byte));
  }
  byte += count;
  return wfprintf(file, line);
}

Status CSdrByRows::WriteBytes(File& file) const {
  if (type_.lastKeyByte != 0) {
    if (Status status = wfprintf(file, "   // Record Key Bytes\n"); status != kSuccess) return status;
  }
  std::size_t byte = SdrRecordHeader::kSize + 1;
  while (byte <= type_.lastKeyByte)
    if (Status status = WriteRowAt(file, byte); status != kSuccess) return status;
  if (type_.lastKeyByte != 0) {
    if (Status status = wfprintf(file, "\n"); status != kSuccess) return status;
  }
  if (Status status = wfprintf(file, "   // Record Body Bytes\n"); status != kSuccess) return status;
  while (byte <= raw_.size())
    if (Status status = WriteRowAt(file, byte); status != kSuccess) return status;
  return kSuccess;
}

Status CSdrByRows::WriteRecordToFile(std::u16string_view fileName) {
  MethodTrace trace(type_.className, "WriteRecordToFile");
  if (!isDecoded_) return trace.Fail("SDR Type Not Decoded", sdr_status::kNotDecoded);
  std::unique_ptr<File> file;
  bool isWritten = TheFirmware().OpenFile(fileName, FileMode::Append, file) == kSuccess &&
                   WriteRecHdr(*file) == kSuccess && WriteBytes(*file) == kSuccess;
  return isWritten ? kSuccess : trace.Fail("Error Writing File", sdr_status::kCannotWriteFile);
}

}  // namespace varnok
