// Files of the computer that the tests run on.
#pragma once

#include <stdlib.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace varnok::testing {

/// Where files cost no waiting for a disk, if there is such a place.
inline std::filesystem::path FastestPlace() {
  const std::filesystem::path memory = "/dev/shm";
  return access(memory.c_str(), W_OK) == 0 ? memory : std::filesystem::temp_directory_path();
}

/// A folder of its own, with all that is in it, for as long as the object lives.
class TemporaryFolder {
 public:
  explicit TemporaryFolder(const std::filesystem::path& parent = FastestPlace()) {
    std::string pattern = parent / "varnok-test-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    path_ = pattern;
  }
  ~TemporaryFolder() { std::filesystem::remove_all(path_); }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

/// The bytes of a file; none when it cannot be read.
inline std::string ContentOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

}  // namespace varnok::testing
