// What a request is called, and whether it can change what a board stores.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace varnok::rehearsal {

/// "Write FRU Data"; "net function 30h, command 10h" for one without a name here.
std::string CommandName(std::uint8_t netFunction, std::uint8_t number);

/// `data` is the request's.
bool CanWrite(std::uint8_t netFunction, std::uint8_t number, std::span<const std::uint8_t> data);

}  // namespace varnok::rehearsal
