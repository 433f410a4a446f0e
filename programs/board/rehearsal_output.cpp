#include "programs/board/rehearsal_output.h"

#include <fstream>

#include "programs/board/output.h"
#include "programs/board/rehearsal_json.h"
#include "rehearsal/reports/findings.h"
#include "rehearsal/reports/html_report.h"
#include "rehearsal/reports/junit_report.h"
#include "rehearsal/reports/text_report.h"

namespace varnok::companion {

bool WriteText(const std::string& file, const std::string& text) {
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream << text;
  if (stream.flush()) return true;
  Fail(file + ": cannot be written");
  return false;
}

int TellReport(const rehearsal::Report& report, const Arguments& arguments) {
  if (arguments.Has("--json")) {
    PrintLine(RehearsalJson(report).Text());
  } else {
    for (const std::string& line : rehearsal::TextReport(report, arguments.Has("--verbose"))) PrintLine(line);
  }
  bool isWritten = true;
  if (arguments.Has("--junit"))
    isWritten &= WriteText(arguments.Value("--junit"), rehearsal::JunitReport(report));
  if (arguments.Has("--html"))
    isWritten &= WriteText(arguments.Value("--html"), rehearsal::HtmlReport(report));
  if (!isWritten) return kFailed;
  return rehearsal::SeriousCount(rehearsal::FindingsOf(report)) == 0 ? kDone : kFound;
}

}  // namespace varnok::companion
