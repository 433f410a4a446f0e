// Resizing an info area inside the device's inventory space: the areas behind it move in the header, their
// bytes are rebuilt from their fields when the image is written.
#include "app/services/trace.h"
#include "fru/fru.h"
#include "fru/fru_encoding.h"
#include "fru/fru_session.h"
#include "fru/fru_status.h"

namespace varnok {
namespace {

constexpr const char* kFieldsTooBigText = "The FRU fields don't fit into the requested FRU AREA size.\n";
constexpr const char* kAreasTooBigText = "The FRU areas don't fit into the FRU inventory area.\n";

}  // namespace

Status CFru::ResizeFruArea(FruAreaId area, std::uint32_t length) {
  constexpr const char* kName = "CFru::ResizeFruArea";
  TraceScope scope(kName);
  if (FindInfoArea(area) == nullptr) {
    ReportFruError(fru_text::kUnsupported);
    return Fail(kName, "Unsupported", fru_status::kUnsupported);
  }
  std::uint32_t inventorySize = 0;
  if (Status status = ReadFruDataFromBmc(address_, inventorySize); status != kSuccess)
    return Fail(kName, "Error Reading FRU size", status);

  CFruHeader header = header_;
  std::uint64_t total = CFruHeader::kLength;
  if (HasInternalArea()) total += internalUse_.GetLength();
  std::int64_t shift = 0;
  auto move = [&](FruAreaId moved) {
    header.SetOffset(moved, static_cast<std::uint8_t>(header_.Offset(moved) + shift));
  };
  for (FruAreaId present :
       {FruAreaId::ChassisInfoArea, FruAreaId::BoardInfoArea, FruAreaId::ProductInfoArea}) {
    if (!HasArea(present)) continue;
    InfoArea& info = *FindInfoArea(present);
    auto oldLength = static_cast<std::int64_t>(info.GetLength());
    move(present);
    if (present != area) {
      total += info.GetLength();
      continue;
    }
    if (oldLength - info.GetPadLength() > std::int64_t{length}) {
      ReportFruError(kFieldsTooBigText);
      return Fail(kName, "Fields don't fit", fru_status::kFieldsTooBig);
    }
    total += length;
    shift = (std::int64_t{length} - oldLength) / static_cast<std::int64_t>(FruDefs::kUnit);
    (void)info.SetLength(length);  // a length that is no multiple of 8 is not taken
  }
  if (HasMultiRecArea()) {
    move(FruAreaId::MultiRecordArea);
    total += multiRecLength_;
  }
  header.UpdateChecksum();
  if (total > inventorySize || length > kMaxAreaLength) {
    // The area keeps its new length and the header its old offsets; nothing is written unless the caller
    // commits.
    ReportFruError(kAreasTooBigText);
    return Fail(kName, "Areas don't fit", fru_status::kAreasTooBig);
  }
  header_ = header;
  return kSuccess;
}

}  // namespace varnok
