// Storage behind the board's devices: files of the board folder, held in memory and on the disk at every
// change, so that a kill leaves the old or the new content.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "sim/descriptor.h"
#include "sim/files.h"

namespace varnok::sim {

/// What a fault makes of the writes of the request that is under way.
struct StorageFault {
  static constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();

  std::optional<std::size_t> room;  ///< so many bytes of a write are stored, then the device is full
  std::optional<std::uint64_t>
      until;  ///< a write reaches the device at this time, in microseconds of the board
};

/// Who opens a folder's files: the program that holds the folder, which clears what a killed one left, one
/// that only looks at them, perhaps while another holds the folder, or one that plays with them in memory: it
/// may write as it likes, and the folder stays as it is.
enum class Access { Hold, Look, Play };

class Image {
 public:
  /// `path` has no links in it. `fault` must outlive the image.
  Image(std::filesystem::path path, Bytes bytes, const StorageFault& fault, Access access);
  /// Stores the writes that were to come later, and flushes what is not on the disk yet.
  ~Image();
  Image(const Image&) = delete;
  Image& operator=(const Image&) = delete;

  std::span<const std::uint8_t> Content() const { return bytes_; }
  std::size_t Size() const { return bytes_.size(); }
  /// How often the content has changed.
  std::uint64_t Changes() const { return changes_; }
  /// Bytes were being added when the program was killed: the last ones may be a part of what was to come.
  bool WasCutShort() const { return wasCutShort_; }

  /// Overwrites the bytes at `offset`, which must lie inside. Throws BoardError, with the old content kept,
  /// when the file cannot be replaced, and StorageFull.
  void Write(std::size_t offset, std::span<const std::uint8_t> bytes);
  /// Adds bytes at the end, for as little as they are. Throws as Write does.
  void Append(std::span<const std::uint8_t> bytes);
  /// Replaces the whole content by one of any size. Throws BoardError as Write does. A kill is survived at
  /// any time; against a power failure the disk is flushed a few times a second, since a FRU is written in
  /// hundreds of small requests.
  void Replace(Bytes content);
  /// Stores the writes that were to come up to `now`.
  void Settle(std::uint64_t now);

 private:
  struct LateWrite {
    std::uint64_t due;
    std::size_t offset;
    Bytes bytes;
  };

  bool IsKept() const { return access_ != Access::Play; }
  void Store(std::size_t offset, std::span<const std::uint8_t> bytes);
  /// A file that stands beside the image while bytes are added to it.
  std::filesystem::path Marker() const;
  void BeginAppending();
  void AppendToFile(std::span<const std::uint8_t> bytes);
  bool FlushIsDue();

  std::filesystem::path path_;
  Bytes bytes_;
  const StorageFault& fault_;
  Access access_;
  std::uint64_t changes_ = 0;
  std::vector<LateWrite> late_;
  Descriptor appended_;
  bool wasCutShort_ = false;
  std::chrono::steady_clock::time_point flushed_{};
  bool isFlushed_ = true;
};

/// What describes the board; no image may be in it.
inline constexpr const char* kBoardFile = "board.json";

/// What an image is for. Devices may share one: an EEPROM that is seen on a private bus and as a FRU device.
enum class ImageUse { Device, Sdrs, Smbios };

/// What is the same for all names of a file, its hard links among them.
struct FileId {
  dev_t device = 0;
  ino_t node = 0;

  bool IsThere() const { return node != 0; }
  bool operator==(const FileId&) const = default;
};

/// The images of one board folder, each opened once.
class ImageStore {
 public:
  explicit ImageStore(const std::filesystem::path& folder, Access access = Access::Hold);

  const std::filesystem::path& Folder() const { return folder_; }
  /// Opens `name`, a relative path that stays inside the folder, links followed. With `size` the image has
  /// that many bytes: a shorter file reads as erased (FFh) behind its end, a longer one is an error. Throws
  /// BoardError, also for a file that stands for something else already.
  Image& Open(const std::string& name, ImageUse use, std::optional<std::size_t> size = std::nullopt);
  /// As Open; a file that is not there begins empty.
  Image& OpenOrBegin(const std::string& name, ImageUse use);
  /// The opened image of that name; null when no device uses it.
  Image* Find(const std::string& name);
  /// The images by their names in board.json, tidied up. Two names may stand for one image.
  const std::map<std::string, Image*>& Names() const { return names_; }
  /// Whether the board lives in the file at `path`.
  bool Holds(const std::filesystem::path& path);

  /// What happens to writes from now on.
  StorageFault fault;
  /// Stores the writes of all images that were to come up to `now`.
  void Settle(std::uint64_t now);

 private:
  struct Entry {
    std::string path;  // of the file itself
    FileId id;
    ImageUse use;
    std::unique_ptr<Image> image;
  };

  Entry* FindFile(const std::string& path, const FileId& id);
  Image& Open(const std::string& name, ImageUse use, std::optional<std::size_t> size, bool mayBegin);

  std::filesystem::path folder_;
  Access access_;
  std::string realFolder_;
  FileId description_;
  std::vector<Entry> images_;
  std::map<std::string, Image*> names_;
};

}  // namespace varnok::sim
