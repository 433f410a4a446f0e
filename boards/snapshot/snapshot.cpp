#include "boards/snapshot/snapshot.h"

#include <algorithm>

#include "app/services/format.h"
#include "boards/snapshot/device_access.h"
#include "boards/snapshot/locators.h"
#include "boards/snapshot/repository.h"
#include "boards/snapshot/smbios_dump.h"

namespace varnok::boards {
namespace {

constexpr int kSilenceLimit = 3;

Outcome ReadIdentity(const Target& target, std::optional<Identity>& identity) {
  IpmiMessage response;
  Outcome outcome = Exchange(target, net_function::kApplication, ipmi_command::kGetDeviceId, {}, response);
  if (!outcome.IsDone()) return outcome;
  identity = DecodeIdentity(DataOf(response));
  return identity ? outcome : Outcome{Outcome::Kind::Silent, 0, "an answer that is too short"};
}

/// Codes by which a BMC says that it has no such FRU device.
bool SaysAbsent(const Outcome& outcome) {
  return outcome.IsCode(completion_code::kNotPresent) || outcome.IsCode(completion_code::kOutOfRange) ||
         outcome.IsCode(completion_code::kInvalidField);
}

class Reader {
 public:
  Reader(Observer& observer, Snapshot& snapshot)
      : observer_(observer), board_(snapshot.board), unread_(snapshot.unread) {}

  void ReadRecords() {
    Repository repository;
    const Outcome outcome = ReadRepository(repository, observer_);
    board_.records = std::move(repository.records);
    board_.hasRepository = !outcome.IsCode(completion_code::kInvalidCommand);
    if (board_.hasRepository) Check("SDR repository", outcome);
    for (const UnreadRecord& record : repository.unread)
      Check(Format("SDR record %04Xh", record.id), record.outcome);
  }

  void ReadControllers(const std::vector<LocatedController>& located) {
    for (const LocatedController& place : located) {
      observer_.Step("controllers", board_.controllers.size(), located.size());
      Controller controller{place.address, place.channel, place.name, std::nullopt};
      if (Check(Format("controller %02Xh", place.address),
                ReadIdentity({place.address, place.channel}, controller.identity)))
        board_.controllers.push_back(controller);
    }
  }

  /// Devices 0 to 254 of the BMC, where most are not there.
  void ScanBmc(const std::vector<LocatedDevice>& located) {
    int silent = 0;
    std::uint8_t listedCode = 0;
    for (unsigned id = 0; id <= kLastFruId && silent < kSilenceLimit; ++id) {
      observer_.Step("FRU devices", id, kLastFruId + 1u);
      Device device;
      device.address.id = static_cast<std::uint8_t>(id);
      const Outcome outcome = MeasureDevice(device);
      const bool isNamed = std::any_of(located.begin(), located.end(), [&](const LocatedDevice& other) {
        return other.address == device.address;
      });
      silent = outcome.kind == Outcome::Kind::Silent ? silent + 1 : 0;
      if (outcome.IsDone()) {
        Read(device);
      } else if (isNamed || (!SaysAbsent(outcome) && !outcome.IsCode(listedCode))) {
        // A BMC that takes no FRU command, now or ever, says the same of every device: once is enough.
        listedCode = outcome.completionCode;
        Check(NameOf(device.address), outcome);
      }
    }
  }

  void ReadLocated(const std::vector<LocatedDevice>& located) {
    for (const LocatedDevice& place : located) {
      const bool isScanned = place.address.kind == DeviceKind::Fru && place.address.controller == kBmc;
      // What stands behind a controller that does not answer is said with it.
      if (isScanned || board_.FindController(place.address.controller, place.address.channel) == nullptr)
        continue;
      Device device;
      device.address = place.address;
      device.bytes.resize(place.size);
      if (Check(NameOf(place.address), MeasureDevice(device))) Read(device);
    }
  }

  void ReadSensors(const std::vector<std::uint8_t>& numbers) {
    for (std::uint8_t number : numbers) {
      observer_.Step("sensors", board_.sensors.size(), numbers.size());
      IpmiMessage response;
      const Outcome outcome =
          Exchange({}, net_function::kSensorEvent, ipmi_command::kGetSensorReading, {number}, response);
      if (outcome.kind == Outcome::Kind::Silent) {
        Check(Format("sensor %02Xh", number), outcome);
        continue;
      }
      // A completion code is the sensor's answer; that of a missing one needs no row.
      if (outcome.IsCode(completion_code::kNotPresent)) continue;
      const auto data = outcome.IsDone() ? DataOf(response) : std::span<const std::uint8_t>();
      board_.sensors.push_back({number, outcome.completionCode, Bytes(data.begin(), data.end())});
    }
  }

  void List(const std::vector<UnknownDevice>& devices) {
    for (const UnknownDevice& device : devices) Check(device.name, {Outcome::Kind::Unfit, 0, device.reason});
  }

 private:
  /// Lists what failed.
  bool Check(const std::string& what, const Outcome& outcome) {
    if (!outcome.IsDone()) unread_.push_back({what, outcome});
    return outcome.IsDone();
  }

  /// Keeps the device as far as it can be read.
  void Read(Device& device) {
    const std::size_t size = device.bytes.size();
    Outcome outcome = ReadDevice(device, observer_);
    const std::size_t count = device.bytes.size();
    if (!outcome.IsDone() && count != 0)
      outcome.reason = Format("only %u of %u bytes, then %s", count, size, outcome.Text());
    if (Check(NameOf(device.address), outcome) || count != 0) board_.devices.push_back(std::move(device));
  }

  Observer& observer_;
  Board& board_;
  std::vector<Unread>& unread_;
};

}  // namespace

bool ReachBmc(Identity& identity, std::string& error) {
  constexpr std::uint8_t kReceiveQueue = 1;
  if (IpmiLoadProtocol() != ipmi_result::kSuccess) {
    error = "no IPMI interface: neither the firmware nor ipmi.efi offers one";
    return false;
  }
  IpmiClearMessageFlags(kReceiveQueue);
  std::optional<Identity> found;
  const Outcome outcome = ReadIdentity({}, found);
  if (found) identity = *found;
  if (!outcome.IsDone()) error = "the BMC does not say who it is: " + outcome.Text();
  return outcome.IsDone();
}

bool TakeSnapshot(std::span<const DeviceAddress> named, Observer& observer, Snapshot& snapshot,
                  std::string& error) {
  snapshot = {};
  snapshot.board.bmc.name = "BMC";
  if (!ReachBmc(snapshot.board.bmc.identity.emplace(), error)) return false;
  Reader reader(observer, snapshot);
  reader.ReadRecords();
  Located located = FindLocated(snapshot.board.records);
  for (const DeviceAddress& address : named) AddDevice(located, {address, 0});
  reader.ReadControllers(located.controllers);
  reader.ScanBmc(located.devices);
  reader.ReadLocated(located.devices);
  reader.List(located.unknown);
  reader.ReadSensors(located.sensors);
  snapshot.board.smbios = DumpSmbios();
  return true;
}

}  // namespace varnok::boards
