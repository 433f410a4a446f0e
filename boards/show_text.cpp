#include "boards/show_text.h"

#include <algorithm>

#include "boards/field_text.h"
#include "boards/fru_image.h"
#include "boards/sdr_codes.h"
#include "boards/sdr_record.h"
#include "boards/sensor_conversion.h"
#include "boards/smbios_tables.h"
#include "firmware/ipmi.h"

namespace varnok::boards {
namespace {

constexpr std::size_t kLongestValue = 96;

/// Characters of UTF-8 text.
std::size_t Width(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(
      text.begin(), text.end(), [](char c) { return (static_cast<std::uint8_t>(c) & 0xC0) != 0x80; }));
}

std::string Padded(std::string text, std::size_t width) {
  const std::size_t present = Width(text);
  if (present < width) text.append(width - present, ' ');
  return text;
}

std::string Range(std::size_t offset, std::size_t length) {
  if (length <= 1) return "byte " + std::to_string(offset);
  return "bytes " + std::to_string(offset) + " to " + std::to_string(offset + length - 1);
}

class Shower {
 public:
  Shower(const Source& source, const ShowOptions& options) : source_(source), options_(options) {}

  std::vector<std::string> Show(std::size_t& findings) {
    const Board& board = source_.board;
    if (board.bmc.identity) ShowController("BMC", board.bmc);
    for (const Controller& controller : board.controllers)
      ShowController("Controller " + Hex(controller.address), controller);
    for (const Device& device : board.devices) ShowDevice(device);
    if (!board.records.empty() || source_.kind == SourceKind::SdrDump)
      ShowRecords();
    else if (source_.kind == SourceKind::Folder)
      Title(board.hasRepository ? "SDR repository: empty" : "No SDR repository");
    if (!board.smbios.empty()) ShowSmbios();
    findings = findings_;
    return std::move(lines_);
  }

 private:
  void Line(std::string text) { lines_.push_back(std::move(text)); }
  void Title(std::string text) {
    if (!lines_.empty()) Line({});
    Line(std::move(text));
  }

  void ShowFields(const Section& section, std::size_t indent) {
    std::size_t width = 0;
    auto isShown = [&](const Field& field) { return field.role == Role::Content || options_.hasDetails; };
    for (const Field& field : section.fields)
      if (isShown(field)) width = std::max(width, Width(field.label));
    for (const Field& field : section.fields) {
      if (!isShown(field)) continue;
      std::string value = field.value;
      if (!options_.hasDetails && value.size() > kLongestValue && field.encoding != "text" &&
          field.encoding != "Unicode") {
        value.resize(kLongestValue - 1);
        value += "... (" + Plural(field.length, "byte") + ")";
      }
      const bool isPlain = field.encoding.empty() || field.encoding == "text" || field.value.empty();
      Line(std::string(indent, ' ') +
           (value.empty() ? field.label : Padded(field.label, width) + "  " + value) +
           (isPlain ? "" : "  [" + field.encoding + "]"));
    }
  }

  void ShowProblems(const Decoded& decoded, const std::string& what) {
    for (const Problem& problem : decoded.problems)
      Line("  ! " + what + "byte " + std::to_string(problem.offset) + ": " + problem.text);
    findings_ += decoded.problems.size();
  }

  void ShowController(const std::string& what, const Controller& controller) {
    Title(what + (controller.name.empty() ? "" : ": " + Printable(controller.name)));
    if (controller.identity)
      ShowFields(IdentitySection(controller), 2);
    else
      Line("  it did not answer");
  }

  void ShowDevice(const Device& device) {
    const bool isEeprom = device.address.kind != DeviceKind::Fru;
    const bool isImage = source_.kind == SourceKind::FruImage;
    std::string title = isImage ? "FRU image" : (isEeprom ? "" : "FRU ") + NameOf(device.address);
    title += ": " + Plural(device.bytes.size(), "byte");
    if (!device.file.empty()) title += ", " + Printable(device.file);
    if (device.isReadOnly) title += ", read only";
    if (device.isWordAccess) title += ", accessed in words";
    Title(std::move(title));
    const Decoded decoded = DecodeFru(device.bytes);
    if (IsFill(device.bytes)) {
      Line("  erased: every byte is " + Hex(device.bytes[0]));
    } else {
      for (const Section& section : decoded.sections) ShowArea(section);
      for (const Extent& extent : UncoveredBytes(decoded)) ShowUncovered(decoded, extent);
      ShowProblems(decoded, {});
    }
    if (options_.hasHex) ShowHex(decoded);
  }

  void ShowArea(const Section& section) {
    if (section.id == "header" && !options_.hasDetails) return;
    std::string text = "  " + section.title + ": " + Range(section.offset, section.length);
    if (section.freeBytes) text += ", " + std::to_string(*section.freeBytes) + " free";
    if (section.isChecksumGood) text += *section.isChecksumGood ? ", checksum good" : ", checksum bad";
    Line(std::move(text));
    ShowFields(section, 4);
  }

  void ShowUncovered(const Decoded& decoded, const Extent& extent) {
    ByteView bytes = Part(decoded.bytes, extent.offset, extent.length);
    std::string text = "  No area: " + Range(extent.offset, extent.length);
    text += IsFill(bytes) ? ", all " + Hex(bytes[0]) : ", not empty";
    Line(std::move(text));
  }

  /// Sixteen bytes a line; where an area begins, a line with its name.
  void ShowHex(const Decoded& decoded) {
    std::vector<std::pair<std::size_t, std::string>> marks;
    for (const Section& section : decoded.sections) marks.emplace_back(section.offset, section.title);
    for (const Extent& extent : UncoveredBytes(decoded)) marks.emplace_back(extent.offset, "no area");
    marks.emplace_back(decoded.bytes.size(), "");
    std::sort(marks.begin(), marks.end());
    for (std::size_t mark = 0; mark + 1 < marks.size(); ++mark) {
      Line("  -- " + marks[mark].second);
      for (std::size_t i = marks[mark].first; i < marks[mark + 1].first; i += 16 - i % 16)
        ShowHexLine(decoded.bytes, i, std::min(marks[mark + 1].first, i + 16 - i % 16));
    }
  }

  void ShowHexLine(ByteView bytes, std::size_t begin, std::size_t end) {
    std::string hex(3 * (begin % 16), ' ');
    std::string text(begin % 16, ' ');
    for (std::size_t i = begin; i < end; ++i) {
      hex += HexBytes(bytes.subspan(i, 1)) + " ";
      text += bytes[i] >= 0x20 && bytes[i] < 0x7F ? static_cast<char>(bytes[i]) : '.';
    }
    std::string offset = Hex(static_cast<std::uint32_t>(begin / 16 * 16), 4);
    offset.pop_back();
    Line("  " + offset + "  " + Padded(hex, 48) + " " + text);
  }

  void ShowRecords() {
    const auto& records = source_.board.records;
    std::size_t size = 0;
    std::size_t width = 0;
    for (const Bytes& record : records) {
      size += record.size();
      width = std::max(width, Width(HeadOf(record).name));
    }
    Title("SDR repository: " + Plural(records.size(), "record") + ", " + Plural(size, "byte"));
    for (const Bytes& record : records) {
      const SdrHead head = HeadOf(record);
      const Decoded decoded = DecodeSdr(record);
      Line("  " + Hex(head.id, 4) + "  " + Padded(head.name, std::min<std::size_t>(width, 32)) + "  " +
           SummaryOf(record, decoded) + ReadingOf(record));
      if (options_.hasDetails) ShowFields(decoded.sections.front(), 6);
      ShowProblems(decoded, "record " + Hex(head.id, 4) + ", ");
    }
    if (source_.rest.empty()) return;
    Line("  ! byte " + std::to_string(size) + ": " + Plural(source_.rest.size(), "byte") +
         " that are no whole record");
    ++findings_;
  }

  /// What a sensor of the BMC read when the folder was made; empty for one without a reading.
  std::string ReadingOf(ByteView record) const {
    constexpr std::uint8_t kUnavailable = 0x20;
    if (record.size() < 48 || record[3] != sdr_type::kFullSensor || record[5] != kBmc) return {};
    for (const SensorReading& reading : source_.board.sensors) {
      if (reading.number != record[7] || reading.completionCode != 0 || reading.bytes.size() < 2) continue;
      if ((reading.bytes[1] & kUnavailable) != 0) return {};
      const auto value = SensorConversion(record).Convert(reading.bytes[0]);
      if (value) return ", read " + NumberText(*value) + " " + UnitName(record[20], record[21], record[22]);
    }
    return {};
  }

  void ShowSmbios() {
    const Decoded decoded = DecodeSmbios(source_.board.smbios);
    Title("SMBIOS: " + Plural(decoded.sections.size(), "structure"));
    for (const Section& section : decoded.sections) {
      if (section.fields.empty()) continue;
      Line("  " + section.title);
      ShowFields(section, 4);
    }
    ShowProblems(decoded, {});
  }

  const Source& source_;
  const ShowOptions& options_;
  std::vector<std::string> lines_;
  std::size_t findings_ = 0;
};

const Field* FindField(const Decoded& decoded, std::string_view label) {
  for (const Field& field : decoded.sections.front().fields)
    if (field.label == label) return &field;
  return nullptr;
}

/// "lcr 10.8, unc 13.2 Volts".
std::string ThresholdsOf(const Decoded& decoded) {
  struct Row {
    const char* label;
    const char* name;
  };
  constexpr Row kRows[] = {
      {"Lower Non-Recoverable Threshold", "lnr"}, {"Lower Critical Threshold", "lcr"},
      {"Lower Non-Critical Threshold", "lnc"},    {"Upper Non-Critical Threshold", "unc"},
      {"Upper Critical Threshold", "ucr"},        {"Upper Non-Recoverable Threshold", "unr"}};
  std::string text;
  std::string unit;
  for (const Row& row : kRows) {
    const Field* field = FindField(decoded, row.label);
    if (field == nullptr || field->role != Role::Content) continue;
    text += (text.empty() ? "" : ", ") + std::string(row.name) + " " +
            (field->number ? NumberText(*field->number) : field->value);
    unit = field->unit;
  }
  return text.empty() || unit.empty() ? text : text + " " + unit;
}

/// A field's text behind its code, "Temperature" of "01h, Temperature", or in front of it.
std::string Meaning(const Field* field) {
  if (field == nullptr) return {};
  const std::size_t comma = field->value.find(", ");
  if (comma == 3) return field->value.substr(comma + 2);
  return field->value.substr(0, field->value.find(" ("));
}

}  // namespace

Section IdentitySection(const Controller& controller) {
  Section section;
  section.id = controller.address == kBmc ? "bmc" : "controller " + Hex(controller.address);
  section.title = controller.address == kBmc ? "BMC" : "Controller " + Hex(controller.address);
  auto add = [&](const char* label, std::string value) {
    Field& field = section.fields.emplace_back();
    field.label = label;
    field.value = std::move(value);
  };
  if (!controller.identity) return section;
  const Identity& identity = *controller.identity;
  const std::string minor = HexBytes({&identity.firmwareMinor, 1});
  add("Device ID", Hex(identity.deviceId) + ", revision " + std::to_string(identity.deviceRevision));
  add("Firmware Revision", std::to_string(identity.firmwareMajor) + "." + minor);
  add("IPMI Version",
      std::to_string(identity.ipmiVersion & 0xF) + "." + std::to_string(identity.ipmiVersion >> 4));
  add("Manufacturer ID",
      Hex(identity.manufacturerId, 6) + " (" + std::to_string(identity.manufacturerId) + ")");
  add("Product ID", Hex(identity.productId, 4));
  add("Additional Support", Hex(identity.additionalSupport));
  if (identity.hasAuxiliary) add("Auxiliary Revision", HexBytes(identity.auxiliary));
  if (identity.isInTransferMode) add("Mode", "firmware transfer");
  return section;
}

std::string SummaryOf(ByteView record, const Decoded& decoded) {
  const SdrHead head = HeadOf(record);
  std::string text = head.typeName;
  auto add = [&](const std::string& part) {
    if (!part.empty()) text += ", " + part;
  };
  if (const Field* number = FindField(decoded, "Sensor Number")) add("sensor " + number->value);
  add(Meaning(FindField(decoded, "Sensor Type")));
  if (const Field* id = FindField(decoded, "FRU Device ID")) add("FRU " + id->value);
  if (const Field* entity = FindField(decoded, "Entity"))
    add(entity->value.substr(0, entity->value.rfind(" (")));
  const Field* units = FindField(decoded, "Units");
  const std::string thresholds = ThresholdsOf(decoded);
  if (units != nullptr && units->value != "unspecified" && thresholds.find(units->value) == std::string::npos)
    add(units->value);
  add(thresholds);
  const Field* sharing = FindField(decoded, "Record Sharing");
  if (sharing != nullptr && !sharing->value.starts_with("1 ")) add(sharing->value);
  return text;
}

std::vector<std::string> ShowSource(const Source& source, const ShowOptions& options, std::size_t& findings) {
  return Shower(source, options).Show(findings);
}

}  // namespace varnok::boards
