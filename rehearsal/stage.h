// What every run of a rehearsal begins with: a board in memory and the program's command line.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "boards/source.h"
#include "rehearsal/report.h"
#include "rehearsal/script.h"
#include "sim/board.h"

namespace varnok::rehearsal {

/// What the board's files hold, in the order of Stage::Names().
using Images = std::vector<Bytes>;

class Stage {
 public:
  /// `arguments` are the program's, UTF-8, without its own name. Null, with `error` set, when the folder
  /// holds no board.
  static std::unique_ptr<Stage> Open(const std::filesystem::path& folder, std::vector<std::string> arguments,
                                     std::string& error);

  /// Changes only in processes that are forked to run the program.
  sim::Board& TheBoard() { return *board_; }
  const std::filesystem::path& Folder() const { return folder_; }
  /// As the program gets them, its name in front.
  const std::vector<std::string>& Arguments() const { return arguments_; }
  const Script& TheScript() const { return script_; }

  /// The files that the board keeps its content in, as board.json names them.
  const std::vector<std::string>& Names() const { return names_; }
  Images ImagesNow();
  /// How often any of them has changed.
  std::uint64_t Changes();
  const Images& Before() const { return before_; }
  /// The folder's board as data.
  const boards::Board& Described() const { return source_.board; }
  /// Whether two boards hold the same: the BMC chooses the record IDs of its SDRs as it likes.
  bool AreAlike(const Images& left, const Images& right) const;

  // For processes that are forked to run the program.
  /// Puts content into the board that it did not store itself.
  void Put(const Images& images);
  /// With the program's name in front.
  void SetArguments(std::vector<std::string> arguments) { arguments_ = std::move(arguments); }

  /// What the board that holds these images holds, in words and as bytes.
  BoardAfter Describe(const Images& after) const;
  /// Writes a folder with a board that holds these images. False, with `error` set, when it exists already or
  /// cannot be written.
  bool Save(const std::filesystem::path& folder, const Images& images, std::string& error) const;

 private:
  Stage() = default;
  boards::Board BoardWith(const Images& images) const;

  std::filesystem::path folder_;
  std::vector<std::string> arguments_;
  std::unique_ptr<sim::Board> board_;
  Script script_;
  std::vector<std::string> names_;
  Images before_;
  boards::Source source_;  ///< the folder's board
};

}  // namespace varnok::rehearsal
