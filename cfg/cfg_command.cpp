#include "cfg/cfg_command.h"

#include <algorithm>
#include <array>
#include <span>

#include "app/services/scan.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"
#include "cfg/messages.h"

namespace varnok {
namespace {

bool IsWordCharacter(char character) {
  return character >= 33 && character <= 126;
}

/// What the cursor points at, for the log of a line that could not be split.
bool RefuseArgument(std::string_view rest, int reason) {
  constexpr std::size_t kDumpLength = 8;
  Trace("CCfgCommand::GetNextInput - Buffer parser error(%d)", 1, reason);
  std::array<std::uint8_t, kDumpLength> bytes{};
  std::copy_n(rest.begin(), std::min(rest.size(), kDumpLength), bytes.begin());
  TraceHexDump("Buffer p_buff[]", bytes, kDumpLength);
  return false;
}

std::string_view SkipBlanks(std::string_view text) {
  std::size_t start = std::min(text.find_first_not_of(" \t"), text.size());
  return text.substr(start);
}

}  // namespace

void CCfgCommand::Adopt(const CommandRow* row, CCfgParser* parser, std::uint32_t line) {
  row_ = row;
  parser_ = parser;
  line_ = line;
}

std::string_view CCfgCommand::Parameters() const {
  std::string_view line = parser_ != nullptr ? parser_->Line(line_) : std::string_view();
  line.remove_prefix(
      static_cast<std::size_t>(std::find_if(line.begin(), line.end(), IsBlank) - line.begin()));
  return SkipBlanks(line);
}

Status CCfgCommand::ReadFromFile(CFileCfg& file) {
  constexpr const char* kName = "CCfgCommand::ReadFromFile";
  TraceScope scope(kName);
  std::string_view rest;
  if (ReadLineFromFile(file, rest)) return kSuccess;
  CCfgParser::SetLastError(cfg_message::kReadFailed);
  return Fail(kName, "Failed to parse the configuration file", cfg_status::kBadLine);
}

bool CCfgCommand::ReadLineFromFile(CFileCfg& file, std::string_view& text, std::size_t size) {
  TraceScope scope("CCfgCommand::ReadLineFromFile");
  if (parser_ == nullptr) {
    CCfgParser::SetLastError(cfg_message::kReadFailed);
    Trace("CCfgCommand::ReadLineFromFile - Value of mp_parser is NULL", 2);
    return false;
  }
  if (!file.GetRemainingLine(text, size)) {
    std::size_t length = file.CurrentLine().size();
    CCfgParser::SetLastError(cfg_message::kLineTooLong, length);
    Trace("CCfgCommand::ReadLineFromFile - Too many characters on the line: %d", 2, length);
    return false;
  }
  if (std::count(text.begin(), text.end(), '"') % 2 != 0) {
    CCfgParser::SetLastError(cfg_message::kOddQuotes);
    Trace("CCfgCommand::ReadLineFromFile - Invalid number of quotes in line", 2);
    return false;
  }
  return true;
}

bool CCfgCommand::GetNextInput(std::string_view& cursor, std::string_view& token) {
  TraceScope scope("CCfgCommand::GetNextInput");
  token = {};
  if (cursor.empty()) return RefuseArgument(cursor, 3);
  cursor = SkipBlanks(cursor);
  if (!cursor.empty() && cursor.front() == '"') {
    int first = FindCharacter(cursor, '"', 1, kLineCapacity);
    int second = FindCharacter(cursor, '"', 2, kLineCapacity);
    if (first < 0 || second < 0) return false;
    token = cursor.substr(static_cast<std::size_t>(first) + 1, static_cast<std::size_t>(second - first) - 1);
    cursor.remove_prefix(static_cast<std::size_t>(second) + 1);
    return true;
  }
  if (cursor.empty() || !IsWordCharacter(cursor.front())) return RefuseArgument(cursor, 3);
  if (cursor.starts_with("//")) return RefuseArgument(cursor, 2);
  auto end = std::find_if_not(cursor.begin(), cursor.end(), IsWordCharacter);
  token = cursor.substr(0, static_cast<std::size_t>(end - cursor.begin()));
  if (token.empty()) return RefuseArgument(cursor, 1);
  cursor.remove_prefix(token.size());
  return true;
}

bool CCfgCommand::StringToInt(std::string_view text, std::uint32_t& value) {
  TraceScope scope("CCfgCommand::StringToInt");
  std::uint32_t number = 0;
  char16_t extra = 0;
  if (Scan(text, "%x%c", &number, &extra) != 1) {
    Trace("CCfgCommand::StringToInt - %s is not a hexadecimal number", 1, text);
    return false;
  }
  value = number;
  return true;
}

bool CCfgCommand::StringToInt(std::string_view text, std::uint8_t& value) {
  std::uint32_t number = 0;
  if (!StringToInt(text, number)) return false;
  value = static_cast<std::uint8_t>(number);
  return true;
}

bool CCfgCommand::StringToDec(std::string_view text, std::int32_t& value) {
  TraceScope scope("CCfgCommand::StringToDec");
  if (Scan(text, "%d", &value) == 1) return true;
  Trace("CCfgCommand::StringToDec - %s is not a decimal number", 1, text);
  return false;
}

bool CCfgCommand::IsBufferEmpty(std::string_view text) {
  TraceScope scope("CCfgCommand::IsBufferEmpty");
  return text.find_first_not_of(" \t\n\v\f\r") == std::string_view::npos;
}

int CCfgCommand::FindCharacter(std::string_view text, char character, int occurrence, std::size_t length) {
  constexpr const char* kName = "CCfgCommand::FindCharacter";
  Trace("%s [ENTRY]", 3, kName);
  std::string_view searched = UpToNul(text.substr(0, length));
  for (std::size_t i = 0; i < searched.size(); ++i) {
    if (searched[i] != character || --occurrence != 0) continue;
    Trace("%s [EXIT]", 3, kName);
    return static_cast<int>(i);
  }
  Trace("%s [EXIT]- Character not found", 3, kName);
  return -1;
}

const char* CCfgCommand::GetDisplayName() const {
  TraceScope scope("CCfgCommand::GetDisplayName");
  return row_ != nullptr ? row_->name : nullptr;
}

Status CCfgCommand::ReadLine(const char* operation, CFileCfg& file, std::string_view& text) {
  if (ReadLineFromFile(file, text)) return kSuccess;
  Trace("%s - Unable to read the line", 1, operation);
  return cfg_status::kBadLine;
}

Status CCfgCommand::MissingParameter(const char* operation, const char* which, Status status,
                                     const char* name) const {
  CCfgParser::SetLastError(cfg_message::kMissingParameter, name != nullptr ? name : GetDisplayName(), which);
  Trace("%s - Missing %s parameter", 1, operation, which);
  return status;
}

Status CCfgCommand::RefuseExtra(const char* operation, std::string_view cursor, Status status,
                                const char* name) const {
  if (IsBufferEmpty(cursor)) return kSuccess;
  CCfgParser::SetLastError(cfg_message::kTooManyParameters, name != nullptr ? name : GetDisplayName(),
                           SkipBlanks(cursor));
  Trace("%s - Too many parameters", 1, operation);
  return status;
}

Status CCfgCommand::ReadOneParameter(const char* operation, CFileCfg& file, Status extraStatus) {
  std::string_view cursor, parameter;
  if (Status status = ReadLine(operation, file, cursor); status != kSuccess) return status;
  if (!GetNextInput(cursor, parameter)) return MissingParameter(operation, "first", cfg_status::kBadLine);
  return RefuseExtra(operation, cursor, extraStatus);
}

bool CCfgCommand::TakeArgument(std::string_view& cursor, std::string_view& argument) {
  cursor = SkipBlanks(cursor);
  bool isQuoted = cursor.starts_with('"');
  if (isQuoted) cursor.remove_prefix(1);
  auto end = isQuoted ? std::find(cursor.begin(), cursor.end(), '"')
                      : std::find_if_not(cursor.begin(), cursor.end(), IsWordCharacter);
  argument = cursor.substr(0, static_cast<std::size_t>(end - cursor.begin()));
  cursor.remove_prefix(std::min(argument.size() + (isQuoted ? 1 : 0), cursor.size()));
  return isQuoted || !argument.empty();
}

std::string_view CCfgCommand::FirstParameter() const {
  std::string_view cursor = Parameters(), argument;
  TakeArgument(cursor, argument);
  return argument;
}

}  // namespace varnok
