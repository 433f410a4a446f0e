// Text files of people, read whole: FRU files, SDR files and scripts. The error output tells of a file that
// is none, that is too large, or that begins with the mark of another encoding.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "firmware/firmware.h"

namespace varnok {

/// Opens a file for reading; the firmware's status when that fails.
Status OpenTextFile(std::string_view name, std::unique_ptr<File>& file);

/// The whole file, which is called `name` in messages. A read that fails gives its status and the text up to
/// there; past 64 MiB kBadBufferSize and no text.
Status ReadTextFile(File& file, std::string_view name, std::string& text);

}  // namespace varnok
