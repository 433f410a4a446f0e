// Whether a request can change what a board stores.
#pragma once

#include <cstdint>
#include <span>

namespace varnok::rehearsal {

/// `data` is the request's.
bool CanWrite(std::uint8_t netFunction, std::uint8_t command, std::span<const std::uint8_t> data);

}  // namespace varnok::rehearsal
