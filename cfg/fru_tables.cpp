#include "cfg/fru_tables.h"

#include "cfg/cfg_parser.h"
#include "fru/fru_data.h"

namespace varnok {

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
