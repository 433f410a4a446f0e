#include "cfg/fru_tables.h"

#include <algorithm>

#include "app/services/text.h"
#include "cfg/cfg_parser.h"
#include "fru/fru_data.h"
#include "fru/info_area_rows.h"

namespace varnok {

// Scripts reach every field of a chassis, board or product area by one keyword.
static_assert(
    [] {
      for (auto id = static_cast<std::uint32_t>(FruFieldId::ChassisType); FruFieldId{id} != FruFieldId::End;
           ++id) {
        int keywords = 0;
        for (const FruFieldRow& row : kFruFields)
          for (const std::optional<FruFieldId>& field : {row.chassis, row.board, row.product})
            keywords += field == FruFieldId{id} ? 1 : 0;
        if (keywords != 1) return false;
      }
      return true;
    }(),
    "each number of FruFieldId stands in one column of one row");

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

// Kept: one less than the index of the first custom field, so 2, 5 and 6; files and scripts count so.
std::uint32_t CustomFruFieldOffset(FruAreaIndex area) {
  const InfoAreaLayout& layout = area == FruAreaIndex::Chassis ? kChassisLayout
                                 : area == FruAreaIndex::Board ? kBoardLayout
                                                               : kProductLayout;
  return layout.FirstCustomIndex() - 1;
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
