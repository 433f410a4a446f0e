#include "sdr/read_file.h"

#include <algorithm>

#include "app/services/text.h"
#include "app/services/trace.h"
#include "platform/smbios.h"
#include "sdr/file_keys.h"
#include "sdr/record_lists.h"

namespace varnok {
namespace {

constexpr std::string_view kCommentMarker = "//";
constexpr char kQuote = '\'';

constexpr const char* kReadRecord = "SdrReadFile::ReadRecFromFile";
constexpr const char* kReadRecords = "SdrReadFile::ReadSdrRecordsFromFile";

void SetMessage(const char* format, std::uint32_t line) {
  SmbiosFormat(TheSdr().lastError, format, line);
}

void SetNotFound(std::string_view token) {
  SmbiosFormat(TheSdr().lastError, "Invalid file: Token %s not found.\n", token);
}

/// Puts the last-error text back: a search that may well find nothing is no error of the file.
class MessageKeeper {
 public:
  MessageKeeper() : text_(TheSdr().lastError) {}
  void Restore() const { TheSdr().lastError = text_; }

 private:
  std::array<char16_t, SdrState::kMessageCapacity> text_;
};

/// Reads and counts a line and cuts its comment. kCannotReadFile with the message.
Status ReadLine(SdrFileLines& file, const char* operation, std::string_view& line) {
  std::uint32_t& counter = TheSdr().lineCounter;
  if (!file.Read(line)) {
    SetMessage("Invalid file: Unable to read line #%d.\n", counter);
    return Fail(operation, "Error Reading File", sdr_status::kCannotReadFile);
  }
  ++counter;
  line = line.substr(0, line.find(kCommentMarker));
  return kSuccess;
}

/// The value behind a token that stands at `found`. Kept: behind the separator a blank is skipped only while
/// the line has a blank as far from its own start as it stands from the token's: any number of them for a key
/// that starts its line, seldom one for an indented key. Files are written with that in mind.
std::string ValueBehind(std::string_view line, std::size_t found, std::size_t tokenLength) {
  std::string_view fromToken = line.substr(found);
  std::size_t start = tokenLength + 1;
  while (start < fromToken.size() && IsBlank(fromToken[start]) && IsBlank(line[start])) ++start;
  return start < fromToken.size() ? std::string(fromToken.substr(start)) : std::string();
}

bool EndsBlock(std::string_view line) {
  return line.find(')') != std::string_view::npos && line.find(kQuote) == std::string_view::npos;
}

enum class Range { Block, Record };

Status Search(SdrFileLines& file, const char* operation, std::string_view token, Range range,
              std::string& value) {
  for (;;) {
    if (range == Range::Block && file.IsAtEnd()) return sdr_status::kHeaderKeyMissing;
    std::string_view line;
    if (Status status = ReadLine(file, operation, line); status != kSuccess) return status;
    if (std::size_t found = line.find(token); found != std::string_view::npos) {
      value = ValueBehind(line, found, token.size());
      return kSuccess;
    }
    bool isNextRecord = range == Range::Record && line.find(sdr_key::kType) != std::string_view::npos;
    if (isNextRecord || EndsBlock(line)) {
      SetNotFound(token);
      return sdr_status::kTokenNotFound;
    }
    if (range == Range::Record && file.IsAtEnd()) return sdr_status::kHeaderKeyMissing;
  }
}

/// Adds the bytes of one line. False for a text without its closing quote.
bool ScanBytes(std::string_view line, std::vector<std::uint8_t>& bytes) {
  if (line.empty() || line[0] == '\r' || line[0] == '\n') return true;
  while (!line.empty() && IsBlank(line[0])) line.remove_prefix(1);
  if (!line.empty() && line[0] == kQuote) {
    std::size_t end = line.find(kQuote, 1);
    if (end == std::string_view::npos) return false;
    bytes.insert(bytes.end(), line.begin() + 1, line.begin() + end);
    return true;
  }
  std::size_t i = 0;
  while (i < line.size()) {
    int digit = HexDigitValue(line[i++]);
    if (digit < 0) continue;
    int next = i < line.size() ? HexDigitValue(line[i]) : -1;
    bytes.push_back(static_cast<std::uint8_t>(next < 0 ? digit : digit << 4 | next));
    ++i;
  }
  return true;
}

Status ReadTags(SdrFileLines& file, SdrTagList& tags) {
  for (;;) {
    MessageKeeper message;
    std::size_t position = file.Position();
    std::string value;
    if (SdrReadFile::FIL_SearchForTokenWithinRecord(file, sdr_key::kTag, value) != kSuccess) {
      file.SetPosition(position);
      message.Restore();
      return kSuccess;
    }
    std::string_view tag = std::string_view(value).substr(std::min<std::size_t>(1, value.size()));
    tags.emplace_back(tag.substr(0, tag.find(kQuote)));
  }
}

Status ReadBytes(SdrFileLines& file, std::uint32_t count, std::vector<std::uint8_t>& record) {
  TheSdr().lineCounter = 0;
  while (record.size() < count) {
    std::string_view line;
    if (Status status = ReadLine(file, kReadRecord, line); status != kSuccess) return status;
    if (!ScanBytes(line, record)) {
      SetMessage("Invalid file: Missing terminator line #%d.\n", TheSdr().lineCounter);
      return Fail(kReadRecord, "Error - Unterminated String", sdr_status::kUnterminatedText);
    }
  }
  return kSuccess;
}

Status CheckRecord(std::span<const std::uint8_t> record, std::uint32_t type, std::uint32_t count) {
  constexpr std::size_t kTypeByte = 3;
  if (record.size() <= kTypeByte || record[kTypeByte] != type) {
    SetMessage("Invalid file: SDR Record type incorrect line #%d.\n", TheSdr().lineCounter);
    return Fail(kReadRecord, "Record Types don't match", sdr_status::kFileType);
  }
  if (record.size() != count) {
    SetMessage("Invalid file: SDR Record length incorrect line #%d.\n", TheSdr().lineCounter);
    return Fail(kReadRecord, "Bad Record Length", sdr_status::kFileLength);
  }
  return kSuccess;
}

/// Reads the next record of the file into its list.
Status LoadRecord(SdrFileLines& file, SdrTypeList& lists) {
  std::vector<std::uint8_t> record;
  SdrTagList tags;
  Status status = SdrReadFile::ReadRecFromFile(file, record, tags);
  if (status == sdr_status::kTokenNotFound)
    return Fail(kReadRecords, "Invalid SDR File", sdr_status::kBadRecordInFile);
  if (status != kSuccess) return status;
  PoolPtr<CSdr> object;
  if (status = SdrUtility::MakeRecord(record, tags, object); status != kSuccess) return status;
  lists[SdrUtility::PositionOfType(record[3])].push_back(std::move(object));
  return kSuccess;
}

}  // namespace

std::uint32_t SdrUtility::AHextoUINT32(std::string_view text) {
  TraceScope scope("SdrUtility::AHextoUINT32");
  std::uint32_t number = 0;
  for (char character : text) {
    int digit = HexDigitValue(character);
    if (digit < 0) break;
    number = number << 4 | static_cast<std::uint32_t>(digit);
  }
  return number;
}

Status SdrReadFile::FIL_SearchForToken(SdrFileLines& file, std::string_view token, std::string& value) {
  TraceScope scope("SdrReadFile::FIL_SearchForToken");
  return Search(file, "SdrReadFile::FIL_SearchForToken", token, Range::Block, value);
}

Status SdrReadFile::FIL_SearchForTokenWithinRecord(SdrFileLines& file, std::string_view token,
                                                   std::string& value) {
  TraceScope scope("SdrReadFile::FIL_SearchForTokenWithinRecord");
  return Search(file, "SdrReadFile::FIL_SearchForTokenWithinRecord", token, Range::Record, value);
}

Status SdrReadFile::FIL_CheckSDRFileHeader(SdrFileLines& file) {
  TraceScope scope("SdrReadFile::FIL_CheckSDRFileHeader");
  for (std::string_view key : sdr_key::kHeader) {
    std::string value;
    Status status = FIL_SearchForToken(file, key, value);
    if (status == sdr_status::kTokenNotFound || status == sdr_status::kHeaderKeyMissing) {
      // The end of the file is named by the key that it came before.
      SetNotFound(key);
      return sdr_status::kHeaderKeyMissing;
    }
    if (status != kSuccess) return status;
  }
  return kSuccess;
}

Status SdrReadFile::FIL_CountIPMI10SDRTypes(SdrFileLines& file, const SdrTypeOrder& typeOrder,
                                            SdrTypeCounts& counts, std::uint32_t& total) {
  constexpr const char* kName = "SdrReadFile::FIL_CountIPMI10SDRTypes";
  TraceScope scope(kName);
  counts.fill(0);
  total = 0;
  for (;;) {
    MessageKeeper message;
    std::size_t position = file.Position();
    std::uint32_t line = TheSdr().lineCounter;
    std::string value;
    Status status = FIL_SearchForToken(file, sdr_key::kType, value);
    if (status == sdr_status::kTokenNotFound) {
      message.Restore();
      return kSuccess;
    }
    if (status != kSuccess) return status;
    auto type = std::find(typeOrder.begin(), typeOrder.end(), SdrUtility::AHextoUINT32(value));
    if (type == typeOrder.end()) {
      file.SetPosition(position);
      TheSdr().lineCounter = line;
      SetMessage("Invalid file: Unsupported record type line #%d.\n", line);
      return Fail(kName, "SDR Type Not Supported", sdr_status::kFileTypeNotSupported);
    }
    ++counts[static_cast<std::size_t>(type - typeOrder.begin())];
    ++total;
  }
}

Status SdrReadFile::ReadRecFromFile(SdrFileLines& file, std::vector<std::uint8_t>& record, SdrTagList& tags) {
  TraceScope scope(kReadRecord);
  std::string value;
  if (Status status = FIL_SearchForToken(file, sdr_key::kType, value); status != kSuccess) return status;
  std::uint32_t type = SdrUtility::AHextoUINT32(value);
  if (Status status = ReadTags(file, tags); status != kSuccess) return status;
  if (Status status = FIL_SearchForTokenWithinRecord(file, sdr_key::kLength, value); status != kSuccess)
    return status;
  std::uint32_t count = SdrUtility::AHextoUINT32(value);
  if (count == 0) return Fail(kReadRecord, "Invalid SDR File", sdr_status::kBadRecordInFile);
  if (Status status = ReadBytes(file, count, record); status != kSuccess) return status;
  return CheckRecord(record, type, count);
}

Status SdrReadFile::ReadSdrRecordsFromFile(SdrFileLines& file, SdrTypeList& lists) {
  TraceScope scope(kReadRecords);
  if (Status status = FIL_CheckSDRFileHeader(file); status != kSuccess) return status;
  std::size_t position = file.Position();
  std::uint32_t line = TheSdr().lineCounter;
  SdrTypeCounts counts;
  std::uint32_t total = 0;
  if (Status status = FIL_CountIPMI10SDRTypes(file, kSdrTypeOrder, counts, total); status != kSuccess)
    return status;
  file.SetPosition(position);
  TheSdr().lineCounter = line;
  for (std::uint32_t read = 0; read < total; ++read)
    if (Status status = LoadRecord(file, lists); status != kSuccess) return status;
  return kSuccess;
}

}  // namespace varnok
