// Where an image lies, as the firmware's loader wants it (UEFI 2.10, section 10.3).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "firmware/uefi/files.h"

namespace varnok::start {

/// A device path in memory of its own.
class ImagePath {
 public:
  /// A file on a volume.
  static std::optional<ImagePath> OfFile(const uefi::Place& place);
  /// A file of the firmware's own volumes, by its name; nothing when none has it.
  static std::optional<ImagePath> OfFirmwareFile(const Guid& name);

  EFI_DEVICE_PATH* Get() { return reinterpret_cast<EFI_DEVICE_PATH*>(bytes_.data()); }

 private:
  /// The path of a handle with one node behind it; false when the handle has none.
  bool Make(EFI_HANDLE handle, std::uint8_t subType, const void* content, std::size_t length);

  std::vector<std::uint8_t> bytes_;
};

}  // namespace varnok::start
