// One sensor data record (IPMI v2.0, section 43): its raw bytes, the tags it carries in a file, and its
// fields by number, with title, byte location and value text. record_types.h lists the types.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <list>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "firmware/firmware.h"
#include "sdr/record_rows.h"
#include "sdr/sdr_status.h"

namespace varnok {

using SdrTagList = std::list<std::string>;

struct SdrRecordHeader {
  static constexpr std::size_t kSize = 5;

  std::uint16_t recordId = 0;
  std::uint8_t version = 0;
  std::uint8_t type = 0;
  std::uint8_t length = 0;  ///< bytes behind the header
};

/// The whole record's size by its fifth byte; 0 when there are fewer than five.
std::size_t SdrRecordSize(std::span<const std::uint8_t> raw);

/// Base of all record classes. Values, names and titles of records stay valid until the object builds the
/// next one; titles and locations of fields for ever.
class CSdr {
 public:
  static constexpr std::int64_t FieldNotSelected = std::numeric_limits<std::int64_t>::max();

  CSdr() = default;
  CSdr(const CSdr&) = delete;
  CSdr& operator=(const CSdr&) = delete;
  virtual ~CSdr() = default;

  // Queries return kNotDecoded before a successful DecodeSDR, field queries kFieldNotSelected without a
  // selection.
  virtual Status GetNumberOfFields(std::int64_t& count) const = 0;
  virtual Status GetFieldTitle(const char16_t*& text) = 0;
  virtual Status GetFieldValue(const char16_t*& text) = 0;
  virtual Status GetFieldLocation(const char16_t*& text) = 0;
  /// Takes the fields from the record at the start of `raw`; kBadRecordLength when its size breaks its type's
  /// rule or `raw` does not hold all of it.
  virtual Status DecodeSDR(std::span<const std::uint8_t> raw) = 0;
  /// Appends the record to an SDR file; kCannotWriteFile.
  virtual Status WriteRecordToFile(std::u16string_view fileName) = 0;
  virtual Status GetName(const char16_t*& text);
  virtual Status GetSdrTitle(const char16_t*& text);
  virtual Status GetTypeAsInteger(std::uint32_t& code) const = 0;
  virtual Status GetOEMData(std::span<const std::uint8_t>& data) const;

  /// kBadRecordLength when the record length is below 5.
  static Status DecodeHeader(std::span<const std::uint8_t> raw, SdrRecordHeader& header);
  /// Keeps a copy of the record at the start of `raw`.
  Status CopyrawSDR(std::span<const std::uint8_t> raw);
  /// Copies the kept record; nothing happens while none is kept.
  Status WriteSDRToBuffer(std::span<std::uint8_t> buffer, std::size_t& length) const;
  Status AddTags(const SdrTagList& tags);

  /// The text of the first row that holds the code; "Unknown" when none does.
  static void GetStrFromTable(std::string_view table, std::uint8_t code, std::u16string& text);
  static void DecodeType(std::uint32_t table, std::uint8_t code, std::u16string& text,
                         std::uint8_t deviceType = 0);
  /// The low `width` bits in groups of four, such as "10 1010b". kValueTooWide, with the text, when there are
  /// more.
  static Status BinaryFormat(std::uint32_t value, unsigned width, std::u16string& text);

  void SelectField(std::int64_t field) { selectedField_ = field; }
  const SdrTagList& Tags() const { return tags_; }
  std::span<const std::uint8_t> Raw() const { return std::span(raw_).first(rawLength_); }
  /// Makes room for any record, so that decoding and keeping one need no memory.
  void ReserveRaw() { raw_.reserve(kLargestKept); }
  const SdrRecordHeader& Header() const { return header_; }

 protected:
  // The longest record that CopyrawSDR keeps.
  static constexpr std::size_t kLargestKept = 0xFF;
  // The longest text of a record.
  static constexpr std::size_t kTextCapacity = 256;

  /// What precedes the bytes: type, tags, size and header lines.
  Status WriteRecHdr(File& file) const;
  static Status wfprintf(File& file, std::string_view text);
  const char16_t* StoreText(std::u16string_view text);

  std::uint8_t rawLength_ = 0;  ///< 0 until CopyrawSDR
  SdrTagList tags_;
  bool isDecoded_ = false;
  std::int64_t selectedField_ = FieldNotSelected;
  /// Made with the first text: most records of a repository are never asked for one.
  std::unique_ptr<std::array<char16_t, kTextCapacity>> text_;
  std::vector<std::uint8_t> raw_;  ///< since DecodeSDR or CopyrawSDR
  SdrRecordHeader header_;
};

/// A record class over the rows of its type.
class CSdrByRows : public CSdr {
 public:
  Status GetNumberOfFields(std::int64_t& count) const override;
  Status GetFieldTitle(const char16_t*& text) override;
  Status GetFieldValue(const char16_t*& text) override;
  Status GetFieldLocation(const char16_t*& text) override;
  Status DecodeSDR(std::span<const std::uint8_t> raw) override;
  Status WriteRecordToFile(std::u16string_view fileName) override;
  Status GetName(const char16_t*& text) override;
  Status GetSdrTitle(const char16_t*& text) override;
  Status GetTypeAsInteger(std::uint32_t& code) const override;
  /// The data behind an OEM record's manufacturer ID, at most 16 bytes of it; nothing for the other types.
  Status GetOEMData(std::span<const std::uint8_t>& data) const override;

  /// Bits of the decoded record; 0 before the decode and past its end.
  std::uint32_t Bits(SdrBits where) const;

 protected:
  explicit CSdrByRows(const SdrTypeRows& type) : type_(type) {}

 private:
  bool HasLegalLength(std::span<const std::uint8_t> raw) const;
  bool HasTitlesOfItsOwn() const;
  std::uint32_t Number(const SdrPlace& place) const;
  const char* TitleOf(const SdrFieldRow& row) const;
  std::u16string ValueOf(const SdrFieldRow& row) const;
  std::u16string ValueOfField(std::size_t field) const { return ValueOf(type_.rows[field]); }
  std::u16string IdString() const;
  std::span<const std::uint8_t> OemData() const;
  bool IsOemText() const;
  std::span<const std::uint8_t> BytesFrom(std::size_t byte) const;

  // The file writer, in record_writer.cpp.
  Status WriteBytes(File& file) const;
  Status WriteRowAt(File& file, std::size_t& byte) const;
  std::string LabelOfByte(std::size_t byte) const;

  const SdrTypeRows& type_;
};

}  // namespace varnok
