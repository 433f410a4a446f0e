// Storage behind the board's devices: files of the board folder, held in memory and replaced whole at every
// change, so that a kill leaves the old or the new content.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace varnok::sim {

using Bytes = std::vector<std::uint8_t>;

/// Reads a whole file. Throws BoardError, naming the file.
Bytes ReadWholeFile(const std::filesystem::path& path);
enum class Flush { Now, Later };
/// Writes `bytes` beside `path`, flushes them to the disk (now) and renames them to `path`. Throws
/// BoardError.
void ReplaceFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
                 Flush flush = Flush::Now);

class Image {
 public:
  Image(std::filesystem::path path, Bytes bytes) : path_(std::move(path)), bytes_(std::move(bytes)) {}
  /// Flushes what is not on the disk yet.
  ~Image();
  Image(const Image&) = delete;
  Image& operator=(const Image&) = delete;

  std::span<const std::uint8_t> Content() const { return bytes_; }
  std::size_t Size() const { return bytes_.size(); }
  /// Overwrites the bytes at `offset`, which must lie inside. Throws BoardError, with the old content kept,
  /// when the file cannot be replaced.
  void Write(std::size_t offset, std::span<const std::uint8_t> bytes);
  /// Replaces the whole content by one of any size. Throws as Write does. A kill is survived at any time;
  /// against a power failure the disk is flushed a few times a second, since a FRU is written in hundreds of
  /// small requests.
  void Replace(Bytes content);

 private:
  std::filesystem::path path_;
  Bytes bytes_;
  std::chrono::steady_clock::time_point flushed_{};
  bool isFlushed_ = true;
};

/// The images of one board folder, each opened once, by its name in the folder.
class ImageStore {
 public:
  explicit ImageStore(std::filesystem::path folder) : folder_(std::move(folder)) {}

  const std::filesystem::path& Folder() const { return folder_; }
  /// Opens `name`, a relative path that stays inside the folder. With `size` the image has that many bytes: a
  /// shorter file reads as erased (FFh) behind its end, a longer one is an error. Throws BoardError.
  Image& Open(const std::string& name, std::optional<std::size_t> size = std::nullopt);
  /// The opened image of that name; null when no device uses it.
  Image* Find(const std::string& name);

 private:
  std::filesystem::path folder_;
  std::map<std::string, std::unique_ptr<Image>> images_;
};

}  // namespace varnok::sim
