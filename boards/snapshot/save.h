// A board written out as a board folder (docs/board.md), the same one on the desk and under UEFI: images and
// tables under the names of their devices, and the board.json that says what they are.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "boards/board_data.h"
#include "firmware/status.h"

namespace varnok::boards {

/// Where a folder's files go.
class FolderSink {
 public:
  virtual ~FolderSink() = default;
  /// A whole file of the folder.
  virtual Status Write(std::string_view name, std::span<const std::uint8_t> bytes) = 0;
};

/// Writes all files; board.json comes last, so that a folder with it is whole. The first failure ends it, and
/// `failed` names the file.
Status SaveBoard(const Board& board, FolderSink& folder, std::string& failed);

/// The text of board.json.
std::string BoardJson(const Board& board);

}  // namespace varnok::boards
