// Writing an image to its device, area by area.
#include <algorithm>

#include "app/services/console.h"
#include "app/services/trace.h"
#include "firmware/pool.h"
#include "fru/fru.h"
#include "fru/fru_output.h"
#include "fru/fru_session.h"
#include "fru/fru_status.h"

namespace varnok {
namespace {

struct LoadingLine {
  FruAreaId area;
  const char* loading;
};
/// In the order of writing.
constexpr LoadingLine kLoadingLines[] = {
    {FruAreaId::CommonHeaderArea, "Loading Common Header Area\n"},
    {FruAreaId::InternalUseArea, "Loading FRU Internal Use Area\n"},
    {FruAreaId::ChassisInfoArea, "Loading FRU Chassis Info Area\n"},
    {FruAreaId::BoardInfoArea, "Loading FRU Board Info Area\n"},
    {FruAreaId::ProductInfoArea, "Loading FRU Product Info Area\n"},
    {FruAreaId::MultiRecordArea, "Loading FRU Multi Record Area\n"},
};

}  // namespace

CFru::AreaImage CFru::ImageOf(FruAreaId area) {
  if (area == FruAreaId::CommonHeaderArea) return {headerWriteMode_, CFruHeader::kLength, header_.GetData()};
  if (area == FruAreaId::InternalUseArea)
    return {internalUse_.WriteMode(), internalUse_.GetLength(), internalUse_.GetData()};
  if (InfoArea* info = FindInfoArea(area)) {
    // A length set past the buffer keeps its place on the device; the bytes end with the buffer.
    std::size_t length = info->GetLength();
    return {info->WriteMode(), length, info->GetData().first(std::min(length, kMaxAreaLength))};
  }
  // The first record speaks for all; without one there is nothing to write.
  FruWriteMode mode = multiRecords_.IsEmpty() ? FruWriteMode::Skip : multiRecords_.begin()->writeMode;
  return {mode, multiRecLength_, {}};
}

Status CFru::WriteFruData(FruOutput& output, std::uint32_t offset, std::span<const std::uint8_t> bytes) {
  TraceScope scope("CFru::WriteFruData");
  output.DumpBlock(bytes);
  return WriteFruDataToBmc(address_, offset, bytes);
}

Status CFru::WriteMultiRecArea(FruOutput& output, std::uint32_t offset) {
  for (const MultiRecord& record : multiRecords_) {
    for (const std::uint8_t& byte : record.header) {
      if (Status status = WriteFruData(output, offset++, {&byte, 1}); status != kSuccess) return status;
    }
    if (Status status = WriteFruData(output, offset, record.Data()); status != kSuccess) return status;
    offset += static_cast<std::uint32_t>(record.Length());
  }
  isMultiRecModified_ = false;
  return kSuccess;
}

Status CFru::WriteArea(FruOutput& output, FruAreaId area, std::uint32_t offset,
                       std::span<const std::uint8_t> bytes) {
  if (area == FruAreaId::MultiRecordArea) return WriteMultiRecArea(output, offset);
  if (area == FruAreaId::InternalUseArea) internalUse_.ClearModified();
  if (InfoArea* info = FindInfoArea(area)) info->ClearModified();
  return WriteFruData(output, offset, bytes);
}

Status CFru::WriteAreas(FruOutput& output, bool& isAnyWritten) {
  // Kept: each present area follows the one before it, wherever the header places it, and whether or not that
  // is written.
  std::uint32_t offset = 0;
  bool isTold = false;
  for (const LoadingLine& line : kLoadingLines) {
    if (!HasArea(line.area)) continue;
    AreaImage image = ImageOf(line.area);
    if (image.mode == FruWriteMode::WriteAndVerify) {
      const std::size_t place =
          line.area == FruAreaId::CommonHeaderArea ? 0 : header_.Offset(line.area) * FruDefs::kUnit;
      if (!isTold && image.length != 0 && place != offset) {
        isTold = true;
        Warn(
            "FRU %s: the header has an area at byte %d that is written at byte %d; what stands there is lost",
            FruName(address_).Text(), place, offset);
      }
      output.Print(line.loading);
      isAnyWritten = true;
      if (Status status = WriteArea(output, line.area, offset, image.bytes); status != kSuccess)
        return status;
    }
    offset += static_cast<std::uint32_t>(image.length);
  }
  return kSuccess;
}

Status CFru::WriteToSystem() {
  constexpr const char* kName = "CFru::WriteToSystem";
  TraceScope scope(kName);
  FruOutput output;
  if (!output.Open()) return Fail(kName, "Error opening output file", fru_status::kOutputFile);
  // Nothing that follows takes memory: what is half written could not be completed without it.
  PoolPtr<CFru> device = MakeInPool<CFru>();
  if (device == nullptr || !device->ReserveFor(*this)) {
    ReportFruError(fru_text::kNoMemory);
    return Fail(kName, "Out of memory", fru_status::kOutOfMemory);
  }
  output.PrintAddress("\n", address_);
  bool isAnyWritten = false;
  if (WriteAreas(output, isAnyWritten) != kSuccess) {
    ReportFruError("Could not write FRU %s to system.", FruName(address_).Text());
    return Fail(kName, "Error Writing FRU", fru_status::kAreaNotWritten);
  }
  if (Status status = Verify(output, *device); status != kSuccess) {
    output.Print("\nVerification of one or more FRU File Area(s) failed.\n");
    return Fail(kName, "Verification failed", status);
  }
  if (isAnyWritten) output.Print("\nFRU File Area(s) successfully loaded into FRU memory.\n");
  return kSuccess;
}

}  // namespace varnok
