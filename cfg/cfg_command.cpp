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

Status CCfgCommand::ReadFromFile(CFileCfg& file) {
  TraceScope scope("CCfgCommand::ReadFromFile");
  std::string rest;
  if (ReadLineFromFile(file, rest)) return kSuccess;
  CCfgParser::SetLastError(cfg_message::kReadFailed);
  Trace("CCfgCommand::ReadFromFile - Failed to parse the configuration file", 1);
  return cfg_status::kBadLine;
}

bool CCfgCommand::ReadLineFromFile(CFileCfg& file, std::string& text, std::size_t size) {
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

bool CCfgCommand::GetNextInput(std::string_view& cursor, std::string& token) {
  TraceScope scope("CCfgCommand::GetNextInput");
  token.clear();
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
  token.assign(cursor.begin(), end);
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
  std::u16string word;
  return Scan(text, "%s", &word) != 1;
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
  return CommandName(type_);
}

Status CCfgCommand::MissingParameter(const char* which, Status status, const char* name) {
  CCfgParser::SetLastError(cfg_message::kMissingParameter, name != nullptr ? name : GetDisplayName(), which);
  Trace("CCfgCommand::ReadFromFile - Missing %s parameter", 1, which);
  return status;
}

Status CCfgCommand::RefuseExtra(std::string_view cursor, Status status, const char* name) {
  if (IsBufferEmpty(cursor)) return kSuccess;
  CCfgParser::SetLastError(cfg_message::kTooManyParameters, name != nullptr ? name : GetDisplayName(),
                           SkipBlanks(cursor));
  Trace("CCfgCommand::ReadFromFile - Too many parameters", 1);
  return status;
}

Status CCfgCommand::ReadOneParameter(CFileCfg& file, std::string& parameter, Status extraStatus) {
  std::string rest;
  if (!ReadLineFromFile(file, rest)) return cfg_status::kBadLine;
  std::string_view cursor = rest;
  if (!GetNextInput(cursor, parameter)) return MissingParameter("first", cfg_status::kBadLine);
  return RefuseExtra(cursor, extraStatus);
}

}  // namespace varnok
