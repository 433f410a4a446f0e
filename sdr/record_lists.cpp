#include "sdr/record_lists.h"

#include <algorithm>
#include <iterator>

#include "app/services/text.h"
#include "app/services/trace.h"

namespace varnok {

Status SdrUtility::InitializeSdrList(PoolPtr<SdrTypeList>& lists) {
  constexpr const char* kName = "SdrUtility::InitializeSdrList";
  TraceScope scope(kName);
  TheSdr().SetLastError(u"Unable to initialize SDR list");
  if (lists != nullptr) DeInitializeSdrList(lists);
  lists = MakeInPool<SdrTypeList>();
  if (lists == nullptr) return Fail(kName, "Error Allocating Memory", sdr_status::kOutOfMemory);
  TheSdr().SetLastError(u"");
  return kSuccess;
}

void SdrUtility::DeInitializeSdrList(PoolPtr<SdrTypeList>& lists) {
  TraceScope scope("SdrUtility::DeInitializeSdrList");
  lists.reset();
}

Status SdrUtility::InitializeSdrProperties() {
  TraceScope scope("SdrUtility::InitializeSdrProperties");
  return kSuccess;
}

Status SdrUtility::SDRTagsCheck(const CSdr& record, const SdrDataSet& set) {
  TraceScope scope("SdrUtility::SDRTagsCheck");
  constexpr Status kNotSelected = 1;
  const SdrTagList& tags = record.Tags();
  if (tags.empty()) return kSuccess;
  bool isSelected = std::any_of(tags.begin(), tags.end(), [&set](const std::string& tag) {
    return std::any_of(set.selectedTags.begin(), set.selectedTags.end(),
                       [&tag](const std::string& selected) { return EqualsIgnoreCase(tag, selected); });
  });
  return isSelected ? kSuccess : kNotSelected;
}

std::size_t SdrUtility::PositionOfType(std::uint32_t type) {
  return static_cast<std::size_t>(std::find(kSdrTypeOrder.begin(), kSdrTypeOrder.end(), type) -
                                  kSdrTypeOrder.begin());
}

Status SdrUtility::CreateSDRTypeObject(std::uint8_t type, PoolPtr<CSdr>& object, SdrTypeList* spares) {
  constexpr const char* kName = "SdrUtility::CreateSDRTypeObject";
  TraceScope scope(kName);
  object = nullptr;
  std::size_t position = PositionOfType(type);
  if (position == kSdrTypeCount) return Fail(kName, "SDR Type Not Supported", sdr_status::kTypeNotSupported);
  object = spares == nullptr ? kSdrTypes[position].rows.make() : std::move((*spares)[position].front());
  return object != nullptr ? kSuccess : Fail(kName, "Error Allocating Memory", sdr_status::kOutOfMemory);
}

Status SdrUtility::MakeRecord(std::span<const std::uint8_t> raw, const SdrTagList& tags,
                              PoolPtr<CSdr>& object, SdrTypeList* spares) {
  constexpr std::size_t kTypeByte = 3;
  Status status = CreateSDRTypeObject(raw[kTypeByte], object, spares);
  if (status == kSuccess && !tags.empty()) status = object->AddTags(tags);
  if (status == kSuccess) status = object->DecodeSDR(raw);
  return status == kSuccess ? object->CopyrawSDR(raw) : status;
}

}  // namespace varnok
