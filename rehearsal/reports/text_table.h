// A table of plain text: columns as wide as their widest cell, two blanks between them.
#pragma once

#include <string>
#include <vector>

namespace varnok::rehearsal {

class TextTable {
 public:
  /// Numbers stand at the right of their column.
  explicit TextTable(std::vector<bool> isNumber) : isNumber_(std::move(isNumber)) {}

  /// Printable text, a cell for each column.
  void Row(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
  void WriteTo(std::vector<std::string>& lines) const;

 private:
  std::vector<bool> isNumber_;
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace varnok::rehearsal
