#include "app/services/text_file.h"

#include <array>
#include <utility>

#include "app/services/console.h"
#include "app/services/text.h"

namespace varnok {
namespace {

// Far above any file that people write, far below what would exhaust a board.
constexpr std::size_t kLargestFile = 64 << 20;

/// Editors put a mark in front of text that is not 8-bit; the mark is no part of any keyword.
void WarnOfMark(std::string_view name, std::string_view text) {
  static constexpr std::array<std::pair<std::string_view, const char*>, 3> kMarks{
      {{"\xEF\xBB\xBF", "UTF-8"}, {"\xFF\xFE", "UTF-16"}, {"\xFE\xFF", "UTF-16"}}};
  for (const auto& [mark, encoding] : kMarks)
    if (text.starts_with(mark))
      Warn("%s begins with a mark of %s text: save the file as ANSI or ASCII", name, encoding);
}

}  // namespace

Status OpenTextFile(std::string_view name, std::unique_ptr<File>& file) {
  Status status = TheFirmware().OpenFile(Widen(name), FileMode::Read, file);
  if (status == uefi_status::kUnsupported) Warn("%s is a device or a pipe, not a file", name);
  if (status == uefi_status::kAccessDenied) Warn("%s is a folder, or may not be read", name);
  return status;
}

Status ReadTextFile(File& file, std::string_view name, std::string& text) {
  text.clear();
  std::array<std::uint8_t, 4096> block;
  Status status = kSuccess;
  for (std::size_t count = 1; count != 0;) {
    status = file.Read(block, count);
    if (status != kSuccess) break;
    if (text.size() + count > kLargestFile) {
      Warn("%s is larger than %u MiB", name, kLargestFile >> 20);
      text = {};
      return uefi_status::kBadBufferSize;
    }
    text.append(block.begin(), block.begin() + count);
  }
  WarnOfMark(name, text);
  return status;
}

}  // namespace varnok
