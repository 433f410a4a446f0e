// A rehearsal for a build server: a road is a test case, a fault is a test case, and so are the rules that
// hold for the package as a whole.
#pragma once

#include <string>

#include "rehearsal/report.h"

namespace varnok::rehearsal {

/// JUnit XML, UTF-8. Times are virtual seconds.
std::string JunitReport(const Report& report);

}  // namespace varnok::rehearsal
