// A machine for tests: captured console, scripted keys, files in memory, a clock turned by stalls, protocols
// and pool failures as the test sets them up.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "firmware/firmware.h"
#include "firmware/ipmi_protocol.h"
#include "firmware/lasting.h"

namespace varnok::testing {

/// Installs itself for its lifetime; then the program forgets what it kept, and the previous machine is put
/// back.
class TestFirmware : public Firmware {
 public:
  TestFirmware();
  ~TestFirmware() override;

  // What the program did.
  std::string console;                       ///< all console text, narrowed to Latin-1
  std::string errors;                        ///< all text of the error output
  std::map<std::string, std::string> files;  ///< name as given -> bytes
  std::uint64_t pacedMicroseconds = 0;       ///< sum of pacing stalls
  std::uint64_t waitedMicroseconds = 0;      ///< sum of waiting stalls
  std::vector<std::uint64_t> stalls;         ///< every stall in order
  int flushes = 0;
  std::size_t poolBlocks = 0;  ///< pool blocks not freed yet

  // What the machine is.
  std::u16string keys;  ///< key strokes to come; a read past them fails the test
  std::map<std::string, std::u16string> environment;
  std::map<std::string, Status> fileFailures;  ///< name -> status of opening it
  std::map<std::string, Status> readFailures;  ///< name -> status of reading behind the file's bytes
  std::uint64_t clockMicroseconds = 0;         ///< since midnight of 22 November 2026; stalls advance it
  bool isClockStill = false;                   ///< stalls leave the clock alone
  IpmiProtocol* protocol = nullptr;            ///< null: no handle carries it
  /// Answers StartDriver: the protocol that the driver installs, null for a driver that installs none;
  /// without it loading fails with kNotFound.
  std::optional<IpmiProtocol*> driver;
  std::vector<std::u16string> startedDrivers;
  const void* smbiosEntryPoint = nullptr;  ///< what FindConfigurationTable gives for any GUID
  std::map<std::uint64_t, std::vector<std::uint8_t>> memory;  ///< physical address -> bytes
  bool hasImageHandle = true;
  /// The pool allocation that fails, alone or with all behind it, counted from 1 from now on; 0: none.
  void FailPoolAllocation(int number, bool failsFromThereOn = false) {
    failingAllocation_ = number;
    failsFromThereOn_ = failsFromThereOn;
  }

  /// The lines of DBGLOG.txt, narrowed.
  std::vector<std::string> TraceLines() const;
  /// A 16-bit text file, narrowed.
  std::string TextOf(const std::string& name) const;

  void WriteConsole(std::u16string_view text) override;
  void FlushConsole() override { ++flushes; }
  void WriteErrorOutput(std::u16string_view text) override;
  char16_t ReadKey() override;
  void Stall(std::uint64_t microseconds, StallKind kind) override;
  WallClock Now() override;
  Status OpenFile(std::u16string_view path, FileMode mode, std::unique_ptr<File>& file) override;
  Status AppendToFile(std::u16string_view path, std::span<const std::uint8_t> bytes) override;
  bool GetEnvironmentVariable(std::string_view name, std::u16string& value) override;
  Status LocateHandles(const Guid& guid, std::size_t& bytes, Handle* handles) override;
  Status OpenProtocol(Handle handle, const Guid& guid, void*& interface) override;
  Status StartDriver(std::u16string_view path) override;
  const void* FindConfigurationTable(const Guid& guid) override;
  std::span<const std::uint8_t> PhysicalMemory(std::uint64_t address, std::size_t length) override;
  bool HasImageHandle() override { return hasImageHandle; }
  void* AllocatePool(std::size_t bytes) override;
  void FreePool(void* block) override;

 private:
  Firmware* previous_;
  int failingAllocation_ = 0;
  bool failsFromThereOn_ = false;
};

}  // namespace varnok::testing
