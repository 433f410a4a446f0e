#include "programs/start/device_path.h"

#include <array>

#include "firmware/uefi/runtime.h"

namespace varnok::start {
namespace {

using uefi::BootServices;
using uefi::ToEfi;

constexpr Guid kDevicePathGuid{0x09576E91, 0x6D3F, 0x11D2, {0x8E, 0x39, 0x00, 0xA0, 0xC9, 0x69, 0x72, 0x3B}};
constexpr Guid kFirmwareVolumeGuid{
    0x220E73B6, 0x6BDB, 0x4413, {0x84, 0x05, 0xB9, 0x74, 0xB1, 0x08, 0x61, 0x9A}};

constexpr std::uint8_t kMediaNode = 4;
constexpr std::uint8_t kFileNode = 4;
constexpr std::uint8_t kFirmwareFileNode = 6;
constexpr std::uint8_t kEndNode = 0x7F;
constexpr std::uint8_t kEndOfPath = 0xFF;

/// The firmware's own volumes (PI 1.8, volume 3, section 3.4.1), as far as this program uses them.
struct FirmwareVolume {
  void* getAttributes;
  void* setAttributes;
  /// Without a buffer it tells the size alone.
  EFI_STATUS(EFIAPI* ReadFile)
  (FirmwareVolume*, const Guid* name, void** buffer, UINTN* size, UINT8* type, UINT32* attributes,
   UINT32* authentication);
};

void PutNode(std::vector<std::uint8_t>& bytes, std::uint8_t type, std::uint8_t subType, const void* content,
             std::size_t length) {
  const std::size_t whole = length + sizeof(EFI_DEVICE_PATH);
  const auto* source = static_cast<const std::uint8_t*>(content);
  bytes.insert(bytes.end(),
               {type, subType, static_cast<std::uint8_t>(whole), static_cast<std::uint8_t>(whole >> 8)});
  bytes.insert(bytes.end(), source, source + length);
}

}  // namespace

bool ImagePath::Make(EFI_HANDLE handle, std::uint8_t subType, const void* content, std::size_t length) {
  void* found = nullptr;
  if (BootServices().HandleProtocol(handle, ToEfi(kDevicePathGuid), &found) != EFI_SUCCESS) return false;
  for (auto* node = static_cast<const std::uint8_t*>(found); (node[0] & kEndNode) != kEndNode;) {
    const std::size_t size = node[2] | node[3] << 8;
    if (size < sizeof(EFI_DEVICE_PATH)) return false;
    bytes_.insert(bytes_.end(), node, node + size);
    node += size;
  }
  PutNode(bytes_, kMediaNode, subType, content, length);
  PutNode(bytes_, kEndNode, kEndOfPath, nullptr, 0);
  return true;
}

std::optional<ImagePath> ImagePath::OfFile(const uefi::Place& place) {
  ImagePath path;
  const std::u16string& text = place.path;
  if (!path.Make(place.volume, kFileNode, text.c_str(), (text.size() + 1) * sizeof(char16_t))) return {};
  return path;
}

std::optional<ImagePath> ImagePath::OfFirmwareFile(const Guid& name) {
  UINTN count = 0;
  EFI_HANDLE* handles = nullptr;
  if (BootServices().LocateHandleBuffer(ByProtocol, ToEfi(kFirmwareVolumeGuid), nullptr, &count, &handles) !=
      EFI_SUCCESS)
    return {};
  std::optional<ImagePath> found;
  for (UINTN i = 0; i < count && !found; ++i) {
    void* interface = nullptr;
    if (BootServices().HandleProtocol(handles[i], ToEfi(kFirmwareVolumeGuid), &interface) != EFI_SUCCESS)
      continue;
    auto* volume = static_cast<FirmwareVolume*>(interface);
    UINTN size = 0;
    UINT8 type = 0;
    UINT32 attributes = 0;
    UINT32 authentication = 0;
    if (uefi::IsError(volume->ReadFile(volume, &name, nullptr, &size, &type, &attributes, &authentication)))
      continue;
    ImagePath path;
    if (path.Make(handles[i], kFirmwareFileNode, &name, sizeof(name))) found = std::move(path);
  }
  BootServices().FreePool(handles);
  return found;
}

}  // namespace varnok::start
