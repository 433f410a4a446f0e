// The reader of a script: walks the prepared lines of a file and takes keyword, arguments or the rest of a
// line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "app/services/prepared_text.h"

namespace varnok {

class CFileCfg : public PreparedText {
 public:
  /// Loads the file, cuts comments ("//" wherever it stands, inside quotes too) and trims every line. A file
  /// that cannot be read leaves the reader not loaded and without lines.
  explicit CFileCfg(std::string_view path);

  bool EndOfFile() const;
  bool IsLineEmpty() const;
  /// 0-based.
  std::uint32_t GetCurrentLineNumber() const;
  /// Moves to the start of a line. A number past the last line moves to the start of the current line.
  void SetCurrentLineNumber(std::uint32_t line);

  std::string_view CurrentLine() const { return Line(currentLine_); }
  /// GetCurrentLineNumber without its lines in the log.
  std::uint32_t CurrentIndex() const { return currentLine_; }

  // What is read lies in the file's own text and lives as long. Each `size` is the room that it may take with
  // a terminating NUL; a text that does not fit makes the call fail.

  /// The keyword of the next line that holds one. False at the end of the file or for a keyword that does not
  /// fit.
  bool GetFirstInput(std::string_view& keyword, std::size_t size);
  /// The next argument of the line, read straight from it: a quoted text or a word. False for an empty one.
  bool GetNextInput(std::string_view& argument, std::size_t size);
  /// Everything behind the last thing read, leading blanks included.
  bool GetRemainingLine(std::string_view& rest, std::size_t size) const;

 private:
  bool IsAtEnd() const { return currentLine_ >= LineCount(); }

  std::uint32_t currentLine_ = 0;
  std::size_t currentColumn_ = 0;
};

}  // namespace varnok
