// Findings of a check, for people.
#pragma once

#include <cstddef>
#include <vector>

#include "boards/check/check.h"

namespace varnok::companion {

/// Each with its advice, then how many there are; `files` were checked.
void PrintFindings(const std::vector<boards::Finding>& findings, std::size_t files);
bool HasErrors(const std::vector<boards::Finding>& findings);

}  // namespace varnok::companion
