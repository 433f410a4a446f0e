#include "sim/board.h"

#include <optional>
#include <utility>

#include "firmware/host/reserve.h"
#include "firmware/host/smbios_dump.h"
#include "sim/board_config.h"
#include "sim/default_board.h"
#include "sim/error.h"
#include "sim/protocol_adapter.h"

namespace varnok::sim {
namespace {

/// Writes the default board; board.json comes last, so that a folder with it is whole.
void WriteDefault(const std::filesystem::path& folder) {
  for (const DefaultFile& file : DefaultBoardImages()) ReplaceFile(folder / file.name, file.content);
  ReplaceFile(folder / kBoardFile, DefaultBoardConfig());
}

}  // namespace

struct Board::State {
  State(std::optional<FolderLock> held, const std::filesystem::path& folder, BoardConfig read)
      : lock(std::move(held)),
        config(std::move(read)),
        images(folder, lock ? Access::Hold : Access::Play),
        bmc(config, images, clock),
        adapter(bmc) {
    if (!clock.SetStart(config.clockStart)) {
      throw BoardError("clock.start: \"" + config.clockStart +
                       "\" is neither \"now\" nor like 2026-01-01T08:00:00");
    }
    if (config.smbiosFile) LoadSmbios(*config.smbiosFile);
  }

  void LoadSmbios(const std::string& name) {
    std::string place = "smbios: ";
    try {
      const auto content = images.Open(name, ImageUse::Smbios).Content();
      place += name + ": ";
      smbios.emplace(Bytes(content.begin(), content.end()));
    } catch (const std::runtime_error& error) {
      throw BoardError(place + error.what());
    }
  }

  std::optional<FolderLock> lock;  // none: the board is kept in memory
  BoardConfig config;
  VirtualClock clock;
  ImageStore images;
  Bmc bmc;
  ProtocolAdapter adapter;
  std::optional<host::SmbiosDump> smbios;
};

Board::Board(std::unique_ptr<State> state) : state_(std::move(state)) {}
Board::~Board() {
  const host::MachineAtWork atWork;
  state_.reset();
}

std::unique_ptr<Board> Board::Open(const std::filesystem::path& folder, std::string& error, bool* isCreated) {
  const std::filesystem::path file = folder / kBoardFile;
  const auto open = [&] {
    if (isCreated != nullptr) std::filesystem::create_directories(folder);
    FolderLock lock(folder);
    if (isCreated != nullptr && (*isCreated = !std::filesystem::exists(file))) WriteDefault(folder);
    return std::make_unique<State>(std::move(lock), folder, ReadBoardConfig(file));
  };
  return Make(folder, open, error);
}

std::unique_ptr<Board> Board::Play(const std::filesystem::path& folder, std::string& error) {
  const auto open = [&] {
    return std::make_unique<State>(std::nullopt, folder, ReadBoardConfig(folder / kBoardFile));
  };
  return Make(folder, open, error);
}

std::unique_ptr<Board> Board::Make(const std::filesystem::path& folder, const Opener& open,
                                   std::string& error) {
  const std::filesystem::path file = folder / kBoardFile;
  try {
    return std::unique_ptr<Board>(new Board(open()));
  } catch (const std::exception& failure) {
    // A file that cannot be read, and a folder that is taken, name themselves.
    const std::string text = failure.what();
    const bool isNamed = text.starts_with(file.string()) || text.starts_with(folder.string() + ": ");
    error = isNamed ? text : file.string() + ": " + text;
    return nullptr;
  }
}

bool Board::CreateDefault(const std::filesystem::path& folder, std::string& error) {
  try {
    std::filesystem::create_directories(folder);
    const FolderLock lock(folder);
    WriteDefault(folder);
    return true;
  } catch (const std::exception& failure) {
    error = failure.what();
    return false;
  }
}

bool Board::OpenTrafficLog(const std::string& path) {
  // Emptied, a file of the board would be lost.
  return !state_->images.Holds(path) && state_->bmc.Log().Open(path);
}
Bmc& Board::TheBmc() {
  return state_->bmc;
}
VirtualClock& Board::Clock() {
  return state_->clock;
}
ImageStore& Board::Images() {
  return state_->images;
}
const BoardConfig& Board::Config() const {
  return state_->config;
}
IpmiProtocol* Board::InstalledIpmi() {
  return state_->adapter.Protocol();
}

std::span<const std::uint8_t> Board::SmbiosEntryPoint() {
  if (!state_->smbios) return {};
  return state_->smbios->EntryPoint();
}

std::span<const std::uint8_t> Board::PhysicalMemory(std::uint64_t address, std::size_t length) {
  if (!state_->smbios) return {};
  return state_->smbios->Memory(address, length);
}

void Board::Stall(std::uint64_t microseconds, StallKind) {
  const host::MachineAtWork atWork;
  state_->clock.Advance(microseconds);
}
WallClock Board::Now() {
  return state_->clock.Now();
}

}  // namespace varnok::sim
