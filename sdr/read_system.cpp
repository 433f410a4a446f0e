#include "sdr/read_system.h"

#include <algorithm>

#include "app/services/trace.h"
#include "firmware/bytes.h"
#include "firmware/ipmi.h"
#include "platform/answer_doubts.h"
#include "sdr/output.h"
#include "sdr/repository_request.h"

namespace varnok {
namespace {

constexpr std::size_t kChunk = 16;
constexpr std::size_t kNextIdLength = 2;  // in front of a record's bytes

/// Get SDR (IPMI v2.0, section 33.12): `count` bytes from `offset` on.
IpmiResult GetRecordPart(std::uint16_t reservation, std::uint16_t recordId, std::uint8_t offset,
                         std::uint8_t count, IpmiMessage& response) {
  std::array<std::uint8_t, 6> data;
  ByteWriter(data).Word(reservation).Word(recordId).Byte(offset).Byte(count);
  const IpmiResult result = SendSdrRequest(ipmi_command::kGetSdr, data, response);
  constexpr std::uint64_t kRepository = ~std::uint64_t{0};  // no FRU device
  if (result == ipmi_result::kSuccess)
    WatchForRepeat(kRepository, std::uint32_t{recordId} << 8 | offset, response, kNextIdLength);
  return result;
}

Status ReadFailure(IpmiResult result, std::uint16_t recordId) {
  if (result != ipmi_result::kCompletionCode) TheSdr().LastFailingRecordId = recordId;
  return SdrRequestFailure("SdrReadSystem::ReadRecFromBMC", result, "Error Reading SDR",
                           sdr_status::kReadFailed);
}

/// The bytes of the record behind its next-record ID; false when fewer arrived than were asked for and fit.
bool CopyRecordPart(const IpmiMessage& response, std::size_t asked, std::span<std::uint8_t> to) {
  auto count = std::min<std::size_t>({asked, IpmiMessage::kCapacity - kNextIdLength, to.size()});
  if (response.dataLength < kNextIdLength + count) return false;
  std::copy_n(response.data.begin() + kNextIdLength, count, to.begin());
  return true;
}

}  // namespace

Status SdrReadSystem::LoadSdrProperties(SdrRepositoryInfo& info) {
  TraceScope scope("SdrReadSystem::LoadSdrProperties");
  // Kept: the failure lines go under another routine's name; people's notes know them so.
  constexpr const char* kTracedAs = "SdrReadSystem::CountIPMI10SDRTypes";
  info.extra = 0;
  IpmiMessage response;
  IpmiResult result = SendSdrRequest(ipmi_command::kGetSdrRepositoryInfo, {}, response);
  if (result != ipmi_result::kSuccess)
    return SdrRequestFailure(kTracedAs, result, "Error Reading SDR Info", sdr_status::kRequestFailed);
  ByteReader answer(response.data);
  info.version = answer.Byte();
  info.recordCount = answer.Word();
  info.freeSpace = answer.Word();
  info.lastAddition = answer.Dword();
  info.lastErase = answer.Dword();
  info.support = answer.Byte();
  return kSuccess;
}

Status SdrReadSystem::ReadRecFromBMC(std::span<std::uint8_t> record, std::uint16_t& recordId) {
  TraceScope scope("SdrReadSystem::ReadRecFromBMC");
  std::uint16_t reservation = 0;
  if (Status status = ReserveSdrRepository("SdrReadSystem::ReadRecFromBMC", reservation); status != kSuccess)
    return status;
  const std::uint16_t asked = recordId;
  IpmiMessage response;
  IpmiResult result = GetRecordPart(reservation, asked, 0, SdrRecordHeader::kSize, response);
  if (result != ipmi_result::kSuccess || !CopyRecordPart(response, SdrRecordHeader::kSize, record))
    return ReadFailure(result, asked);
  recordId = WordAt(response.data, 0);
  std::size_t size = SdrRecordSize(record);
  if (size < SdrRecordHeader::kSize + 1) return kSuccess;
  // Offset and size are 8-bit numbers here: a record of 256 bytes or more, which no BMC can address, takes
  // one request for all the rest. What arrives fits the buffer, and the decoder refuses the record.
  const auto end = static_cast<std::uint8_t>(size);
  std::uint8_t offset = SdrRecordHeader::kSize;
  do {
    auto count = static_cast<std::uint8_t>(offset + kChunk < end ? kChunk : end - offset);
    result = GetRecordPart(reservation, asked, offset, count, response);
    if (result != ipmi_result::kSuccess || !CopyRecordPart(response, count, record.subspan(offset)))
      return ReadFailure(result, asked);
    offset = static_cast<std::uint8_t>(offset + count);
  } while (offset < end);
  return kSuccess;
}

Status SdrReadSystem::SendRecordToBMC(std::span<const std::uint8_t> record) {
  constexpr const char* kOperation = "SdrReadSystem::SendRecordToBMC";
  constexpr std::size_t kPrefix = 6;
  constexpr std::size_t kIdLength = 2;
  TraceScope scope(kOperation);
  std::uint16_t reservation = 0;
  if (Status status = ReserveSdrRepository(kOperation, reservation); status != kSuccess) return status;
  std::array<std::uint8_t, kPrefix + kChunk> data;
  std::uint16_t recordId = 0;
  for (std::size_t offset = 0; offset < record.size(); offset += kChunk) {
    std::size_t count = std::min(kChunk, record.size() - offset);
    const bool isLast = offset + count == record.size();
    ByteWriter(data)
        .Word(reservation)
        .Word(recordId)
        .Byte(static_cast<std::uint8_t>(offset))
        .Byte(isLast ? 1 : 0)
        .Bytes(record.subspan(offset, count));
    IpmiMessage response;
    IpmiResult result =
        SendSdrRequest(ipmi_command::kPartialAddSdr, std::span(data).first(kPrefix + count), response);
    // The BMC names the record in its answer to the first piece; the pieces that follow need the name.
    const bool isIdMissing = offset == 0 && !isLast && response.dataLength < kIdLength;
    if (result != ipmi_result::kSuccess || isIdMissing)
      return SdrRequestFailure(kOperation, result, "Error Reading SDR Info", sdr_status::kRequestFailed);
    if (offset == 0) recordId = WordAt(response.data, 0);
  }
  return kSuccess;
}

Status SdrReadSystem::ClearSDRRepository() {
  constexpr const char* kOperation = "SdrReadSystem::ClearSDRRepository";
  constexpr std::uint8_t kStartErase = 0xAA;
  constexpr std::uint8_t kGetState = 0x00;
  constexpr std::uint8_t kCompleted = 1;
  constexpr int kMostPolls = 3;
  TraceScope scope(kOperation);
  SdrUtility::PrintText(u"\n\nClearing SDR repository\n\n");
  std::uint16_t reservation = 0;
  if (Status status = ReserveSdrRepository(kOperation, reservation); status != kSuccess) return status;
  std::array<std::uint8_t, 6> data;
  ByteWriter(data).Word(reservation).Byte('C').Byte('L').Byte('R').Byte(kStartErase);
  IpmiMessage response;
  IpmiResult result = SendSdrRequest(ipmi_command::kClearSdrRepository, data, response);
  if (result != ipmi_result::kSuccess)
    return SdrRequestFailure(kOperation, result, "Error Reading SDR Info", sdr_status::kRequestFailed);
  data[5] = kGetState;
  // Kept: behind the third poll the repository counts as erased; slow BMCs finish while records are prepared.
  for (int polls = 0; response.data[0] != kCompleted && polls < kMostPolls; ++polls) {
    Sleep(1);
    if (SendSdrRequest(ipmi_command::kClearSdrRepository, data, response) != ipmi_result::kSuccess)
      return Fail(kOperation, "Error Reading SDR Info", sdr_status::kRequestFailed);
  }
  return kSuccess;
}

void SdrReadSystem::Sleep(std::uint32_t seconds) {
  TraceScope scope("SdrReadSystem::Sleep");
  constexpr std::uint64_t kMicroseconds = 1'000'000;
  TheFirmware().Stall(seconds * kMicroseconds, StallKind::Waiting);
}

}  // namespace varnok
