// Apart from the facade, since only a program with an entry can link it.
#include <cstring>
#include <string>
#include <vector>

#include "firmware/entry.h"
#include "firmware/host/argument_list.h"
#include "firmware/host/host_firmware.h"
#include "firmware/host/utf8.h"

namespace varnok::host {

int RunProgram(Machine& machine, int argc, char* argv[]) {
  HostFirmware firmware(machine);
  InstallFirmware(&firmware);
  ArgumentList arguments(Latin1FromUtf8(std::vector<std::string>(argv, argv + argc)));
  int status = Main(arguments.Count(), arguments.Pointers());
  if (const int error = FlushConsoleOutput(); error != 0) {
    Complain(std::string("the output is not complete: ") + std::strerror(error));
    if (status == 0) return kOutputLostStatus;
  }
  // Linux keeps a status's low byte only, which would make a script's error level of 100h a success.
  return status >= 0 && status <= kLargestStatus ? status : kLargestStatus;
}

}  // namespace varnok::host
