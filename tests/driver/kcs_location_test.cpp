#include "driver/kcs_location.h"

#include <gtest/gtest.h>

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

/// An IPMI device record: interface type, base address, base address modifier.
Bytes IpmiDevice(std::uint8_t interface, std::uint16_t base, std::uint8_t modifier) {
  return {38,
          0x12,
          5,
          0,
          interface,
          0x20,
          0x20,
          0xFF,
          static_cast<std::uint8_t>(base),
          static_cast<std::uint8_t>(base >> 8),
          0,
          0,
          0,
          0,
          0,
          0,
          modifier,
          0,
          0,
          0};
}

TEST(KcsLocation, ReadsAddressSpaceAndSpacing) {
  struct Row {
    std::uint16_t base;
    std::uint8_t modifier;
    KcsLocation expected;
  };
  const Row rows[] = {
      {0x0CA3, 0x00, {0xCA2, 1, true}},   {0x0CA3, 0x10, {0xCA3, 1, true}},
      {0x0CA1, 0x40, {0xCA0, 4, true}},   {0x8000, 0x80, {0x8000, 16, false}},
      {0x8000, 0x0F, {0x8000, 1, false}},
  };
  for (const Row& row : rows)
    EXPECT_EQ(FindKcs(Join({kBiosRecord, IpmiDevice(1, row.base, row.modifier), kEnd})), row.expected)
        << row.base;
}

TEST(KcsLocation, ReadsARecordWithoutModifier) {
  Bytes record = IpmiDevice(1, 0xCA9, 0xFF);
  record[1] = 0x10;
  record.resize(0x10);
  EXPECT_EQ(FindKcs(Join({record, Bytes{0, 0}, kEnd})), (KcsLocation{0xCA8, 1, true}));
}

TEST(KcsLocation, PassesOverOtherInterfacesAndReservedSpacings) {
  EXPECT_EQ(
      FindKcs(Join({IpmiDevice(4, 0x40, 0), IpmiDevice(1, 0xCA3, 0xC0), IpmiDevice(1, 0xDA3, 0), kEnd})),
      (KcsLocation{0xDA2, 1, true}));
  EXPECT_EQ(FindKcs(Join({kBiosRecord, kEnd, IpmiDevice(1, 0xCA3, 0)})), std::nullopt);
}

TEST(KcsLocation, StopsAtBrokenStructures) {
  Bytes whole = Join({kBiosRecord, IpmiDevice(1, 0xCA3, 0)});
  for (std::size_t length = 0; length < kBiosRecord.size() + 0x12; ++length)
    EXPECT_EQ(FindKcs(std::span(whole).first(length)), std::nullopt) << length;
  EXPECT_EQ(FindKcs(Join({Bytes{1, 3, 0, 0, 0, 0}, whole})), std::nullopt);
  EXPECT_EQ(FindKcs(Bytes(64, 0)), std::nullopt);
}

Bytes EntryPoint(std::string_view anchor, std::size_t length, std::size_t lengthOffset) {
  Bytes entry(0x20, 0);
  std::copy(anchor.begin(), anchor.end(), entry.begin());
  entry[lengthOffset] = static_cast<std::uint8_t>(length);
  for (std::size_t i = 0x0C; i < length; ++i) entry[i] = static_cast<std::uint8_t>(i);
  return entry;
}

void Seal(Bytes& entry, std::size_t length, std::size_t checksumOffset) {
  std::uint8_t sum = 0;
  entry[checksumOffset] = 0;
  for (std::size_t i = 0; i < length; ++i) sum = static_cast<std::uint8_t>(sum + entry[i]);
  entry[checksumOffset] = static_cast<std::uint8_t>(0 - sum);
}

TEST(SmbiosEntryPoint, ReadsBothForms) {
  Bytes old = EntryPoint("_SM_", 0x1F, 5);
  Seal(old, 0x1F, 4);
  EXPECT_EQ(ReadSmbiosEntryPoint(old), (SmbiosStructures{0x1B1A1918, 0x1716}));
  Bytes recent = EntryPoint("_SM3_", 0x18, 6);
  Seal(recent, 0x18, 5);
  EXPECT_EQ(ReadSmbiosEntryPoint(recent), (SmbiosStructures{0x1716151413121110, 0x0F0E0D0C}));
}

TEST(SmbiosEntryPoint, RefusesWrongAnchorLengthAndChecksum) {
  Bytes entry = EntryPoint("_SM_", 0x1F, 5);
  Seal(entry, 0x1F, 4);
  EXPECT_EQ(ReadSmbiosEntryPoint(std::span(entry).first(0x1E)), std::nullopt);
  Bytes wrongSum = entry;
  wrongSum[0x18] ^= 1;
  EXPECT_EQ(ReadSmbiosEntryPoint(wrongSum), std::nullopt);
  Bytes shortLength = EntryPoint("_SM_", 0x10, 5);
  Seal(shortLength, 0x10, 4);
  EXPECT_EQ(ReadSmbiosEntryPoint(shortLength), std::nullopt);
  Bytes wrongAnchor = EntryPoint("_SN_", 0x1F, 5);
  Seal(wrongAnchor, 0x1F, 4);
  EXPECT_EQ(ReadSmbiosEntryPoint(wrongAnchor), std::nullopt);
  EXPECT_EQ(ReadSmbiosEntryPoint({}), std::nullopt);
}

}  // namespace
}  // namespace varnok
