#include "sim/controller.h"

#include <algorithm>

#include "sim/error.h"

namespace varnok::sim {
namespace {

constexpr std::uint8_t kDs1624AccessMemory = 0x17;
constexpr std::uint8_t kDs1624ReadTemperature = 0xAA;
constexpr std::uint8_t kDs1624Reading[] = {0x19, 0x00};  // 25 degrees Celsius

Image& OpenImage(ImageStore& images, const std::string& path, const std::string& file,
                 std::optional<std::size_t> size) {
  try {
    return images.Open(file, ImageUse::Device, size);
  } catch (const BoardError& error) {
    throw BoardError(path + ": " + error.what());
  }
}

}  // namespace

bool Eeprom::Answers(std::uint8_t bus, std::uint8_t address) const {
  return bus == config_.bus && (address & 0xFE) == config_.address;
}

bool Eeprom::Transfer(std::span<const std::uint8_t> written, std::size_t count,
                      std::vector<std::uint8_t>& read) {
  if (!written.empty()) {
    const bool taken = config_.kind == EepromKind::At24c02 ? WriteAt24c02(written) : WriteDs1624s(written);
    if (!taken) return false;
  }
  for (std::size_t i = 0; i < count; ++i) {
    if (readsTemperature_) {
      read.push_back(kDs1624Reading[i % std::size(kDs1624Reading)]);
      continue;
    }
    read.push_back(image_.Content()[pointer_]);
    pointer_ = (pointer_ + 1) % image_.Size();
  }
  return true;
}

bool Eeprom::WriteAt24c02(std::span<const std::uint8_t> written) {
  if (written.size() == 1) {
    pointer_ = written[0] % image_.Size();
    return true;
  }
  pointer_ = (written[0] * std::size_t{256} + written[1]) % image_.Size();
  return Store(written.subspan(2));
}

bool Eeprom::WriteDs1624s(std::span<const std::uint8_t> written) {
  readsTemperature_ = written[0] == kDs1624ReadTemperature;
  if (written[0] != kDs1624AccessMemory || written.size() < 2) return true;
  pointer_ = written[1] % image_.Size();
  return Store(written.subspan(2));
}

bool Eeprom::Store(std::span<const std::uint8_t> bytes) {
  if (bytes.empty()) return true;
  if (config_.readOnly) return false;
  while (!bytes.empty()) {
    const auto piece = bytes.first(std::min(bytes.size(), image_.Size() - pointer_));
    image_.Write(pointer_, piece);
    pointer_ = (pointer_ + piece.size()) % image_.Size();
    bytes = bytes.subspan(piece.size());
  }
  return true;
}

Controller::Controller(const ControllerConfig& config, const TransferModeConfig& transferMode,
                       ImageStore& images)
    : config_(config), transferMode_(transferMode), inTransferMode_(transferMode.active) {
  for (const FruConfig& fru : config.frus) {
    Image& image = OpenImage(images, fru.path, fru.file, fru.size);
    if (image.Size() > 0xFFFF) throw BoardError(fru.path + ": " + fru.file + " is larger than 65535 bytes");
    frus_.push_back({fru.id, fru.wordAccess, fru.readOnly, &image});
  }
  for (const EepromConfig& eeprom : config.eeproms) {
    eeproms_.emplace_back(eeprom, OpenImage(images, eeprom.path, eeprom.file, eeprom.size));
  }
}

FruDevice* Controller::FindFru(std::uint8_t id) {
  for (FruDevice& fru : frus_) {
    if (fru.id == id) return &fru;
  }
  return nullptr;
}

Eeprom* Controller::FindEeprom(std::uint8_t bus, std::uint8_t address) {
  for (Eeprom& eeprom : eeproms_) {
    if (eeprom.Answers(bus, address)) return &eeprom;
  }
  return nullptr;
}

void Controller::Reset(std::uint64_t now) {
  silentUntil_ = now + std::uint64_t{config_.coldResetMilliseconds} * 1000;
  inTransferMode_ = inTransferMode_ && transferMode_.stuck;
  sdrReservation.Cancel();
  lastAnswer.reset();
}

}  // namespace varnok::sim
