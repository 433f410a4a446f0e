// The checks of one file each.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "boards/check/check.h"
#include "fru/fru_device_address.h"

namespace varnok::boards {

using Findings = std::vector<Finding>;

/// What a script makes of the files that it names.
struct ScriptUse {
  struct File {
    std::string path;
    std::size_t line = 0;  ///< of the command that names it
    LoadFileKind kind = LoadFileKind::Fru;
    bool hasOtherAddress = false;  ///< a FRUADDRESS takes the place of the file's own address
  };
  std::vector<File> files;
  std::set<std::string> tagsSet;  ///< in capitals
};

void CheckFruFile(const std::string& file, const std::string& text, const Board* board, Findings& findings);
/// `tags`, when not null, are all that the script sets which names the file.
void CheckSdrFile(const std::string& file, const std::string& text, const Board* board,
                  const std::set<std::string>* tags, Findings& findings);
ScriptUse CheckScript(const std::string& file, const Board* board, Findings& findings);
/// The tags of an SDR file's records, in capitals; none for a file that is refused.
std::set<std::string> TagsOfSdrFile(const std::string& text);

/// The device of a board folder that an address of the program leads to.
DeviceAddress DeviceAt(const FruDeviceAddress& address);
/// Reports a board without the device, or one that has fewer bytes than are written.
void CheckDevice(const FruDeviceAddress& address, std::size_t needed, const Board& board, Finding place,
                 Findings& findings);

}  // namespace varnok::boards
