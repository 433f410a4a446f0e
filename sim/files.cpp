#include "sim/files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>
#include <thread>

#include "firmware/host/utf8.h"
#include "sim/error.h"

namespace varnok::sim {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void FailReading(const fs::path& path) {
  throw BoardError(path.string() + ": cannot be read: " + std::strerror(errno));
}

/// Gives the new file what the old one had; false when that is not allowed.
bool KeepsOwnerAndMode(const Descriptor& file, const struct stat& old) {
  struct stat now {};
  if (fstat(file.Number(), &now) != 0) return false;
  if ((now.st_uid != old.st_uid || now.st_gid != old.st_gid) &&
      fchown(file.Number(), old.st_uid, old.st_gid) != 0)
    return false;
  return fchmod(file.Number(), old.st_mode & 07777) == 0;
}

void Overwrite(const fs::path& path, std::span<const std::uint8_t> bytes, Flush flush) {
  const Descriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC));
  if (!file.IsOpen()) FailWriting(path);
  WriteAll(file, bytes, path);
  if (ftruncate(file.Number(), static_cast<off_t>(bytes.size())) != 0) FailWriting(path);
  if (flush == Flush::Now && fsync(file.Number()) != 0) FailWriting(path);
}

/// The name of a file that is being written: ".board.bin.1234.tmp".
bool IsTemporary(std::string_view name) {
  constexpr std::string_view kEnd = ".tmp";
  if (!name.starts_with('.') || !name.ends_with(kEnd)) return false;
  const std::string_view front = name.substr(0, name.size() - kEnd.size());
  const std::size_t dot = front.rfind('.');
  return dot != 0 && dot + 1 < front.size() &&
         std::all_of(front.begin() + static_cast<std::ptrdiff_t>(dot) + 1, front.end(),
                     [](char c) { return c >= '0' && c <= '9'; });
}

/// The program that holds the lock of an open folder, as the kernel lists it.
std::string HolderOf(const Descriptor& folder) {
  struct stat status {};
  if (fstat(folder.Number(), &status) != 0) return "another program";
  // "5: FLOCK  ADVISORY  WRITE 1234 fe:01:5678 0 EOF": the process, the device and the inode.
  std::ifstream locks("/proc/locks");
  for (std::string line; std::getline(locks, line);) {
    std::istringstream words(line);
    std::string number, kind, manner, access, file;
    int process = 0;
    if (!(words >> number >> kind >> manner >> access >> process >> file)) continue;
    if (kind != "FLOCK" || process <= 0 || !file.ends_with(":" + std::to_string(status.st_ino))) continue;
    std::string name;
    try {
      const Bytes text = ReadWholeFile("/proc/" + std::to_string(process) + "/comm");
      name.assign(text.begin(), std::find(text.begin(), text.end(), '\n'));
    } catch (const BoardError&) {
      name = "another program";
    }
    return name + ", process " + std::to_string(process);
  }
  return "another program";
}

}  // namespace

void FailWriting(const fs::path& path) {
  throw BoardError(path.string() + ": cannot be written: " + std::strerror(errno));
}

void WriteAll(const Descriptor& file, std::span<const std::uint8_t> bytes, const fs::path& path) {
  while (!bytes.empty()) {
    const ssize_t count = write(file.Number(), bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) FailWriting(path);
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
}

Bytes ReadWholeFile(const fs::path& path) {
  // A pipe without a writer must not hold the program up.
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status {};
  if (!file.IsOpen() || fstat(file.Number(), &status) != 0) FailReading(path);
  if (S_ISDIR(status.st_mode)) throw BoardError(path.string() + ": is a folder, not a file");
  if (!S_ISREG(status.st_mode)) throw BoardError(path.string() + ": is a device or a pipe, not a file");
  const auto refuseAbove = [&path](std::size_t size) {
    if (size > kLargestFile) throw BoardError(path.string() + ": is larger than 64 MiB");
  };
  refuseAbove(static_cast<std::size_t>(status.st_size));
  // Room to see the end; a file of /proc has no size and is a line.
  Bytes bytes(static_cast<std::size_t>(status.st_size) + 64);
  std::size_t length = 0;
  for (;;) {
    const ssize_t count = read(file.Number(), bytes.data() + length, bytes.size() - length);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) FailReading(path);
    length += static_cast<std::size_t>(count);
    refuseAbove(length);
    if (count == 0) break;
    if (length == bytes.size()) bytes.resize(2 * length);
  }
  bytes.resize(length);
  return bytes;
}

void ReplaceFile(const fs::path& path, std::span<const std::uint8_t> bytes, Flush flush) {
  struct stat old {};
  const bool isThere = stat(path.c_str(), &old) == 0;
  if (isThere && old.st_nlink > 1) return Overwrite(path, bytes, flush);
  // The process ID keeps two programs on one folder from renaming each other's half-written file.
  const fs::path temporary =
      path.parent_path() / ("." + path.filename().string() + "." + std::to_string(getpid()) + ".tmp");
  try {
    const Descriptor file(
        open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0644));
    if (!file.IsOpen()) FailWriting(path);
    if (isThere && !KeepsOwnerAndMode(file, old)) {
      unlink(temporary.c_str());
      return Overwrite(path, bytes, flush);
    }
    WriteAll(file, bytes, path);
    if (flush == Flush::Now && fsync(file.Number()) != 0) FailWriting(path);
    if (rename(temporary.c_str(), path.c_str()) != 0) FailWriting(path);
  } catch (...) {
    unlink(temporary.c_str());
    throw;
  }
}

void RemoveLeftovers(const fs::path& folder) {
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder.c_str()), closedir);
  while (const dirent* entry = entries == nullptr ? nullptr : readdir(entries.get()))
    if (IsTemporary(entry->d_name)) unlink((folder / entry->d_name).c_str());
}

FolderLock::FolderLock(const fs::path& folder)
    : folder_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  constexpr int kTries = 50;
  constexpr std::chrono::milliseconds kPause{20};
  for (int i = 0; folder_.IsOpen() && flock(folder_.Number(), LOCK_EX | LOCK_NB) != 0; ++i) {
    // A file system without locks has none to wait for.
    if (errno != EWOULDBLOCK && errno != EINTR) return;
    if (i == kTries)
      throw BoardError(folder.string() + ": " + HolderOf(folder_) +
                       ", works on this board; try again when it has ended");
    std::this_thread::sleep_for(kPause);
  }
}

std::string Printable(std::string_view text) {
  constexpr char16_t kFirstShown = 0x20, kDelete = 0x7F, kLastControl = 0x9F, kIllFormed = 0xFFFD;
  std::u16string shown;
  for (const char16_t unit : host::FromUtf8(text)) {
    if (unit < kFirstShown || (unit >= kDelete && unit <= kLastControl)) {
      char code[8];
      const int length = std::snprintf(code, sizeof code, "\\x%02X", static_cast<unsigned>(unit));
      shown.append(code, code + length);
    } else {
      shown += unit == kIllFormed ? u'?' : unit;
    }
  }
  return host::ToUtf8(shown);
}

}  // namespace varnok::sim
