// One run of the Linux program in a process of its own, over a board folder that lives as long as the test.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace varnok::testing {

/// A folder under /tmp that goes when the test ends.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }
  std::string ContentOf(const std::string& name) const;
  void Put(const std::string& name, const std::string& content) const;

 private:
  std::filesystem::path path_;
};

struct ProgramResult {
  int status = -1;  ///< exit status; 128 + number when a signal ended it
  std::string output;
  std::string error;
};

struct ProgramRun {
  std::vector<std::string> arguments;
  std::string input{};                     ///< standard input; ends behind it
  std::vector<std::string> environment{};  ///< NAME=value, besides PATH
  std::filesystem::path workingFolder = "/";

  ProgramResult Run() const;
};

}  // namespace varnok::testing
