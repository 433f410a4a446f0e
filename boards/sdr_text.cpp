// An SDR file out of records: their bytes in groups, each with what it is.
#include <algorithm>
#include <map>

#include "boards/field_text.h"
#include "boards/file_writer.h"
#include "boards/load_file.h"
#include "boards/load_text.h"
#include "boards/sdr_record.h"

namespace varnok::boards {
namespace {

constexpr std::size_t kSdrIndent = 3;
constexpr std::size_t kSdrCommentColumn = 24;
constexpr std::uint8_t kOemRecord = 0xC0;

/// Bytes that one line gives, with all that they are.
struct Group {
  std::size_t offset;
  std::size_t end;
  std::string comment;
};

/// The fields as lines: those that share a byte share a line.
std::vector<Group> GroupsOf(const Decoded& record) {
  std::vector<Field> fields = record.sections.front().fields;
  std::stable_sort(fields.begin(), fields.end(),
                   [](const Field& a, const Field& b) { return a.offset < b.offset; });
  std::vector<Group> groups;
  for (const Field& field : fields) {
    const bool isReserved = field.label.starts_with("Bytes ");
    const std::string comment = isReserved            ? "Reserved"
                                : field.value.empty() ? field.label
                                                      : field.label + ": " + field.value;
    const std::size_t end = field.offset + field.length;
    if (!groups.empty() && field.offset < groups.back().end) {
      groups.back().end = std::max(groups.back().end, end);
      groups.back().comment += "; " + comment;
    } else if (field.length != 0) {
      groups.push_back({field.offset, end, comment});
    }
  }
  return groups;
}

class SdrTextMaker {
 public:
  SdrTextMaker(const std::vector<Bytes>& records, ByteView rest, std::string name)
      : records_(records), rest_(rest), name_(std::move(name)) {}

  LoadText Make() {
    Choose();
    FindDoubles();
    FileWriter file(kSdrIndent, kSdrCommentColumn);
    PutHead(file);
    for (const Bytes* record : chosen_) PutRecord(file, *record);
    file.Line();
    file.Line(")");
    if (IsReadBack(file.Text())) result_.text = file.Text();
    return std::move(result_);
  }

 private:
  static std::string Named(ByteView record) {
    const SdrHead head = HeadOf(record);
    return "record " + Hex(head.id, 4) + " (" + head.typeName +
           (head.name.empty() ? "" : " \"" + head.name + "\"") + ")";
  }
  void Lose(std::string text) { result_.losses.push_back(std::move(text)); }

  /// The records that a file can hold.
  void Choose() {
    for (const Bytes& record : records_) {
      if (IsRecordForFile(record)) {
        chosen_.push_back(&record);
        continue;
      }
      const Decoded decoded = DecodeSdr(record);
      Lose(Named(record) + ": left out, " +
           (decoded.problems.empty() ? "the program refuses its length" : decoded.problems.front().text));
    }
    if (!rest_.empty()) Lose(Plural(rest_.size(), "byte") + " behind the last whole record");
    const bool isOrdered = std::is_sorted(chosen_.begin(), chosen_.end(), [](const Bytes* a, const Bytes* b) {
      return WritingOrder((*a)[3]) < WritingOrder((*b)[3]);
    });
    if (!isOrdered)
      result_.remarks.emplace_back(
          "The records are written in the order of their types, not in the one that they have here.");
  }

  /// Two records of one key: a controller may take the second for a new version of the first. Makers' records
  /// share theirs, the manufacturer, by right.
  void FindDoubles() {
    std::map<std::string, const Bytes*> seen;
    for (const Bytes* record : chosen_) {
      const SdrHead head = HeadOf(*record);
      if (head.type == kOemRecord) continue;
      const auto [found, isNew] = seen.emplace(head.key, record);
      if (!isNew)
        Lose(Named(*record) + " has the key of " + Named(*found->second) +
             ": a BMC may keep one of the two only");
    }
  }

  void PutHead(FileWriter& file) const {
    file.Line("// Sensor data records of " + QuotedValue(name_) +
              ", made from its repository: " + Plural(chosen_.size(), "record") + ".");
    PutHeadRemarks(file, result_.losses, result_.remarks);
    file.Line();
    file.Line("_LF_NAME        '" + QuotedValue(name_) + "'");
    file.Line("_LF_VERSION     '1.00'");
    file.Line("_LF_FMT_VER     '2.00'");
    file.Line("_IPMI_VERSION   '2.0'");
    file.Line();
    file.Line("_SDR (");
    file.Line();
    for (const char* line : {"_START_ADDR     0000", "_DATA_LEN       0000", "_NVS_TYPE       IMBDEVICE",
                             "_DEV_BUS        FF", "_DEV_ADDRESS    20"})
      file.Line(line);
  }

  static void PutRecord(FileWriter& file, const Bytes& record) {
    const SdrHead head = HeadOf(record);
    file.Line();
    file.Line("// " + Printable(head.typeName + (head.name.empty() ? "" : ": " + head.name)));
    auto number = [](std::size_t value, int width) {
      std::string text = Hex(static_cast<std::uint32_t>(value), width);
      text.pop_back();
      return text;
    };
    file.Line("_SDR_TYPE " + number(head.type, 2));
    file.Line("_REC_LEN  " + number(record.size(), 4));
    const std::size_t body = kSdrHeaderLength + SdrKeyLength(head.type);
    for (const Group& group : GroupsOf(DecodeSdr(record))) {
      if (group.offset == 0) PutTitle(file, "Sensor Record Header");
      if (group.offset == kSdrHeaderLength && body > kSdrHeaderLength) PutTitle(file, "Record Key Bytes");
      if (group.offset == body) PutTitle(file, "Record Body Bytes");
      PutGroup(file, group, Part(record, group.offset, group.end - group.offset));
    }
  }

  static void PutTitle(FileWriter& file, const char* title) {
    file.Line();
    file.Comment(title);
  }

  /// An ID string and text of a maker's record stand in quotes, which take a line of their own.
  static void PutGroup(FileWriter& file, const Group& group, ByteView bytes) {
    constexpr std::string_view kIdString = "ID String: ";
    const bool isName =
        group.comment.starts_with(kIdString) && bytes[0] >> 6 == 3 && IsQuotable(bytes.subspan(1));
    if (isName) {
      file.Data(bytes.first(1), "ID String Type / Length: " + Plural(bytes.size() - 1, "character"));
      file.TextOrData(bytes.subspan(1));
    } else if (group.comment.starts_with("OEM Data: ") && IsQuotable(bytes)) {
      file.TextOrData(bytes);
    } else {
      file.Data(bytes, group.comment);
    }
  }

  /// True when the program reads the records out of the text that went into it.
  bool IsReadBack(const std::string& text) {
    std::vector<Bytes> read;
    std::string error;
    if (!ReadSdrFile(text, read, error)) {
      Lose("the program refuses the file: " + error);
      return false;
    }
    std::stable_sort(chosen_.begin(), chosen_.end(), [](const Bytes* a, const Bytes* b) {
      return WritingOrder((*a)[3]) < WritingOrder((*b)[3]);
    });
    const bool isSame = std::equal(read.begin(), read.end(), chosen_.begin(), chosen_.end(),
                                   [](const Bytes& a, const Bytes* b) { return a == *b; });
    if (!isSame) Lose("the program reads other records out of the file");
    return isSame;
  }

  const std::vector<Bytes>& records_;
  ByteView rest_;
  std::string name_;
  std::vector<const Bytes*> chosen_;
  LoadText result_;
};

}  // namespace

LoadText SdrLoadText(const std::vector<Bytes>& records, std::span<const std::uint8_t> rest,
                     const std::string& name) {
  return SdrTextMaker(records, rest, name).Make();
}

}  // namespace varnok::boards
