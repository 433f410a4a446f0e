// A rehearsal as JSON. docs/rehearsal.md gives the shape.
#pragma once

#include "programs/board/json.h"
#include "rehearsal/report.h"

namespace varnok::companion {

Json RehearsalJson(const rehearsal::Report& report);

}  // namespace varnok::companion
