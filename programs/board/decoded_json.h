// Decoded boards as JSON, for the commands that read them. docs/companion.md gives the shapes.
#pragma once

#include "boards/decoded.h"
#include "programs/board/json.h"

namespace varnok::companion {

Json ControllerJson(const boards::Controller& controller);
Json SectionsJson(const boards::Decoded& decoded);
Json ProblemsJson(const boards::Decoded& decoded);
Json RecordJson(boards::ByteView record, const boards::Decoded& decoded);

}  // namespace varnok::companion
