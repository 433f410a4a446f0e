// Files of a board's folder: read whole, replaced whole, and the folder itself, which one program at a time
// holds.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sim/descriptor.h"

namespace varnok::sim {

using Bytes = std::vector<std::uint8_t>;

/// More than any file of a folder has; a longer one is an error.
inline constexpr std::size_t kLargestFile = 64 << 20;

/// Reads a whole file. Throws BoardError, naming the file, for what is no file as well.
Bytes ReadWholeFile(const std::filesystem::path& path);

enum class Flush { Now, Later };
/// Writes `bytes` beside `path`, flushes them to the disk (now) and renames them to `path`, which keeps its
/// mode and its owner. A file that has other links, or whose owner cannot be kept, is written in place.
/// Throws BoardError.
void ReplaceFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
                 Flush flush = Flush::Now);
/// Writes all of `bytes` behind what the descriptor's file holds. Throws BoardError, naming `path`.
void WriteAll(const Descriptor& file, std::span<const std::uint8_t> bytes, const std::filesystem::path& path);
[[noreturn]] void FailWriting(const std::filesystem::path& path);

/// Removes the files that a killed program had begun to write beside those of `folder`.
void RemoveLeftovers(const std::filesystem::path& folder);

/// Holds a folder against other programs, and dies with its holder. A folder that is not there is nobody's.
class FolderLock {
 public:
  /// Waits a moment for a program that is about to end. Throws BoardError that says who holds the folder.
  explicit FolderLock(const std::filesystem::path& folder);

 private:
  Descriptor folder_;
};

/// Text from files and from the environment as a terminal may have it: control characters as \xNN.
std::string Printable(std::string_view text);

}  // namespace varnok::sim
