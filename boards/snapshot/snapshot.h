// A machine's board read into data: identity, FRU devices, EEPROMs, SDR repository, sensor readings, SMBIOS
// tables. The same code reads it on the desk, over Linux's IPMI device and under UEFI. What cannot be read is
// listed, the rest is kept.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "boards/board_data.h"
#include "boards/snapshot/exchange.h"

namespace varnok::boards {

/// Something that could not be read.
struct Unread {
  std::string what;  ///< "2@C0", "SDR record 0012h", "sensor 30h"
  Outcome outcome;
};

struct Snapshot {
  Board board;
  std::vector<Unread> unread;
};

/// Reads the board of the installed machine. `named` are devices to read besides those that the BMC and its
/// SDRs name. False, with the reason in `error`, when there is no BMC that answers.
bool TakeSnapshot(std::span<const DeviceAddress> named, Observer& observer, Snapshot& snapshot,
                  std::string& error);

/// Starts the transport and asks the BMC who it is. False as above.
bool ReachBmc(Identity& identity, std::string& error);

}  // namespace varnok::boards
