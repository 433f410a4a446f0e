// A text file held in memory as lines, prepared for a reader: split at CR, LF, CR LF or LF CR, cut at a
// comment marker, trimmed. FRU files, SDR files and scripts are read this way.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "firmware/status.h"

namespace varnok {

class PreparedText {
 public:
  /// Reads the whole file and splits it; a last line without a line end counts. Fails with the status of
  /// OpenTextFile or ReadTextFile, with no lines then.
  Status Load(std::string_view fileName);
  /// Splits text that is already in memory.
  void Assign(std::string text);

  bool IsLoaded() const { return isLoaded_; }
  std::size_t LineCount() const { return lines_.size(); }
  std::string_view Line(std::size_t index) const;
  std::size_t LineLength(std::size_t index) const { return Line(index).size(); }

  bool LineContains(std::size_t index, std::string_view text) const;
  /// The text between the first two `quote` characters of the line; nothing when there are fewer than two.
  std::optional<std::string_view> QuotedText(std::size_t index, char quote = '\'') const;

  /// Cuts every line at the first `marker`, wherever it stands.
  void CutAt(std::string_view marker);
  /// Removes blanks and tabs from both ends of every line.
  void Trim();
  /// Removes every blank and tab of one line.
  void RemoveBlanks(std::size_t index);

 private:
  struct Extent {
    std::size_t start;
    std::size_t length;
  };

  bool isLoaded_ = false;
  std::string text_;
  std::vector<Extent> lines_;
};

}  // namespace varnok
