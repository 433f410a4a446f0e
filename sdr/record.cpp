#include "sdr/record.h"

#include <algorithm>

#include "app/services/text.h"
#include "app/services/trace.h"
#include "firmware/bytes.h"

namespace varnok {

std::size_t SdrRecordSize(std::span<const std::uint8_t> raw) {
  return raw.size() < SdrRecordHeader::kSize ? 0 : raw[4] + SdrRecordHeader::kSize;
}

Status CSdr::GetName(const char16_t*&) {
  return kSuccess;
}
Status CSdr::GetSdrTitle(const char16_t*&) {
  return kSuccess;
}
Status CSdr::GetOEMData(std::span<const std::uint8_t>&) const {
  return kSuccess;
}

Status CSdr::DecodeHeader(std::span<const std::uint8_t> raw, SdrRecordHeader& header) {
  constexpr const char* kName = "CSdr::DecodeHeader";
  constexpr std::uint8_t kLeastLength = 5;
  TraceScope scope(kName);
  if (raw.size() < SdrRecordHeader::kSize || raw[4] < kLeastLength)
    return Fail(kName, "Bad Record Length", sdr_status::kBadRecordLength);
  header = {WordAt(raw, 0), raw[2], raw[3], raw[4]};
  return kSuccess;
}

Status CSdr::CopyrawSDR(std::span<const std::uint8_t> raw) {
  TraceScope scope("CSdr::CopyrawSDR");
  // 8-bit arithmetic: a record length above 250 keeps what is left of 256 bytes. No decodable record is so
  // long.
  rawLength_ = static_cast<std::uint8_t>(SdrRecordSize(raw));
  rawLength_ = static_cast<std::uint8_t>(std::min<std::size_t>(rawLength_, raw.size()));
  raw_.assign(raw.begin(), raw.begin() + rawLength_);
  return kSuccess;
}

Status CSdr::WriteSDRToBuffer(std::span<std::uint8_t> buffer, std::size_t& length) const {
  TraceScope scope("CSdr::WriteSDRToBuffer");
  if (buffer.size() < rawLength_ || rawLength_ == 0) return kSuccess;
  std::copy_n(raw_.begin(), rawLength_, buffer.begin());
  length = rawLength_;
  return kSuccess;
}

Status CSdr::AddTags(const SdrTagList& tags) {
  TraceScope scope("CSdr::AddTags");
  tags_.insert(tags_.end(), tags.begin(), tags.end());
  return kSuccess;
}

void CSdr::GetStrFromTable(std::string_view table, std::uint8_t code, std::u16string& text) {
  TraceScope scope("CSdr::GetStrFromTable");
  const char* found = FindDecodeText(table, code);
  text = Widen(found == nullptr ? "Unknown" : found);
}

void CSdr::DecodeType(std::uint32_t table, std::uint8_t code, std::u16string& text, std::uint8_t deviceType) {
  TraceScope scope("CSdr::DecodeType");
  bool isTable = table <= TableIndex(SdrTable::InterruptType);
  GetStrFromTable(isTable ? SdrDecodeTable(static_cast<SdrTable>(table), deviceType) : std::string_view(),
                  code, text);
}

Status CSdr::BinaryFormat(std::uint32_t value, unsigned width, std::u16string& text) {
  TraceScope scope("CSdr::BinaryFormat");
  constexpr unsigned kGroup = 4;
  constexpr unsigned kValueBits = 32;
  width = std::min(width, kValueBits);
  text.clear();
  for (unsigned bit = width; bit-- > 0;) {
    text += (value >> bit & 1) != 0 ? u'1' : u'0';
    if (bit % kGroup == 0 && bit != 0) text += u' ';
  }
  text += u'b';
  bool isTooWide = width < kValueBits && value >> width != 0;
  return isTooWide ? sdr_status::kValueTooWide : kSuccess;
}

const char16_t* CSdr::StoreText(std::u16string_view text) {
  std::size_t length = std::min(text.size(), kTextCapacity - 1);
  if (text_ == nullptr) text_ = std::make_unique<std::array<char16_t, kTextCapacity>>();
  std::copy_n(text.begin(), length, text_->begin());
  (*text_)[length] = 0;
  return text_->data();
}

}  // namespace varnok
