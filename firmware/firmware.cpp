#include "firmware/firmware.h"

namespace varnok {
namespace {

Firmware* installed = nullptr;

}  // namespace

Firmware& TheFirmware() {
  return *installed;
}

Firmware* InstallFirmware(Firmware* firmware) {
  Firmware* previous = installed;
  installed = firmware;
  return previous;
}

}  // namespace varnok
