// A rehearsal as a page for the people who release a package: one file, no script, no network, light and
// dark, for paper too. Of big rehearsals it shows a part, and says so.
#pragma once

#include <string>

#include "rehearsal/report.h"

namespace varnok::rehearsal {

/// HTML, UTF-8.
std::string HtmlReport(const Report& report);

}  // namespace varnok::rehearsal
