#include "sim/board_source.h"

#include <cstdlib>

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
  std::error_code ignored;
  if (source->isDefault && !std::filesystem::exists(source->folder / "board.json", ignored)) {
    if (!Board::CreateDefault(source->folder, error)) return nullptr;
    notice = "created the default simulated board in " + source->folder.string();
  }
  auto board = Board::Open(source->folder, error);
  if (board == nullptr) return nullptr;
  const std::string log = Value(environment, "VARNOK_TRAFFIC");
  if (!log.empty() && !board->OpenTrafficLog(log)) {
    error = log + ": the traffic log cannot be written";
    return nullptr;
  }
  return board;
}

}  // namespace varnok::sim
