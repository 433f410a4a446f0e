// varnok-board serve: the simulated board as the BMC of a virtual machine.
#include <signal.h>
#include <sys/signalfd.h>

#include <memory>
#include <optional>

#include "programs/board/command.h"
#include "programs/board/output.h"
#include "sim/board_server.h"
#include "sim/board_source.h"

namespace varnok::companion {
namespace {

constexpr Option kOptions[] = {
    {"FOLDER", "", "The board; the one that varnok uses when none is named"},
    {"--listen", "ADDRESS:PORT", "Where to listen, such as 127.0.0.1:9002; port 0 takes a free one",
     Option::Required},
    {"--allow-remote", "",
     "Take an address that other computers reach: there is no authentication, whoever connects "
     "can write to the board"},
};

/// The board in `folder`, or for an empty one that which the environment names.
std::unique_ptr<sim::Board> Open(const std::string& folder, std::string& error) {
  std::string notice;
  auto environment = [&folder](const char* name) {
    if (!folder.empty() && std::string_view(name) == "VARNOK_BOARD")
      return std::optional<std::string>(folder);
    return sim::ProcessEnvironment(name);
  };
  auto board = sim::OpenBoard(environment, notice, error);
  if (!notice.empty()) Note(notice);
  return board;
}

int Run(const Arguments& arguments) {
  // Blocked from the start, so that a signal at any time ends the program in good order.
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  sim::Descriptor stop(signalfd(-1, &signals, SFD_CLOEXEC));
  if (!stop.IsOpen()) return Fail("no signal descriptor can be had");

  std::string error;
  std::unique_ptr<sim::Board> board = Open(arguments.Value("FOLDER"), error);
  if (board == nullptr) return Fail(error);
  sim::BoardServer server(*board);
  if (!server.Listen(arguments.Value("--listen"), error, arguments.Has("--allow-remote"))) return Fail(error);
  PrintLine("Serving " + board->Images().Folder().string() + " on " + server.Address());
  std::fflush(stdout);
  server.Run(stop.Number());
  return kDone;
}

}  // namespace

const Command kServe = {"serve", "Answer a virtual machine as the BMC of a board", kOptions,
                        "  varnok-board serve myboard --listen 127.0.0.1:9002", Run};

}  // namespace varnok::companion
