#include "sim/board_source.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

#include "sim/files.h"

namespace varnok::sim {
namespace {

/// The value of a variable; an empty one counts as missing.
std::string Value(const Environment& environment, const char* name) {
  return environment(name).value_or("");
}

}  // namespace

std::optional<std::string> ProcessEnvironment(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr) return std::nullopt;
  return value;
}

void TakeStandardDescriptors() {
  // A new descriptor is always the lowest free one.
  for (int next = 0; next <= STDERR_FILENO; ++next) {
    if (fcntl(next, F_GETFD) >= 0) continue;
    const int opened = open("/dev/null", next == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    if (opened < 0) return;
  }
}

std::optional<BoardSource> FindBoard(const Environment& environment, std::string& error) {
  if (const std::string named = Value(environment, "VARNOK_BOARD"); !named.empty())
    return BoardSource{named, false};
  // A relative path in XDG_STATE_HOME is to be ignored (XDG Base Directory Specification).
  std::filesystem::path state = Value(environment, "XDG_STATE_HOME");
  if (!state.is_absolute()) {
    const std::string home = Value(environment, "HOME");
    if (home.empty()) {
      error = "no board: neither VARNOK_BOARD nor XDG_STATE_HOME nor HOME has a value";
      return std::nullopt;
    }
    state = std::filesystem::path(home) / ".local" / "state";
  }
  return BoardSource{state / "varnok" / "board", true};
}

std::unique_ptr<Board> OpenBoard(const Environment& environment, std::string& notice, std::string& error) {
  const auto source = FindBoard(environment, error);
  if (!source) return nullptr;
  bool isCreated = false;
  auto board = Board::Open(source->folder, error, source->isDefault ? &isCreated : nullptr);
  if (source->isDefault && board != nullptr) {
    // Nobody shall take an invented board for the computer's own.
    notice = std::string(isCreated ? "created the default " : "") + "simulated board " +
             Printable(source->folder.string()) +
             "; set VARNOK_BOARD for another, /dev/ipmi0 for this computer's BMC";
  }
  if (board == nullptr) {
    error = Printable(error);
    return nullptr;
  }
  const std::string log = Value(environment, "VARNOK_TRAFFIC");
  if (!log.empty() && !board->OpenTrafficLog(log)) {
    error = Printable(log) + ": the traffic log cannot be written";
    return nullptr;
  }
  return board;
}

}  // namespace varnok::sim
