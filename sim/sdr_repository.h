// The BMC's SDR repository (IPMI v2.0, chapter 33): records back to back in an image, as `ipmitool sdr dump`
// writes them, with reservations, partial adds and an erase that takes time.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "sim/board_config.h"
#include "sim/clock.h"
#include "sim/image.h"
#include "sim/reservation.h"

namespace varnok::sim {

inline constexpr std::uint8_t kSdrVersion = 0x51;  // of the repository and its records: IPMI 1.5 and 2.0

/// The record at the start of `bytes`, as far as it goes; empty when there is not even a header.
std::span<const std::uint8_t> FirstSdr(std::span<const std::uint8_t> bytes);

class SdrRepository {
 public:
  /// Throws BoardError when the image does not hold whole records. The image and the clock must outlive it.
  SdrRepository(const SdrConfig& config, ImageStore& images, const VirtualClock& clock);

  bool IsPresent() const { return image_ != nullptr; }
  const SdrConfig& Config() const { return config_; }

  std::size_t Count() const { return records_.size(); }
  std::size_t FreeBytes() const;
  /// The record with this ID (0000h: the first, FFFFh: the last) and the ID behind it; nothing when there is
  /// none.
  std::optional<std::span<const std::uint8_t>> Find(std::uint16_t recordId, std::uint16_t& nextId) const;

  /// Appends a whole record under a new ID, which is returned. Returns a completion code; throws BoardError
  /// when the image cannot be replaced.
  std::uint8_t Add(Bytes record, std::uint16_t& recordId);
  /// One piece of a record. The first names record 0000h and offset 0 and begins a new record.
  std::uint8_t AddPart(std::uint16_t& recordId, std::size_t offset, bool isLast,
                       std::span<const std::uint8_t> bytes);
  std::uint8_t Delete(std::uint16_t recordId);
  /// Starts to erase: the records are gone, and for the configured time the repository is busy.
  void StartErase();
  bool IsErasing() const { return clock_.Elapsed() < erasedAt_; }
  /// Takes the image as it is now, however it came to hold that. Throws BoardError as the constructor does.
  void Reload();
  /// Forgets a half-added record, as a reset does.
  void DropPart() { part_.reset(); }

  /// Seconds since 1970, by the repository's own clock.
  std::uint32_t Time() const;
  void SetTime(std::uint32_t seconds);
  std::uint32_t LastAddition() const { return lastAddition_; }
  std::uint32_t LastErase() const { return lastErase_; }

 private:
  struct Part {
    std::uint16_t recordId;
    Bytes bytes;
  };
  struct Place {
    std::size_t offset;  ///< in the image
    std::uint16_t id;
  };

  /// Notes where each record stands. Throws BoardError when the image does not hold whole records.
  void Index();
  void Note(std::size_t offset, std::uint16_t id);
  std::span<const std::uint8_t> RecordAt(std::size_t offset) const {
    return FirstSdr(image_->Content().subspan(offset));
  }
  /// Which record has this ID, by its number; Count() when there is none.
  std::size_t NumberOf(std::uint16_t recordId) const;
  bool IsTaken(std::uint32_t id) const { return id < numbers_.size() && numbers_[id] != 0; }
  std::uint8_t AddPartTo(Part& part, std::size_t offset, bool isLast, std::span<const std::uint8_t> bytes);
  std::uint16_t FreeId() const { return static_cast<std::uint16_t>(lowestFree_); }
  bool HasRoomFor(std::size_t size) const;
  std::uint32_t ClockSeconds() const;

  SdrConfig config_;
  Image* image_ = nullptr;
  // A request must cost as much in a large repository as in a small one.
  std::vector<Place> records_;
  std::vector<std::size_t> numbers_;  // of records, by their IDs and counted from 1; 0: no record has the ID
  std::uint32_t lowestFree_ = 1;      // of the IDs; FFFFh when none is left
  const VirtualClock& clock_;
  std::optional<Part> part_;
  std::uint64_t erasedAt_ = 0;
  std::int64_t timeOffset_ = 0;
  std::uint32_t lastAddition_ = 0;
  std::uint32_t lastErase_ = 0;
};

}  // namespace varnok::sim
