// Board folders as data, on the host. The folder's format is the simulated board's, and so is the code that
// reads it.
#pragma once

#include <filesystem>
#include <string>

#include "boards/board_data.h"

namespace varnok::boards {

/// Reads the board in `folder`. False, with `error` naming the file and the key, when it holds none or a
/// wrong one.
bool LoadFolder(const std::filesystem::path& folder, Board& board, std::string& error);

/// Makes `folder` and the folders above it. False, with `error` set, when it holds a board already or cannot
/// be made.
bool MakeFreeFolder(const std::filesystem::path& folder, std::string& error);
/// Writes `board` into `folder`, which is made when it is missing. False, with `error` naming what cannot be
/// written, or the folder when it holds a board already.
bool SaveFolder(const std::filesystem::path& folder, const Board& board, std::string& error);
/// Writes the built-in default board, with the same refusals.
bool SaveDefaultBoard(const std::filesystem::path& folder, std::string& error);
/// A board to begin with: an erased FRU device 0 of 1 KiB, an empty SDR repository, the default board's
/// SMBIOS tables.
Board EmptyBoard();

/// Reads a file whole. False, with `error` naming it, when that fails.
bool ReadFile(const std::filesystem::path& file, Bytes& bytes, std::string& error);

}  // namespace varnok::boards
