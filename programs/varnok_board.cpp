// varnok-board: the simulated board for others to talk to.
#include <signal.h>
#include <sys/signalfd.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "sim/board_server.h"

namespace {

constexpr const char* kUsage =
    "Usage: varnok-board serve FOLDER --listen 127.0.0.1:PORT\n"
    "Answers a virtual machine (QEMU's ipmi-bmc-extern) as the BMC of the simulated board in FOLDER.\n"
    "Port 0 takes a free port. VARNOK_TRAFFIC names a file for a log of all requests and answers.\n";

int Fail(const std::string& error) {
  std::fprintf(stderr, "varnok-board: %s\n", error.c_str());
  return 1;
}

int Serve(const char* folder, const char* address) {
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
  std::unique_ptr<Board> board = Board::Open(folder, error);
  if (board == nullptr) return Fail(error);
  const char* traffic = std::getenv("VARNOK_TRAFFIC");
  if (traffic != nullptr && *traffic != '\0' && !board->OpenTrafficLog(traffic))
    return Fail(std::string(traffic) + " cannot be written");
  BoardServer server(*board);
  if (!server.Listen(address, error)) return Fail(error);
  std::printf("Serving %s on %s\n", folder, server.Address().c_str());
  std::fflush(stdout);
  server.Run(stop.Number());
  return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc == 5 && std::string_view(argv[1]) == "serve" && std::string_view(argv[3]) == "--listen")
    return Serve(argv[2], argv[4]);
  std::fputs(kUsage, stderr);
  return 2;
}
