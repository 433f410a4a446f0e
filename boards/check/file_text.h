// A load file as numbered lines, to find the line that a reader's message is about.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "app/services/prepared_text.h"

namespace varnok::boards {

/// ASCII letters as capitals: tags, keywords and file names are compared so.
inline std::string Capitals(std::string_view text) {
  std::string capitals(text);
  for (char& character : capitals)
    if (character >= 'a' && character <= 'z') character = static_cast<char>(character - 'a' + 'A');
  return capitals;
}

class FileText {
 public:
  explicit FileText(const std::string& text) {
    lines_.Assign(text);
    lines_.CutAt("//");
    lines_.Trim();
  }

  std::size_t LineCount() const { return lines_.LineCount(); }
  /// Without comment and outer blanks; `line` counts from 1.
  std::string_view Line(std::size_t line) const { return lines_.Line(line - 1); }
  /// The `occurrence`-th line, counted from 0, that holds `key` at or behind line `start`; 0 for none.
  std::size_t LineOf(std::string_view key, std::size_t occurrence = 0, std::size_t start = 1) const {
    for (std::size_t line = start; line <= LineCount(); ++line)
      if (lines_.LineContains(line - 1, key) && occurrence-- == 0) return line;
    return 0;
  }
  PreparedText& Lines() { return lines_; }

 private:
  PreparedText lines_;
};

}  // namespace varnok::boards
