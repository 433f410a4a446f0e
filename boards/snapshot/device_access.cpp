#include "boards/snapshot/device_access.h"

#include <algorithm>

namespace varnok::boards {
namespace {

constexpr std::uint8_t kDs1624AccessMemory = 0x17;

constexpr std::size_t kLargestRead = 32;
// An answer through a bridge carries a frame around its data, and an IPMB message has 32 bytes.
constexpr std::size_t kLargestBridgedRead = 16;
constexpr std::size_t kEepromSize = 256;
// Serial EEPROMs take a write within one page; 8 bytes are the smallest page in use.
constexpr std::size_t kEepromPage = 8;
constexpr std::size_t kLongestRequest = 5 + kLargestWrite;
// Milliseconds that an EEPROM may take to store a page, during which it acknowledges nothing.
constexpr int kStoreTries = 20;
constexpr std::uint32_t kStoreRest = 5;

Target TargetOf(const DeviceAddress& address) {
  return {address.controller, address.channel};
}

bool IsEeprom(const Device& device) {
  return device.address.kind != DeviceKind::Fru;
}

std::size_t UnitOf(const Device& device) {
  return device.isWordAccess ? 2 : 1;
}

struct RequestBytes {
  std::uint8_t bytes[kLongestRequest];
  std::size_t length = 0;
  void Put(std::size_t byte) { bytes[length++] = static_cast<std::uint8_t>(byte); }
  std::span<const std::uint8_t> Span() const { return {bytes, length}; }
};

/// The request up to the offset; `readCount` is a Master Write-Read's.
RequestBytes Start(const Device& device, std::size_t offset, std::size_t readCount) {
  const DeviceAddress& address = device.address;
  RequestBytes request;
  if (!IsEeprom(device)) {
    offset /= UnitOf(device);
    request.Put(address.id);
    request.Put(offset);
    request.Put(offset >> 8);
    return request;
  }
  request.Put(address.bus);
  request.Put(address.slave);
  request.Put(readCount);
  request.Put(address.kind == DeviceKind::Ds1624s ? kDs1624AccessMemory : offset >> 8);
  request.Put(offset);
  return request;
}

template <class IsGood>
Outcome Send(const Device& device, std::uint8_t fruCommand, const RequestBytes& request,
             IpmiMessage& response, IsGood isGood) {
  const bool isEeprom = IsEeprom(device);
  return ExchangeFor(TargetOf(device.address), isEeprom ? net_function::kApplication : net_function::kStorage,
                     isEeprom ? ipmi_command::kMasterWriteRead : fruCommand, request.Span(), response,
                     isGood);
}

/// One read to the end of `target` or less; `count` is what came.
Outcome ReadChunk(const Device& device, std::size_t offset, std::span<std::uint8_t> target,
                  std::size_t& count) {
  RequestBytes request = Start(device, offset, target.size());
  if (!IsEeprom(device)) request.Put(target.size() / UnitOf(device));
  std::span<const std::uint8_t> bytes;
  // An inventory device counts what it delivers, which may be less than was asked for.
  auto take = [&](std::span<const std::uint8_t> data) {
    bytes = data;
    if (!IsEeprom(device)) {
      if (data.empty() || data[0] * UnitOf(device) > data.size() - 1) return false;
      bytes = data.subspan(1, data[0] * UnitOf(device));
    }
    return !bytes.empty() && bytes.size() <= target.size();
  };
  IpmiMessage response;
  count = 0;
  Outcome outcome = Send(device, ipmi_command::kReadFruData, request, response, take);
  if (!outcome.IsDone()) return outcome;
  std::copy(bytes.begin(), bytes.end(), target.begin());
  count = bytes.size();
  return outcome;
}

/// Half of a chunk that was refused, in whole units; 0 when there is no smaller one.
std::size_t Smaller(const Device& device, std::size_t chunk) {
  return chunk / 2 / UnitOf(device) * UnitOf(device);
}

Outcome WriteChunk(const Device& device, std::size_t offset, std::span<const std::uint8_t> bytes,
                   std::size_t& count) {
  RequestBytes request = Start(device, offset, 0);
  for (std::uint8_t byte : bytes) request.Put(byte);
  IpmiMessage response;
  auto isAny = [](std::span<const std::uint8_t>) { return true; };
  Outcome outcome = Send(device, ipmi_command::kWriteFruData, request, response, isAny);
  for (int tries = 0; IsEeprom(device) && outcome.IsCode(completion_code::kNakOnWrite) && tries < kStoreTries;
       ++tries) {
    DelayMilliseconds(kStoreRest);
    outcome = Send(device, ipmi_command::kWriteFruData, request, response, isAny);
  }
  count = bytes.size();
  if (!outcome.IsDone() || IsEeprom(device)) return outcome;
  // The answer counts what was written; a device that says nothing has taken all.
  if (!DataOf(response).empty()) count = std::min(count, DataOf(response)[0] * UnitOf(device));
  return count == 0 ? Outcome{Outcome::Kind::Unfit, 0, "takes no bytes"} : outcome;
}

}  // namespace

Outcome MeasureDevice(Device& device) {
  if (IsEeprom(device)) {
    if (device.bytes.empty()) device.bytes.resize(kEepromSize);
    return {};
  }
  IpmiMessage response;
  const std::uint8_t id[] = {device.address.id};
  Outcome outcome = ExchangeFor(TargetOf(device.address), net_function::kStorage,
                                ipmi_command::kGetFruAreaInfo, std::span(id), response,
                                [](std::span<const std::uint8_t> bytes) { return bytes.size() >= 2; });
  if (!outcome.IsDone()) return outcome;
  const auto data = DataOf(response);
  device.isWordAccess = data.size() > 2 && (data[2] & 1) != 0;
  std::size_t size = data[0] + std::size_t{256} * data[1];
  // A device counts in bytes in any case; half a word at its end cannot be reached.
  size -= size % UnitOf(device);
  device.bytes.resize(size);
  return outcome;
}

Outcome ReadDevice(Device& device, Observer& observer) {
  const std::string name = "device " + NameOf(device.address);
  std::size_t chunk = device.address.controller == kBmc ? kLargestRead : kLargestBridgedRead;
  std::size_t offset = 0;
  while (offset < device.bytes.size()) {
    observer.Step(name, offset, device.bytes.size());
    const auto target = std::span(device.bytes).subspan(offset);
    std::size_t count = 0;
    Outcome outcome = ReadChunk(device, offset, target.first(std::min(chunk, target.size())), count);
    offset += count;
    if (outcome.IsDone()) continue;
    // Whatever the code says: some refuse a length with one of their own.
    chunk = outcome.kind == Outcome::Kind::Refused ? Smaller(device, chunk) : 0;
    if (chunk != 0) continue;
    device.bytes.resize(offset);
    return outcome;
  }
  return {};
}

Outcome WriteDevice(const Device& device, std::size_t offset, std::span<const std::uint8_t> bytes,
                    std::size_t& chunk) {
  while (!bytes.empty()) {
    std::size_t count = std::min(chunk, bytes.size());
    if (IsEeprom(device)) count = std::min(count, kEepromPage - offset % kEepromPage);
    Outcome outcome = WriteChunk(device, offset, bytes.first(count), count);
    if (outcome.IsDone()) {
      bytes = bytes.subspan(count);
      offset += count;
      continue;
    }
    chunk = outcome.kind == Outcome::Kind::Refused ? Smaller(device, chunk) : 0;
    if (chunk == 0) return outcome;
  }
  return {};
}

}  // namespace varnok::boards
