#include "app/services/prepared_text.h"

#include <algorithm>
#include <array>
#include <memory>
#include <span>
#include <utility>

#include "app/services/console.h"
#include "app/services/text.h"
#include "firmware/firmware.h"

namespace varnok {
namespace {

bool IsLineEnd(char character) {
  return character == '\r' || character == '\n';
}

// Far above any file that people write, far below what would exhaust a board.
constexpr std::size_t kLargestFile = 64 << 20;

/// Editors put a mark in front of text that is not 8-bit; the mark is no part of any keyword.
void WarnOfMark(std::string_view fileName, std::string_view text) {
  static constexpr std::array<std::pair<std::string_view, const char*>, 3> kMarks{
      {{"\xEF\xBB\xBF", "UTF-8"}, {"\xFF\xFE", "UTF-16"}, {"\xFE\xFF", "UTF-16"}}};
  for (const auto& [mark, encoding] : kMarks)
    if (text.starts_with(mark))
      Warn("%s begins with a mark of %s text: save the file as ANSI or ASCII", fileName, encoding);
}

}  // namespace

Status PreparedText::Load(std::string_view fileName) {
  isLoaded_ = false;
  text_.clear();
  lines_.clear();
  std::unique_ptr<File> file;
  if (Status status = TheFirmware().OpenFile(Widen(fileName), FileMode::Read, file); status != kSuccess) {
    if (status == uefi_status::kUnsupported) Warn("%s is a device or a pipe, not a file", fileName);
    return status;
  }
  std::string text;
  std::array<std::uint8_t, 4096> block;
  for (;;) {
    std::size_t count = 0;
    if (Status status = file->Read(block, count); status != kSuccess) return status;
    if (count == 0) break;
    if (text.size() + count > kLargestFile) {
      Warn("%s is larger than %u MiB", fileName, kLargestFile >> 20);
      return uefi_status::kBadBufferSize;
    }
    text.append(block.begin(), block.begin() + count);
  }
  WarnOfMark(fileName, text);
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
