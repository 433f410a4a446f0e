// The bytes of a FRU device: Read and Write FRU Data (IPMI v2.0, section 34) for a controller's inventory
// device, Master Write-Read (section 22.11) for storage on a private bus.
#include <algorithm>
#include <optional>

#include "app/services/console.h"
#include "app/services/trace.h"
#include "firmware/bytes.h"
#include "fru/fru.h"
#include "fru/fru_session.h"
#include "fru/fru_status.h"
#include "platform/answer_doubts.h"
#include "platform/ipmi.h"

namespace varnok {
namespace {

constexpr std::uint8_t kDs1624AccessMemory = 0x17;

constexpr std::int64_t kLargestChunk = 8;
constexpr std::int64_t kChunkStep = 4;
constexpr std::uint32_t kReadTimeout = 5000;
constexpr std::uint32_t kWriteTimeout = 5;
// Requests carry 16 bits of offset.
constexpr std::uint32_t kOffsetLimit = 0x10000;

bool IsInventoryDevice(const FruDeviceAddress& address) {
  return address.nvsType == nvs_type::kImbDevice;
}

bool IsPastOffsets(std::uint32_t offset, std::size_t count) {
  return offset > kOffsetLimit || count > kOffsetLimit - offset;
}

/// The request up to its offset; `readCount` bytes are to be read back from a private bus. `tail` are the
/// bytes behind the offset.
IpmiMessage MakeRequest(const FruDeviceAddress& address, std::uint8_t command, std::uint32_t offset,
                        std::uint8_t readCount, std::span<const std::uint8_t> tail) {
  IpmiMessage request;
  request.targetAddress = address.controller;
  ByteWriter data(request.data);
  if (IsInventoryDevice(address)) {
    request.netFunction = net_function::kStorage;
    request.command = command;
    data.Byte(address.deviceId).Word(static_cast<std::uint16_t>(offset));
  } else {
    request.netFunction = net_function::kApplication;
    request.lun = address.lun;
    request.command = ipmi_command::kMasterWriteRead;
    // What goes out on the bus has the high byte first.
    auto high = static_cast<std::uint8_t>(offset >> 8);
    data.Byte(address.bus).Byte(address.deviceAddress).Byte(readCount);
    data.Byte(address.nvsType == nvs_type::kDs1624s ? kDs1624AccessMemory : high);
    data.Byte(static_cast<std::uint8_t>(offset));
  }
  request.dataLength = static_cast<std::uint32_t>(data.Bytes(tail).Length());
  return request;
}

/// Sends to the controller, or over the bus to an inventory device of another controller. `refused` is the
/// status of an answer that is none.
Status Send(const FruDeviceAddress& address, const IpmiMessage& request, IpmiMessage& response,
            std::uint32_t timeout, Status refused) {
  constexpr std::uint8_t kNoBus = 0xFF;
  bool isBridged = IsInventoryDevice(address) && address.controller == kBmcAddress && address.bus != kNoBus &&
                   address.deviceId == 0;
  IpmiResult result = isBridged
                          ? IpmiBridgedRequest(request, response, address.bus, address.deviceAddress, timeout)
                          : IpmiTransaction(request, response);
  if (result != ipmi_result::kSuccess) return static_cast<Status>(std::int64_t{result});
  // Bridging can end with the answer to another command; that says nothing about this one.
  return response.command == request.command ? kSuccess : refused;
}

/// The bytes that an answer delivers for a chunk of `count`; nothing when it has fewer, or counts another
/// number of them: it is then the answer to another request.
std::optional<std::span<const std::uint8_t>> DeliveredBytes(const FruDeviceAddress& address,
                                                            const IpmiMessage& response, std::size_t count) {
  std::span<const std::uint8_t> data =
      std::span(response.data).first(std::min<std::size_t>(response.dataLength, response.data.size()));
  if (IsInventoryDevice(address)) {
    if (data.empty() || data[0] != count) return std::nullopt;
    data = data.subspan(1);
  }
  if (data.size() < count) return std::nullopt;
  return data.first(count);
}

/// Notes what an answer to the request for `offset` looks like to one who cannot know.
void WatchAnswer(const FruDeviceAddress& address, std::uint32_t offset, const IpmiMessage& response,
                 bool isDelivered) {
  std::uint64_t device = 0;
  for (std::uint32_t part :
       {address.nvsType, std::uint32_t{address.lun}, std::uint32_t{address.controller},
        std::uint32_t{address.deviceId}, std::uint32_t{address.bus}, std::uint32_t{address.deviceAddress}})
    device = device << 8 | (part & 0xFF);
  if (!isDelivered) NoteDoubt(AnswerDoubt::Useless);
  WatchForRepeat(device, offset, response, IsInventoryDevice(address) ? 1 : 0);
}

/// A device that stays busy is asked again without end. The operator is told, once in a run.
class BusyWatch {
 public:
  explicit BusyWatch(const FruDeviceAddress& address) : address_(address) {}

  void NoteBusy() {
    constexpr std::uint32_t kSecondsOfDay = 24 * 60 * 60;
    constexpr std::uint32_t kPatience = 10;
    std::uint32_t now = SecondsOfDay();
    if (!isBusy_) since_ = now;
    isBusy_ = true;
    bool& isTold = TheFruSession().isBusyTold;
    if (isTold || (now + kSecondsOfDay - since_) % kSecondsOfDay <= kPatience) return;
    isTold = true;
    Warn("FRU %s has been busy for %d seconds; it is asked until it answers", FruName(address_).Text(),
         kPatience);
  }
  void NoteAnswer() { isBusy_ = false; }

 private:
  const FruDeviceAddress& address_;
  bool isBusy_ = false;
  std::uint32_t since_ = 0;  ///< second of the day
};

}  // namespace

Status CFru::ReadFruDataFromBmc(const FruDeviceAddress& address, std::uint32_t offset,
                                std::span<std::uint8_t> buffer, std::size_t& count) {
  constexpr const char* kName = "CFru::ReadFruDataFromBmc";
  TraceScope scope(kName);
  count = 0;
  auto fail = [](Status status) { return Fail(kName, "Error Reading FRU", status); };
  if (address.nvsType == nvs_type::kRefused || IsPastOffsets(offset, buffer.size()))
    return fail(fru_status::kReadFailed);
  BusyWatch busy(address);
  std::int64_t chunk = kLargestChunk;
  while (count < buffer.size()) {
    chunk = std::min(chunk, static_cast<std::int64_t>(buffer.size() - count));
    auto bytes = static_cast<std::uint8_t>(chunk);
    std::span<const std::uint8_t> tail(&bytes, IsInventoryDevice(address) ? 1 : 0);
    IpmiMessage request = MakeRequest(address, ipmi_command::kReadFruData,
                                      offset + static_cast<std::uint32_t>(count), bytes, tail);
    IpmiMessage response;
    if (Status status = Send(address, request, response, kReadTimeout, fru_status::kReadFailed);
        status != kSuccess)
      return fail(status);
    if (response.completionCode != completion_code::kNodeBusy) busy.NoteAnswer();
    switch (response.completionCode) {
      case completion_code::kSuccess: {
        std::optional<std::span<const std::uint8_t>> delivered = DeliveredBytes(address, response, bytes);
        WatchAnswer(address, offset + static_cast<std::uint32_t>(count), response, delivered.has_value());
        // Bytes that did not arrive are an error, not data.
        if (!delivered) return fail(fru_status::kReadFailed);
        std::copy(delivered->begin(), delivered->end(), buffer.begin() + static_cast<std::ptrdiff_t>(count));
        count += delivered->size();
        // An accepted chunk of 0 delivers nothing; asked again it would never end.
        if (chunk == 0) chunk = 1;
        break;
      }
      case completion_code::kLengthLimitExceeded:
      case completion_code::kCannotReturnLength:
        if (chunk == 1) return fail(fru_status::kReadFailed);
        // Kept: 8, 4, 0 and then 1; devices have been seen to answer to this sequence, so the 0 is sent as
        // well.
        chunk = chunk - kChunkStep < 0 ? 1 : chunk - kChunkStep;
        break;
      case completion_code::kNodeBusy:
        busy.NoteBusy();
        break;
      default:
        return fail(fru_status::kReadFailed);
    }
  }
  return kSuccess;
}

Status CFru::ReadDataFromFRU(const FruDeviceAddress& address, std::uint32_t offset,
                             std::span<std::uint8_t> buffer) {
  TraceScope scope("CFru::ReadDataFromFRU");
  std::size_t count = 0;
  return ReadFruDataFromBmc(address, offset, buffer, count);
}

Status CFru::ReadFruDataFromBmc(const FruDeviceAddress& address, std::uint32_t& inventorySize) {
  constexpr const char* kName = "CFru::ReadFruDataFromBmc";
  TraceScope scope(kName);
  inventorySize = 0;
  IpmiMessage request;
  request.targetAddress = address.controller;
  request.netFunction = net_function::kStorage;
  request.command = ipmi_command::kGetFruAreaInfo;
  request.data[0] = address.deviceId;
  request.dataLength = 1;
  IpmiMessage response;
  bool isRead = IsInventoryDevice(address) && IpmiTransaction(request, response) == ipmi_result::kSuccess &&
                response.completionCode == completion_code::kSuccess && response.dataLength >= 2;
  if (!isRead) return Fail(kName, "Error Reading FRU size", fru_status::kReadFailed);
  inventorySize = WordAt(response.data, 0);
  return kSuccess;
}

Status CFru::WriteFruDataToBmc(const FruDeviceAddress& address, std::uint32_t offset,
                               std::span<const std::uint8_t> bytes) {
  constexpr const char* kName = "CFru::WriteFruDataToBmc";
  TraceScope scope(kName);
  auto fail = [](Status status) { return Fail(kName, "Error Writing FRU", status); };
  if (address.nvsType == nvs_type::kRefused || IsPastOffsets(offset, bytes.size()))
    return fail(fru_status::kWriteFailed);
  std::size_t written = 0;
  BusyWatch busy(address);
  std::int64_t chunk = kLargestChunk;
  while (written < bytes.size()) {
    chunk = std::min(chunk, static_cast<std::int64_t>(bytes.size() - written));
    // Kept: a refused length shrinks 8, 4, 0 without a clamp. A request of 0 bytes can be sent, one of fewer
    // cannot, and an accepted one of 0 gets nowhere: the write ends there.
    if (chunk < 0) return fail(fru_status::kWriteFailed);
    IpmiMessage request =
        MakeRequest(address, ipmi_command::kWriteFruData, offset + static_cast<std::uint32_t>(written), 0,
                    bytes.subspan(written, static_cast<std::size_t>(chunk)));
    IpmiMessage response;
    if (Status status = Send(address, request, response, kWriteTimeout, fru_status::kWriteFailed);
        status != kSuccess)
      return fail(status);
    if (response.completionCode != completion_code::kNodeBusy) busy.NoteAnswer();
    switch (response.completionCode) {
      case completion_code::kSuccess:
        if (chunk == 0) return fail(fru_status::kWriteFailed);
        written += static_cast<std::size_t>(chunk);
        break;
      case completion_code::kLengthInvalid:
        if (chunk == 1) return fail(fru_status::kWriteFailed);
        chunk -= kChunkStep;
        break;
      case completion_code::kNodeBusy:
        busy.NoteBusy();
        break;
      default:
        return fail(fru_status::kWriteFailed);
    }
  }
  return kSuccess;
}

}  // namespace varnok
