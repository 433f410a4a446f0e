// Files as the firmware's file system shows them: '\' and '/' separate, names are found without regard to
// case.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "firmware/firmware.h"

namespace varnok::host {

/// The Linux path of a name. Each part that does not exist as written is looked for without regard to case,
/// as a FAT volume does; a part that no entry matches stays as written.
std::string ResolvePath(std::u16string_view path);

Status OpenFile(std::u16string_view path, FileMode mode, std::unique_ptr<File>& file);
Status MakeFolder(std::u16string_view path);
Status ListFolder(std::u16string_view path, std::vector<std::u16string>& names);

/// Writes behind the end of the file at a Linux path, which is created if missing; takes no memory.
Status AppendToFile(const char* path, std::span<const std::uint8_t> bytes);

}  // namespace varnok::host
