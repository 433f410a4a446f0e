// A FRU file out of an image: the areas as blocks, one line a field with its label.
#include <algorithm>
#include <iterator>
#include <optional>

#include "boards/field_text.h"
#include "boards/file_writer.h"
#include "boards/fru_image.h"
#include "boards/load_file.h"
#include "boards/load_text.h"

namespace varnok::boards {
namespace {

constexpr std::size_t kLargestArea = 512;  ///< that a block and the program can hold
constexpr std::size_t kRecordHeader = 5;
constexpr std::uint8_t kLastRecord = 0x80;
constexpr std::size_t kFruIndent = 4;
constexpr std::size_t kFruCommentColumn = 40;
constexpr const char* kBlockTags[] = {"_SEE_INTERNAL", "_SEE_CHASSIS", "_SEE_BOARD", "_SEE_PRODUCT",
                                      "_SEE_MULTIREC"};

/// A piece of a block: bytes with what they are, or a field that begins with its type/length byte.
struct Piece {
  Bytes bytes;
  std::string comment;
  bool isField = false;
};

struct Block {
  std::size_t row = 0;          ///< of kFruAreas
  std::size_t length = 0;       ///< of the area that it gives
  std::size_t imageOffset = 0;  ///< where the image has it
  bool isDoubtful = false;      ///< the image's reading found something wrong in it
  std::vector<Piece> pieces{};
};

std::string Commented(const Field& field) {
  return field.value.empty() ? field.label : field.label + ": " + field.value;
}

class FruTextMaker {
 public:
  FruTextMaker(ByteView image, const DeviceAddress& address, std::string name)
      : image_(DecodeFru(image)), address_(address), name_(std::move(name)) {}

  LoadText Make() {
    const Section* header = image_.Find("header");
    if (header == nullptr || header->isChecksumGood != true || (image_.bytes[0] & 0x0F) != 1) {
      for (const Problem& problem : image_.problems)
        if (problem.offset < kFruHeaderLength) Lose(problem.text);
      return std::move(result_);
    }
    for (std::size_t row = 0; row < std::size(kFruAreas); ++row)
      if (image_.bytes[1 + row] != 0) AddBlock(row);
    Place();
    // Written twice: what reading the first one back finds lost stands at the head of the second.
    std::string error;
    const std::optional<Bytes> written = ReadFruFile(Written(), error);
    if (!written) {
      Lose("the program refuses the file: " + error);
      return std::move(result_);
    }
    Compare(*written);
    result_.text = Written();
    return std::move(result_);
  }

 private:
  ByteView View(std::size_t offset, std::size_t length) const { return Part(image_.bytes, offset, length); }
  Bytes Copy(std::size_t offset, std::size_t length) const {
    ByteView bytes = View(offset, length);
    return {bytes.begin(), bytes.end()};
  }
  void Lose(std::string text) { result_.losses.push_back(std::move(text)); }
  void Remark(std::string text) { result_.remarks.push_back(std::move(text)); }
  bool HasProblem(const Section& section) const {
    return std::any_of(image_.problems.begin(), image_.problems.end(), [&](const Problem& problem) {
      return problem.offset >= section.offset && problem.offset < section.End();
    });
  }

  void AddBlock(std::size_t row) {
    Block block{.row = row, .imageOffset = image_.bytes[1 + row] * kFruUnit};
    const bool isMade = row == kInternalUseRow   ? AddInternalUse(block)
                        : row == kMultiRecordRow ? AddMultiRecords(block)
                                                 : AddInfoArea(block);
    if (isMade && block.length <= kLargestArea) {
      blocks_.push_back(std::move(block));
      return;
    }
    Lose(std::string(kFruAreas[row].title) + " at byte " + std::to_string(block.imageOffset) +
         ": left out, " + (block.length > kLargestArea ? "it has more than 512 bytes" : "it cannot be read"));
  }

  bool AddInternalUse(Block& block) {
    const Section* section = image_.Find("internal");
    if (section == nullptr) return false;
    // Whole units, so that what follows begins on one.
    block.length = section->length / kFruUnit * kFruUnit;
    if (block.length == 0) return false;
    block.pieces.push_back({Copy(section->offset, 1), "format version"});
    block.pieces.push_back({Copy(section->offset + 1, block.length - 1), "the board's own data"});
    return true;
  }

  /// As many records as a block holds; the last of them then says that it is the last.
  bool AddMultiRecords(Block& block) {
    std::size_t last = 0;  // the piece that is the header of the last record
    for (const Section& section : image_.sections) {
      if (!section.id.starts_with("multi-record ")) continue;
      if (block.length + section.length > kLargestArea) {
        Lose(section.title + " and what follows it at byte " + std::to_string(section.offset) +
             ": left out, a block holds 512 bytes");
        break;
      }
      last = block.pieces.size();
      block.length += section.length;
      block.pieces.push_back({Copy(section.offset, kRecordHeader), section.title});
      for (const Field& field : section.fields)
        if (field.offset >= section.offset + kRecordHeader)
          block.pieces.push_back({Copy(field.offset, field.length), Commented(field)});
      if (section.isChecksumGood == false)
        Remark(section.title +
               ": its checksum is wrong and stays so; a device with it fails its verification");
      if (section.length == kRecordHeader)
        Remark(section.title +
               ": it has no data; the program takes it for the end of the list, and its verification fails");
    }
    if (block.pieces.empty()) return false;
    Bytes& header = block.pieces[last].bytes;
    if ((header[1] & kLastRecord) == 0) {
      header[1] |= kLastRecord;
      header[4] = static_cast<std::uint8_t>(header[4] - kLastRecord);
    }
    return true;
  }

  /// The area up to its end of fields. One that the program would refuse is mended: fields that are missing
  /// come as empty ones, padding as zeros, the checksum right.
  bool AddInfoArea(Block& block) {
    const Section* section = image_.Find(kFruAreas[block.row].id);
    if (section == nullptr || section->length < kFruUnit) return false;
    std::size_t used = 2;
    block.pieces.push_back({Copy(section->offset, 2), {}});
    for (const Field& field : section->fields) {
      if (field.role != Role::Content || field.label == "Unread Bytes") continue;
      block.pieces.push_back({Copy(field.offset, field.length), Commented(field), !field.encoding.empty()});
      used += field.length;
    }
    used += AddMissingFields(block);
    constexpr std::size_t kEndAndChecksum = 2;
    const std::size_t needed = (used + kEndAndChecksum + kFruUnit - 1) / kFruUnit * kFruUnit;
    const bool hasStatedLength = section->freeBytes.has_value() && section->isChecksumGood.has_value();
    block.length = std::max(needed, hasStatedLength ? section->length : 0);
    block.pieces[0].bytes[1] = static_cast<std::uint8_t>(block.length / kFruUnit);
    block.pieces[0].comment = "format version, length: " + std::to_string(block.length / kFruUnit) +
                              " x 8 = " + std::to_string(block.length) + " bytes";
    block.pieces.push_back({{kFruEndOfFields}, "end of the fields: padding and checksum are added"});
    block.isDoubtful = HasProblem(*section);
    return true;
  }

  /// Empty fields for those that the area ends before; returns their bytes.
  static std::size_t AddMissingFields(Block& block) {
    constexpr std::size_t kFieldCounts[] = {0, 2, 5, 7, 0};
    auto fields = std::count_if(block.pieces.begin(), block.pieces.end(),
                                [](const Piece& piece) { return piece.isField; });
    std::size_t missing = 0;
    for (auto count = static_cast<std::size_t>(fields); count < kFieldCounts[block.row]; ++count, ++missing)
      block.pieces.push_back({{0xC0}, "a field that was missing: empty", true});
    return missing;
  }

  /// Makes the header that the blocks have one behind the other, which is how they are written.
  void Place() {
    header_ = Copy(0, kFruHeaderLength);
    std::size_t position = kFruHeaderLength;
    std::fill(header_.begin() + 1, header_.begin() + 6, std::uint8_t{0});
    for (const Block& block : blocks_) {
      if (position != block.imageOffset)
        Lose(std::string(kFruAreas[block.row].title) + ": moved from byte " +
             std::to_string(block.imageOffset) + " to " + std::to_string(position) +
             ", since the areas are written one behind the other in the header's order");
      header_[1 + block.row] = static_cast<std::uint8_t>(position / kFruUnit);
      position += block.length;
    }
    header_[7] = 0;
    std::uint8_t sum = 0;
    for (std::uint8_t byte : header_) sum = static_cast<std::uint8_t>(sum + byte);
    header_[7] = static_cast<std::uint8_t>(-sum);
    length_ = position;
    if (!blocks_.empty() && blocks_.back().row == kInternalUseRow)
      Remark("Nothing follows the internal use area: the program reads it back as empty.");
  }

  /// What the written bytes do not have of the image.
  void Compare(const Bytes& written) {
    for (const Block& block : blocks_) {
      ByteView had = View(block.imageOffset, block.length);
      ByteView gets = Part(written, header_[1 + block.row] * kFruUnit, block.length);
      if (block.isDoubtful && !std::equal(had.begin(), had.end(), gets.begin(), gets.end()))
        Lose(std::string(kFruAreas[block.row].title) + ": mended, the program would refuse it as it stands");
    }
    const std::size_t common = std::min(written.size(), image_.bytes.size());
    const auto [first, _] = std::mismatch(
        written.begin(), written.begin() + static_cast<std::ptrdiff_t>(common), image_.bytes.begin());
    std::size_t different = 0;
    for (std::size_t i = 0; i < common; ++i) different += written[i] != image_.bytes[i] ? 1 : 0;
    if (different != 0)
      Lose(Plural(different, "byte") + " of the image " + (different == 1 ? "comes" : "come") +
           " out different, the first at byte " + std::to_string(first - written.begin()));
    if (written.size() > image_.bytes.size())
      Lose("the file writes " + Plural(written.size(), "byte") + ", the image has " +
           std::to_string(image_.bytes.size()));
    ByteView rest = View(written.size(), image_.bytes.size());
    if (rest.empty()) return;
    const std::string where = Plural(rest.size(), "byte") + " behind the last area, from byte " +
                              std::to_string(written.size()) + " on";
    if (IsFill(rest))
      Remark(where + ", are all " + Hex(rest[0]) + "; the device keeps what it has there.");
    else
      Lose(where + ": the device keeps what it has there");
  }

  std::string Written() const {
    FileWriter file(kFruIndent, kFruCommentColumn);
    file.Line("// FRU file of " + QuotedValue(name_) + ", made from its image.");
    PutHeadRemarks(file, result_.losses, result_.remarks);
    file.Line();
    file.Line("_LF_NAME      '" + QuotedValue(name_) + "'");
    file.Line("_LF_VERSION   '1.0'");
    file.Line("_LF_FMT_VER   '1.0'");
    file.Line("_IPMI_VERSION '2.0'");
    file.Line();
    file.Line("_FRU (");
    file.Line("  _FRU_TITLE   '" + QuotedValue(name_) + "'");
    file.Line("  _START_ADDR  0000");
    std::string length = Hex(static_cast<std::uint32_t>(length_), 4);
    length.pop_back();
    file.Line("  _DATA_LEN    " + length + "                     // " + Plural(length_, "byte") + " in all");
    PutAddress(file);
    PutHeader(file);
    for (const Block& block : blocks_) PutBlock(file, block);
    file.Line(")");
    return file.Text();
  }

  void PutAddress(FileWriter& file) const {
    auto key = [&](const char* name, std::uint8_t value) {
      file.Line(std::string("  ") + name + HexBytes({&value, 1}));
    };
    if (address_.kind == DeviceKind::Fru) {
      file.Line("  _NVS_TYPE    'IMBDEVICE'");
      key("_DEV_ID      ", address_.id);
      if (address_.channel != UsualChannel(address_.controller)) {
        key("_DEV_BUS     ", address_.channel);
        key("_DEV_ADDRESS ", address_.controller);
      } else {
        key("_DEV_CNTR    ", address_.controller);
      }
      return;
    }
    // In a file the name has the letter O.
    file.Line(std::string("  _NVS_TYPE    ") +
              (address_.kind == DeviceKind::At24c02 ? "'AT24CO2'" : "'DS1624S'"));
    if (address_.controller != kBmc) key("_DEV_CNTR    ", address_.controller);
    key("_DEV_BUS     ", address_.bus);
    key("_DEV_ADDRESS ", address_.slave);
  }

  void PutHeader(FileWriter& file) const {
    file.Line();
    file.Line("  _SEE_COMMON");
    file.Data(ByteView(header_).first(1), "format version");
    for (std::size_t row = 0; row < std::size(kFruAreas); ++row) {
      const std::uint8_t offset = header_[1 + row];
      const std::string place =
          offset == 0 ? ": none"
                      : " at " + std::to_string(offset) + " x 8 = " + std::to_string(offset * kFruUnit);
      file.Data({&header_[1 + row], 1}, kFruAreas[row].title + place);
    }
    file.Data(ByteView(header_).subspan(6, 1), "pad");
    file.Data(ByteView(header_).subspan(7, 1), "header checksum");
  }

  static void PutBlock(FileWriter& file, const Block& block) {
    file.Line();
    file.Line(std::string("  ") + kBlockTags[block.row]);
    for (const Piece& piece : block.pieces) {
      ByteView bytes(piece.bytes);
      // Text in quotes stands on a line of its own, its label beside the type/length byte. What has no
      // type/length byte is text only where its comment would say the same.
      const bool isText = piece.isField && piece.bytes[0] >> 6 == 3 && IsQuotable(bytes.subspan(1));
      if (!piece.isField) {
        file.Data(bytes, piece.comment);
        continue;
      }
      const std::size_t colon = piece.comment.find(": ");
      file.Data(bytes.first(1), isText ? piece.comment.substr(0, colon) : piece.comment);
      if (isText)
        file.TextOrData(bytes.subspan(1));
      else
        file.Data(bytes.subspan(1));
    }
  }

  Decoded image_;
  DeviceAddress address_;
  std::string name_;
  std::vector<Block> blocks_;
  Bytes header_;
  std::size_t length_ = 0;
  LoadText result_;
};

}  // namespace

LoadText FruLoadText(std::span<const std::uint8_t> image, const DeviceAddress& address,
                     const std::string& name) {
  return FruTextMaker(image, address, name).Make();
}

}  // namespace varnok::boards
