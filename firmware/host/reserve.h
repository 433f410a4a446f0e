// Memory for what stands behind the IPMI protocol when the computer has none left: a simulated board, the
// account of what is written. A real board needs none of the computer's: what is being programmed into it is
// programmed to the end, and so it is here.
#pragma once

#include <cstddef>

namespace varnok::host {

/// While one lives, what is allocated may come from the reserve.
class MachineAtWork {
 public:
  MachineAtWork();
  ~MachineAtWork();
  MachineAtWork(const MachineAtWork&) = delete;
  MachineAtWork& operator=(const MachineAtWork&) = delete;
};

// For the program's operator new and delete.
/// Memory aligned to 16 bytes; null when no machine is at work or the reserve is used up.
void* TakeFromReserve(std::size_t bytes) noexcept;
/// False for memory that is not of the reserve.
bool GiveBackToReserve(void* memory) noexcept;

}  // namespace varnok::host
