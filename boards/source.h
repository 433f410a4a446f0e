// What a command line names: a board folder, one device of it (FOLDER#2@C0), a FRU image, an SDR dump or an
// SMBIOS dump, each as a board.
#pragma once

#include <string>

#include "boards/board_data.h"

namespace varnok::boards {

enum class SourceKind { Folder, Device, FruImage, SdrDump, SmbiosDump };

struct Source {
  std::string name;  ///< as it was given
  SourceKind kind = SourceKind::Folder;
  Board board;
  Bytes rest;  ///< of an SDR dump, behind its last whole record

  /// True when it holds one FRU device and nothing else.
  bool IsOneDevice() const { return kind == SourceKind::Device || kind == SourceKind::FruImage; }
};

/// "fru", "sdr" and "smbios"; nothing for another word.
std::optional<SourceKind> KindByWord(std::string_view word);

/// Loads what `argument` names; a file's kind is told by its content unless `kind` says it. False, with
/// `error` naming the file or the device.
bool LoadSource(const std::string& argument, std::optional<SourceKind> kind, Source& source,
                std::string& error);

}  // namespace varnok::boards
