// Load files out of what a board holds: FRU and SDR files that program exactly these bytes, laid out and
// commented as a person would write them. Each is read back by the program's own reader before it is given
// away.
#pragma once

#include <string>
#include <vector>

#include "boards/board_data.h"

namespace varnok::boards {

struct LoadText {
  std::string text;                  ///< empty when no load file can be had
  std::vector<std::string> losses;   ///< what the file does not give back; in the file as comments, too
  std::vector<std::string> remarks;  ///< what is worth knowing though nothing is lost
};

/// `name` is what the file calls itself, `address` the device that it programs.
LoadText FruLoadText(std::span<const std::uint8_t> image, const DeviceAddress& address,
                     const std::string& name);

/// `rest` are the bytes of a dump behind its last whole record.
LoadText SdrLoadText(const std::vector<Bytes>& records, std::span<const std::uint8_t> rest,
                     const std::string& name);

}  // namespace varnok::boards
