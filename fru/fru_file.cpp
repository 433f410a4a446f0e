// The FRU file: text that describes one image. Keys are looked for in a fixed order, line by line; a line
// that holds nothing awaited is skipped.
#include <algorithm>
#include <array>
#include <optional>

#include "app/services/console.h"
#include "app/services/scan.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "fru/fru.h"
#include "fru/fru_session.h"
#include "fru/fru_status.h"

namespace varnok {
namespace {

struct TextKey {
  std::string_view key;
  const char* name;
  bool (CFileHeader::*set)(std::u16string_view);
};
constexpr TextKey kHeaderKeys[] = {
    {"_LF_NAME", "Load file name", &CFileHeader::SetLfName},
    {"_LF_VERSION", "Load file version", &CFileHeader::SetLfVersion},
    {"_LF_FMT_VER", "Load format version", &CFileHeader::SetLfFmtVersion},
    {"_IPMI_VERSION", "IPMI version", &CFileHeader::SetIpmiVersion},
};

/// In the order in which they may appear; each may be left out.
struct AddressKey {
  std::string_view key;
  std::string_view format;  ///< empty: the quoted name of a storage kind
  const char* name;
  std::uint8_t FruDeviceAddress::*member;
};
constexpr AddressKey kAddressKeys[] = {
    {"_NVS_TYPE", {}, "NVS Type", nullptr},
    {"_DEV_ID", "_DEV_ID %x", "Device ID", &FruDeviceAddress::deviceId},
    {"_DEV_CNTR", "_DEV_CNTR %x", "Device Controller", &FruDeviceAddress::controller},
    {"_NVS_LUN", "_NVS_LUN %x", "LUN", &FruDeviceAddress::lun},
    {"_DEV_BUS", "_DEV_BUS %x", "Device Bus", &FruDeviceAddress::bus},
    {"_DEV_ADDRESS", "_DEV_ADDRESS %x", "Device Address", &FruDeviceAddress::deviceAddress},
};

struct AreaBlock {
  FruAreaId area;
  std::string_view tag;
  const char* name;
};
constexpr AreaBlock kAreaBlocks[] = {
    {FruAreaId::CommonHeaderArea, "_SEE_COMMON", "Common Header Area"},
    {FruAreaId::InternalUseArea, "_SEE_INTERNAL", "Internal Use Area"},
    {FruAreaId::ChassisInfoArea, "_SEE_CHASSIS", "Chassis Info Area"},
    {FruAreaId::BoardInfoArea, "_SEE_BOARD", "Board Info Area"},
    {FruAreaId::ProductInfoArea, "_SEE_PRODUCT", "Product Info Area"},
    {FruAreaId::MultiRecordArea, "_SEE_MULTIREC", "Multi Record Area"},
};

constexpr std::uint32_t kDataLengthLimit = 0x10000;
constexpr std::uint32_t kByteLimit = 0x100;

/// Collects the bytes of an area block from its lines.
class BlockBytes {
 public:
  void Clear() {
    bytes_.fill(0);
    count_ = 0;
    highNibble_.reset();
    isCut_ = false;
  }
  /// The block has data lines behind the last that fits.
  bool IsCut() const { return isCut_; }
  void SetCut(bool isCut) { isCut_ = isCut; }
  bool IsFull() const { return count_ >= bytes_.size(); }
  std::span<const std::uint8_t> Bytes() const { return std::span(bytes_).first(count_); }

  Status AddText(std::string_view text) {
    if (text.size() > bytes_.size() - count_) return fru_status::kBlockTooBig;
    std::copy(text.begin(), text.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(count_));
    count_ += text.size();
    return kSuccess;
  }

  /// A digit left over at the end of a line waits for the first digit of the next.
  Status AddDigits(std::string_view digits) {
    for (char character : digits) {
      if (character == '#') continue;
      int value = HexDigitValue(character);
      if (value < 0) return fru_status::kBlockCharacter;
      if (!highNibble_) {
        highNibble_ = value;
        continue;
      }
      if (IsFull()) return fru_status::kBlockTooBig;
      bytes_[count_++] = static_cast<std::uint8_t>(*highNibble_ << 4 | value);
      highNibble_.reset();
    }
    return kSuccess;
  }

 private:
  std::array<std::uint8_t, kMaxAreaLength> bytes_{};
  std::size_t count_ = 0;
  std::optional<int> highNibble_;
  bool isCut_ = false;
};

constinit BlockBytes blockBytes;

bool EndsBlock(const PreparedText& lines, std::size_t index) {
  if (lines.LineContains(index, "'")) return false;
  return lines.LineContains(index, ")") || lines.LineContains(index, "_SEE_");
}

bool HasDataFrom(const PreparedText& lines, std::size_t index) {
  for (; index < lines.LineCount() && !EndsBlock(lines, index); ++index)
    if (!lines.Line(index).empty()) return true;
  return false;
}

/// The line behind the block whose tag stands on line `index`.
std::size_t SkipBlock(const PreparedText& lines, std::size_t index) {
  do ++index;
  while (index < lines.LineCount() && !EndsBlock(lines, index));
  return index;
}

}  // namespace

Status CFru::ParseArea(std::string_view tag, PreparedText& lines, std::size_t index,
                       std::span<const std::uint8_t>& bytes) {
  constexpr const char* kName = "CFru::ParseArea";
  TraceScope scope(kName);
  bytes = {};
  blockBytes.Clear();
  if (!lines.LineContains(index, tag)) return Fail(kName, "Tag not found", fru_status::kBlockTagMissing);
  for (++index; index < lines.LineCount() && !EndsBlock(lines, index) && !blockBytes.IsFull(); ++index) {
    Status status = kSuccess;
    if (std::optional<std::string_view> text = lines.QuotedText(index)) {
      status = blockBytes.AddText(*text);
    } else {
      lines.RemoveBlanks(index);
      status = blockBytes.AddDigits(lines.Line(index));
    }
    if (status != kSuccess) return Fail(kName, "Invalid data", status);
  }
  blockBytes.SetCut(HasDataFrom(lines, index));
  bytes = blockBytes.Bytes();
  return kSuccess;
}

void CFru::SetParseAreaErrorMessage(Status status, const char* areaName, std::string_view fileName) {
  TraceScope scope("CFru::SetParseAreaErrorMessage");
  switch (status.value) {
    case fru_status::kBlockTagMissing.value:
      ReportFruError("Could not find the start tag for the %s while parsing the FRU file \"%s\".", areaName,
                     fileName);
      break;
    case fru_status::kBlockTooBig.value:
      ReportFruError("The %s area of the FRU file \"%s\" is too big.", areaName, fileName);
      break;
    case fru_status::kBlockCharacter.value:
      ReportFruError("Encountered an unexpected character in the %s while parsing the FRU file \"%s\".",
                     areaName, fileName);
      break;
    default:
      break;
  }
}

constexpr const char* kReader = "CFru::ReadFRUFromFile";

/// Walks the lines of one file into one image.
class FruFileReader {
 public:
  FruFileReader(CFru& fru, std::string_view fileName) : fru_(fru), fileName_(fileName) {}

  Status Read() {
    if (fileName_.empty()) {
      ReportFruError(fru_text::kUnexpected);
      return Fail(kReader, "File Read Error", fru_status::kFileNotRead);
    }
    if (lines_.Load(fileName_) != kSuccess) {
      ReportFruError("Could not open FRU file \"%s\".", fileName_);
      return Fail(kReader, "File Read Error", fru_status::kFileNotRead);
    }
    lines_.CutAt("//");
    lines_.Trim();
    for (; line_ < lines_.LineCount() && step_ != Step::Done; ++line_)
      if (Status status = TakeLine(); status != kSuccess) return status;
    if (step_ == Step::Done) return kSuccess;
    ReportFruError("The FRU File \"%s\" ended unexpectedly during parsing.", fileName_);
    return Fail(kReader, "Unexpected EOF", fru_status::kFileNotParsed);
  }

 private:
  enum class Step { Header, Block, TitleOrStart, Start, DataLength, AddressOrCommon, Areas, Done };

  Status TakeLine() {
    switch (step_) {
      case Step::Header:
        return TakeHeaderKey();
      case Step::Block:
        if (Holds("_FRU") && Holds("(")) step_ = Step::TitleOrStart;
        return kSuccess;
      case Step::TitleOrStart:
        if (Holds("_FRU_TITLE")) return TakeTitle();
        [[fallthrough]];
      case Step::Start:
        if (Holds("_START_ADDR")) step_ = Step::DataLength;
        return kSuccess;
      case Step::DataLength:
        return Holds("_DATA_LEN") ? TakeDataLength() : kSuccess;
      case Step::AddressOrCommon:
        return TakeAddressKeyOrCommon();
      case Step::Areas:
        return OpensAwaitedArea() ? TakeArea() : kSuccess;
      case Step::Done:
        break;
    }
    return kSuccess;
  }

  Status TakeHeaderKey() {
    const TextKey& key = kHeaderKeys[headerKey_];
    if (!Holds(key.key)) return kSuccess;
    std::optional<std::string_view> value = lines_.QuotedText(line_);
    if (!value || !(fru_.fileHeader_.*key.set)(Widen(*value))) return FailKey(key.name);
    if (++headerKey_ == std::size(kHeaderKeys)) step_ = Step::Block;
    return kSuccess;
  }

  Status TakeTitle() {
    std::optional<std::string_view> value = lines_.QuotedText(line_);
    if (!value) return FailKey("FRU Title");
    fru_.address_.displayName = Widen(*value);
    step_ = Step::Start;
    return kSuccess;
  }

  Status TakeDataLength() {
    std::uint32_t length = 0;
    if (Scan(lines_.Line(line_), "_DATA_LEN %x", &length) != 1 || length >= kDataLengthLimit)
      return FailKey("Data length");
    // Kept: the header is still empty here, so this gives no area a length but marks the info areas modified.
    fru_.ComputeAreaLengths(length);
    step_ = Step::AddressOrCommon;
    return kSuccess;
  }

  Status TakeAddressKeyOrCommon() {
    for (std::size_t i = addressKey_; i < std::size(kAddressKeys); ++i) {
      if (!Holds(kAddressKeys[i].key)) continue;
      addressKey_ = i + 1;
      return TakeAddressKey(kAddressKeys[i]);
    }
    return Holds(kAreaBlocks[0].tag) ? TakeCommonHeader() : kSuccess;
  }

  Status TakeAddressKey(const AddressKey& key) {
    if (key.format.empty()) {
      std::optional<std::string_view> value = lines_.QuotedText(line_);
      auto row = std::find_if(kNvsTypes.begin(), kNvsTypes.end(),
                              [&](const NvsTypeRow& candidate) { return candidate.fileName == value; });
      if (row == kNvsTypes.end()) return FailKey(key.name);
      fru_.address_.nvsType = row->type;
      return kSuccess;
    }
    std::uint32_t number = 0;
    if (Scan(lines_.Line(line_), key.format, &number) != 1 || number >= kByteLimit) return FailKey(key.name);
    fru_.address_.*key.member = static_cast<std::uint8_t>(number);
    return kSuccess;
  }

  Status TakeCommonHeader() {
    std::span<const std::uint8_t> bytes;
    if (Status status = TakeBlock(bytes); status != kSuccess) return status;
    // A block of fewer bytes is filled with zeros; its checksum then tells.
    std::array<std::uint8_t, CFruHeader::kLength> header{};
    std::copy_n(bytes.begin(), std::min(bytes.size(), header.size()), header.begin());
    if (fru_.DecodeHeader(header) != kSuccess) {
      ReportFruError("Invalid Common Header Area was found while updating \"%s\".\n", fileName_);
      return Fail(kReader, "Area Parse Error", fru_status::kFileNotParsed);
    }
    step_ = Step::Areas;
    AwaitNextArea();
    return kSuccess;
  }

  Status TakeArea() {
    const AreaBlock& block = kAreaBlocks[area_];
    std::span<const std::uint8_t> bytes;
    if (Status status = TakeBlock(bytes); status != kSuccess) return status;
    bool isTaken = false;
    if (InfoArea* info = fru_.FindInfoArea(block.area)) {
      isTaken = info->SetData(bytes);
    } else if (block.area == FruAreaId::InternalUseArea) {
      isTaken = fru_.internalUse_.SetData(bytes, false);
    } else {
      fru_.multiRecLength_ = static_cast<std::uint32_t>(bytes.size());
      isTaken = fru_.DecodeMultiRecArea(bytes, kAllMultiRecords) == kSuccess;
    }
    if (!isTaken) {
      ReportFruError("Could not parse the %s of the FRU file \"%s\".", block.name, fileName_);
      return Fail(kReader, "Area Parse Error", fru_status::kFileNotParsed);
    }
    AwaitNextArea();
    return kSuccess;
  }

  /// The bytes of the block that the present line opens.
  Status TakeBlock(std::span<const std::uint8_t>& bytes) {
    const AreaBlock& block = kAreaBlocks[area_];
    if (Status status = CFru::ParseArea(block.tag, lines_, line_, bytes); status != kSuccess) {
      CFru::SetParseAreaErrorMessage(status, block.name, fileName_);
      return Fail(kReader, "Area Parse Error", fru_status::kFileNotParsed);
    }
    if (blockBytes.IsCut())
      Warn("%s: the %s ends after %d bytes; the lines behind them are not read", fileName_, block.name,
           kMaxAreaLength);
    blockEnd_ = SkipBlock(lines_, line_);
    return kSuccess;
  }

  /// Among the data lines of the block before, a tag in quotes is data; one with quotes behind it is a tag.
  bool OpensAwaitedArea() const {
    std::string_view line = lines_.Line(line_);
    std::size_t tag = line.find(kAreaBlocks[area_].tag);
    return tag != std::string_view::npos && (line_ >= blockEnd_ || tag < line.find('\''));
  }

  void AwaitNextArea() {
    do ++area_;
    while (area_ < std::size(kAreaBlocks) && !fru_.HasArea(kAreaBlocks[area_].area));
    if (area_ == std::size(kAreaBlocks)) step_ = Step::Done;
  }

  bool Holds(std::string_view text) const { return lines_.LineContains(line_, text); }

  Status FailKey(const char* name) {
    ReportFruError("An unexpected error occurred while reading %s from FRU file \"%s\".", name, fileName_);
    return Fail(kReader, "Unexpected Error while reading file", fru_status::kFileNotParsed);
  }

  CFru& fru_;
  std::string_view fileName_;
  PreparedText lines_;
  std::size_t line_ = 0;
  std::size_t blockEnd_ = 0;  ///< the line behind the data lines of the last block
  Step step_ = Step::Header;
  std::size_t headerKey_ = 0;
  std::size_t addressKey_ = 0;
  std::size_t area_ = 0;
};

Status CFru::ReadFRUFromFile(std::string_view fileName) {
  TraceScope scope(kReader);
  return FruFileReader(*this, fileName).Read();
}

}  // namespace varnok
