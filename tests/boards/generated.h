// Generated FRU images and sensor data records: every choice comes from a seeded source, so that a failing
// case comes again.
#pragma once

#include <random>

#include "boards/board_data.h"
#include "sim/fru_builder.h"

namespace varnok::testing {

class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  /// `low` to `high`.
  unsigned Number(unsigned low, unsigned high) {
    return low + static_cast<unsigned>(random_() % (high - low + 1));
  }
  bool IsOneIn(unsigned count) { return Number(1, count) == 1; }
  std::uint8_t Byte() { return static_cast<std::uint8_t>(random_()); }

  /// An image with any of the areas, fields of all encodings and texts that load files have trouble with.
  boards::Bytes Image() {
    sim::FruLayout layout;
    if (IsOneIn(2)) layout.internalUse = Some(Number(1, 60));
    layout.chassisType = Byte();
    if (!IsOneIn(3)) layout.chassis = Fields(2);
    layout.boardMinutes = static_cast<std::uint32_t>(random_() & 0xFFFFFF);
    if (!IsOneIn(3)) layout.board = Fields(5);
    if (!IsOneIn(3)) layout.product = Fields(7);
    for (unsigned i = IsOneIn(2) ? Number(0, 4) : 0; i > 0; --i)
      layout.records.push_back({RecordType(), Some(Number(0, 40))});
    return sim::BuildFruImage(layout, 2560);
  }

  /// A record of a known type with the length that its ID string asks for.
  boards::Bytes Record() {
    struct Row {
      std::uint8_t type;
      unsigned fixed;
      bool hasName;
    };
    static constexpr Row kRows[] = {{0x01, 48, true},  {0x02, 32, true},  {0x03, 17, true}, {0x08, 16, false},
                                    {0x09, 32, false}, {0x10, 16, true},  {0x11, 16, true}, {0x12, 16, true},
                                    {0x13, 32, false}, {0x14, 16, false}, {0xC0, 10, false}};
    const Row& row = kRows[Number(0, std::size(kRows) - 1)];
    boards::Bytes record = Some(row.fixed);
    boards::Bytes name = row.hasName ? Text(30) : row.type == 0xC0 ? Text(54) : boards::Bytes{};
    if (row.hasName) record.back() = static_cast<std::uint8_t>(Number(0, 3) << 6 | name.size());
    record.insert(record.end(), name.begin(), name.end());
    record[2] = 0x51;
    record[3] = row.type;
    record[4] = static_cast<std::uint8_t>(record.size() - 5);
    return record;
  }

  /// Changes one to three bytes anywhere, most of them in front.
  void Damage(boards::Bytes& bytes) {
    for (unsigned i = Number(1, 3); i > 0; --i)
      bytes[Number(0, static_cast<unsigned>(bytes.size()) - 1) / (IsOneIn(2) ? 1 : 5)] = Byte();
  }

 private:
  boards::Bytes Some(std::size_t count) {
    boards::Bytes bytes(count);
    for (std::uint8_t& byte : bytes) byte = Byte();
    return bytes;
  }

  boards::Bytes Text(unsigned longest) {
    static const std::string_view kHard[] = {"it's", "http://x",  "_SEE_BOARD", "_SDR_TYPE 01", ")", " ",
                                             "a\tb", "\xE9t\xE9", "C0"};
    std::string text;
    while (text.size() < Number(0, longest))
      text += IsOneIn(4) ? kHard[Number(0, std::size(kHard) - 1)] : "AbC 0-9";
    text.resize(std::min<std::size_t>(text.size(), longest));
    return {text.begin(), text.end()};
  }

  std::vector<sim::FruField> Fields(unsigned fixed) {
    std::vector<sim::FruField> fields;
    for (unsigned i = fixed + Number(0, 3); i > 0; --i) {
      const boards::Bytes text = Text(IsOneIn(8) ? 63 : 20);
      fields.emplace_back(static_cast<std::uint8_t>(Number(0, 3)), std::string(text.begin(), text.end()));
    }
    return fields;
  }

  std::uint8_t RecordType() { return static_cast<std::uint8_t>(IsOneIn(3) ? 0xC0 : Number(0, 6)); }

  std::mt19937 random_;
};

}  // namespace varnok::testing
