#include "app/services/prepared_text.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "app/services/text.h"
#include "app/services/text_file.h"

namespace varnok {
namespace {

bool IsLineEnd(char character) {
  return character == '\r' || character == '\n';
}

}  // namespace

Status PreparedText::Load(std::string_view fileName) {
  isLoaded_ = false;
  text_.clear();
  lines_.clear();
  std::unique_ptr<File> file;
  if (Status status = OpenTextFile(fileName, file); status != kSuccess) return status;
  std::string text;
  if (Status status = ReadTextFile(*file, fileName, text); status != kSuccess) return status;
  Assign(std::move(text));
  return kSuccess;
}

void PreparedText::Assign(std::string text) {
  text_ = std::move(text);
  lines_.clear();
  isLoaded_ = true;
  std::size_t start = 0;
  while (start < text_.size()) {
    std::size_t end = start;
    while (end < text_.size() && !IsLineEnd(text_[end])) ++end;
    lines_.push_back({start, end - start});
    start = end + 1;
    bool isPair = start < text_.size() && IsLineEnd(text_[start]) && text_[start] != text_[end];
    if (isPair) ++start;
  }
}

std::string_view PreparedText::Line(std::size_t index) const {
  if (index >= lines_.size()) return {};
  return std::string_view(text_).substr(lines_[index].start, lines_[index].length);
}

bool PreparedText::LineContains(std::size_t index, std::string_view text) const {
  return Line(index).find(text) != std::string_view::npos;
}

std::optional<std::string_view> PreparedText::QuotedText(std::size_t index, char quote) const {
  std::string_view line = Line(index);
  std::size_t first = line.find(quote);
  if (first == std::string_view::npos) return std::nullopt;
  std::size_t second = line.find(quote, first + 1);
  if (second == std::string_view::npos) return std::nullopt;
  return line.substr(first + 1, second - first - 1);
}

void PreparedText::CutAt(std::string_view marker) {
  for (Extent& line : lines_) {
    std::size_t found = std::string_view(text_).substr(line.start, line.length).find(marker);
    line.length = std::min(line.length, found);
  }
}

void PreparedText::Trim() {
  for (Extent& line : lines_) {
    while (line.length > 0 && IsBlank(text_[line.start])) ++line.start, --line.length;
    while (line.length > 0 && IsBlank(text_[line.start + line.length - 1])) --line.length;
  }
}

void PreparedText::RemoveBlanks(std::size_t index) {
  if (index >= lines_.size()) return;
  auto begin = text_.begin() + static_cast<std::ptrdiff_t>(lines_[index].start);
  auto end = begin + static_cast<std::ptrdiff_t>(lines_[index].length);
  lines_[index].length = static_cast<std::size_t>(std::remove_if(begin, end, IsBlank) - begin);
}

}  // namespace varnok
