// The BMC or a controller on an IPMB: its identity, its FRU devices and private buses, and the state that a
// reset clears.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "sim/board_config.h"
#include "sim/image.h"
#include "sim/message.h"
#include "sim/reservation.h"

namespace varnok::sim {

struct FruDevice {
  std::uint8_t id;
  bool wordAccess;
  bool readOnly;
  Image* image;
};

/// A serial EEPROM: what it answers to the bytes that a Master Write-Read carries.
class Eeprom {
 public:
  Eeprom(EepromConfig config, Image& image) : config_(std::move(config)), image_(image) {}

  bool Answers(std::uint8_t bus, std::uint8_t address) const;
  /// One bus transaction: writes `written`, then reads `count` bytes. Addresses wrap at the device's end as
  /// they do in the part. False: the device does not acknowledge the write.
  bool Transfer(std::span<const std::uint8_t> written, std::size_t count, std::vector<std::uint8_t>& read);

 private:
  bool WriteAt24c02(std::span<const std::uint8_t> written);
  bool WriteDs1624s(std::span<const std::uint8_t> written);
  bool Store(std::span<const std::uint8_t> bytes);

  EepromConfig config_;
  Image& image_;
  std::size_t pointer_ = 0;
  bool readsTemperature_ = false;
};

class Controller {
 public:
  /// Throws BoardError when an image cannot be opened.
  Controller(const ControllerConfig& config, const TransferModeConfig& transferMode, ImageStore& images);

  const ControllerConfig& Config() const { return config_; }
  BusPlace Where() const { return {config_.address, config_.channel, IsBmc()}; }
  bool IsBmc() const { return config_.address == kBmcAddress; }
  FruDevice* FindFru(std::uint8_t id);
  Eeprom* FindEeprom(std::uint8_t bus, std::uint8_t address);

  const TransferModeConfig& TransferMode() const { return transferMode_; }
  bool InTransferMode() const { return inTransferMode_; }
  void SetTransferMode(bool on) { inTransferMode_ = on; }

  /// Restarts the controller: it is silent from `now` (microseconds) on for its configured time.
  void Reset(std::uint64_t now);
  bool IsSilent(std::uint64_t now) const { return now < silentUntil_; }

  Reservation sdrReservation;
  /// What this controller answered last, for the stale-answer fault.
  std::optional<Response> lastAnswer;

 private:
  ControllerConfig config_;
  TransferModeConfig transferMode_;
  std::vector<FruDevice> frus_;
  std::vector<Eeprom> eeproms_;
  bool inTransferMode_ = false;
  std::uint64_t silentUntil_ = 0;
};

}  // namespace varnok::sim
