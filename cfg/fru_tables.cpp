#include "cfg/fru_tables.h"

#include <algorithm>

#include "app/services/text.h"
#include "cfg/cfg_parser.h"
#include "fru/fru_data.h"

namespace varnok {

std::uint32_t FindFruField(std::string_view keyword) {
  constexpr std::size_t kCompared = 2;
  auto row = std::find_if(kFruFields.begin(), kFruFields.end(), [keyword](const FruFieldRow& each) {
    return EqualsIgnoreCase(keyword.substr(0, kCompared),
                            std::string_view(each.keyword).substr(0, kCompared));
  });
  return row == kFruFields.end() ? fru_field::kNone : static_cast<std::uint32_t>(row - kFruFields.begin());
}

std::optional<FruFieldId> FixedFruField(const FruFieldRow& row, FruAreaIndex area) {
  if (area == FruAreaIndex::Chassis) return row.chassis;
  if (area == FruAreaIndex::Board) return row.board;
  return area == FruAreaIndex::Product ? row.product : std::nullopt;
}

std::uint32_t CustomFruFieldOffset(FruAreaIndex area) {
  // Kept: counted so although a product area has seven fixed fields; files and scripts are written so.
  if (area == FruAreaIndex::Chassis) return 2;
  return area == FruAreaIndex::Board ? 5 : 6;
}

Status ReportFruFailure(Status status) {
  const char16_t* text = nullptr;
  if (FruData::GetLastErrorMessage(text) == kSuccess && text != nullptr && *text != u'\0')
    CCfgParser::SetLastError("%s", text);
  return status;
}

void ForgetFruMessage() {
  FruData::SetLastError(u"");
}

}  // namespace varnok
