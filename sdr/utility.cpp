#include "sdr/utility.h"

#include <algorithm>
#include <iterator>

#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/text_output.h"
#include "app/services/trace.h"

namespace varnok {
namespace {

template <class Record>
PoolPtr<CSdr> Make() {
  return MakeInPool<Record>();
}

/// In the order of kSdrTypeOrder.
constexpr PoolPtr<CSdr> (*kFactories[])() = {Make<CSdrType01>, Make<CSdrType02>, Make<CSdrType03>,
                                             Make<CSdrType08>, Make<CSdrType09>, Make<CSdrType10>,
                                             Make<CSdrType11>, Make<CSdrType12>, Make<CSdrType13>,
                                             Make<CSdrType14>, Make<CSdrTypeC0>};
static_assert(std::size(kFactories) == kSdrTypeOrder.size());

}  // namespace

Status SdrUtility::InitializeSdrList(PoolPtr<SdrTypeList>& lists) {
  TraceScope scope("SdrUtility::InitializeSdrList");
  TheSdr().SetLastError(u"Unable to initialize SDR list");
  if (lists != nullptr) DeInitializeSdrList(lists);
  lists = MakeInPool<SdrTypeList>();
  if (lists == nullptr) {
    Trace("SdrUtility::InitializeSdrList - Error Allocating Memory", 1);
    return sdr_status::kOutOfMemory;
  }
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

Status SdrUtility::CreateSDRTypeObject(std::uint8_t type, PoolPtr<CSdr>& object) {
  TraceScope scope("SdrUtility::CreateSDRTypeObject");
  object = nullptr;
  std::size_t position = PositionOfType(type);
  if (position == kSdrTypeOrder.size()) {
    Trace("SdrUtility::CreateSDRTypeObject - SDR Type Not Supported", 1);
    return sdr_status::kTypeNotSupported;
  }
  object = kFactories[position]();
  if (object == nullptr) {
    Trace("SdrUtility::CreateSDRTypeObject - Error Allocating Memory", 1);
    return sdr_status::kOutOfMemory;
  }
  return kSuccess;
}

std::uint32_t SdrUtility::AHextoUINT32(std::string_view text) {
  TraceScope scope("SdrUtility::AHextoUINT32");
  std::uint32_t number = 0;
  for (char character : text) {
    int digit = HexDigitValue(character);
    if (digit < 0) break;
    number = number << 4 | static_cast<std::uint32_t>(digit);
  }
  return number;
}

void SdrUtility::DisplayProgress(ProgressStyle style, const char* text, std::uint32_t current,
                                 std::uint32_t total) {
  TraceScope scope("SdrUtility::DisplayProgress");
  const SdrDataSet* set = TheSdr().current;
  if (set != nullptr && set->progress != nullptr) set->progress(style, Widen(text), current, total);
}

void SdrUtility::DisplayHex(std::span<const std::uint8_t> bytes, File* file) {
  const SdrDataSet* set = TheSdr().current;
  if (set != nullptr && set->displayHex != nullptr) set->displayHex(bytes.data(), bytes.size(), file);
}

void SdrUtility::WriteOutput(std::u16string_view text) {
  if (TheSdr().output != nullptr) (void)WriteText(*TheSdr().output, text);
}

void SdrUtility::WriteOutput(const char* text) {
  WriteOutput(Widen(text));
}

void SdrUtility::PrintText(const char* text) {
  PrintText(Widen(text));
}

void SdrUtility::PrintText(std::u16string_view text) {
  varnok::PrintText(text);
  WriteOutput(text);
}

bool SdrUtility::PagingPrompt() {
  TraceScope scope("SdrUtility::PagingPrompt");
  varnok::PrintText("\n[S]top, [N]on-stop, or [M]ore");
  for (;;) {
    switch (ToUpper(GetKey(0))) {
      case u'M':
        varnok::PrintText("\n\n");
        return true;
      case u'N':
        // No line feeds here, unlike the prompt of the other displays.
        TheSdr().isPaging = false;
        return true;
      case u'S':
        return false;
      default:
        break;
    }
  }
}

}  // namespace varnok
