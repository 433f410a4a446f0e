#include "tests/programs/program_run.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace varnok::testing {
namespace {

std::string ReadAll(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

[[noreturn]] void Become(const ProgramRun& run, const std::filesystem::path& streams) {
  std::vector<std::string> arguments = run.arguments;
  arguments.insert(arguments.begin(), VARNOK_PROGRAM);
  std::vector<std::string> environment = run.environment;
  environment.push_back("PATH=/usr/bin:/bin");
  dup2(open((streams / "in").c_str(), O_RDONLY), STDIN_FILENO);
  dup2(open((streams / "out").c_str(), O_WRONLY | O_CREAT, 0600), STDOUT_FILENO);
  dup2(open((streams / "err").c_str(), O_WRONLY | O_CREAT, 0600), STDERR_FILENO);
  if (chdir(run.workingFolder.c_str()) == 0)
    execve(VARNOK_PROGRAM, Pointers(arguments).data(), Pointers(environment).data());
  _exit(127);
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
  char pattern[] = "/tmp/varnok-test-XXXXXX";
  if (mkdtemp(pattern) == nullptr) throw std::runtime_error("no folder under /tmp");
  path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
  std::filesystem::remove_all(path_);
}

std::string TemporaryFolder::ContentOf(const std::string& name) const {
  return ReadAll(path_ / name);
}

void TemporaryFolder::Put(const std::string& name, const std::string& content) const {
  std::filesystem::create_directories((path_ / name).parent_path());
  std::ofstream(path_ / name, std::ios::binary) << content;
}

ProgramResult ProgramRun::Run() const {
  TemporaryFolder streams;
  streams.Put("in", input);
  pid_t child = fork();
  if (child == 0) Become(*this, streams.Path());
  int status = 0;
  waitpid(child, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), streams.ContentOf("out"),
          streams.ContentOf("err")};
}

}  // namespace varnok::testing
