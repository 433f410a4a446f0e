// Verification: the device is read again and compared with the image that was written, each area by a rule of
// its own.
#include <algorithm>

#include "app/services/console.h"
#include "app/services/trace.h"
#include "fru/fru.h"
#include "fru/fru_output.h"
#include "fru/fru_session.h"
#include "fru/fru_status.h"

namespace varnok {
namespace {

struct AreaLine {
  FruAreaId area;
  const char* verifying;
  const char* difference;
};
constexpr AreaLine kAreaLines[] = {
    {FruAreaId::CommonHeaderArea, "Verifying Common Header Area\n",
     "\nHeader Area is different between the file and the memory.\n"},
    {FruAreaId::InternalUseArea, "Verifying FRU Internal Use Area Length\n",
     "\nInternal Use Area length is different between the file and the memory.\n"},
    {FruAreaId::ChassisInfoArea, "Verifying FRU Chassis Info Area\n",
     "\nChassis Info Area is different between the file and the memory.\n"},
    {FruAreaId::BoardInfoArea, "Verifying FRU Board Info Area\n",
     "\nBoard Info Area is different between the file and the memory.\n"},
    {FruAreaId::ProductInfoArea, "Verifying FRU Product Info Area\n",
     "\nProduct Info Area is different between the file and the memory.\n"},
};
constexpr const char* kVerifyingMultiRec = "Verifying FRU Multi Record Area\n";
constexpr const char* kMultiRecDataDiffers =
    "\nMulti Record area is different between the file and the memory.\n";
constexpr const char* kMultiRecHeaderDiffers =
    "\nMultiRecord area is different between the file and the memory.\n";

// Kept: the board area is compared behind its version, length, language and manufacturing date, which a
// factory sets.
constexpr std::size_t kFirstComparedBoardByte = 6;

bool IsSame(std::span<const std::uint8_t> left, std::span<const std::uint8_t> right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end());
}

bool IsSameInfoArea(FruAreaId area, InfoArea& memory, InfoArea& device) {
  std::size_t begin = 0;
  std::size_t end = std::min(memory.GetLength(), kMaxAreaLength);
  if (area == FruAreaId::BoardInfoArea) {
    if (end <= kFirstComparedBoardByte) return true;
    begin = kFirstComparedBoardByte;
    --end;  // the checksum covers what is not compared
  }
  // Both are whole buffers of 512 bytes, so that the device's area may be the shorter one.
  return IsSame(memory.GetData().subspan(begin, end - begin), device.GetData().subspan(begin, end - begin));
}

struct WrittenArea {
  FruAreaId area;
  const char* name;
};
/// Those of which the comparison leaves something out.
constexpr WrittenArea kWrittenAreas[] = {
    {FruAreaId::InternalUseArea, "internal use area"},
    {FruAreaId::BoardInfoArea, "board area"},
    {FruAreaId::MultiRecordArea, "multi-record area"},
};

bool IsSameRecord(const MultiRecord& left, const MultiRecord& right) {
  return left.header == right.header && IsSame(left.Data(), right.Data());
}

}  // namespace

bool CFru::VerifyMultiRecArea(FruOutput& output, const CFru& device, bool& isAnnounced) const {
  // Kept: the data are compared over the length of the product area, not over the record's own: what passes
  // and what fails here is relied on. The buffers are longer than any area, with zeros behind the data.
  const std::size_t dataLength = std::min(product_.GetLength(), MultiRecord::kDataCapacity);
  auto onDevice = device.multiRecords_.begin();
  bool isAreaAnnounced = false;
  for (const MultiRecord& record : multiRecords_) {
    const MultiRecord* other = nullptr;
    if (onDevice != device.multiRecords_.end()) other = &*onDevice++;
    if (record.writeMode == FruWriteMode::Skip) continue;
    if (record.writeMode == FruWriteMode::Verify && !isAreaAnnounced) {
      output.Print(kVerifyingMultiRec);
      isAnnounced = isAreaAnnounced = true;
    }
    if (other == nullptr ||
        !IsSame(std::span(record.data).first(dataLength), std::span(other->data).first(dataLength))) {
      output.Print(kMultiRecDataDiffers);
      return false;
    }
    if (record.header != other->header) {
      output.Print(kMultiRecHeaderDiffers);
      return false;
    }
  }
  return true;
}

bool CFru::ReserveFor(CFru& image) {
  address_ = image.address_;
  for (FruAreaId area : {FruAreaId::ChassisInfoArea, FruAreaId::BoardInfoArea, FruAreaId::ProductInfoArea})
    if (!FindInfoArea(area)->ReserveFor(*image.FindInfoArea(area))) return false;
  return multiRecords_.Reserve(image.multiRecords_.size());
}

Status CFru::Verify(FruOutput& output, CFru& device) {
  constexpr const char* kName = "CFru::Verify";
  TraceScope scope(kName);
  if (Status status = device.LoadFromSystem(address_); status != kSuccess)
    return Fail(kName, "Error Reading FRU", status);
  bool isAnnounced = false;
  auto isSame = [&](FruAreaId area) {
    if (area == FruAreaId::CommonHeaderArea) return IsSame(header_.GetData(), device.header_.GetData());
    if (area == FruAreaId::InternalUseArea)
      return internalUse_.GetLength() == device.internalUse_.GetLength();
    return IsSameInfoArea(area, *FindInfoArea(area), *device.FindInfoArea(area));
  };
  for (const AreaLine& line : kAreaLines) {
    if (!HasArea(line.area)) continue;
    FruWriteMode mode = ImageOf(line.area).mode;
    if (mode == FruWriteMode::Skip) continue;
    if (mode == FruWriteMode::Verify) {
      output.Print(line.verifying);
      isAnnounced = true;
    }
    if (isSame(line.area)) continue;
    output.Print(line.difference);
    return Fail(kName, "Areas differ", fru_status::kUnexpected);
  }
  if (HasMultiRecArea() && !VerifyMultiRecArea(output, device, isAnnounced))
    return Fail(kName, "Multi Record Areas differ", fru_status::kUnexpected);
  if (isAnnounced) output.Print("\nFRU File Area(s) Verification Successful.\n");
  WarnOfUncompared(device);
  return kSuccess;
}

void CFru::WarnOfUncompared(CFru& device) {
  for (const WrittenArea& row : kWrittenAreas) {
    if (!HasArea(row.area) || ImageOf(row.area).mode != FruWriteMode::WriteAndVerify) continue;
    if (row.area == FruAreaId::MultiRecordArea
            ? std::equal(multiRecords_.begin(), multiRecords_.end(), device.multiRecords_.begin(),
                         device.multiRecords_.end(), IsSameRecord)
            : IsSame(ImageOf(row.area).bytes, device.ImageOf(row.area).bytes))
      continue;
    Warn("FRU %s: the %s reads back with other bytes than were written, in a part that is not compared",
         FruName(address_).Text(), row.name);
  }
}

}  // namespace varnok
