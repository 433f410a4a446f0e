#include "cfg/file_cfg.h"

#include <algorithm>

#include "app/services/text.h"
#include "app/services/trace.h"

namespace varnok {
namespace {

constexpr std::string_view kCommentMarker = "//";

}  // namespace

CFileCfg::CFileCfg(std::string_view path) {
  TraceScope scope("CFileCfg::CFileCfg");
  if (Load(path) != kSuccess) {
    Trace("CFileCfg::CFileCfg - Unable to read file %s", 1, path);
    return;
  }
  CutAt(kCommentMarker);
  Trim();
}

bool CFileCfg::EndOfFile() const {
  TraceScope scope("CFileCfg::EndOfFile");
  return IsAtEnd();
}

bool CFileCfg::IsLineEmpty() const {
  TraceScope scope("CFileCfg::IsLineEmpty");
  return CurrentLine().empty();
}

std::uint32_t CFileCfg::GetCurrentLineNumber() const {
  TraceScope scope("CFileCfg::GetCurrentLineNumber");
  return currentLine_;
}

void CFileCfg::SetCurrentLineNumber(std::uint32_t line) {
  TraceScope scope("CFileCfg::SetCurrentLineNumber");
  if (line < LineCount()) currentLine_ = line;
  currentColumn_ = 0;
}

bool CFileCfg::GetFirstInput(std::string_view& keyword, std::size_t size) {
  TraceScope scope("CFileCfg::GetFirstInput");
  if (currentColumn_ != 0) ++currentLine_;
  currentColumn_ = 0;
  while (!IsAtEnd() && CurrentLine().empty()) ++currentLine_;
  if (IsAtEnd()) {
    TraceFailure("CFileCfg::GetFirstInput", "EOF detected");
    return false;
  }
  std::string_view line = CurrentLine();
  auto end = std::find_if(line.begin(), line.end(), IsBlank);
  currentColumn_ = static_cast<std::size_t>(end - line.begin());
  if (currentColumn_ == 0 || currentColumn_ >= size) {
    TraceFailure("CFileCfg::GetFirstInput", "the buffer passed is not sufficient");
    return false;
  }
  keyword = line.substr(0, currentColumn_);
  return true;
}

bool CFileCfg::GetNextInput(std::string_view& argument, std::size_t size) {
  TraceScope scope("CFileCfg::GetNextInput");
  if (IsAtEnd()) {
    TraceFailure("CFileCfg::GetNextInput", "EOF detected");
    return false;
  }
  std::string_view line = CurrentLine();
  std::size_t start = std::min(currentColumn_, line.size());
  while (start < line.size() && IsBlank(line[start])) ++start;
  bool isQuoted = start < line.size() && line[start] == '"';
  if (isQuoted) ++start;
  std::size_t end =
      std::min(isQuoted ? line.find('"', start) : line.find_first_of(" \t", start), line.size());
  currentColumn_ = isQuoted && end < line.size() ? end + 1 : end;
  // The room is tested against the column, not against the argument's length.
  if (end == start || currentColumn_ >= size) {
    TraceFailure("CFileCfg::GetNextInput", "No data to copy or buffer provided is not sufficient to copy");
    return false;
  }
  argument = line.substr(start, end - start);
  return true;
}

bool CFileCfg::GetRemainingLine(std::string_view& rest, std::size_t size) const {
  TraceScope scope("CFileCfg::GetRemainingLine");
  std::string_view line = CurrentLine();
  if (IsAtEnd() || line.empty()) {
    TraceFailure("CFileCfg::GetRemainingLine", "EOF detected");
    return false;
  }
  std::string_view remaining = line.substr(std::min(currentColumn_, line.size()));
  if (remaining.size() >= size) {
    TraceFailure("CFileCfg::GetRemainingLine", "the buffer passed is not sufficient");
    return false;
  }
  rest = remaining;
  return true;
}

}  // namespace varnok
