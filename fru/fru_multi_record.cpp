// The multi-record area of an image as bytes and as a list.
#include <algorithm>

#include "app/services/trace.h"
#include "fru/fru.h"
#include "fru/fru_encoding.h"
#include "fru/fru_session.h"
#include "fru/fru_status.h"

namespace varnok {
namespace {

constexpr std::size_t kHeaderLength = MultiRecord::kHeaderLength;

Status AppendRecords(MultiRecordList& records, std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    // An area filled up to a unit of eight ends in less than a header: what is missing of that record is
    // zero. A whole header promises its data.
    const bool isFill = bytes.size() < kHeaderLength;
    if (!isFill && bytes.size() < kHeaderLength + bytes[2])
      return Fail("CFru::DecodeMultiRecArea", "Truncated record", fru_status::kMultiRecordArea);
    MultiRecord* record = records.Append();
    if (record == nullptr)
      return Fail("CFru::DecodeMultiRecArea", "Out of memory", fru_status::kMultiRecordMemory);
    std::copy_n(bytes.begin(), std::min(bytes.size(), kHeaderLength), record->header.begin());
    if (isFill) break;
    std::copy_n(bytes.begin() + kHeaderLength, record->Length(), record->data.begin());
    bytes = bytes.subspan(kHeaderLength + record->Length());
  }
  return kSuccess;
}

}  // namespace

Status CFru::DecodeMultiRecArea(std::span<const std::uint8_t> bytes, std::uint32_t number) {
  TraceScope scope("CFru::DecodeMultiRecArea");
  if (number == kAllMultiRecords) return AppendRecords(multiRecords_, bytes);
  // Kept: records are counted from 0 here but from 1 everywhere else, so that number 1 replaces the second
  // record's header; scripts are written to that.
  MultiRecord* record = multiRecords_.At(number);
  if (record == nullptr || bytes.size() < kHeaderLength)
    return Fail("CFru::DecodeMultiRecArea", "No such record", fru_status::kMultiRecordArea);
  std::copy_n(bytes.begin(), kHeaderLength, record->header.begin());
  return kSuccess;
}

Status CFru::SetMultiRecArea(std::span<const std::uint8_t> bytes, bool isModified, std::uint32_t number) {
  TraceScope scope("CFru::SetMultiRecArea");
  if (number == kAllMultiRecords) multiRecords_.Clear();
  multiRecLength_ = static_cast<std::uint32_t>(bytes.size());
  if (Status status = DecodeMultiRecArea(bytes, number); status != kSuccess) {
    ReportFruError(fru_text::kUnexpected);
    return Fail("CFru::SetMultiRecArea", "Unexpected", status);
  }
  isMultiRecModified_ = isModified;
  return kSuccess;
}

Status CFru::SerializeMultiRecArea(std::uint8_t* output, std::uint32_t& size, std::uint32_t number) const {
  TraceScope scope("CFru::SerializeMultiRecArea");
  std::size_t room = output == nullptr ? 0 : size;
  std::size_t written = 0;
  size = 0;
  auto put = [&](std::span<const std::uint8_t> bytes) {
    if (bytes.size() > room - written) return false;
    std::copy(bytes.begin(), bytes.end(), output + written);
    written += bytes.size();
    return true;
  };
  std::uint32_t current = 0;
  for (const MultiRecord& record : multiRecords_) {
    if (++current != number && number < kAllMultiRecords) continue;
    if (!put(record.header) || !put(record.Data()))
      return Fail("CFru::SerializeMultiRecArea", "Unexpected", fru_status::kUnexpected);
  }
  size = static_cast<std::uint32_t>(written);
  return kSuccess;
}

bool CFru::IsValid(const MultiRecord& record) {
  TraceScope scope("CFru::IsValid");
  return SumOf(record.header) == 0 && static_cast<std::uint8_t>(record.header[3] + SumOf(record.Data())) == 0;
}

bool CFru::CheckMultiRecCheckSum() const {
  TraceScope scope("CFru::CheckMultiRecCheckSum");
  return std::all_of(multiRecords_.begin(), multiRecords_.end(), IsValid);
}

}  // namespace varnok
