// The firmware facade on Linux: terminal or pipes, files, environment, and a board below them.
#pragma once

#include <string>

#include "firmware/firmware.h"
#include "firmware/host/machine.h"

namespace varnok::host {

/// Console text that does not go to a terminal is gathered, and written when the program waits, asks,
/// complains or ends. Returns the errno for which text was lost so far; 0 when none was, or when nobody was
/// there to read it.
int FlushConsoleOutput();

class HostFirmware : public Firmware {
 public:
  /// `machine` must outlive this object.
  explicit HostFirmware(Machine& machine) : machine_(machine) {}

  void WriteConsole(std::u16string_view text) override;
  void FlushConsole() override { FlushConsoleOutput(); }
  void WriteErrorOutput(std::u16string_view text) override;
  char16_t ReadKey() override;
  void Stall(std::uint64_t microseconds, StallKind kind) override {
    FlushConsoleOutput();
    machine_.Stall(microseconds, kind);
  }
  WallClock Now() override { return machine_.Now(); }
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
  bool HasImageHandle() override { return true; }
  void* AllocatePool(std::size_t bytes) override;
  void FreePool(void* memory) override;

 private:
  Machine& machine_;
  std::u16string appendedPath_;  ///< what AppendToFile was last asked for
  std::string appendedFile_;     ///< and the file that it is
};

/// The exit status when the board cannot be opened: as for a protocol that is missing.
inline constexpr int kNoBoardStatus = 9;
/// The exit status when the output could not be written, in place of a success.
inline constexpr int kOutputLostStatus = 2;
/// The exit status when memory ends: Linux's number for it (ENOMEM).
inline constexpr int kOutOfMemoryStatus = 12;
/// Stands for every status that Linux cannot hand on.
inline constexpr int kLargestStatus = 255;

/// What a program of Linux does first: a reader that goes away does not end it, memory that ends does, with a
/// message.
void PrepareProcess();

/// One line on standard error, the program's name in front, control characters as '?'. `text` is UTF-8.
void Complain(std::string_view text);

/// Runs the program over `machine` with Linux's UTF-8 arguments; returns its exit status, at most
/// kLargestStatus.
int RunProgram(Machine& machine, int argc, char* argv[]);

}  // namespace varnok::host
