#include "firmware/uefi/files.h"

#include <algorithm>
#include <array>

#include "firmware/uefi/runtime.h"

namespace varnok::uefi {
namespace {

EFI_GUID fileSystemGuid = EFI_SIMPLE_FILE_SYSTEM_PROTOCOL_GUID;
EFI_GUID loadedImageGuid = EFI_LOADED_IMAGE_PROTOCOL_GUID;
EFI_GUID fileInfoGuid = EFI_FILE_INFO_ID;

constexpr UINT64 kEndOfFile = ~UINT64{0};
constexpr std::uint8_t kMediaNode = 4;
constexpr std::uint8_t kFilePathNode = 4;
constexpr std::uint8_t kEndNode = 0x7F;

class VolumeFile : public File {
 public:
  explicit VolumeFile(EFI_FILE* file) : file_(file), next_(newest_) {
    if (next_ != nullptr) next_->previous_ = this;
    newest_ = this;
  }
  ~VolumeFile() override {
    file_->Close(file_);
    if (next_ != nullptr) next_->previous_ = previous_;
    (previous_ != nullptr ? previous_->next_ : newest_) = next_;
  }
  VolumeFile(const VolumeFile&) = delete;
  VolumeFile& operator=(const VolumeFile&) = delete;

  Status Read(std::span<std::uint8_t> buffer, std::size_t& count) override {
    UINTN length = buffer.size();
    Status status = file_->Read(file_, &length, buffer.data());
    count = IsError(status) ? 0 : length;
    return status;
  }

  Status Write(std::span<const std::uint8_t> bytes) override {
    UINTN length = bytes.size();
    Status status = file_->Write(file_, &length, const_cast<std::uint8_t*>(bytes.data()));
    if (status == kSuccess && length < bytes.size()) status = uefi_status::kVolumeFull;
    // Closing reports nothing, so what the volume cannot take shows here.
    return status == kSuccess ? file_->Flush(file_) : status;
  }

  static void CloseAll() {
    for (VolumeFile* open = newest_; open != nullptr; open = open->next_) open->file_->Close(open->file_);
    newest_ = nullptr;
  }

 private:
  EFI_FILE* file_;
  VolumeFile* next_;
  VolumeFile* previous_ = nullptr;
  static inline VolumeFile* newest_ = nullptr;
};

/// Reads the volume and the path on it off a device path that ends in file path nodes.
bool PlaceOfDevicePath(EFI_DEVICE_PATH* devicePath, Place& place) {
  EFI_DEVICE_PATH* node = devicePath;
  if (BootServices().LocateDevicePath(&fileSystemGuid, &node, &place.volume) != EFI_SUCCESS) return false;
  while (node->Type != kEndNode) {
    std::size_t length = node->Length[0] | node->Length[1] << 8;
    if (node->Type != kMediaNode || node->SubType != kFilePathNode || length < sizeof(*node)) return false;
    auto* text = reinterpret_cast<const char16_t*>(node + 1);
    std::u16string_view part(text, (length - sizeof(*node)) / sizeof(char16_t));
    if (!place.path.empty() && !place.path.ends_with(u'\\') && !part.starts_with(u'\\')) place.path += u'\\';
    place.path += part.substr(0, part.find(u'\0'));
    node = reinterpret_cast<EFI_DEVICE_PATH*>(reinterpret_cast<std::uint8_t*>(node) + length);
  }
  return true;
}

bool PlaceByImage(std::u16string_view path, Place& place) {
  void* interface = nullptr;
  if (BootServices().HandleProtocol(ImageHandle(), &loadedImageGuid, &interface) != EFI_SUCCESS) return false;
  place.volume = static_cast<EFI_LOADED_IMAGE*>(interface)->DeviceHandle;
  place.path = path;
  return place.volume != nullptr && path.find(u':') == std::u16string_view::npos;
}

bool Locate(const Shell& shell, const std::u16string& path, Place& place) {
  if (EFI_DEVICE_PATH* devicePath = shell.DevicePathOf(path); devicePath != nullptr) {
    bool isFound = PlaceOfDevicePath(devicePath, place);
    BootServices().FreePool(devicePath);
    if (isFound) return true;
  }
  return shell.ResolveByOldShell(path, place.volume, place.path) || PlaceByImage(path, place);
}

Status OpenAt(const Place& place, UINT64 mode, EFI_FILE*& file, UINT64 attributes = 0) {
  void* interface = nullptr;
  Status status = BootServices().HandleProtocol(place.volume, &fileSystemGuid, &interface);
  if (IsError(status)) return status;
  auto* volume = static_cast<EFI_SIMPLE_FILE_SYSTEM_PROTOCOL*>(interface);
  EFI_FILE* root = nullptr;
  status = volume->OpenVolume(volume, &root);
  if (IsError(status)) return status;
  status = root->Open(root, &file, ToEfi(place.path.c_str()), mode, attributes);
  root->Close(root);
  return status;
}

/// What the firmware tells of a file, with room for its name and a zero behind it.
class FileInfo {
 public:
  EFI_FILE_INFO* operator->() { return reinterpret_cast<EFI_FILE_INFO*>(bytes_.data()); }
  std::uint8_t* data() { return bytes_.data(); }
  /// The room for the firmware.
  static constexpr UINTN size() { return kSize; }
  bool IsFolder() { return ((*this)->Attribute & EFI_FILE_DIRECTORY) != 0; }

 private:
  static constexpr std::size_t kLongestName = 256;
  static constexpr std::size_t kSize = sizeof(EFI_FILE_INFO) + kLongestName * sizeof(CHAR16);
  alignas(EFI_FILE_INFO) std::array<std::uint8_t, kSize + sizeof(CHAR16)> bytes_{};
};

Status GetInfo(EFI_FILE* file, FileInfo& info) {
  UINTN size = FileInfo::size();
  return file->GetInfo(file, &fileInfoGuid, &size, info.data());
}

/// Refuses a folder, and empties the file when asked to.
Status Prepare(EFI_FILE* file, bool empties) {
  FileInfo info;
  Status status = GetInfo(file, info);
  if (IsError(status)) return status;
  if (info.IsFolder()) return uefi_status::kAccessDenied;
  if (!empties || info->FileSize == 0) return kSuccess;
  info->FileSize = 0;
  return file->SetInfo(file, &fileInfoGuid, info->Size, info.data());
}

constexpr UINT64 kWriting = EFI_FILE_MODE_READ | EFI_FILE_MODE_WRITE | EFI_FILE_MODE_CREATE;

}  // namespace

std::u16string WithBackslashes(std::u16string_view path) {
  std::u16string converted(path);
  std::replace(converted.begin(), converted.end(), u'/', u'\\');
  return converted;
}

bool FindPlace(const Shell& shell, std::u16string_view path, Place& place) {
  return !path.empty() && Locate(shell, WithBackslashes(path), place);
}

Status OpenShellFile(const Shell& shell, std::u16string_view path, FileMode mode,
                     std::unique_ptr<File>& file) {
  file = nullptr;
  Place place;
  if (!FindPlace(shell, path, place)) return uefi_status::kNotFound;
  EFI_FILE* opened = nullptr;
  Status status = OpenAt(place, mode == FileMode::Read ? EFI_FILE_MODE_READ : kWriting, opened);
  if (IsError(status)) return status;
  auto owner = std::make_unique<VolumeFile>(opened);
  status = Prepare(opened, mode == FileMode::Write);
  if (!IsError(status) && mode == FileMode::Append) status = opened->SetPosition(opened, kEndOfFile);
  if (IsError(status)) return status;
  file = std::move(owner);
  return kSuccess;
}

Status AppendAt(const Place& place, std::span<const std::uint8_t> bytes) {
  EFI_FILE* opened = nullptr;
  Status status = OpenAt(place, kWriting, opened);
  if (IsError(status)) return status;
  VolumeFile file(opened);
  status = Prepare(opened, false);
  if (!IsError(status)) status = opened->SetPosition(opened, kEndOfFile);
  return IsError(status) ? status : file.Write(bytes);
}

Status MakeShellFolder(const Shell& shell, std::u16string_view path) {
  Place place;
  if (!FindPlace(shell, path, place)) return uefi_status::kNotFound;
  EFI_FILE* folder = nullptr;
  // Opening for creation takes what is there already.
  Status status = OpenAt(place, EFI_FILE_MODE_READ, folder);
  const bool isThere = !IsError(status);
  if (!isThere) status = OpenAt(place, kWriting, folder, EFI_FILE_DIRECTORY);
  if (IsError(status)) return status;
  folder->Close(folder);
  return isThere ? uefi_status::kAlreadyStarted : kSuccess;
}

Status ListShellFolder(const Shell& shell, std::u16string_view path, std::vector<std::u16string>& names,
                       bool folders) {
  Place place;
  if (!FindPlace(shell, path, place)) return uefi_status::kNotFound;
  EFI_FILE* folder = nullptr;
  if (Status status = OpenAt(place, EFI_FILE_MODE_READ, folder); IsError(status)) return status;
  VolumeFile owner(folder);
  FileInfo info;
  if (Status status = GetInfo(folder, info); IsError(status)) return status;
  if (!info.IsFolder()) return uefi_status::kNotFound;
  for (;;) {
    FileInfo entry;
    UINTN size = FileInfo::size();
    if (Status status = folder->Read(folder, &size, entry.data()); IsError(status)) return status;
    if (size == 0) return kSuccess;
    if (entry.IsFolder() == folders) names.emplace_back(FromEfi(entry->FileName));
  }
}

void CloseAllFiles() {
  VolumeFile::CloseAll();
}

}  // namespace varnok::uefi
