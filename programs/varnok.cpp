// The Linux program: the same core over a simulated board.
#include <cstdio>

#include "firmware/host/host_firmware.h"
#include "sim/board_source.h"

int main(int argc, char* argv[]) {
  using namespace varnok;
  std::string notice;
  std::string error;
  std::unique_ptr<sim::Board> board = sim::OpenBoard(sim::ProcessEnvironment, notice, error);
  if (!notice.empty()) std::fprintf(stderr, "varnok: %s\n", notice.c_str());
  if (board == nullptr) {
    std::fprintf(stderr, "varnok: %s\n", error.c_str());
    return host::kNoBoardStatus;
  }
  return host::RunProgram(*board, argc, argv);
}
