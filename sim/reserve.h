// Memory for a simulated board when the computer has none left. A real board needs none of the computer's:
// what is being programmed into it is programmed to the end, and so it is here.
#pragma once

#include <cstddef>

namespace varnok::sim {

/// While one lives, the board is at work and may take from the reserve.
class BoardAtWork {
 public:
  BoardAtWork();
  ~BoardAtWork();
  BoardAtWork(const BoardAtWork&) = delete;
  BoardAtWork& operator=(const BoardAtWork&) = delete;
};

// For the program's operator new and delete.
/// Memory aligned to 16 bytes; null when no board is at work or the reserve is used up.
void* TakeFromReserve(std::size_t bytes) noexcept;
/// False for memory that is not of the reserve.
bool GiveBackToReserve(void* memory) noexcept;

}  // namespace varnok::sim
