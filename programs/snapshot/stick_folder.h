// A board folder on the stick, through the firmware facade.
#pragma once

#include <string>
#include <string_view>

#include "boards/board_data.h"
#include "boards/snapshot/save.h"
#include "firmware/status.h"

namespace varnok::snapshot {

class StickFolder : public boards::FolderSink {
 public:
  explicit StickFolder(std::u16string path) : path_(std::move(path)) {}

  const std::u16string& Path() const { return path_; }
  Status Write(std::string_view name, std::span<const std::uint8_t> bytes) override;
  /// The devices and the records of a folder that a snapshot made; a file's name says which device it is.
  /// False, with the reason in `error`.
  bool Read(boards::Board& board, std::string& error) const;

 private:
  bool ReadFile(std::u16string_view name, boards::Bytes& bytes, std::string& error) const;

  std::u16string path_;
};

/// Makes the folder `name`, for an empty one the first of BOARD001 to BOARD999 that is free. False, with the
/// reason in `error`.
bool MakeStickFolder(std::string_view name, std::u16string& path, std::string& error);

}  // namespace varnok::snapshot
