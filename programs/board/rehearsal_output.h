// What rehearse shows of its report, and the files that it writes.
#pragma once

#include "programs/board/command.h"
#include "rehearsal/report.h"

namespace varnok::companion {

/// The rows of rehearse's page for its reports.
inline constexpr Option kReportJson = {"--json", "", "The report as JSON"};
inline constexpr Option kReportJunit = {"--junit", "FILE",
                                        "Write a JUnit file: a road or a fault is a test case"};
inline constexpr Option kReportHtml = {"--html", "FILE",
                                       "Write a page for the people who release the package"};
inline constexpr Option kReportVerbose = {"--verbose", "",
                                          "Show every road, board and fault, not a screenful"};

/// Shows the report and writes the files that `arguments` ask for. An exit status: whether something was
/// found.
int TellReport(const rehearsal::Report& report, const Arguments& arguments);

/// Writes a file; false, and the error is told, when it cannot be written.
bool WriteText(const std::string& file, const std::string& text);

}  // namespace varnok::companion
