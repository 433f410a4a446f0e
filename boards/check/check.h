// What can be known of a package's files before a board sees it. Each file goes through the program's own
// reader; what that refuses, and what it takes but a board will not, is a finding with file, line and what to
// do.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "boards/board_data.h"

namespace varnok::boards {

enum class Severity { Warning, Error };

struct Finding {
  Severity severity = Severity::Error;
  const char* rule = "";  ///< a word for tools: "fru-checksum"
  std::string file;
  std::size_t line = 0;  ///< from 1; 0: the file as a whole
  std::string text;
  std::string advice;
};

enum class LoadFileKind { Script, Fru, Sdr };

/// By the extension, in any case; a file with another one by the keys that it holds.
LoadFileKind KindOfLoadFile(const std::string& file, const std::string& text);

class Checker {
 public:
  /// `board`, when not null, is the board that the files are made for; it must outlive the checker.
  explicit Checker(const Board* board) : board_(board) {}

  /// Checks a file, and for a script every file that it names, each once.
  void Check(const std::string& file);

  /// By file and line.
  std::vector<Finding> Findings() const;
  std::size_t FileCount() const { return files_.size(); }

 private:
  void CheckText(const std::string& file, const std::string& text, LoadFileKind kind);

  const Board* board_;
  std::vector<std::string> files_;
  std::vector<Finding> findings_;
};

}  // namespace varnok::boards
