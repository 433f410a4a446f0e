// The simulated board: a folder that stands for a server board with its BMC, its FRU devices and its SMBIOS
// tables. docs/board.md describes the folder.
//
//   std::string error;
//   std::unique_ptr<sim::Board> board = sim::Board::Open("/path/of/board", error);
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "firmware/host/machine.h"
#include "sim/bmc.h"

namespace varnok::sim {

class Board : public host::Machine {
 public:
  /// Null, with `error` naming file and key, when the folder does not describe a board, or another program
  /// works on it. With `isCreated` the folder and the default board are made where there is none, and it
  /// tells whether they were.
  static std::unique_ptr<Board> Open(const std::filesystem::path& folder, std::string& error,
                                     bool* isCreated = nullptr);
  /// The same board kept in memory: what is written to it is not in the folder, nor is the folder held.
  static std::unique_ptr<Board> Play(const std::filesystem::path& folder, std::string& error);
  /// Writes the built-in default board into `folder`, made if it is missing. False with `error` set when a
  /// file cannot be written.
  static bool CreateDefault(const std::filesystem::path& folder, std::string& error);

  ~Board() override;

  /// Logs all traffic from now on into the file at `path`, which is emptied. False when it cannot be written,
  /// or is one of the board's own.
  bool OpenTrafficLog(const std::string& path);

  /// The BMC's system interface without the protocol, and the clock that it lives by.
  Bmc& TheBmc();
  VirtualClock& Clock();
  ImageStore& Images();
  const BoardConfig& Config() const;

  IpmiProtocol* InstalledIpmi() override;
  std::span<const std::uint8_t> SmbiosEntryPoint() override;
  std::span<const std::uint8_t> PhysicalMemory(std::uint64_t address, std::size_t length) override;
  void Stall(std::uint64_t microseconds, StallKind kind) override;
  WallClock Now() override;

 private:
  struct State;
  using Opener = std::function<std::unique_ptr<State>()>;
  static std::unique_ptr<Board> Make(const std::filesystem::path& folder, const Opener& open,
                                     std::string& error);
  explicit Board(std::unique_ptr<State> state);

  std::unique_ptr<State> state_;
};

}  // namespace varnok::sim
