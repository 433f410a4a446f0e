#include "rehearsal/reports/text_table.h"

#include <algorithm>

#include "rehearsal/reports/words.h"

namespace varnok::rehearsal {

void TextTable::WriteTo(std::vector<std::string>& lines) const {
  std::vector<std::size_t> widths(isNumber_.size(), 0);
  for (const auto& row : rows_)
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], WidthOf(row[i]));
  for (const auto& row : rows_) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::string blanks(widths[i] - WidthOf(row[i]), ' ');
      line += "  " + (isNumber_[i] ? blanks + row[i] : row[i] + (i + 1 < row.size() ? blanks : ""));
    }
    lines.push_back(std::move(line));
  }
}

}  // namespace varnok::rehearsal
