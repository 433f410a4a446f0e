#include "driver/kcs_location.h"

#include <gtest/gtest.h>

#include <cstring>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

namespace varnok {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes Join(std::initializer_list<Bytes> parts) {
  Bytes joined;
  for (const Bytes& part : parts) joined.insert(joined.end(), part.begin(), part.end());
  return joined;
}

const Bytes kBiosRecord{0, 6, 0, 0, 1, 2, 'A', 0, 'B', 'C', 0, 0};
const Bytes kEnd{127, 4, 0xFF, 0, 0, 0};

/// An IPMI device record; without a modifier it is of version 1.0.
Bytes IpmiDevice(std::uint8_t interface, std::uint16_t base, std::optional<std::uint8_t> modifier) {
  Bytes record(modifier ? 0x12 : 0x10);
  record[0x00] = 38;
  record[0x01] = static_cast<std::uint8_t>(record.size());
  record[0x04] = interface;
  record[0x08] = static_cast<std::uint8_t>(base & 0xFF);
  record[0x09] = static_cast<std::uint8_t>(base >> 8);
  if (modifier) record[0x10] = *modifier;
  return Join({record, {0, 0}});
}

TEST(KcsLocation, IsReadFromTheFirstUsableRecord) {
  struct Case {
    const char* name;
    Bytes structures;
    std::optional<KcsLocation> expected;
  } const cases[] = {
      {"ports", IpmiDevice(1, 0xCA3, 0x00), KcsLocation{0xCA2, 1, true}},
      {"odd port", IpmiDevice(1, 0xCA3, 0x10), KcsLocation{0xCA3, 1, true}},
      {"spacing 4", IpmiDevice(1, 0xCA1, 0x40), KcsLocation{0xCA0, 4, true}},
      {"spacing 16 in memory", IpmiDevice(1, 0x8000, 0x80), KcsLocation{0x8000, 16, false}},
      {"memory", IpmiDevice(1, 0x8000, 0x0F), KcsLocation{0x8000, 1, false}},
      {"no modifier", IpmiDevice(1, 0xCA9, {}), KcsLocation{0xCA8, 1, true}},
      {"other interface, reserved spacing, no address",
       Join({IpmiDevice(4, 0x40, 0), IpmiDevice(1, 0xCA3, 0xC0), IpmiDevice(1, 0, 0),
             IpmiDevice(1, 0xDA3, 0)}),
       KcsLocation{0xDA2, 1, true}},
      {"behind the end", Join({kEnd, IpmiDevice(1, 0xCA3, 0)}), std::nullopt},
      {"behind a broken length", Join({{1, 3, 0, 0, 0}, IpmiDevice(1, 0xCA3, 0)}), std::nullopt},
      {"no record", Bytes(64), std::nullopt},
  };
  for (const Case& one : cases)
    EXPECT_EQ(FindIpmiDevices(Join({kBiosRecord, one.structures, kEnd})).kcs, one.expected) << one.name;
}

TEST(KcsLocation, OtherInterfacesAreNamed) {
  for (auto [interface, name] : {std::pair(0, ""), {1, ""}, {2, "SMIC"}, {3, "BT"}, {4, "SSIF"}, {34, ""}}) {
    const Bytes structures = IpmiDevice(static_cast<std::uint8_t>(interface), 0xCA3, 0);
    const char16_t* other = FindIpmiDevices(structures).OtherInterface();
    EXPECT_EQ(std::u16string(other == nullptr ? u"" : other), std::u16string(name, name + std::strlen(name)));
  }
}

TEST(KcsLocation, IsNotReadFromACutRecord) {
  Bytes whole = Join({kBiosRecord, IpmiDevice(1, 0xCA3, 0)});
  for (std::size_t length = 0; length < whole.size() - 2; ++length)
    EXPECT_EQ(FindIpmiDevices(std::span(whole).first(length)).kcs, std::nullopt) << length;
}

/// An entry point whose fields behind its head hold their own offsets; the checksum stands before the length.
Bytes EntryPoint(std::string_view anchor, std::size_t length) {
  Bytes entry(0x20);
  std::iota(entry.begin() + 0x0C, entry.begin() + static_cast<std::ptrdiff_t>(length), std::uint8_t{0x0C});
  std::copy(anchor.begin(), anchor.end(), entry.begin());
  entry[anchor.size() + 1] = static_cast<std::uint8_t>(length);
  entry[anchor.size()] = static_cast<std::uint8_t>(
      -std::accumulate(entry.begin(), entry.begin() + static_cast<std::ptrdiff_t>(length), 0));
  return entry;
}

TEST(SmbiosEntryPoint, ReadsBothForms) {
  EXPECT_EQ(ReadSmbiosEntryPoint(EntryPoint("_SM_", 0x1F)), (SmbiosStructures{0x1B1A1918, 0x1716}));
  EXPECT_EQ(ReadSmbiosEntryPoint(EntryPoint("_SM3_", 0x18)),
            (SmbiosStructures{0x1716151413121110, 0x0F0E0D0C}));
}

TEST(SmbiosEntryPoint, RefusesWrongAnchorLengthAndChecksum) {
  Bytes entry = EntryPoint("_SM_", 0x1F);
  EXPECT_EQ(ReadSmbiosEntryPoint(std::span(entry).first(0x1E)), std::nullopt);
  entry[0x18] ^= 1;
  EXPECT_EQ(ReadSmbiosEntryPoint(entry), std::nullopt);
  EXPECT_EQ(ReadSmbiosEntryPoint(EntryPoint("_SM_", 0x10)), std::nullopt);
  EXPECT_EQ(ReadSmbiosEntryPoint(EntryPoint("_SN_", 0x1F)), std::nullopt);
  EXPECT_EQ(ReadSmbiosEntryPoint({}), std::nullopt);
}

}  // namespace
}  // namespace varnok
