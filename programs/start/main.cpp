// START.EFI: the stick's menu, started by the firmware as EFI\BOOT\BOOTX64.EFI or from a shell.
#include "firmware/entry.h"
#include "programs/start/efi_station.h"

namespace varnok {

int Main(int, char*[]) {
  start::EfiStation station;
  start::ServeMenu(station);
  return 0;
}

}  // namespace varnok
