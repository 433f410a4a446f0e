// Pool memory of this image: aligned for any object, which the firmware's own blocks are not, and kept in a
// register, so that all of it can be returned when the program ends without running its destructors.
#pragma once

#include <cstddef>

namespace varnok::uefi {

/// Uninitialised memory aligned to 16 bytes, or null.
void* AllocatePoolBlock(std::size_t bytes);
void FreePoolBlock(void* memory);

/// The most bytes that the image has held of the firmware's pool at one time, each block's own among them.
std::size_t MostPoolBytes();

void FreeAllPoolBlocks();

}  // namespace varnok::uefi
