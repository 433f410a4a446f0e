// Apart from the facade, since only a program with an entry can link it.
#include <cstring>
#include <string>
#include <vector>

#include "firmware/entry.h"
#include "firmware/host/host_firmware.h"
#include "firmware/host/utf8.h"

namespace varnok::host {

int RunProgram(Machine& machine, int argc, char* argv[]) {
  HostFirmware firmware(machine);
  InstallFirmware(&firmware);
  std::vector<std::string> arguments;
  arguments.reserve(argc);
  for (int i = 0; i < argc; ++i) arguments.push_back(Latin1FromUtf8(argv[i]));
  std::vector<char*> vector;
  vector.reserve(arguments.size());
  for (std::string& argument : arguments) vector.push_back(argument.data());
  vector.push_back(nullptr);
  int status = Main(argc, vector.data());
  if (const int error = FlushConsoleOutput(); error != 0) {
    Complain(std::string("the output is not complete: ") + std::strerror(error));
    if (status == 0) return kOutputLostStatus;
  }
  // Linux keeps a status's low byte only, which would make a script's error level of 100h a success.
  return status >= 0 && status <= kLargestStatus ? status : kLargestStatus;
}

}  // namespace varnok::host
