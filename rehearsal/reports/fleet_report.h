// A package on many boards, for people and for build servers.
#pragma once

#include <string>
#include <vector>

#include "rehearsal/fleet.h"

namespace varnok::rehearsal {

/// Lines without their ends: findings, one table of the groups, then each group. With `isVerbose` also what
/// changes on the first board of each.
std::vector<std::string> FleetText(const Fleet& fleet, bool isVerbose);

/// JUnit XML: a board is a test case, and fails when it would be damaged, does not fit, or could not be
/// rehearsed, or when the program ends with an error of its own.
std::string FleetJunit(const Fleet& fleet);

/// A page for the people who release the package: one file, without network and without script.
std::string FleetHtml(const Fleet& fleet);

}  // namespace varnok::rehearsal
