// Loading and starting a driver's image from a file.
#pragma once

#include <string_view>

#include "firmware/uefi/shell.h"

namespace varnok::uefi {

/// A driver that starts stays loaded. Fails with the status of the file, of the load or of the driver.
Status StartDriverImage(const Shell& shell, std::u16string_view path);

}  // namespace varnok::uefi
