#include "sim/image.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "sim/error.h"

namespace varnok::sim {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::milliseconds kFlushInterval{250};

std::string Tidied(const std::string& name) {
  return fs::path(name).lexically_normal().string();
}

/// A path with all links followed; as it stands when nothing is there.
std::string RealPath(const fs::path& path) {
  const std::unique_ptr<char, void (*)(void*)> real(realpath(path.c_str(), nullptr), std::free);
  return real == nullptr ? path.string() : real.get();
}

FileId FileIdOf(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return {};
  return {status.st_dev, status.st_ino};
}

const char* NameOf(ImageUse use) {
  switch (use) {
    case ImageUse::Sdrs:
      return "the SDR repository";
    case ImageUse::Smbios:
      return "the SMBIOS tables";
    case ImageUse::Device:
      return "a device";
  }
  return "";
}

}  // namespace

Image::Image(fs::path path, Bytes bytes, const StorageFault& fault, Access access)
    : path_(std::move(path)), bytes_(std::move(bytes)), fault_(fault), access_(access) {
  std::error_code ignored;
  wasCutShort_ = access == Access::Hold ? fs::remove(Marker(), ignored) : fs::exists(Marker(), ignored);
}

Image::~Image() {
  try {
    Settle(StorageFault::kNever - 1);
  } catch (const BoardError&) {
    // A device that is gone keeps what it had.
  }
  if (!isFlushed_) {
    const Descriptor file(open(path_.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.IsOpen()) fsync(file.Number());
  }
  if (appended_.IsOpen()) unlink(Marker().c_str());
}

fs::path Image::Marker() const {
  std::string marker = path_.string();
  marker.insert(marker.rfind('/') + 1, 1, '.');
  return marker += ".adding";
}

void Image::Write(std::size_t offset, std::span<const std::uint8_t> bytes) {
  if (offset > bytes_.size() || bytes.size() > bytes_.size() - offset) {
    throw BoardError(path_.string() + ": write past its end");
  }
  if (fault_.until) {
    late_.push_back({*fault_.until, offset, Bytes(bytes.begin(), bytes.end())});
    return;
  }
  const std::size_t stored = std::min(bytes.size(), fault_.room.value_or(bytes.size()));
  Store(offset, bytes.first(stored));
  if (stored < bytes.size()) throw StorageFull(path_.string() + ": the device is full");
}

void Image::Store(std::size_t offset, std::span<const std::uint8_t> bytes) {
  if (std::equal(bytes.begin(), bytes.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(offset))) return;
  const auto put = [&](Bytes& content) {
    std::copy(bytes.begin(), bytes.end(), content.begin() + static_cast<std::ptrdiff_t>(offset));
  };
  if (!IsKept()) {
    ++changes_;
    return put(bytes_);
  }
  Bytes content = bytes_;
  put(content);
  Replace(std::move(content));
}

void Image::Settle(std::uint64_t now) {
  std::vector<LateWrite> late = std::exchange(late_, {});
  for (LateWrite& write : late) {
    if (write.due > now)
      late_.push_back(std::move(write));
    else if (write.offset + write.bytes.size() <= bytes_.size())
      Store(write.offset, write.bytes);
  }
}

bool Image::FlushIsDue() {
  const auto now = std::chrono::steady_clock::now();
  isFlushed_ = now - flushed_ >= kFlushInterval;
  if (isFlushed_) flushed_ = now;
  return isFlushed_;
}

void Image::BeginAppending() {
  const Descriptor marker(open(Marker().c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
  if (!marker.IsOpen()) FailWriting(path_);
  appended_ = Descriptor(open(path_.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC));
  if (!appended_.IsOpen()) FailWriting(path_);
}

void Image::AppendToFile(std::span<const std::uint8_t> bytes) {
  if (!appended_.IsOpen()) BeginAppending();
  try {
    WriteAll(appended_, bytes, path_);
    if (FlushIsDue() && fdatasync(appended_.Number()) != 0) FailWriting(path_);
  } catch (const BoardError&) {
    if (ftruncate(appended_.Number(), static_cast<off_t>(bytes_.size())) != 0) appended_.Close();
    throw;
  }
}

void Image::Append(std::span<const std::uint8_t> bytes) {
  if (fault_.room && *fault_.room < bytes.size()) throw StorageFull(path_.string() + ": the device is full");
  if (IsKept()) AppendToFile(bytes);
  ++changes_;
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

void Image::Replace(Bytes content) {
  ++changes_;
  if (!IsKept()) {
    bytes_ = std::move(content);
    return;
  }
  const bool flushes = FlushIsDue();
  isFlushed_ = false;
  ReplaceFile(path_, content, flushes ? Flush::Now : Flush::Later);
  isFlushed_ = flushes;
  bytes_ = std::move(content);
  if (appended_.IsOpen()) BeginAppending();  // the old file is not the image any more
}

ImageStore::ImageStore(const fs::path& folder, Access access)
    : folder_(folder),
      access_(access),
      realFolder_(RealPath(folder)),
      description_(FileIdOf(realFolder_ + "/" + kBoardFile)) {
  if (access_ == Access::Hold) RemoveLeftovers(realFolder_);
}

ImageStore::Entry* ImageStore::FindFile(const std::string& path, const FileId& id) {
  // A file that was replaced since it was opened has its name still.
  const auto found = std::find_if(images_.begin(), images_.end(), [&](const Entry& entry) {
    return entry.path == path || (id.IsThere() && entry.id == id);
  });
  return found == images_.end() ? nullptr : &*found;
}

Image& ImageStore::Open(const std::string& name, ImageUse use, std::optional<std::size_t> size) {
  return Open(name, use, size, false);
}

Image& ImageStore::OpenOrBegin(const std::string& name, ImageUse use) {
  return Open(name, use, std::nullopt, true);
}

Image& ImageStore::Open(const std::string& name, ImageUse use, std::optional<std::size_t> size,
                        bool mayBegin) {
  const fs::path relative = Tidied(name);
  if (name.empty() || relative.is_absolute() || relative.filename().string().starts_with('.') ||
      *relative.begin() == ".." || *relative.begin() == ".") {
    throw BoardError("\"" + name + "\" is not the name of a file inside the folder");
  }
  const bool begins = mayBegin && !fs::exists(folder_ / relative);
  if (begins && access_ == Access::Hold) ReplaceFile(folder_ / relative, {});
  const std::string path = RealPath(realFolder_ + "/" + relative.native());
  const FileId id = FileIdOf(path);
  if (id.IsThere() && !path.starts_with(realFolder_ + "/"))
    throw BoardError("\"" + name + "\" leads out of the folder");
  if (id.IsThere() && id == description_) throw BoardError("\"" + name + "\" is the board's description");
  Entry* entry = FindFile(path, id);
  if (entry == nullptr) {
    Bytes bytes = begins ? Bytes() : ReadWholeFile(folder_ / relative);
    if (size && bytes.size() < *size) bytes.resize(*size, 0xFF);
    if (access_ == Access::Hold && relative.has_parent_path()) RemoveLeftovers(fs::path(path).parent_path());
    entry = &images_.emplace_back(
        Entry{path, id, use, std::make_unique<Image>(path, std::move(bytes), fault, access_)});
  } else if (entry->use != use || use != ImageUse::Device) {
    throw BoardError("\"" + name + "\" is " + NameOf(entry->use) + " already");
  }
  Image& image = *entry->image;
  if (size && image.Size() != *size) {
    throw BoardError(name + " holds " + std::to_string(image.Size()) + " bytes, the device " +
                     std::to_string(*size));
  }
  names_[relative.string()] = &image;
  return image;
}

Image* ImageStore::Find(const std::string& name) {
  const auto found = names_.find(Tidied(name));
  return found == names_.end() ? nullptr : found->second;
}

bool ImageStore::Holds(const fs::path& path) {
  const FileId id = FileIdOf(path);
  return id.IsThere() && (id == description_ || FindFile(RealPath(path), id) != nullptr);
}

void ImageStore::Settle(std::uint64_t now) {
  for (Entry& entry : images_) entry.image->Settle(now);
}

}  // namespace varnok::sim
