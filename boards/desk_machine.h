// The machine that the program's own file readers find on a desk: files and memory, no board, and an error
// output that is kept for whoever asks.
#pragma once

#include <string>

#include "firmware/firmware.h"

namespace varnok::boards {

/// Installed for its lifetime.
class DeskMachine : public Firmware {
 public:
  /// Opens the computer's own files, for reading alone.
  DeskMachine();
  /// Any name opens `text`, which must outlive the machine.
  explicit DeskMachine(const std::string& text);
  ~DeskMachine() override;
  DeskMachine(const DeskMachine&) = delete;
  DeskMachine& operator=(const DeskMachine&) = delete;

  /// What the readers said on the error output.
  const std::string& Warnings() const { return warnings_; }

  void WriteConsole(std::u16string_view) override {}
  void FlushConsole() override {}
  void WriteErrorOutput(std::u16string_view text) override;
  char16_t ReadKey() override { return 0; }
  void Stall(std::uint64_t, StallKind) override {}
  WallClock Now() override { return {}; }
  Status OpenFile(std::u16string_view path, FileMode mode, std::unique_ptr<File>& file) override;
  Status AppendToFile(std::u16string_view, std::span<const std::uint8_t>) override {
    return uefi_status::kWriteProtected;
  }
  bool GetEnvironmentVariable(std::string_view, std::u16string&) override { return false; }
  Status LocateHandles(const Guid&, std::size_t&, Handle*) override { return uefi_status::kNotFound; }
  Status OpenProtocol(Handle, const Guid&, void*&) override { return uefi_status::kNotFound; }
  Status StartDriver(std::u16string_view) override { return uefi_status::kNotFound; }
  const void* FindConfigurationTable(const Guid&) override { return nullptr; }
  std::span<const std::uint8_t> PhysicalMemory(std::uint64_t, std::size_t) override { return {}; }
  bool HasImageHandle() override { return false; }
  void* AllocatePool(std::size_t bytes) override;
  void FreePool(void* memory) override;

 private:
  const std::string* text_ = nullptr;
  Firmware* previous_;
  std::string warnings_;
};

/// A text as a file that is read from its start.
class TextFile : public File {
 public:
  explicit TextFile(const std::string& text) : text_(text) {}

  Status Read(std::span<std::uint8_t> buffer, std::size_t& count) override;
  Status Write(std::span<const std::uint8_t>) override { return uefi_status::kWriteProtected; }

 private:
  const std::string& text_;
  std::size_t position_ = 0;
};

/// A message of the program as 8-bit text on one line.
std::string MessageLine(std::u16string_view text);

}  // namespace varnok::boards
