// Rehearsals as JSON. docs/rehearsal.md gives the shapes.
#pragma once

#include <vector>

#include "programs/board/json.h"
#include "rehearsal/fleet.h"
#include "rehearsal/report.h"
#include "rehearsal/reports/findings.h"

namespace varnok::companion {

Json RehearsalJson(const rehearsal::Report& report);
Json FleetJson(const rehearsal::Fleet& fleet);

// What both are put together from.

Json NumbersJson(const std::vector<std::size_t>& numbers);
Json TextsJson(const std::vector<std::string>& texts);
Json FindingJson(const rehearsal::Finding& finding);
Json DifferenceJson(const boards::Difference& difference);

}  // namespace varnok::companion
