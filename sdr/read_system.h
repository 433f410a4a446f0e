// The BMC's SDR repository (IPMI v2.0, section 33): its properties, its records one by one or all, adding a
// record in pieces, and clearing. A reservation is taken afresh for every record and every clear.
#pragma once

#include <cstdint>
#include <span>

#include "sdr/data_set.h"

namespace varnok {

/// What a walk through the repository does with its records.
class SdrRecordTaker {
 public:
  virtual ~SdrRecordTaker() = default;
  /// Takes the record at the start of `raw`; another status than 0 ends the walk.
  virtual Status Take(std::span<const std::uint8_t> raw) = 0;
};

}  // namespace varnok

namespace varnok::SdrReadSystem {

/// The longest record that a header can announce; the room that ReadRecFromBMC needs.
inline constexpr std::size_t kRecordCapacity = 255 + SdrRecordHeader::kSize;

/// kCompletionCode or kRequestFailed.
Status LoadSdrProperties(SdrRepositoryInfo& info);

/// Reads the record `recordId` into `record` (kRecordCapacity bytes); `recordId` becomes the ID of the next
/// one, FFFFh behind the last. kReserveFailed, kBadReservation, kCompletionCode, or kReadFailed when an
/// answer is missing or holds less than was asked for.
Status ReadRecFromBMC(std::span<std::uint8_t> record, std::uint16_t& recordId);

/// Adds a record of 1 to 255 bytes. kReserveFailed, kBadReservation, kCompletionCode or kRequestFailed.
Status SendRecordToBMC(std::span<const std::uint8_t> record);

/// Erases the repository. It is given three one-second polls and counts as erased after the third in any
/// case.
Status ClearSDRRepository();

/// Reads the whole repository into `lists` and its size into the current set; shows every record instead of
/// the progress in display mode. An unsupported or malformed record ends the walk with its status;
/// next-record IDs that run in a circle end it with kReadFailed. Records read before stay in the lists.
Status LoadSdrRecordsToList(SdrTypeList& lists);
/// The same walk for any taker.
Status WalkRepository(SdrRecordTaker& taker);

void Sleep(std::uint32_t seconds);

}  // namespace varnok::SdrReadSystem
