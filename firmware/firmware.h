// The firmware facade: everything that the program may ask of the machine it runs on. One instance is
// installed at entry; nothing else reaches the machine. UEFI answers it with boot services and the shell,
// Linux with the terminal, files and a board, tests with a machine of their own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "firmware/guid.h"
#include "firmware/status.h"

namespace varnok {

enum class FileMode {
  Read,    ///< must exist
  Write,   ///< created or emptied
  Append,  ///< created if missing; writes go to its end
};

/// An open file; closed when destroyed.
class File {
 public:
  virtual ~File() = default;
  /// Reads up to `buffer.size()` bytes; `count` 0 means the end of the file.
  virtual Status Read(std::span<std::uint8_t> buffer, std::size_t& count) = 0;
  /// Writes all bytes, or fails (kVolumeFull, kWriteProtected, kDeviceError).
  virtual Status Write(std::span<const std::uint8_t> bytes) = 0;
};

/// Why a stall is made. Pacing gives the transport its rest after each send; a backend whose driver paces
/// itself may leave it out. Waiting is for something to happen and always takes its time.
enum class StallKind { Pacing, Waiting };

/// The real-time clock's local time.
struct WallClock {
  std::uint16_t year = 1970;
  std::uint8_t month = 1;  ///< 1 to 12
  std::uint8_t day = 1;    ///< 1 to 31
  std::uint8_t hour = 0;
  std::uint8_t minute = 0;
  std::uint8_t second = 0;
};

/// The exit status when the console's input ends while the program waits for a key: as for a file that cannot
/// be read.
inline constexpr int kInputEndedStatus = 2;

using Handle = void*;

class Firmware {
 public:
  virtual ~Firmware() = default;

  // Console. Text arrives free of control characters but BS, TAB, LF and CR; LF alone starts a new line.
  virtual void WriteConsole(std::u16string_view text) = 0;
  virtual void FlushConsole() = 0;
  /// The error output, beside the console: standard error, or the firmware's error console.
  virtual void WriteErrorOutput(std::u16string_view text) = 0;
  /// Waits for one key stroke without time-out and gives its Unicode character, 0 for a key that has none. A
  /// console whose input has ended can never answer: the program then ends here with an error and does not
  /// return.
  virtual char16_t ReadKey() = 0;

  // Time.
  virtual void Stall(std::uint64_t microseconds, StallKind kind) = 0;
  virtual WallClock Now() = 0;

  // Files. A relative path starts in the current directory; '\' and '/' both separate its parts.
  /// kNotFound, kAccessDenied, kWriteProtected, kOutOfResources or kDeviceError; `file` is null then.
  virtual Status OpenFile(std::u16string_view path, FileMode mode, std::unique_ptr<File>& file) = 0;
  /// Writes behind the end of a file, which is created if missing and closed again. From the second call for
  /// one path on this takes no memory of the program's.
  virtual Status AppendToFile(std::u16string_view path, std::span<const std::uint8_t> bytes) = 0;

  /// kAlreadyStarted when something has that name. A machine without folders has neither of these two.
  virtual Status MakeFolder(std::u16string_view) { return uefi_status::kUnsupported; }
  /// The names of the files in a folder, in any order.
  virtual Status ListFolder(std::u16string_view, std::vector<std::u16string>&) {
    return uefi_status::kUnsupported;
  }

  /// False when the variable does not exist.
  virtual bool GetEnvironmentVariable(std::string_view name, std::u16string& value) = 0;

  // Handles and protocols (UEFI 2.10, section 7.3).
  /// Stores the handles that carry `protocol`; `bytes` is the room in `handles` on entry and what they need
  /// on return (kBufferTooSmall when the room does not suffice, kNotFound when no handle carries it).
  virtual Status LocateHandles(const Guid& protocol, std::size_t& bytes, Handle* handles) = 0;
  virtual Status OpenProtocol(Handle handle, const Guid& protocol, void*& interface) = 0;
  /// Loads the driver image at `path` and starts it.
  virtual Status StartDriver(std::u16string_view path) = 0;

  /// The configuration table with this GUID; null when the firmware has none.
  virtual const void* FindConfigurationTable(const Guid& guid) = 0;
  /// The part of `length` bytes at a physical address that can be read; empty when none of it can.
  virtual std::span<const std::uint8_t> PhysicalMemory(std::uint64_t address, std::size_t length) = 0;
  /// False when the entry was not given the image handle that it needs to reach its own devices.
  virtual bool HasImageHandle() = 0;

  // Pool memory, for the allocations whose failure has a text or a status of its own (firmware/pool.h wraps
  // it).
  /// Uninitialised memory aligned to 16 bytes, or null.
  virtual void* AllocatePool(std::size_t bytes) = 0;
  virtual void FreePool(void* memory) = 0;
};

/// The installed machine. It must outlive every use.
Firmware& TheFirmware();

/// Installs `firmware` and returns the one that was installed before (null at first).
Firmware* InstallFirmware(Firmware* firmware);

}  // namespace varnok
