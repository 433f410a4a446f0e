// A run with the whole trace in DBGLOG.txt, which no command line of the program brings: a trace switch makes
// it invalid. traced_run BOARD-FOLDER ARGUMENTS...
#include <cstdio>

#include "app/services/trace.h"
#include "app/varnok.h"
#include "firmware/host/host_firmware.h"
#include "sim/board.h"

int main(int argc, char* argv[]) {
  using namespace varnok;
  if (argc < 3) return 2;
  std::string error;
  auto board = sim::Board::Open(argv[1], error);
  if (board == nullptr) {
    std::fprintf(stderr, "%s\n", error.c_str());
    return 3;
  }
  host::HostFirmware firmware(*board);
  InstallFirmware(&firmware);
  const char* const traced[] = {"varnok", "-debug3"};
  TraceSelectLevel(2, traced);
  CVarnok application;
  int status = application.Initialize();
  if (status == 0) status = application.ParseCommandLine(argc - 1, argv + 1);
  return status == 0 ? application.Execute() : status;
}
