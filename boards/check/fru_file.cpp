// What a FRU file programs, held against the standard and the board.
#include <algorithm>
#include <array>
#include <iterator>
#include <memory>
#include <optional>

#include "app/services/scan.h"
#include "boards/check/file_checks.h"
#include "boards/check/file_text.h"
#include "boards/desk_machine.h"
#include "boards/field_text.h"
#include "boards/fru_image.h"
#include "fru/fru.h"
#include "fru/fru_session.h"

namespace varnok::boards {
namespace {

/// The parts of a file as the program's messages call them, with the key that begins their line.
struct Place {
  const char* name;
  const char* key;
};
constexpr Place kPlaces[] = {
    {"Load file name", "_LF_NAME"},
    {"Load file version", "_LF_VERSION"},
    {"Load format version", "_LF_FMT_VER"},
    {"IPMI version", "_IPMI_VERSION"},
    {"FRU Title", "_FRU_TITLE"},
    {"Data length", "_DATA_LEN"},
    {"NVS Type", "_NVS_TYPE"},
    {"Device ID", "_DEV_ID"},
    {"Device Controller", "_DEV_CNTR"},
    {"from LUN", "_NVS_LUN"},
    {"reading LUN", "_NVS_LUN"},
    {"Device Bus", "_DEV_BUS"},
    {"Device Address", "_DEV_ADDRESS"},
    {"Common Header Area", "_SEE_COMMON"},
    {"Internal Use Area", "_SEE_INTERNAL"},
    {"Chassis Info Area", "_SEE_CHASSIS"},
    {"Board Info Area", "_SEE_BOARD"},
    {"Product Info Area", "_SEE_PRODUCT"},
    {"Multi Record Area", "_SEE_MULTIREC"},
};
/// The blocks in the order of the header's offsets, as kFruAreas.
constexpr const char* kBlockKeys[] = {"_SEE_INTERNAL", "_SEE_CHASSIS", "_SEE_BOARD", "_SEE_PRODUCT",
                                      "_SEE_MULTIREC"};
constexpr FruAreaId kBlockAreas[] = {FruAreaId::InternalUseArea, FruAreaId::ChassisInfoArea,
                                     FruAreaId::BoardInfoArea, FruAreaId::ProductInfoArea,
                                     FruAreaId::MultiRecordArea};

class FruFileCheck {
 public:
  FruFileCheck(const std::string& file, const std::string& text, const Board* board, Findings& findings)
      : file_(file), machine_(text), text_(text), board_(board), findings_(findings) {}

  void Run() {
    if (fru_->ReadFRUFromFile(file_) != kSuccess) return ReportRefusal();
    if (!machine_.Warnings().empty()) ReportWarnings();
    CheckPlaces();
    CheckRecords();
    CheckInfoAreas();
    CheckDataLength();
    if (board_ == nullptr) return;
    const std::size_t key = text_.LineOf("_DEV_ID");
    CheckDevice(fru_->Address(), end_, *board_,
                {Severity::Error, "fru-device", file_, key != 0 ? key : text_.LineOf("_FRU"), {}, {}},
                findings_);
  }

 private:
  void Report(Severity severity, const char* rule, std::size_t line, std::string text, std::string advice) {
    findings_.push_back({severity, rule, file_, line, std::move(text), std::move(advice)});
  }

  static std::string MessageOfReader() { return MessageLine(TheFruSession().lastError.data()); }

  /// The row of kFruAreas whose block begins on `line`; their number for none.
  std::size_t BlockAt(std::size_t line) const {
    for (std::size_t row = 0; row < std::size(kBlockKeys); ++row)
      if (text_.LineOf(kBlockKeys[row]) == line) return row;
    return std::size(kBlockKeys);
  }

  /// The first key that the reader waits for and no line has; empty when it has them all.
  std::string_view MissingKey() {
    constexpr const char* kNeeded[] = {"_LF_NAME", "_LF_VERSION", "_LF_FMT_VER", "_IPMI_VERSION",
                                       "_FRU (",   "_START_ADDR", "_DATA_LEN",   "_SEE_COMMON"};
    for (const char* key : kNeeded)
      if (text_.LineOf(key) == 0) return key;
    for (std::size_t row = 0; row < std::size(kBlockKeys); ++row)
      if (fru_->Header().Offset(kBlockAreas[row]) != 0 && text_.LineOf(kBlockKeys[row]) == 0)
        return kBlockKeys[row];
    return {};
  }

  /// What to do about a message of the reader; its own words do not say which key it was waiting for.
  std::string AdviceFor(const std::string& message) {
    if (message.find("unexpected character") != std::string::npos)
      return "Write two hexadecimal digits a byte, or text between two single quotes on a line of its own.";
    if (message.find("ended unexpectedly") == std::string::npos)
      return "Correct this line; the program reads nothing behind it and writes nothing.";
    const std::string missing(MissingKey());
    if (missing.empty()) return "Put the keys into their order: the program skips what it does not wait for.";
    return "Write " + missing + ", which no line has: the program skips the others while it waits for it.";
  }

  void ReportRefusal() {
    const std::string message = MessageOfReader();
    const auto place = std::find_if(std::begin(kPlaces), std::end(kPlaces), [&](const Place& row) {
      return message.find(row.name) != std::string::npos;
    });
    std::size_t line = place != std::end(kPlaces) ? text_.LineOf(place->key) : 0;
    if (line == 0) line = text_.LineCount();
    if (message.find("unexpected character") != std::string::npos) line = LineOfBadCharacter(line);
    Report(Severity::Error, "fru-refused", line, message, AdviceFor(message));
    if (const std::size_t row = BlockAt(line); row < std::size(kBlockKeys)) ExplainBlock(row, line);
    if (place != std::end(kPlaces) && std::string_view(place->key) == "_SEE_COMMON") ExplainHeader(line);
  }

  std::size_t LineOfBadCharacter(std::size_t block) const {
    for (std::size_t line = block + 1; line <= text_.LineCount(); ++line) {
      std::string_view content = text_.Line(line);
      if (std::count(content.begin(), content.end(), '\'') >= 2) continue;
      if (content.find_first_not_of("0123456789abcdefABCDEF# \t") != std::string_view::npos) return line;
    }
    return block;
  }

  std::span<const std::uint8_t> BytesOfBlock(const char* key, std::size_t line) {
    std::span<const std::uint8_t> bytes;
    return CFru::ParseArea(key, text_.Lines(), line - 1, bytes) == kSuccess ? bytes
                                                                            : std::span<const std::uint8_t>();
  }

  /// What the standard says of a block that the program could not parse.
  void ExplainBlock(std::size_t row, std::size_t line) {
    const std::span<const std::uint8_t> bytes = BytesOfBlock(kBlockKeys[row], line);
    if (bytes.empty()) return;
    Bytes image(kFruHeaderLength);
    image[0] = 1;
    image[1 + row] = 1;
    image[7] = IpmiChecksum(std::span(image).first(7));
    image.insert(image.end(), bytes.begin(), bytes.end());
    const bool hasLength = row != kInternalUseRow && row != kMultiRecordRow && bytes.size() > 1;
    const std::size_t promised = hasLength ? bytes[1] * kFruUnit : bytes.size();
    if (bytes.size() != promised)
      Report(
          Severity::Error, "fru-length", line,
          "the length byte says " + Plural(promised, "byte") + ", the block gives " +
              Plural(bytes.size(), "byte"),
          "End the block with C1 and leave at least one byte more, or give the whole area with padding and checksum.");
    for (const Problem& problem : DecodeFru(image).problems)
      Report(Severity::Error, "fru-area", line,
             "byte " + std::to_string(problem.offset - std::min(problem.offset, kFruHeaderLength)) +
                 " of the area: " + problem.text,
             "Count the type/length bytes against the texts.");
  }

  void ExplainHeader(std::size_t line) {
    const std::span<const std::uint8_t> bytes = BytesOfBlock("_SEE_COMMON", line);
    if (bytes.size() < kFruHeaderLength) {
      Report(Severity::Error, "fru-header", line,
             "the common header has " + Plural(bytes.size(), "byte") + " of 8",
             "Give version, five offsets, a zero and the checksum.");
      return;
    }
    const std::uint8_t right = IpmiChecksum(bytes.first(7));
    if (right != bytes[7])
      Report(Severity::Error, "fru-checksum", line,
             "the header's checksum is " + Hex(bytes[7]) + ", its bytes need " + Hex(right),
             "Correct the last byte, or the offset that is wrong.");
  }

  void ReportWarnings() {
    const std::string& warning = machine_.Warnings();
    if (warning.find("ends after") == std::string::npos) return;
    std::size_t line = 0;
    for (const Place& row : kPlaces)
      if (warning.find(row.name) != std::string::npos) line = text_.LineOf(row.key);
    Report(Severity::Error, "fru-cut", line, warning.substr(warning.find(": ") + 2),
           "Shorten the area: a block holds 512 bytes.");
  }

  std::size_t LengthOf(std::size_t row) {
    if (row == kInternalUseRow) return fru_->InternalUse().GetLength();
    if (row == kMultiRecordRow) return fru_->MultiRecLength();
    return fru_->FindInfoArea(kBlockAreas[row])->GetLength();
  }

  /// Areas are written one behind the other; the header must say so.
  void CheckPlaces() {
    end_ = kFruHeaderLength;
    const std::size_t line = text_.LineOf("_SEE_COMMON");
    if (fru_->Header().GetData()[0] != 1)
      Report(Severity::Error, "fru-header", line, "the header's format version is not 01",
             "Begin the header with 01.");
    for (std::size_t row = 0; row < std::size(kBlockKeys); ++row) {
      const std::size_t offset = fru_->Header().GetData()[1 + row] * kFruUnit;
      if (offset == 0) continue;
      const std::size_t length = LengthOf(row);
      const std::string name = kFruAreas[row].title;
      if (end_ % kFruUnit == 0 && offset != end_)
        Report(Severity::Error, "fru-offset", line,
               "the header puts the " + name + " at byte " + std::to_string(offset) +
                   ", it is written at byte " + std::to_string(end_),
               "Write " + Hex(static_cast<std::uint32_t>(end_ / kFruUnit)) + " as byte " +
                   std::to_string(1 + row) + " of the header and correct its checksum.");
      if (length % kFruUnit != 0 && row != kMultiRecordRow)
        Report(Severity::Error, "fru-unit", text_.LineOf(kBlockKeys[row]),
               "the " + name + " has " + Plural(length, "byte") + ", no whole units of 8",
               "Fill it up with zeros: what follows begins on a unit.");
      end_ += length;
    }
  }

  void CheckRecords() {
    if (!fru_->HasMultiRecArea()) return;
    const std::size_t line = text_.LineOf("_SEE_MULTIREC");
    std::size_t number = 0;
    bool hasEnd = false;
    for (const MultiRecord& record : fru_->MultiRecords()) {
      const std::string name = "multi-record " + std::to_string(++number);
      if (!CFru::IsValid(record))
        Report(Severity::Error, "fru-checksum", line,
               name + ": a checksum is wrong; the data need " + Hex(IpmiChecksum(record.Data())) +
                   ", the header then " + Hex(HeaderChecksumOf(record)),
               "Correct bytes 3 and 4 of the record's header: the device fails its verification.");
      if (record.Data().empty())
        Report(Severity::Error, "fru-records", line, name + " has no data",
               "Give it a byte or take it out: the program reads it back as the end of the list, and its "
               "verification fails.");
      if (hasEnd)
        Report(Severity::Error, "fru-records", line, name + " stands behind the record that ends the list",
               "Set bit 7 of byte 1 (82) in the last record alone, and let nothing follow it.");
      hasEnd = record.IsLast();
    }
    if (!hasEnd)
      Report(Severity::Error, "fru-records", line, "no record ends the list",
             "Write 82 instead of 02 as byte 1 of the last record.");
  }

  static std::uint8_t HeaderChecksumOf(const MultiRecord& record) {
    std::array<std::uint8_t, MultiRecord::kHeaderLength> header = record.header;
    header[3] = IpmiChecksum(record.Data());
    return IpmiChecksum(std::span(header).first(4));
  }

  void CheckInfoAreas() {
    for (std::size_t row = 0; row < std::size(kBlockKeys); ++row) {
      InfoArea* area = fru_->FindInfoArea(kBlockAreas[row]);
      if (area == nullptr || !fru_->HasArea(kBlockAreas[row])) continue;
      if ((area->GetFormatVersion() & 0x0F) != 1)
        Report(Severity::Warning, "fru-version", text_.LineOf(kBlockKeys[row]),
               std::string("the ") + kFruAreas[row].title + " has a format version other than 1",
               "Begin the area with 01.");
    }
  }

  void CheckDataLength() {
    const std::size_t line = text_.LineOf("_DATA_LEN");
    std::uint32_t said = 0;
    if (Scan(text_.Line(line), "_DATA_LEN %x", &said) == 1 && said != end_)
      Report(Severity::Warning, "fru-data-length", line,
             "_DATA_LEN says " + Plural(said, "byte") + ", the areas have " + std::to_string(end_),
             "Write " + Hex(static_cast<std::uint32_t>(end_), 4).substr(0, 4) +
                 ": people read it, nothing depends on it.");
  }

  const std::string& file_;
  DeskMachine machine_;
  FileText text_;
  const Board* board_;
  Findings& findings_;
  std::unique_ptr<CFru> fru_ = std::make_unique<CFru>();
  std::size_t end_ = 0;  ///< of the image that is written
};

}  // namespace

DeviceAddress DeviceAt(const FruDeviceAddress& address) {
  DeviceAddress device;
  device.bus = address.bus;
  device.slave = address.deviceAddress;
  if (address.nvsType == nvs_type::kAt24c02) device.kind = DeviceKind::At24c02;
  if (address.nvsType == nvs_type::kDs1624s) device.kind = DeviceKind::Ds1624s;
  if (device.kind != DeviceKind::Fru) return device;
  // A channel and an address name a controller behind the BMC, as its own key does.
  const bool isBridged = address.bus != 0xFF && address.deviceAddress != kBmc;
  device.controller = isBridged ? address.deviceAddress : address.controller;
  device.channel = isBridged ? address.bus : UsualChannel(device.controller);
  device.id = address.deviceId;
  device.bus = 0;
  device.slave = 0;
  return device;
}

void CheckDevice(const FruDeviceAddress& address, std::size_t needed, const Board& board, Finding place,
                 Findings& findings) {
  const DeviceAddress wanted = DeviceAt(address);
  const Device* device = board.Find(wanted);
  const std::string name = NameOf(wanted);
  if (device == nullptr) {
    place.text = "the board has no device " + name;
    place.advice = "Name one of its devices; varnok-board show lists them.";
  } else if (device->bytes.size() < needed) {
    place.text = "device " + name + " has " + Plural(device->bytes.size(), "byte") + ", the file writes " +
                 std::to_string(needed);
    place.advice =
        "Shorten the areas: the write that goes past the device's end fails, what comes before is written.";
  } else if (device->isReadOnly && needed != 0) {
    place.text = "device " + name + " is write-protected";
    place.advice = "Choose another device, or lift its protection.";
  } else {
    return;
  }
  findings.push_back(std::move(place));
}

void CheckFruFile(const std::string& file, const std::string& text, const Board* board, Findings& findings) {
  FruFileCheck(file, text, board, findings).Run();
}

}  // namespace varnok::boards
