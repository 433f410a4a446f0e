#include "boards/snapshot/restore.h"

#include <algorithm>

#include "app/services/format.h"
#include "boards/snapshot/device_access.h"
#include "boards/snapshot/repository.h"

namespace varnok::boards {
namespace {

Outcome Unfit(std::string reason) {
  return {Outcome::Kind::Unfit, 0, std::move(reason)};
}

/// Where the bytes differ, in whole units of `unit` bytes.
std::vector<ByteRange> Differences(std::span<const std::uint8_t> wanted, std::span<const std::uint8_t> actual,
                                   std::size_t unit) {
  std::vector<ByteRange> ranges;
  for (std::size_t offset = 0; offset < wanted.size(); offset += unit) {
    const std::size_t count = std::min(unit, wanted.size() - offset);
    if (std::equal(wanted.begin() + offset, wanted.begin() + offset + count, actual.begin() + offset))
      continue;
    if (!ranges.empty() && ranges.back().offset + ranges.back().length == offset)
      ranges.back().length += count;
    else
      ranges.push_back({offset, count});
  }
  return ranges;
}

DeviceWork PlanDevice(const Device& wanted, Observer& observer) {
  DeviceWork work{.wanted = &wanted};
  work.actual.address = wanted.address;
  // An EEPROM has the size that its image has.
  if (wanted.address.kind != DeviceKind::Fru) work.actual.bytes.resize(wanted.bytes.size());
  work.outcome = MeasureDevice(work.actual);
  if (!work.outcome.IsDone()) return work;
  const std::size_t size = work.actual.bytes.size();
  if (size < wanted.bytes.size()) {
    work.outcome = Unfit(Format("the image has %u bytes, the device %u", wanted.bytes.size(), size));
    return work;
  }
  work.outcome = ReadDevice(work.actual, observer);
  if (!work.outcome.IsDone()) return work;
  const std::size_t unit = work.actual.isWordAccess ? 2 : 1;
  if (wanted.bytes.size() % unit != 0)
    work.outcome = Unfit("the image ends in half a word");
  else
    work.ranges = Differences(wanted.bytes, work.actual.bytes, unit);
  return work;
}

RepositoryWork PlanRecords(const std::vector<Bytes>& records, Observer& observer) {
  RepositoryWork work{.wanted = &records};
  Repository actual;
  work.outcome = ReadRepository(actual, observer);
  // A repository that cannot be read to its end is one to replace.
  if (work.outcome.kind == Outcome::Kind::Unfit) work.outcome = {};
  work.actualCount = actual.records.size();
  work.isSame = actual.unread.empty() && AreSameRecords(records, actual.records);
  return work;
}

}  // namespace

std::string DeviceWork::Text() const {
  const std::string name = NameOf(wanted->address);
  if (!outcome.IsDone()) return Format("%s: cannot be restored: %s", name, outcome.Text());
  std::size_t count = 0;
  for (const ByteRange& range : ranges) count += range.length;
  if (count == 0) return name + ": equal";
  return Format("%s: %u of %u bytes differ, from offset %u on", name, count, wanted->bytes.size(),
                ranges.front().offset);
}

std::string RepositoryWork::Text() const {
  if (!outcome.IsDone()) return "SDR repository: cannot be restored: " + outcome.Text();
  if (isSame) return "SDR repository: equal";
  return Format("SDR repository: its %u %s erased, %u %s written", actualCount,
                actualCount == 1 ? "record is" : "records are", wanted->size(),
                wanted->size() == 1 ? "is" : "are");
}

bool RestoreWork::IsNeeded() const {
  return repository.IsNeeded() ||
         std::any_of(devices.begin(), devices.end(), [](const DeviceWork& work) { return work.IsNeeded(); });
}

bool RestoreWork::HasObstacle() const {
  return (repository.wanted != nullptr && !repository.outcome.IsDone()) ||
         std::any_of(devices.begin(), devices.end(),
                     [](const DeviceWork& work) { return !work.outcome.IsDone(); });
}

RestoreWork PlanRestore(std::span<const Device* const> devices, const std::vector<Bytes>* records,
                        Observer& observer) {
  RestoreWork work;
  for (const Device* device : devices) work.devices.push_back(PlanDevice(*device, observer));
  if (records != nullptr) work.repository = PlanRecords(*records, observer);
  return work;
}

Outcome RestoreDevice(DeviceWork& work, Observer& observer) {
  std::size_t chunk = kLargestWrite;
  const std::span<const std::uint8_t> wanted(work.wanted->bytes);
  const std::string name = "device " + NameOf(work.wanted->address);
  for (const ByteRange& range : work.ranges) {
    observer.Step(name, range.offset, wanted.size());
    Outcome outcome =
        WriteDevice(work.actual, range.offset, wanted.subspan(range.offset, range.length), chunk);
    if (!outcome.IsDone()) return outcome;
  }
  Device back = work.actual;
  Outcome outcome = ReadDevice(back, observer);
  if (!outcome.IsDone()) return outcome;
  for (std::size_t i = 0; i < back.bytes.size(); ++i) {
    const std::uint8_t expected = i < wanted.size() ? wanted[i] : work.actual.bytes[i];
    if (back.bytes[i] != expected)
      return {Outcome::Kind::Differs, 0,
              Format("byte %u reads back as %02Xh, not %02Xh", i, back.bytes[i], expected)};
  }
  return outcome;
}

Outcome RestoreRecords(const RepositoryWork& work, Observer& observer) {
  return ReplaceRepository(*work.wanted, observer);
}

}  // namespace varnok::boards
