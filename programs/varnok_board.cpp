// varnok-board: the simulated board for others to talk to.
#include <signal.h>
#include <sys/signalfd.h>

#include <cstdio>
#include <optional>
#include <string_view>

#include "sim/board_server.h"
#include "sim/board_source.h"

namespace {

constexpr const char* kUsage =
    "Usage: varnok-board serve [FOLDER] --listen 127.0.0.1:PORT [--allow-remote]\n"
    "Answers a virtual machine (QEMU's ipmi-bmc-extern) as the BMC of a simulated board: the one in FOLDER,\n"
    "or the one that varnok uses. Port 0 takes a free port. An address that other computers reach needs\n"
    "--allow-remote: there is no authentication, whoever connects can write to the board.\n";

int Fail(const std::string& error) {
  std::fprintf(stderr, "varnok-board: %s\n", error.c_str());
  return 1;
}

/// The board in `folder`, or for null the one that the environment names.
std::unique_ptr<varnok::sim::Board> Open(const char* folder, std::string& error) {
  std::string notice;
  auto environment = [folder](const char* name) {
    if (folder != nullptr && std::string_view(name) == "VARNOK_BOARD")
      return std::optional<std::string>(folder);
    return varnok::sim::ProcessEnvironment(name);
  };
  auto board = varnok::sim::OpenBoard(environment, notice, error);
  if (!notice.empty()) std::fprintf(stderr, "%s\n", notice.c_str());
  return board;
}

int Serve(const char* folder, const char* address, bool allowsRemote) {
  using namespace varnok::sim;
  // Blocked from the start, so that a signal at any time ends the program in good order.
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  Descriptor stop(signalfd(-1, &signals, SFD_CLOEXEC));
  if (!stop.IsOpen()) return Fail("no signal descriptor can be had");

  std::string error;
  std::unique_ptr<Board> board = Open(folder, error);
  if (board == nullptr) return Fail(error);
  BoardServer server(*board);
  if (!server.Listen(address, error, allowsRemote)) return Fail(Printable(error));
  std::printf("Serving %s on %s\n", board->Images().Folder().c_str(), server.Address().c_str());
  std::fflush(stdout);
  server.Run(stop.Number());
  return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
  varnok::sim::TakeStandardDescriptors();
  const bool allowsRemote = argc > 1 && std::string_view(argv[argc - 1]) == "--allow-remote";
  argc -= allowsRemote;
  bool hasFolder = argc == 5;
  if ((argc == 4 || hasFolder) && std::string_view(argv[1]) == "serve" &&
      std::string_view(argv[argc - 2]) == "--listen")
    return Serve(hasFolder ? argv[2] : nullptr, argv[argc - 1], allowsRemote);
  std::fputs(kUsage, stderr);
  return 2;
}
