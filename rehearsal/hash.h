// Hashes by which states and images are told apart; 64 bits, well mixed.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace varnok::rehearsal {

/// The finaliser of splitmix64 over both.
constexpr std::uint64_t Mixed(std::uint64_t hash, std::uint64_t value) {
  std::uint64_t mixed = (hash ^ value) + 0x9E3779B97F4A7C15;
  mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9;
  mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EB;
  return mixed ^ (mixed >> 31);
}

/// FNV-1a, mixed once more with the length.
constexpr std::uint64_t HashOf(std::span<const std::uint8_t> bytes) {
  std::uint64_t hash = 0xCBF29CE484222325;
  for (std::uint8_t byte : bytes) hash = (hash ^ byte) * 0x100000001B3;
  return Mixed(hash, bytes.size());
}

inline std::uint64_t HashOf(std::string_view text) {
  return HashOf(std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

}  // namespace varnok::rehearsal
