// Files of the shell's volumes, over the Simple File System protocol.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "firmware/firmware.h"
#include "firmware/uefi/shell.h"

namespace varnok::uefi {

/// A file's place: a handle that carries the Simple File System protocol, and the path from its root.
struct Place {
  EFI_HANDLE volume = nullptr;
  std::u16string path;
};

/// Where a path leads; false when no volume takes it.
bool FindPlace(const Shell& shell, std::u16string_view path, Place& place);

/// Writes behind the end of the file at a place, which is created if missing. Takes no memory but the
/// firmware's own.
Status AppendAt(const Place& place, std::span<const std::uint8_t> bytes);

/// Opens a file as Firmware::OpenFile describes. Where no shell tells the current directory, it is the root
/// of the volume that the image came from.
Status OpenShellFile(const Shell& shell, std::u16string_view path, FileMode mode,
                     std::unique_ptr<File>& file);

/// As Firmware::MakeFolder and Firmware::ListFolder describe; with `folders` the names of those in the
/// folder.
Status MakeShellFolder(const Shell& shell, std::u16string_view path);
Status ListShellFolder(const Shell& shell, std::u16string_view path, std::vector<std::u16string>& names,
                       bool folders = false);

/// The path with the separators that the firmware's file systems take.
std::u16string WithBackslashes(std::u16string_view path);

/// Closes what is still open, for an end without destructors.
void CloseAllFiles();

}  // namespace varnok::uefi
