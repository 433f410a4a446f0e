// SMBIOS: the firmware's table, found by its GUID, walked by type and handle; the display of the system,
// board and chassis records; the look-ups that script probes make.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "app/services/format.h"
#include "firmware/guid.h"
#include "firmware/status.h"

namespace varnok {

/// Finds the table; uefi_status::kNotFound without one.
Status SmbiosInitialize();

/// Shows types 1, 2 and 3. Stops at the first missing one with its status.
Status SmbiosDisplay();

/// Names a file that the display appends to as well; an empty name ends that.
void SmbiosSetOutputFile(std::u16string_view name);

/// The text of the last failed display; null when there was none.
const char16_t* SmbiosGetLastErrorMessage();

}  // namespace varnok
