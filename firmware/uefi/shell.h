// The shell that started the image: its arguments, environment and current directory. UEFI Shell 2.x first,
// the older EFI shell where only that exists; none when the firmware's boot manager started the image, whose
// arguments are its load options then.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "firmware/command_text.h"
#include "firmware/uefi/platform.h"

namespace varnok::uefi {

/// The older shell's environment, as far as this program uses it.
struct OldShellEnvironment {
  void* execute;
  CHAR16*(EFIAPI* GetEnv)(CHAR16* name);
  /// The device path behind a mapped name such as "fs0"; the shell keeps it.
  void*(EFIAPI* GetMap)(CHAR16* name);
  void* addCommand;
  void* addProtocol;
  void* getProtocol;
  /// "fs0:\folder" of the device, or of the current one for null; in pool memory that the caller frees.
  CHAR16*(EFIAPI* CurDir)(CHAR16* deviceName);
};

class Shell {
 public:
  /// Looks for the interfaces; any of them may be missing.
  void Connect();

  /// Empty when nobody hands any over.
  std::span<const char16_t* const> Arguments() const;

  /// False when nothing tells a current directory: files are sought on the image's own volume.
  bool IsThere() const { return protocol_ != nullptr || oldEnvironment_ != nullptr; }

  /// False when the variable does not exist.
  bool GetVariable(std::u16string_view name, std::u16string& value) const;

  /// The device path of a file, relative to the current directory or with a mapped name in front; null when
  /// the shell cannot tell. The caller frees it with FreePool. UEFI Shell 2.x only.
  EFI_DEVICE_PATH* DevicePathOf(const std::u16string& path) const;

  /// The volume and the path on it, by the older shell's current directory and mapped names.
  bool ResolveByOldShell(std::u16string_view path, EFI_HANDLE& volume, std::u16string& pathOnVolume) const;

  /// True when the shell feeds the image's key input from a file and all of it has been read.
  bool InputFileHasEnded() const;
  /// True when the shell writes the image's output to a file.
  bool OutputIsFile() const;

 private:
  EFI_SHELL_PARAMETERS_PROTOCOL* parameters_ = nullptr;
  EFI_SHELL_PROTOCOL* protocol_ = nullptr;
  EFI_SHELL_INTERFACE* oldInterface_ = nullptr;
  OldShellEnvironment* oldEnvironment_ = nullptr;
  CommandText loadOptions_;
};

}  // namespace varnok::uefi
