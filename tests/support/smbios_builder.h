// Builds an SMBIOS 2.x table, right or broken, for a test machine.
//
//   SmbiosBuilder table;
//   table.Add(3, {0x01, 0x17, 0x02, 0x03, 0x04}, {"Maker", "1.0", "SN1", "AT1"});
//   table.Install(machine);
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "tests/support/test_firmware.h"

namespace varnok::testing {

class SmbiosBuilder {
 public:
  using Bytes = std::vector<std::uint8_t>;
  static constexpr std::uint32_t kAddress = 0x7F000000;

  /// Appends a structure: `fields` follow its header (type, length, handle). Handles count from 0100h.
  SmbiosBuilder& Add(std::uint8_t type, const Bytes& fields,
                     std::initializer_list<std::string> strings = {}) {
    table.insert(table.end(), {type, static_cast<std::uint8_t>(4 + fields.size()),
                               static_cast<std::uint8_t>(count), 0x01});
    table.insert(table.end(), fields.begin(), fields.end());
    for (const std::string& text : strings) {
      table.insert(table.end(), text.begin(), text.end());
      table.push_back(0);
    }
    table.insert(table.end(), strings.size() == 0 ? 2 : 1, 0);
    ++count;
    length = static_cast<std::uint16_t>(table.size());
    return *this;
  }

  /// Puts the table into the machine; must outlive its use.
  void Install(TestFirmware& machine) {
    entryPoint.assign(0x1F, 0);
    for (std::size_t i = 0; i < 4; ++i) entryPoint[i] = static_cast<std::uint8_t>(anchor[i]);
    entryPoint[0x05] = entryLength;
    Put(0x16, length, 2);
    Put(0x18, kAddress, 4);
    Put(0x1C, count, 2);
    machine.memory[kAddress] = table;
    machine.smbiosEntryPoint = entryPoint.data();
  }

  // What the entry point says; Add keeps the counts right, a test may then make them wrong.
  std::string anchor = "_SM_";
  std::uint8_t entryLength = 0x1F;
  std::uint16_t length = 0;
  std::uint16_t count = 0;
  Bytes table;

 private:
  void Put(std::size_t offset, std::uint32_t number, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i)
      entryPoint[offset + i] = static_cast<std::uint8_t>(number >> (8 * i));
  }

  Bytes entryPoint;
};

}  // namespace varnok::testing
