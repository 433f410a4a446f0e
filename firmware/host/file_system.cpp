#include "firmware/host/file_system.h"

#include <dirent.h>
#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "firmware/host/utf8.h"

namespace varnok::host {
namespace {

Status StatusOf(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
    case ENAMETOOLONG:
      return uefi_status::kNotFound;
    case EACCES:
    case EPERM:
    case EISDIR:
      return uefi_status::kAccessDenied;
    case EROFS:
      return uefi_status::kWriteProtected;
    case ENOSPC:
    case EDQUOT:
      return uefi_status::kVolumeFull;
    case ENOMEM:
    case EMFILE:
    case ENFILE:
      return uefi_status::kOutOfResources;
    default:
      return uefi_status::kDeviceError;
  }
}

class LinuxFile : public File {
 public:
  explicit LinuxFile(int descriptor) : descriptor_(descriptor) {}
  ~LinuxFile() override { close(descriptor_); }
  LinuxFile(const LinuxFile&) = delete;
  LinuxFile& operator=(const LinuxFile&) = delete;

  Status Read(std::span<std::uint8_t> buffer, std::size_t& count) override {
    ssize_t result = 0;
    do result = read(descriptor_, buffer.data(), buffer.size());
    while (result < 0 && errno == EINTR);
    count = result < 0 ? 0 : static_cast<std::size_t>(result);
    return result < 0 ? StatusOf(errno) : kSuccess;
  }

  Status Write(std::span<const std::uint8_t> bytes) override {
    while (!bytes.empty()) {
      ssize_t result = write(descriptor_, bytes.data(), bytes.size());
      if (result < 0 && errno == EINTR) continue;
      if (result < 0) return StatusOf(errno);
      bytes = bytes.subspan(static_cast<std::size_t>(result));
    }
    return kSuccess;
  }

 private:
  int descriptor_;
};

bool Exists(const std::string& path) {
  struct stat information;
  return lstat(path.c_str(), &information) == 0;
}

/// The first entry, in the order of their names, that equals `name` but for case; `name` itself without one.
std::string FindEntry(const std::string& folder, const std::string& name) {
  DIR* directory = opendir(folder.empty() ? "." : folder.c_str());
  if (directory == nullptr) return name;
  std::string found;
  while (const dirent* entry = readdir(directory)) {
    std::string candidate = entry->d_name;
    if (strcasecmp(candidate.c_str(), name.c_str()) == 0 && (found.empty() || candidate < found))
      found = candidate;
  }
  closedir(directory);
  return found.empty() ? name : found;
}

}  // namespace

std::string ResolvePath(std::u16string_view path) {
  std::string wanted = ToUtf8(path);
  std::replace(wanted.begin(), wanted.end(), '\\', '/');
  std::string resolved;
  for (std::size_t start = 0; start < wanted.size();) {
    std::size_t end = std::min(wanted.find('/', start), wanted.size());
    std::string part = wanted.substr(start, end - start);
    if (!part.empty() && !Exists(resolved + part)) part = FindEntry(resolved, part);
    resolved += part;
    if (end < wanted.size()) resolved += '/';
    start = end + 1;
  }
  return resolved;
}

Status OpenFile(std::u16string_view path, FileMode mode, std::unique_ptr<File>& file) {
  file = nullptr;
  // A FIFO without a partner would block.
  int flags = O_CLOEXEC | O_NONBLOCK;
  switch (mode) {
    case FileMode::Read:
      flags |= O_RDONLY;
      break;
    case FileMode::Write:
      flags |= O_WRONLY | O_CREAT | O_TRUNC;
      break;
    case FileMode::Append:
      flags |= O_WRONLY | O_CREAT | O_APPEND;
      break;
  }
  int descriptor = open(ResolvePath(path).c_str(), flags, 0666);
  if (descriptor < 0) return StatusOf(errno);
  struct stat information;
  // A folder opens for reading on Linux, but is no file; devices and FIFOs may never end.
  if (mode == FileMode::Read && fstat(descriptor, &information) == 0 && !S_ISREG(information.st_mode)) {
    close(descriptor);
    return S_ISDIR(information.st_mode) ? uefi_status::kAccessDenied : uefi_status::kUnsupported;
  }
  file = std::make_unique<LinuxFile>(descriptor);
  return kSuccess;
}

Status AppendToFile(const char* path, std::span<const std::uint8_t> bytes) {
  int descriptor = open(path, O_CLOEXEC | O_NONBLOCK | O_WRONLY | O_CREAT | O_APPEND, 0666);
  return descriptor < 0 ? StatusOf(errno) : LinuxFile(descriptor).Write(bytes);
}

Status MakeFolder(std::u16string_view path) {
  if (mkdir(ResolvePath(path).c_str(), 0777) == 0) return kSuccess;
  return errno == EEXIST ? uefi_status::kAlreadyStarted : StatusOf(errno);
}

Status ListFolder(std::u16string_view path, std::vector<std::u16string>& names) {
  DIR* directory = opendir(ResolvePath(path).c_str());
  if (directory == nullptr) return StatusOf(errno);
  while (const dirent* entry = readdir(directory))
    if (entry->d_type != DT_DIR) names.push_back(FromUtf8(entry->d_name));
  closedir(directory);
  return kSuccess;
}

}  // namespace varnok::host
