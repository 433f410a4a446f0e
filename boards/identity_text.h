// What `ipmitool mc info` shows, as data.
#pragma once

#include <string>
#include <string_view>

#include "boards/board_data.h"

namespace varnok::boards {

/// Reads the text. False, with `error` naming the line ("line 3: ..."), when a value is no number or the
/// device ID, the manufacturer or the product is missing.
bool ReadIdentityText(std::string_view text, Identity& identity, std::string& error);

}  // namespace varnok::boards
