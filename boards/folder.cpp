#include "boards/folder.h"

#include <exception>
#include <optional>

#include "boards/snapshot/save.h"
#include "sim/board.h"
#include "sim/board_config.h"
#include "sim/default_board.h"
#include "sim/error.h"
#include "sim/image.h"

namespace varnok::boards {
namespace {

constexpr const char* kConfigName = "board.json";

Bytes ImageOf(sim::ImageStore& images, const std::string& key, const std::string& file, sim::ImageUse use,
              std::optional<std::size_t> size = std::nullopt) {
  try {
    const auto content = images.Open(file, use, size).Content();
    return {content.begin(), content.end()};
  } catch (const std::runtime_error& error) {
    throw sim::BoardError(key + ": " + error.what());
  }
}

Identity IdentityOf(const sim::IdentityConfig& config) {
  Identity identity;
  identity.deviceId = config.deviceId;
  identity.deviceRevision = config.deviceRevision;
  identity.providesSdrs = config.providesSdrs;
  identity.firmwareMajor = config.firmwareMajor;
  identity.firmwareMinor = config.firmwareMinor;
  identity.ipmiVersion = config.ipmiVersion;
  identity.additionalSupport = config.additionalSupport;
  identity.manufacturerId = config.manufacturerId;
  identity.productId = config.productId;
  identity.auxiliary = config.auxiliary;
  identity.hasAuxiliary = config.answersAuxiliary;
  return identity;
}

Controller AddController(const sim::ControllerConfig& config, sim::ImageStore& images, Board& board) {
  const DeviceAddress place{.controller = config.address, .channel = config.channel};
  for (const sim::FruConfig& fru : config.frus) {
    Device device{
        .address = place, .isWordAccess = fru.wordAccess, .isReadOnly = fru.readOnly, .file = fru.file};
    device.address.id = fru.id;
    device.bytes = ImageOf(images, fru.path, fru.file, sim::ImageUse::Device, fru.size);
    board.devices.push_back(std::move(device));
  }
  for (const sim::EepromConfig& eeprom : config.eeproms) {
    Device device{.address = place, .isReadOnly = eeprom.readOnly, .file = eeprom.file};
    device.address.kind = eeprom.kind == sim::EepromKind::At24c02 ? DeviceKind::At24c02 : DeviceKind::Ds1624s;
    device.address.bus = eeprom.bus;
    device.address.slave = eeprom.address;
    device.bytes = ImageOf(images, eeprom.path, eeprom.file, sim::ImageUse::Device, eeprom.size);
    board.devices.push_back(std::move(device));
  }
  return {config.address, config.channel, config.name, IdentityOf(config.identity)};
}

void ReadRecords(const sim::SdrConfig& config, sim::ImageStore& images, Board& board) {
  board.hasRepository = !config.file.empty();
  if (!board.hasRepository) return;
  board.repositoryCapacity = config.capacity;
  // A board whose file is nowhere named begins with an empty repository.
  if (!config.isFileNamed && !std::filesystem::exists(images.Folder() / config.file)) return;
  const Bytes dump = ImageOf(images, "bmc.sdrs.file", config.file, sim::ImageUse::Sdrs);
  const std::size_t rest = SplitRecords(dump, board.records).size();
  // A program that was killed, or that is at work, may have written a part of its last record only.
  if (rest != 0 && !images.Find(config.file)->WasCutShort())
    throw sim::BoardError("bmc.sdrs.file: " + config.file + ": the record at byte " +
                          std::to_string(dump.size() - rest) + " goes past the end of the file");
}

class HostFolder : public FolderSink {
 public:
  explicit HostFolder(const std::filesystem::path& folder) : folder_(folder) {}
  Status Write(std::string_view name, std::span<const std::uint8_t> bytes) override {
    sim::ReplaceFile(folder_ / name, bytes);
    return kSuccess;
  }

 private:
  const std::filesystem::path& folder_;
};

/// Runs `work`; false, with the text of what it throws, when it fails.
template <class Work>
bool Attempt(Work work, std::string& error) {
  try {
    work();
    return true;
  } catch (const std::exception& failure) {
    error = failure.what();
    return false;
  }
}

Board ReadBoard(const std::filesystem::path& folder, const std::filesystem::path& file) {
  const sim::BoardConfig config = sim::ReadBoardConfig(file);
  sim::ImageStore images(folder, sim::Access::Look);
  Board board;
  board.bmc = AddController(config.bmc, images, board);
  board.bmc.identity->isInTransferMode = config.transferMode.active;
  for (const sim::ControllerConfig& controller : config.controllers)
    board.controllers.push_back(AddController(controller, images, board));
  ReadRecords(config.sdrs, images, board);
  for (const sim::SensorConfig& sensor : config.bmc.answers.sensors)
    board.sensors.push_back({sensor.number, sensor.completionCode, sensor.reading});
  if (config.smbiosFile) board.smbios = ImageOf(images, "smbios", *config.smbiosFile, sim::ImageUse::Smbios);
  return board;
}

}  // namespace

bool LoadFolder(const std::filesystem::path& folder, Board& board, std::string& error) {
  const std::filesystem::path file = folder / kConfigName;
  if (Attempt([&] { board = ReadBoard(folder, file); }, error)) return true;
  // A file that cannot be read names itself.
  if (!error.starts_with(file.string())) error = file.string() + ": " + error;
  return false;
}

bool MakeFreeFolder(const std::filesystem::path& folder, std::string& error) {
  return Attempt(
      [&] {
        if (std::filesystem::exists(folder / kConfigName))
          throw sim::BoardError(folder.string() + ": holds a board already; name a new folder");
        std::error_code code;
        std::filesystem::create_directories(folder, code);
        if (code) throw sim::BoardError(folder.string() + ": cannot be made: " + code.message());
      },
      error);
}

bool SaveFolder(const std::filesystem::path& folder, const Board& board, std::string& error) {
  auto save = [&] {
    HostFolder sink(folder);
    std::string failed;
    (void)SaveBoard(board, sink, failed);  // the sink throws
  };
  return MakeFreeFolder(folder, error) && Attempt(save, error);
}

bool SaveDefaultBoard(const std::filesystem::path& folder, std::string& error) {
  return MakeFreeFolder(folder, error) && sim::Board::CreateDefault(folder, error);
}

Board EmptyBoard() {
  constexpr std::size_t kSize = 1024;
  Board board;
  board.bmc.identity = IdentityOf(sim::IdentityConfig{});
  board.devices.push_back({.bytes = Bytes(kSize, 0xFF)});
  board.smbios = sim::DefaultSmbiosDump();
  return board;
}

bool ReadFile(const std::filesystem::path& file, Bytes& bytes, std::string& error) {
  return Attempt([&] { bytes = sim::ReadWholeFile(file); }, error);
}

}  // namespace varnok::boards
