#include "firmware/uefi/shell.h"

#include "firmware/uefi/runtime.h"

namespace varnok::uefi {
namespace {

constexpr EFI_GUID kParametersGuid = EFI_SHELL_PARAMETERS_PROTOCOL_GUID;
constexpr EFI_GUID kProtocolGuid = EFI_SHELL_PROTOCOL_GUID;
constexpr EFI_GUID kOldInterfaceGuid = SHELL_INTERFACE_PROTOCOL_GUID;
constexpr EFI_GUID kOldEnvironmentGuid = {
    0x47C7B221, 0xC42A, 0x11D2, {0x8E, 0x57, 0x00, 0xA0, 0xC9, 0x69, 0x72, 0x3B}};
constexpr EFI_GUID kImageGuid = EFI_LOADED_IMAGE_PROTOCOL_GUID;
constexpr EFI_GUID kFileSystemGuid = EFI_SIMPLE_FILE_SYSTEM_PROTOCOL_GUID;

template <class Interface>
void FindOnImage(const EFI_GUID& guid, Interface*& interface) {
  void* found = nullptr;
  if (BootServices().HandleProtocol(ImageHandle(), const_cast<EFI_GUID*>(&guid), &found) == EFI_SUCCESS)
    interface = static_cast<Interface*>(found);
}

template <class Interface>
void FindAnywhere(const EFI_GUID& guid, Interface*& interface) {
  void* found = nullptr;
  if (BootServices().LocateProtocol(const_cast<EFI_GUID*>(&guid), nullptr, &found) == EFI_SUCCESS)
    interface = static_cast<Interface*>(found);
}

}  // namespace

void Shell::Connect() {
  FindOnImage(kParametersGuid, parameters_);
  FindAnywhere(kProtocolGuid, protocol_);
  if (parameters_ == nullptr) FindOnImage(kOldInterfaceGuid, oldInterface_);
  if (protocol_ == nullptr) FindAnywhere(kOldEnvironmentGuid, oldEnvironment_);
  EFI_LOADED_IMAGE* image = nullptr;
  if (parameters_ == nullptr && oldInterface_ == nullptr) FindOnImage(kImageGuid, image);
  if (image != nullptr && image->LoadOptions != nullptr)
    loadOptions_.Split({static_cast<const std::uint8_t*>(image->LoadOptions), image->LoadOptionsSize});
}

std::span<const char16_t* const> Shell::Arguments() const {
  CHAR16** arguments = nullptr;
  UINTN count = 0;
  if (parameters_ != nullptr) {
    arguments = parameters_->Argv;
    count = parameters_->Argc;
  } else if (oldInterface_ != nullptr) {
    arguments = oldInterface_->Argv;
    count = oldInterface_->Argc;
  } else {
    return loadOptions_.Arguments();
  }
  return {reinterpret_cast<const char16_t* const*>(arguments), count};
}

bool Shell::GetVariable(std::u16string_view name, std::u16string& value) const {
  std::u16string terminated(name);
  const CHAR16* found = nullptr;
  if (protocol_ != nullptr)
    found = protocol_->GetEnv(ToEfi(terminated.c_str()));
  else if (oldEnvironment_ != nullptr)
    found = oldEnvironment_->GetEnv(ToEfi(terminated.c_str()));
  if (found == nullptr) return false;
  value = FromEfi(found);
  return true;
}

EFI_DEVICE_PATH* Shell::DevicePathOf(const std::u16string& path) const {
  if (protocol_ == nullptr) return nullptr;
  return protocol_->GetDevicePathFromFilePath(ToEfi(path.c_str()));
}

bool Shell::ResolveByOldShell(std::u16string_view path, EFI_HANDLE& volume,
                              std::u16string& pathOnVolume) const {
  if (oldEnvironment_ == nullptr) return false;
  std::u16string full(path);
  std::size_t colon = full.find(u':');
  if (colon == std::u16string::npos) {
    CHAR16* current = oldEnvironment_->CurDir(nullptr);
    if (current == nullptr) return false;
    std::u16string folder(FromEfi(current));
    BootServices().FreePool(current);
    colon = folder.find(u':');
    if (colon == std::u16string::npos) return false;
    if (path.starts_with(u'\\'))
      folder.resize(colon + 1);
    else if (!folder.ends_with(u'\\'))
      folder += u'\\';
    full = folder.append(path);
  }
  void* devicePath = oldEnvironment_->GetMap(ToEfi(full.substr(0, colon).c_str()));
  if (devicePath == nullptr) return false;
  auto* rest = static_cast<EFI_DEVICE_PATH*>(devicePath);
  pathOnVolume = full.substr(colon + 1);
  return BootServices().LocateDevicePath(const_cast<EFI_GUID*>(&kFileSystemGuid), &rest, &volume) ==
         EFI_SUCCESS;
}

bool Shell::InputFileHasEnded() const {
  UINT64 size = 0;
  UINT64 position = 0;
  // A console has no size; only a file does.
  return parameters_ != nullptr && protocol_ != nullptr &&
         protocol_->GetFileSize(parameters_->StdIn, &size) == EFI_SUCCESS &&
         protocol_->GetFilePosition(parameters_->StdIn, &position) == EFI_SUCCESS && position >= size;
}

bool Shell::OutputIsFile() const {
  UINT64 size = 0;
  return parameters_ != nullptr && protocol_ != nullptr &&
         protocol_->GetFileSize(parameters_->StdOut, &size) == EFI_SUCCESS;
}

}  // namespace varnok::uefi
