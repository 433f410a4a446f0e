// The facade answered by UEFI: boot and runtime services, the shell and its volumes.
#pragma once

#include <array>
#include <string>

#include "firmware/firmware.h"
#include "firmware/smbios_layout.h"
#include "firmware/uefi/console.h"
#include "firmware/uefi/files.h"
#include "firmware/uefi/memory_map.h"
#include "firmware/uefi/shell.h"

namespace varnok::uefi {

class UefiFirmware : public Firmware {
 public:
  UefiFirmware();
  ~UefiFirmware() override;
  UefiFirmware(const UefiFirmware&) = delete;
  UefiFirmware& operator=(const UefiFirmware&) = delete;

  const Shell& TheShell() const { return shell_; }

  void WriteConsole(std::u16string_view text) override { console_.Write(text); }
  void WriteErrorOutput(std::u16string_view text) override { console_.WriteError(text); }
  /// Nothing is held back.
  void FlushConsole() override {}
  char16_t ReadKey() override { return console_.ReadKey(); }
  void Stall(std::uint64_t microseconds, StallKind kind) override;
  WallClock Now() override;
  Status OpenFile(std::u16string_view path, FileMode mode, std::unique_ptr<File>& file) override;
  Status AppendToFile(std::u16string_view path, std::span<const std::uint8_t> bytes) override;
  Status MakeFolder(std::u16string_view path) override;
  Status ListFolder(std::u16string_view path, std::vector<std::u16string>& names) override;
  bool GetEnvironmentVariable(std::string_view name, std::u16string& value) override;
  Status LocateHandles(const Guid& protocol, std::size_t& bytes, Handle* handles) override;
  Status OpenProtocol(Handle handle, const Guid& protocol, void*& interface) override;
  Status StartDriver(std::u16string_view path) override;
  const void* FindConfigurationTable(const Guid& guid) override;
  std::span<const std::uint8_t> PhysicalMemory(std::uint64_t address, std::size_t length) override;
  bool HasImageHandle() override;
  void* AllocatePool(std::size_t bytes) override;
  void FreePool(void* memory) override;

 private:
  /// The 2.x entry point over the table of a 3.x one; null when there is none, or none that can be walked.
  const void* OlderSmbiosEntryPoint();

  Shell shell_;
  Console console_{shell_};
  MemoryMap memoryMap_;
  std::u16string appendedPath_;  ///< what AppendToFile was last asked for
  Place appendedFile_;           ///< and where that is
  std::array<std::uint8_t, smbios::kEntryPointLength> smbiosEntryPoint_{};
  std::span<const std::uint8_t> smbiosTable_;  ///< what that leads to
  Firmware* previous_;
  std::uint64_t stalled_ = 0;  ///< microseconds
};

}  // namespace varnok::uefi
