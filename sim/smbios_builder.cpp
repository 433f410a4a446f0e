#include "sim/smbios_builder.h"

#include <algorithm>

#include "firmware/smbios_layout.h"

namespace varnok::sim {

SmbiosStructure::SmbiosStructure(std::uint8_t type, std::uint16_t handle) {
  Byte(type).Byte(0).Word(handle);  // the length follows in Finish
}

SmbiosStructure& SmbiosStructure::Number(std::uint64_t value, std::size_t bytes) {
  for (std::size_t i = 0; i < bytes; ++i) formatted_.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
  return *this;
}

SmbiosStructure& SmbiosStructure::Raw(const Bytes& bytes) {
  formatted_.insert(formatted_.end(), bytes.begin(), bytes.end());
  return *this;
}

SmbiosStructure& SmbiosStructure::String(std::string_view text) {
  if (text.empty()) return Byte(0);
  strings_.insert(strings_.end(), text.begin(), text.end());
  strings_.push_back(0);
  return Byte(++stringCount_);
}

Bytes SmbiosStructure::Finish() const {
  Bytes structure = formatted_;
  structure[1] = static_cast<std::uint8_t>(formatted_.size());
  structure.insert(structure.end(), strings_.begin(), strings_.end());
  if (stringCount_ == 0) structure.push_back(0);
  structure.push_back(0);
  return structure;
}

Bytes BuildSmbiosDump(std::uint8_t major, std::uint8_t minor, const std::vector<Bytes>& structures) {
  constexpr std::uint32_t kTableOffset = 32;
  Bytes dump(kTableOffset);
  smbios::TableFacts facts{major, minor, kTableOffset, 0, static_cast<std::uint16_t>(structures.size()), 0};
  for (const Bytes& structure : structures) {
    dump.insert(dump.end(), structure.begin(), structure.end());
    facts.largestStructure = std::max(facts.largestStructure, static_cast<std::uint16_t>(structure.size()));
  }
  facts.length = static_cast<std::uint16_t>(dump.size() - kTableOffset);
  smbios::WriteEntryPoint(facts, dump);
  return dump;
}

}  // namespace varnok::sim
