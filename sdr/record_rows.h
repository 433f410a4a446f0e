// The record types as data: each field of a type is declared once, and decoding, value texts, byte locations
// and the file writer follow from it. Bytes are numbered from 1, as IPMI v2.0, section 43, numbers them.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "firmware/pool.h"
#include "sdr/decode_tables.h"

namespace varnok {

/// Bits `high` to `low` of one byte; byte 0 is none.
struct SdrBits {
  std::uint8_t byte = 0;
  std::uint8_t high = 7;
  std::uint8_t low = 0;

  constexpr bool IsWholeByte() const { return high == 7 && low == 0; }
};

/// Where a number stands: up to three groups of bits, the most significant first.
using SdrPlace = std::array<SdrBits, 3>;

constexpr SdrPlace ByteAt(std::uint8_t byte) {
  return {{{byte}}};
}
constexpr SdrPlace BitsAt(std::uint8_t byte, std::uint8_t high, std::uint8_t low) {
  return {{{byte, high, low}}};
}
constexpr SdrPlace WordAt(std::uint8_t low) {
  return {{{static_cast<std::uint8_t>(low + 1)}, {low}}};
}
constexpr SdrPlace TripleAt(std::uint8_t low) {
  return {{{static_cast<std::uint8_t>(low + 2)}, {static_cast<std::uint8_t>(low + 1)}, {low}}};
}
constexpr SdrPlace Joined(SdrBits high, SdrBits low) {
  return {{high, low}};
}

/// How a value is shown. The widths are those of its line in a file, too.
enum class SdrShow : std::uint8_t {
  Byte,          ///< "%02xh"
  EvenByte,      ///< "%02xh" of the byte AND FEh
  Word,          ///< "%04xh"
  SwappedWord,   ///< "%04xh" with the two bytes exchanged; a file has them like those of a Word
  Triple,        ///< "%06xh"
  Mask,          ///< "%04xh" without bit 15
  SettableMask,  ///< as Mask, but AND 3F3Fh when the sensor has thresholds to access
  SensorNumber,  ///< "%02xh"; FFh shows the text of `alternative`
  Entity,        ///< "%d - %ls" up to 25h, "%02xh - %ls" above
  Code,          ///< "%02xh - %ls"
  DecimalCode,   ///< "%d - %ls"
  CodeText,      ///< the text of the table alone
  Binary,        ///< binary digits, `detail` of them
  Threshold,     ///< "%02xh", empty while the sensor does not initialise its thresholds
  Reserved,      ///< "XX"
  IdString,      ///< the ID string
  Guid,          ///< 16 bytes, "%02x " each
  OemData,       ///< text when it begins with a printable character, else "%02x " each
};

struct SdrField {
  const char* title;
  const char* location;
  SdrPlace place;
  SdrShow show = SdrShow::Byte;
  std::uint8_t detail = 0;  ///< index of the decode table, or width in bits
  /// The title of a sensor without thresholds to access; the text of sensor number FFh.
  const char* alternative = nullptr;
};

/// A field as it stands in the image: its texts are places in the texts of its type, because hundreds of
/// pointers cost more than the texts.
struct SdrFieldRow {
  std::uint16_t title = 0;
  std::uint16_t location = 0;
  std::uint16_t alternative = 0;
  SdrPlace place;
  SdrShow show = SdrShow::Byte;
  std::uint8_t detail = 0;
};

struct SdrRowList : std::span<const SdrFieldRow> {
  const char* texts = nullptr;

  const char* Text(std::uint16_t place) const { return texts + place; }
};

enum class SdrLength : std::uint8_t {
  WithIdString,  ///< `size` and the length in byte number `size`, the ID string's type/length byte
  Exactly,       ///< `size`, tested before the header
  AtMost,        ///< up to `size`
};

/// The one-line name, with the value texts that fill it.
enum class SdrNameForm : std::uint8_t {
  Sensor,    ///< " %ls (%ls)(%ls)(Sensor #%ls)" of `namedField`, ID string, record ID, sensor number
  Locator,   ///< " %ls (%ls)(%ls)" of `namedField`, ID string, record ID
  RecordId,  ///< `nameFormat` with the record ID
  Guid,      ///< " %ls (%ls)" of the device GUID and the record ID
};

enum class SdrTitleForm : std::uint8_t {
  IdStringIfAny,  ///< "%ls - %ls" of `title` and the ID string; the title alone without one
  IdString,       ///< "%ls - %ls" of `title` and the ID string, empty or not
  RecordId,       ///< "%ls - %ls" of `title` and the record ID
  Guid,           ///< "%ls - %ls" of `title` and the device GUID
  Fixed,          ///< `title`
};

class CSdr;

struct SdrTypeRows {
  const char* className;
  /// Makes a record of the type; null without memory.
  PoolPtr<CSdr> (*make)();
  /// The fields, in order, then rows that are only written to files.
  SdrRowList rows;
  std::size_t fileOnlyRows = 0;
  SdrLength lengthRule;
  std::uint8_t size;
  /// The last key byte; 0 for a type without keys.
  std::uint8_t lastKeyByte;
  SdrNameForm nameForm;
  std::size_t namedField;
  const char* nameFormat;
  SdrTitleForm titleForm;
  const char* title;

  constexpr std::size_t FieldCount() const { return rows.size() - fileOnlyRows; }
};

/// Bits of the sensor types that govern how other fields are shown.
inline constexpr SdrBits kThresholdAccess{12, 3, 2};
inline constexpr SdrBits kInitializeThresholds{11, 4, 4};

/// The fields that every type begins with.
inline constexpr std::array<SdrField, 4> kHeaderRows{{
    {"Record ID", "1:2", WordAt(1), SdrShow::Word},
    {"SDR File", "3", ByteAt(3)},  // Kept: the version's label, as people know it
    {"Record Type", "4", ByteAt(4)},
    {"Record Length", "5", ByteAt(5)},
}};

/// Row lists one behind the other.
template <std::size_t... Counts>
constexpr auto JoinRows(const std::array<SdrField, Counts>&... lists) {
  std::array<SdrField, (Counts + ...)> all{};
  std::size_t next = 0;
  auto append = [&](const auto& list) {
    for (const SdrField& row : list) all[next++] = row;
  };
  (append(lists), ...);
  return all;
}

/// Fields packed into rows and texts of `room` bytes, each text once.
template <std::size_t Count, std::size_t room>
struct SdrPackedRows {
  std::array<SdrFieldRow, Count> rows{};
  std::array<char, room> texts{};
  std::size_t size = 1;  ///< the first text is empty

  consteval explicit SdrPackedRows(const std::array<SdrField, Count>& fields) {
    for (std::size_t i = 0; i < Count; ++i) {
      const SdrField& field = fields[i];
      rows[i] = {Place(field.title), Place(field.location), Place(field.alternative), field.place,
                 field.show,         field.detail};
    }
  }

 private:
  /// With its NUL, so that the end of a longer text serves as well.
  consteval std::uint16_t Place(const char* text) {
    if (text == nullptr) return 0;
    const std::string_view whole(text, std::string_view(text).size() + 1);
    const char* const held = texts.data();
    for (std::size_t at = 0; at + whole.size() <= size; ++at)
      if (held[at] == *text && std::string_view(held + at, whole.size()) == whole)
        return static_cast<std::uint16_t>(at);
    const std::size_t begin = size;
    for (const char character : whole) texts[size++] = character;
    return static_cast<std::uint16_t>(begin);
  }
};

inline constexpr std::size_t kAmpleTexts = 4096;

template <const auto& fields>
inline constexpr SdrPackedRows<fields.size(), SdrPackedRows<fields.size(), kAmpleTexts>(fields).size>
    kPackedRows(fields);

/// The rows of a type, out of its fields.
template <const auto& fields>
constexpr SdrRowList PackRows() {
  return {kPackedRows<fields>.rows, kPackedRows<fields>.texts.data()};
}

constexpr std::uint8_t TableIndex(SdrTable table) {
  return static_cast<std::uint8_t>(table);
}

}  // namespace varnok
