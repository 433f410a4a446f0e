#include "sim/sdr_repository.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>

#include "firmware/bytes.h"
#include "sim/error.h"
#include "sim/message.h"

namespace varnok::sim {
namespace {

constexpr std::size_t kHeaderSize = 5;
constexpr std::uint16_t kFirst = 0x0000;
constexpr std::uint16_t kLast = 0xFFFF;

std::uint16_t IdOf(std::span<const std::uint8_t> record) {
  return WordAt(record, 0);
}

bool IsWhole(std::span<const std::uint8_t> record) {
  return record.size() >= kHeaderSize && record.size() == kHeaderSize + record[4];
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
    image_ = &(config.isFileNamed ? images.Open(config.file, ImageUse::Sdrs)
                                  : images.OpenOrBegin(config.file, ImageUse::Sdrs));
    Index();
  } catch (const BoardError& error) {
    throw BoardError(std::string("bmc.sdrs.file: ") + error.what());
  }
}

void SdrRepository::Note(std::size_t offset, std::uint16_t id) {
  records_.push_back({offset, id});
  if (id >= numbers_.size()) numbers_.resize(id + std::size_t{1});
  numbers_[id] = records_.size();
  while (lowestFree_ != kLast && IsTaken(lowestFree_)) ++lowestFree_;
}

void SdrRepository::Index() {
  records_.clear();
  numbers_.clear();
  lowestFree_ = 1;
  const auto place = [this](std::size_t offset) {
    return config_.file + ": the record at byte " + std::to_string(offset);
  };
  for (std::size_t offset = 0; offset < image_->Size(); offset += RecordAt(offset).size()) {
    const auto record = RecordAt(offset);
    if (!IsWhole(record) && image_->WasCutShort()) {
      // The program was killed while it added this one, which nobody was told of.
      const auto whole = image_->Content().first(offset);
      return image_->Replace({whole.begin(), whole.end()});
    }
    if (!IsWhole(record)) throw BoardError(place(offset) + " goes past the end of the file");
    const std::uint16_t id = IdOf(record);
    if (IsTaken(id))
      throw BoardError(place(offset) + " has record ID " + std::to_string(id) + ", as one before it has");
    Note(offset, id);
  }
}

void SdrRepository::Reload() {
  part_.reset();
  erasedAt_ = 0;
  if (image_ != nullptr) Index();
}

std::size_t SdrRepository::FreeBytes() const {
  return config_.capacity - std::min<std::size_t>(config_.capacity, image_->Size());
}

bool SdrRepository::HasRoomFor(std::size_t size) const {
  return size <= FreeBytes() && lowestFree_ != kLast;
}

std::size_t SdrRepository::NumberOf(std::uint16_t recordId) const {
  if (recordId == kFirst) return 0;
  if (IsTaken(recordId)) return numbers_[recordId] - 1;
  return recordId == kLast && Count() != 0 ? Count() - 1 : Count();
}

std::optional<std::span<const std::uint8_t>> SdrRepository::Find(std::uint16_t recordId,
                                                                 std::uint16_t& nextId) const {
  const std::size_t number = NumberOf(recordId);
  if (number >= Count()) return std::nullopt;
  nextId = number + 1 == Count() ? config_.endId : records_[number + 1].id;
  return RecordAt(records_[number].offset);
}

std::uint8_t SdrRepository::Add(Bytes record, std::uint16_t& recordId) {
  if (!IsWhole(record)) return code::kRecordLength;
  if (!HasRoomFor(record.size())) return code::kOutOfSpace;
  recordId = FreeId();
  record[0] = static_cast<std::uint8_t>(recordId);
  record[1] = static_cast<std::uint8_t>(recordId >> 8);
  const std::size_t offset = image_->Size();
  image_->Append(record);
  Note(offset, recordId);
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
  Index();
  lastErase_ = Time();
  return code::kSuccess;
}

void SdrRepository::StartErase() {
  DropPart();
  image_->Replace({});
  Index();
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
