#include "sim/image.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <utility>

#include "sim/error.h"

namespace varnok::sim {
namespace {

constexpr std::chrono::milliseconds kFlushInterval{250};

/// An open file descriptor, closed on every way out.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int Get() const { return number_; }

 private:
  int number_;
};

[[noreturn]] void FailReplacing(const std::filesystem::path& path) {
  throw BoardError(path.string() + ": cannot be written: " + std::strerror(errno));
}

void WriteAll(int descriptor, std::span<const std::uint8_t> bytes, const std::filesystem::path& path) {
  while (!bytes.empty()) {
    const ssize_t count = write(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) FailReplacing(path);
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
}

}  // namespace

Bytes ReadWholeFile(const std::filesystem::path& path) {
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored))
    throw BoardError(path.string() + ": is a folder, not a file");
  std::ifstream file(path, std::ios::binary);
  if (!file) throw BoardError(path.string() + ": cannot be read: " + std::strerror(errno));
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

void ReplaceFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes, Flush flush) {
  // The process ID keeps two programs on one folder from renaming each other's half-written file.
  const std::filesystem::path temporary =
      path.parent_path() / ("." + path.filename().string() + "." + std::to_string(getpid()) + ".tmp");
  try {
    Descriptor file(open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    if (file.Get() < 0) FailReplacing(path);
    WriteAll(file.Get(), bytes, path);
    if (flush == Flush::Now && fsync(file.Get()) != 0) FailReplacing(path);
    if (rename(temporary.c_str(), path.c_str()) != 0) FailReplacing(path);
  } catch (...) {
    unlink(temporary.c_str());
    throw;
  }
}

Image::~Image() {
  if (isFlushed_) return;
  const Descriptor file(open(path_.c_str(), O_RDONLY | O_CLOEXEC));
  if (file.Get() >= 0) fsync(file.Get());
}

void Image::Write(std::size_t offset, std::span<const std::uint8_t> bytes) {
  if (offset > bytes_.size() || bytes.size() > bytes_.size() - offset) {
    throw BoardError(path_.string() + ": write past its end");
  }
  if (std::equal(bytes.begin(), bytes.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(offset))) return;
  Bytes content = bytes_;
  std::copy(bytes.begin(), bytes.end(), content.begin() + static_cast<std::ptrdiff_t>(offset));
  Replace(std::move(content));
}

void Image::Replace(Bytes content) {
  const auto now = std::chrono::steady_clock::now();
  const bool flushes = now - flushed_ >= kFlushInterval;
  ReplaceFile(path_, content, flushes ? Flush::Now : Flush::Later);
  bytes_ = std::move(content);
  isFlushed_ = flushes;
  if (flushes) flushed_ = now;
}

Image& ImageStore::Open(const std::string& name, std::optional<std::size_t> size) {
  const std::filesystem::path relative = std::filesystem::path(name).lexically_normal();
  if (name.empty() || relative.is_absolute() || *relative.begin() == ".." || *relative.begin() == ".") {
    throw BoardError("\"" + name + "\" is not the name of a file inside the folder");
  }
  auto& image = images_[relative.string()];
  if (image == nullptr) {
    Bytes bytes = ReadWholeFile(folder_ / relative);
    if (size && bytes.size() < *size) bytes.resize(*size, 0xFF);
    image = std::make_unique<Image>(folder_ / relative, std::move(bytes));
  }
  if (size && image->Size() != *size) {
    throw BoardError(name + " holds " + std::to_string(image->Size()) + " bytes, the device " +
                     std::to_string(*size));
  }
  return *image;
}

Image* ImageStore::Find(const std::string& name) {
  auto found = images_.find(std::filesystem::path(name).lexically_normal().string());
  return found == images_.end() ? nullptr : found->second.get();
}

}  // namespace varnok::sim
