#include "boards/compare.h"

#include <algorithm>
#include <map>

#include "boards/field_text.h"
#include "boards/fru_image.h"
#include "boards/sdr_record.h"
#include "boards/show_text.h"
#include "boards/smbios_tables.h"

namespace varnok::boards {
namespace {

constexpr const char* kRecordId = "Record ID";
constexpr std::size_t kShownBytes = 16;

/// Bytes for a line: the first of them, and how many there are.
std::string Shortened(ByteView bytes) {
  if (bytes.empty()) return "nothing";
  if (bytes.size() <= kShownBytes) return HexBytes(bytes);
  return HexBytes(bytes.first(kShownBytes)) + "... (" + Plural(bytes.size(), "byte") + ")";
}

std::string RangeName(std::size_t offset, std::size_t length) {
  if (length == 1) return "Byte " + std::to_string(offset);
  return "Bytes " + std::to_string(offset) + " to " + std::to_string(offset + length - 1);
}

bool IsSame(ByteView a, ByteView b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

ByteView BytesOf(const Decoded& decoded, const Field& field) {
  return Part(decoded.bytes, field.offset, field.length);
}

/// Which bytes of one side are told by a field that differs.
class Coverage {
 public:
  explicit Coverage(std::size_t size) : isTold_(size) {}
  void Tell(const Field& field) {
    for (std::size_t i = field.offset; i < std::min(field.offset + field.length, isTold_.size()); ++i)
      isTold_[i] = true;
  }
  bool Has(std::size_t offset) const { return offset < isTold_.size() && isTold_[offset]; }

 private:
  std::vector<bool> isTold_;
};

/// Compares two decodings of the same part, section by section.
class PartComparer {
 public:
  PartComparer(std::string part, const Decoded& a, const Decoded& b, std::vector<Difference>& differences)
      : part_(std::move(part)), a_(a), b_(b), told_(a.bytes.size()), differences_(differences) {}

  void CompareSections() {
    for (const Section& section : a_.sections) {
      const Section* other = b_.Find(section.id);
      if (other == nullptr)
        Add(Change::Removed, section.title);
      else
        CompareFields(section, *other);
    }
    for (const Section& section : b_.sections)
      if (a_.Find(section.id) == nullptr) Add(Change::Added, section.title);
  }

  /// `title` names the group in place of the sections' own titles.
  void CompareFields(const Section& a, const Section& b, const std::string& title = {}) {
    group_ = title.empty() ? b.title : title;
    const std::size_t before = differences_.size();
    for (const Field& field : a.fields) {
      const Field* other = Partner(a, b, field);
      if (field.role == Role::Consequence || field.label == kRecordId) continue;
      if (other == nullptr)
        Tell(field, Change::Removed, field.value, {});
      else if (other->value != field.value)
        Tell(field, Change::Changed, field.value, other->value, IsDeviceText(*other));
    }
    for (const Field& field : b.fields)
      if (Partner(b, a, field) == nullptr && field.role != Role::Consequence)
        Add(Change::Added, group_, field.label, {}, field.value, IsDeviceText(field));
    CompareBytes(a, b);
    if (differences_.size() == before) CompareConsequences(a, b);
  }

  /// Bytes that neither side has in a section.
  void CompareUncovered() {
    if (a_.bytes.size() != b_.bytes.size())
      Add(Change::Changed, "Image", "Size", Plural(a_.bytes.size(), "byte"), Plural(b_.bytes.size(), "byte"));
    std::vector<bool> isOpen = OpenBytes(a_);
    const std::vector<bool> other = OpenBytes(b_);
    isOpen.resize(std::min(isOpen.size(), other.size()));
    for (std::size_t i = 0; i < isOpen.size(); ++i) {
      auto differs = [&](std::size_t at) { return isOpen[at] && other[at] && a_.bytes[at] != b_.bytes[at]; };
      if (!differs(i)) continue;
      std::size_t end = i + 1;
      while (end < isOpen.size() && differs(end)) ++end;
      Add(Change::Changed, "No area", RangeName(i, end - i), Shortened(Part(a_.bytes, i, end - i)),
          Shortened(Part(b_.bytes, i, end - i)));
      i = end;
    }
  }

 private:
  static bool IsDeviceText(const Field& field) {
    return !field.encoding.empty() && field.encoding != "binary";
  }

  static std::vector<bool> OpenBytes(const Decoded& decoded) {
    std::vector<bool> isOpen(decoded.bytes.size());
    for (const Extent& extent : UncoveredBytes(decoded))
      for (std::size_t i = extent.offset; i < extent.offset + extent.length; ++i) isOpen[i] = true;
    return isOpen;
  }

  /// The field of the same label in the other section: the n-th for the n-th.
  static const Field* Partner(const Section& own, const Section& other, const Field& field) {
    auto number = std::count_if(own.fields.data(), &field,
                                [&](const Field& each) { return each.label == field.label; });
    for (const Field& candidate : other.fields)
      if (candidate.label == field.label && number-- == 0) return &candidate;
    return nullptr;
  }

  void Tell(const Field& field, Change change, const std::string& before, const std::string& after,
            bool isText = false) {
    told_.Tell(field);
    Add(change, group_, field.label, before, after, isText || IsDeviceText(field));
  }

  /// Fields that read alike and are not: another encoding, reserved bits. What a field that differs has told
  /// already is not told again.
  void CompareBytes(const Section& a, const Section& b) {
    for (const Field& field : a.fields) {
      const Field* other = Partner(a, b, field);
      if (other == nullptr || field.role == Role::Consequence || field.label == kRecordId) continue;
      ByteView mine = BytesOf(a_, field);
      ByteView theirs = BytesOf(b_, *other);
      if (other->value != field.value || IsSame(mine, theirs) || IsTold(field, theirs)) continue;
      const bool isRecoded = field.encoding != other->encoding;
      Tell(field, Change::Changed, isRecoded ? field.value + " [" + field.encoding + "]" : Shortened(mine),
           isRecoded ? other->value + " [" + other->encoding + "]" : Shortened(theirs));
      differences_.back().isText = false;
    }
  }

  bool IsTold(const Field& field, ByteView theirs) const {
    ByteView mine = BytesOf(a_, field);
    if (mine.size() != theirs.size()) return false;
    for (std::size_t i = 0; i < mine.size(); ++i)
      if (mine[i] != theirs[i] && !told_.Has(field.offset + i)) return false;
    return true;
  }

  void CompareConsequences(const Section& a, const Section& b) {
    ByteView mine = Part(a_.bytes, a.offset, a.length);
    ByteView theirs = Part(b_.bytes, b.offset, b.length);
    const std::size_t before = differences_.size();
    for (const Field& field : a.fields) {
      const Field* other = Partner(a, b, field);
      if (field.role != Role::Consequence || other == nullptr) continue;
      if (!IsSame(BytesOf(a_, field), BytesOf(b_, *other)))
        Tell(field, Change::Changed, field.value, other->value);
    }
    const bool hasRecordId = !a.fields.empty() && a.fields.front().label == kRecordId;
    const std::size_t skipped = hasRecordId ? a.fields.front().length : 0;
    if (differences_.size() == before &&
        !IsSame(Part(mine, skipped, mine.size()), Part(theirs, skipped, theirs.size())))
      Add(Change::Changed, group_, "Bytes", Shortened(mine), Shortened(theirs));
  }

  void Add(Change change, std::string group, std::string field = {}, std::string before = {},
           std::string after = {}, bool isText = false) {
    differences_.push_back(
        {change, part_, std::move(group), std::move(field), std::move(before), std::move(after), isText});
  }

  std::string part_;
  std::string group_;
  const Decoded& a_;
  const Decoded& b_;
  Coverage told_;
  std::vector<Difference>& differences_;
};

std::string PartName(const DeviceAddress& address) {
  return (address.kind == DeviceKind::Fru ? "FRU " : "") + NameOf(address);
}

void CompareImages(const std::string& part, const Bytes& a, const Bytes& b,
                   std::vector<Difference>& differences) {
  if (a == b) return;
  const Decoded before = DecodeFru(a);
  const Decoded after = DecodeFru(b);
  PartComparer comparer(part, before, after, differences);
  comparer.CompareSections();
  comparer.CompareUncovered();
}

void CompareDevices(const Source& a, const Source& b, std::vector<Difference>& differences) {
  // One device with one device, whatever they are called.
  if (a.IsOneDevice() && b.IsOneDevice()) {
    const Device& device = b.board.devices.front();
    return CompareImages(PartName(device.address), a.board.devices.front().bytes, device.bytes, differences);
  }
  for (const Device& device : a.board.devices) {
    const Device* other = b.board.Find(device.address);
    if (other == nullptr)
      differences.push_back({.change = Change::Removed, .part = PartName(device.address)});
    else
      CompareImages(PartName(device.address), device.bytes, other->bytes, differences);
  }
  for (const Device& device : b.board.devices)
    if (a.board.Find(device.address) == nullptr)
      differences.push_back({.change = Change::Added, .part = PartName(device.address)});
}

std::string RecordName(const SdrHead& head, ByteView record) {
  std::string name = head.typeName + (head.name.empty() ? "" : " '" + head.name + "'");
  if (head.type >= 1 && head.type <= 3 && record.size() >= 8) name += " (sensor " + Hex(record[7]) + ")";
  return name;
}

bool IsSameRecord(const Bytes& a, const Bytes& b) {
  constexpr std::size_t kRecordIdLength = 2;
  return IsSame(Part(a, kRecordIdLength, a.size()), Part(b, kRecordIdLength, b.size()));
}

/// Pairs the records of two repositories by their keys; of several with one key, those that are the same
/// first.
class RecordComparer {
 public:
  RecordComparer(const std::vector<Bytes>& a, const std::vector<Bytes>& b, Comparison& comparison)
      : a_(a), partners_(a.size()), comparison_(comparison) {
    for (const Bytes& record : b) byKey_[HeadOf(record).key].push_back(&record);
    b_ = &b;
  }

  void Compare() {
    for (std::size_t i = 0; i < a_.size(); ++i)
      Take(i, [&](const Bytes& candidate) { return IsSameRecord(a_[i], candidate); });
    for (std::size_t i = 0; i < a_.size(); ++i)
      if (partners_[i] == nullptr) Take(i, [](const Bytes&) { return true; });
    for (std::size_t i = 0; i < a_.size(); ++i) ComparePair(a_[i], partners_[i]);
    for (const Bytes& record : *b_)
      if (std::find(partners_.begin(), partners_.end(), &record) == partners_.end())
        Add(Change::Added, record);
    std::vector<const Bytes*> order;
    for (const Bytes* partner : partners_)
      if (partner != nullptr) order.push_back(partner);
    if (!std::is_sorted(order.begin(), order.end()))
      comparison_.remarks.emplace_back("The records stand in another order.");
  }

 private:
  template <class Fits>
  void Take(std::size_t index, Fits fits) {
    auto& candidates = byKey_[HeadOf(a_[index]).key];
    auto found = std::find_if(candidates.begin(), candidates.end(),
                              [&](const Bytes* candidate) { return fits(*candidate); });
    if (found == candidates.end()) return;
    partners_[index] = *found;
    candidates.erase(found);
  }

  void Add(Change change, const Bytes& record) {
    comparison_.differences.push_back(
        {.change = change, .part = "SDR", .group = RecordName(HeadOf(record), record)});
  }

  void ComparePair(const Bytes& record, const Bytes* partner) {
    if (partner == nullptr) return Add(Change::Removed, record);
    if (IsSameRecord(record, *partner)) return;
    const Decoded before = DecodeSdr(record);
    const Decoded after = DecodeSdr(*partner);
    PartComparer("SDR", before, after, comparison_.differences)
        .CompareFields(before.sections.front(), after.sections.front(), RecordName(HeadOf(record), record));
  }

  const std::vector<Bytes>& a_;
  const std::vector<Bytes>* b_;
  std::map<std::string, std::vector<const Bytes*>> byKey_;
  std::vector<const Bytes*> partners_;
  Comparison& comparison_;
};

void CompareController(const Controller& a, const Controller* b, std::vector<Difference>& differences) {
  const Section before = IdentitySection(a);
  if (b == nullptr) return differences.push_back({.change = Change::Removed, .part = before.title});
  const Decoded none;
  PartComparer(before.title, none, none, differences).CompareFields(before, IdentitySection(*b), "Identity");
}

void CompareControllers(Board a, Board b, std::vector<Difference>& differences) {
  if (a.bmc.identity && b.bmc.identity) CompareController(a.bmc, &b.bmc, differences);
  for (const Controller& controller : a.controllers)
    CompareController(controller, b.FindController(controller.address, controller.channel), differences);
  for (const Controller& controller : b.controllers)
    if (a.FindController(controller.address, controller.channel) == nullptr)
      differences.push_back({.change = Change::Added, .part = IdentitySection(controller).title});
}

void CompareTables(const Bytes& a, const Bytes& b, std::vector<Difference>& differences) {
  if (a == b) return;
  if (a.empty() || b.empty())
    return differences.push_back({.change = a.empty() ? Change::Added : Change::Removed, .part = "SMBIOS"});
  const Decoded before = DecodeSmbios(a);
  const Decoded after = DecodeSmbios(b);
  const std::size_t count = differences.size();
  PartComparer("SMBIOS", before, after, differences).CompareSections();
  if (differences.size() == count)
    differences.push_back({.part = "SMBIOS",
                           .group = "Entry point",
                           .field = "Bytes",
                           .before = Shortened(a),
                           .after = Shortened(b)});
}

}  // namespace

Comparison Compare(const Source& before, const Source& after) {
  Comparison comparison;
  std::vector<Difference>& differences = comparison.differences;
  const Board& a = before.board;
  const Board& b = after.board;
  CompareControllers(a, b, differences);
  CompareDevices(before, after, differences);
  if (a.hasRepository != b.hasRepository)
    differences.push_back({.change = b.hasRepository ? Change::Added : Change::Removed, .part = "SDR"});
  else
    RecordComparer(a.records, b.records, comparison).Compare();
  if (before.rest != after.rest)
    differences.push_back({.part = "SDR",
                           .group = "Behind the records",
                           .field = "Bytes",
                           .before = Shortened(before.rest),
                           .after = Shortened(after.rest)});
  CompareTables(a.smbios, b.smbios, differences);
  return comparison;
}

}  // namespace varnok::boards
