// Lines of a load file: bytes in hexadecimal with what they are behind them, text in quotes, comments.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "boards/decoded.h"

namespace varnok::boards {

class FileWriter {
 public:
  /// `indent` blanks in front of data lines, comments at column `commentColumn`.
  FileWriter(std::size_t indent, std::size_t commentColumn)
      : indent_(indent), commentColumn_(commentColumn) {}

  /// A line as it stands.
  void Line(std::string_view text = {});
  /// "// text", at the indent.
  void Comment(std::string_view text);
  /// Lines of up to 16 bytes, the first with the comment.
  void Data(ByteView bytes, std::string_view comment = {});
  /// The text in quotes when a quoted line can hold it, else its bytes.
  void TextOrData(ByteView bytes);

  const std::string& Text() const { return text_; }

 private:
  void Put(std::string line, std::string_view comment);

  std::size_t indent_;
  std::size_t commentColumn_;
  std::string text_;
};

/// True when the bytes are plain text that stands in quotes as it is.
bool IsQuotable(ByteView bytes);
/// `text` for a quoted value: what quotes cannot hold becomes "_".
std::string QuotedValue(std::string_view text);
/// The remarks at the head of a load file.
void PutHeadRemarks(FileWriter& file, const std::vector<std::string>& losses,
                    const std::vector<std::string>& remarks);

}  // namespace varnok::boards
