#include "sim/sdr_repository.h"

#include <algorithm>
#include <chrono>
#include <set>
#include <string>
#include <utility>

#include "sim/error.h"
#include "sim/message.h"

namespace varnok::sim {
namespace {

constexpr std::size_t kHeaderSize = 5;
constexpr std::uint16_t kFirst = 0x0000;
constexpr std::uint16_t kLast = 0xFFFF;

std::uint16_t IdOf(std::span<const std::uint8_t> record) {
  return static_cast<std::uint16_t>(record[0] | record[1] << 8);
}

void CheckRecords(std::span<const std::uint8_t> bytes, const std::string& file) {
  const std::size_t size = bytes.size();
  std::set<std::uint16_t> ids;
  while (!bytes.empty()) {
    const auto record = FirstSdr(bytes);
    const std::string place = file + ": the record at byte " + std::to_string(size - bytes.size());
    if (record.size() < kHeaderSize || record.size() != kHeaderSize + record[4])
      throw BoardError(place + " goes past the end of the file");
    if (!ids.insert(IdOf(record)).second)
      throw BoardError(place + " has record ID " + std::to_string(IdOf(record)) + ", as one before it has");
    bytes = bytes.subspan(record.size());
  }
}

}  // namespace

std::span<const std::uint8_t> FirstSdr(std::span<const std::uint8_t> bytes) {
  if (bytes.size() < kHeaderSize) return {};
  return bytes.first(std::min(bytes.size(), kHeaderSize + bytes[4]));
}

SdrRepository::SdrRepository(const SdrConfig& config, ImageStore& images, const VirtualClock& clock)
    : config_(config), clock_(clock) {
  if (config.file.empty()) return;
  try {
    // A board whose file is nowhere named begins with an empty repository.
    const std::filesystem::path path = images.Folder() / config.file;
    if (!config.isFileNamed && !std::filesystem::exists(path)) ReplaceFile(path, {});
    image_ = &images.Open(config.file);
    CheckRecords(image_->Content(), config.file);
  } catch (const BoardError& error) {
    throw BoardError(std::string("bmc.sdrs.file: ") + error.what());
  }
}

std::size_t SdrRepository::Count() const {
  std::size_t count = 0;
  for (auto bytes = image_->Content(); !FirstSdr(bytes).empty();
       bytes = bytes.subspan(FirstSdr(bytes).size()))
    ++count;
  return count;
}

std::size_t SdrRepository::FreeBytes() const {
  return config_.capacity - std::min<std::size_t>(config_.capacity, image_->Size());
}

std::optional<std::span<const std::uint8_t>> SdrRepository::Find(std::uint16_t recordId,
                                                                 std::uint16_t& nextId) const {
  auto bytes = image_->Content();
  while (!FirstSdr(bytes).empty()) {
    const auto record = FirstSdr(bytes);
    bytes = bytes.subspan(record.size());
    const bool isEnd = FirstSdr(bytes).empty();
    if (recordId != kFirst && recordId != IdOf(record) && !(recordId == kLast && isEnd)) continue;
    nextId = isEnd ? config_.endId : IdOf(bytes);
    return record;
  }
  return std::nullopt;
}

std::uint16_t SdrRepository::FreeId() const {
  std::set<std::uint16_t> taken{kFirst, kLast};
  for (auto bytes = image_->Content(); !FirstSdr(bytes).empty();
       bytes = bytes.subspan(FirstSdr(bytes).size()))
    taken.insert(IdOf(bytes));
  std::uint16_t id = 1;
  while (taken.contains(id)) ++id;
  return id;
}

std::uint8_t SdrRepository::Add(Bytes record, std::uint16_t& recordId) {
  if (record.size() < kHeaderSize || record.size() != kHeaderSize + record[4]) return code::kRecordLength;
  if (!HasRoomFor(record.size())) return code::kOutOfSpace;
  recordId = FreeId();
  record[0] = static_cast<std::uint8_t>(recordId);
  record[1] = static_cast<std::uint8_t>(recordId >> 8);
  Bytes content(image_->Content().begin(), image_->Content().end());
  content.insert(content.end(), record.begin(), record.end());
  image_->Replace(std::move(content));
  lastAddition_ = Time();
  return code::kSuccess;
}

std::uint8_t SdrRepository::AddPart(std::uint16_t& recordId, std::size_t offset, bool isLast,
                                    std::span<const std::uint8_t> bytes) {
  if (recordId == 0 && offset == 0)
    part_ = Part{FreeId(), {}};
  else if (!part_ || part_->recordId != recordId)
    return code::kNotPresent;
  recordId = part_->recordId;
  const std::uint8_t result = AddPartTo(*part_, offset, isLast, bytes);
  if (isLast || result != code::kSuccess) part_.reset();
  return result;
}

std::uint8_t SdrRepository::AddPartTo(Part& part, std::size_t offset, bool isLast,
                                      std::span<const std::uint8_t> bytes) {
  if (offset != part.bytes.size()) return code::kOutOfRange;
  part.bytes.insert(part.bytes.end(), bytes.begin(), bytes.end());
  if (!HasRoomFor(part.bytes.size())) return code::kOutOfSpace;
  std::uint16_t recordId = part.recordId;
  return isLast ? Add(part.bytes, recordId) : code::kSuccess;
}

std::uint8_t SdrRepository::Delete(std::uint16_t recordId) {
  std::uint16_t nextId = 0;
  const auto record = Find(recordId, nextId);
  if (!record) return code::kNotPresent;
  const auto offset = record->data() - image_->Content().data();
  Bytes content(image_->Content().begin(), image_->Content().end());
  content.erase(content.begin() + offset,
                content.begin() + offset + static_cast<std::ptrdiff_t>(record->size()));
  image_->Replace(std::move(content));
  lastErase_ = Time();
  return code::kSuccess;
}

void SdrRepository::StartErase() {
  DropPart();
  image_->Replace({});
  erasedAt_ = clock_.Elapsed() + std::uint64_t{config_.eraseMilliseconds} * 1000;
  lastErase_ = Time();
}

std::uint32_t SdrRepository::ClockSeconds() const {
  using namespace std::chrono;
  const WallClock now = clock_.Now();
  const sys_days day = year(now.year) / month(now.month) / std::chrono::day(now.day);
  const auto seconds = day.time_since_epoch() + hours(now.hour) + minutes(now.minute);
  return static_cast<std::uint32_t>(duration_cast<std::chrono::seconds>(seconds).count() + now.second);
}

std::uint32_t SdrRepository::Time() const {
  return static_cast<std::uint32_t>(ClockSeconds() + timeOffset_);
}

void SdrRepository::SetTime(std::uint32_t seconds) {
  timeOffset_ = std::int64_t{seconds} - ClockSeconds();
}

}  // namespace varnok::sim
