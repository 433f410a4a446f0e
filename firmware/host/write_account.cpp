#include "firmware/host/write_account.h"

#include <algorithm>

#include "firmware/host/hex.h"
#include "firmware/ipmi.h"

namespace varnok::host {
namespace {

// Master Write-Read: bus, address, how much to read; then what goes out on the bus, two bytes of offset or
// DS1624S's command and one.
constexpr std::size_t kBusHead = 5;
// Write FRU Data: device, two bytes of offset.
constexpr std::size_t kFruHead = 3;
// Partial Add SDR: two bytes of reservation, two of the record's ID, the offset, whether this is the last.
constexpr std::size_t kRecordHead = 6;
// Clear SDR Repository: two bytes of reservation, "CLR", what to do.
constexpr std::size_t kClearHead = 6;
constexpr std::uint8_t kStartErase = 0xAA;

/// Whether a write that is answered so may be done all the same, or a part of it.
bool IsUnsure(std::uint8_t completionCode) {
  return completionCode == completion_code::kTimeout || completionCode == completion_code::kOutOfSpace ||
         completionCode == completion_code::kUnspecified;
}

}  // namespace

WriteAccount::Operation WriteAccount::OperationOf(const SentRequest& request) {
  // Send Message: channel, responder, net function and LUN, checksum, requester, sequence, command, data,
  // checksum.
  constexpr std::size_t kFrameHead = 7;
  auto data = request.data;
  if (request.netFunction != net_function::kApplication || request.command != ipmi_command::kSendMessage ||
      data.size() <= kFrameHead)
    return {kBmcAddress, 0, request.netFunction, request.command, {data.begin(), data.end()}, false};
  return {data[1], static_cast<std::uint8_t>(data[0] & 0x0F),   static_cast<std::uint8_t>(data[2] >> 2),
          data[6], {data.begin() + kFrameHead, data.end() - 1}, true};
}

std::string WriteAccount::DeviceOf(const Operation& operation) {
  const auto& data = operation.data;
  const std::string behind =
      operation.controller == kBmcAddress && operation.channel == 0
          ? ""
          : "@" + HexByte(operation.controller) +
                (operation.channel == 0 ? "" : "." + std::to_string(operation.channel));
  if (operation.netFunction == net_function::kApplication)
    return "EEPROM " + HexByte(data[0]) + ":" + HexByte(data[1]) + behind;
  return "FRU device " + std::to_string(data[0]) + behind;
}

std::optional<std::pair<std::uint32_t, std::uint32_t>> WriteAccount::WrittenBy(const Operation& operation) {
  const auto& data = operation.data;
  const auto count = [&data](std::size_t head) { return static_cast<std::uint32_t>(data.size() - head); };
  if (operation.netFunction == net_function::kStorage && operation.command == ipmi_command::kWriteFruData &&
      data.size() > kFruHead)
    return std::pair(data[1] + 256u * data[2], count(kFruHead));
  if (operation.netFunction == net_function::kApplication &&
      operation.command == ipmi_command::kMasterWriteRead && data.size() > kBusHead && data[2] == 0) {
    constexpr std::uint8_t kSensorMemory = 0x17;  // of a DS1624S
    const unsigned high = data[3] == kSensorMemory ? 0 : data[3];
    return std::pair(high * 256u + data[4], count(kBusHead));
  }
  return std::nullopt;
}

bool WriteAccount::IsWrite(const Operation& operation) const {
  if (WrittenBy(operation)) return true;
  if (operation.netFunction == net_function::kFirmware) return true;
  return operation.netFunction == net_function::kStorage && operation.command >= ipmi_command::kAddSdr &&
         operation.command <= ipmi_command::kClearSdrRepository;
}

bool WriteAccount::ChangesRepository(const Operation& operation) {
  if (operation.netFunction != net_function::kStorage) return false;
  const auto at = [&operation](std::size_t place) {
    return place < operation.data.size() ? operation.data[place] : std::uint8_t{0};
  };
  return operation.command == ipmi_command::kAddSdr ||
         (operation.command == ipmi_command::kPartialAddSdr && at(kRecordHead - 1) != 0) ||
         (operation.command == ipmi_command::kClearSdrRepository && at(kClearHead - 1) == kStartErase);
}

void WriteAccount::MarkUnsure(const Operation& operation) {
  if (WrittenBy(operation)) devices_[DeviceOf(operation)].isUnsure = true;
  if (ChangesRepository(operation)) isRepositoryUnsure_ = true;
}

void WriteAccount::Asking(const SentRequest& request) {
  if (request.netFunction == net_function::kApplication && request.command == ipmi_command::kGetMessage)
    return;
  Operation next = OperationOf(request);
  isRepeated_ = open_ && next == *open_;
  // The write before it stays without an answer.
  if (open_ && !isRepeated_) MarkUnsure(*open_);
  open_ = std::move(next);
}

void WriteAccount::Refused() {
  if (open_ && isRepeated_) MarkUnsure(*open_);
  open_.reset();
}

void WriteAccount::Answered(const ReceivedAnswer& answer) {
  if (!open_) return;
  const Operation operation = *open_;
  if (!operation.isBridged) {
    if (answer.command != operation.command) return;
    open_.reset();
    return Finish(operation, answer.completionCode, answer.data);
  }
  if (answer.command == ipmi_command::kSendMessage && answer.completionCode != completion_code::kSuccess)
    return Refused();
  // Get Message: channel, net function and LUN, checksum, responder, sequence, command, completion code,
  // data, checksum.
  constexpr std::size_t kHead = 7;
  const auto data = answer.data;
  if (answer.command != ipmi_command::kGetMessage || answer.completionCode != completion_code::kSuccess ||
      data.size() <= kHead || data[5] != operation.command)
    return;
  open_.reset();
  Finish(operation, data[6], data.subspan(kHead, data.size() - kHead - 1));
}

void WriteAccount::Finish(const Operation& operation, std::uint8_t completionCode,
                          std::span<const std::uint8_t> data) {
  // A repetition may be refused because the first one was done. Write FRU Data tells how much it wrote.
  const auto written = WrittenBy(operation);
  const bool isShort = written && !data.empty() && data[0] < written->second;
  if (completionCode == completion_code::kSuccess ? isShort : isRepeated_ || IsUnsure(completionCode))
    MarkUnsure(operation);
  if (written) return FinishWrite(operation, completionCode);
  const bool isDone = completionCode == completion_code::kSuccess;
  if (operation.netFunction == net_function::kStorage) return FinishStorage(operation, completionCode, data);
  if (operation.netFunction == net_function::kFirmware) {
    isTransferring_ =
        isTransferring_ || (isDone && operation.command == ipmi_command::kEnterFirmwareTransfer);
  } else if (operation.netFunction == net_function::kApplication &&
             operation.command == ipmi_command::kGetDeviceId && operation.controller == kBmcAddress) {
    // Bit 7 of the third byte: firmware-transfer mode.
    isTransferring_ = isTransferring_ && !(isDone && data.size() > 2 && (data[2] & 0x80) == 0);
  }
}

void WriteAccount::FinishStorage(const Operation& operation, std::uint8_t completionCode,
                                 std::span<const std::uint8_t> data) {
  const bool isDone = completionCode == completion_code::kSuccess;
  switch (operation.command) {
    case ipmi_command::kGetFruAreaInfo:
      if (isDone && data.size() > 2 && !operation.data.empty()) {
        const bool isByWords = (data[2] & 1) != 0;
        devices_[DeviceOf(operation)].size = (data[0] + 256u * data[1]) / (isByWords ? 2 : 1);
      }
      break;
    case ipmi_command::kClearSdrRepository:
      if (!isDone || operation.data.size() < kClearHead) break;
      if (operation.data[kClearHead - 1] == kStartErase) isErased_ = isErasing_ = true;
      if (!data.empty() && (data[0] & 0x0F) == 1) isErasing_ = false;
      break;
    case ipmi_command::kAddSdr:
      if (isDone) ++records_;
      break;
    case ipmi_command::kPartialAddSdr: {
      const bool isLast = operation.data.size() >= kRecordHead && operation.data[kRecordHead - 1] != 0;
      if (isDone && isLast) ++records_;
      isRecordOpen_ = isDone ? !isLast : isRecordOpen_;
      break;
    }
    default:
      break;
  }
}

void WriteAccount::Add(Device& device, std::uint32_t begin, std::uint32_t end) {
  auto& ranges = device.ranges;
  auto next = ranges.lower_bound(begin);
  if (next != ranges.begin() && std::prev(next)->second >= begin) --next;
  while (next != ranges.end() && next->first <= end) {
    begin = std::min(begin, next->first);
    end = std::max(end, next->second);
    next = ranges.erase(next);
  }
  ranges[begin] = end;
}

void WriteAccount::FinishWrite(const Operation& operation, std::uint8_t completionCode) {
  const auto [offset, count] = *WrittenBy(operation);
  if (completionCode == completion_code::kSuccess) Add(devices_[DeviceOf(operation)], offset, offset + count);
}

bool WriteAccount::IsUnderWay() const {
  return isErasing_ || isRecordOpen_ || isTransferring_ || (open_ && IsWrite(*open_));
}

bool WriteAccount::IsContinuedBy(const SentRequest& next) const {
  if (next.netFunction == net_function::kApplication && next.command == ipmi_command::kGetMessage)
    return open_ && IsWrite(*open_);
  const Operation operation = OperationOf(next);
  if (isTransferring_ || (open_ && IsWrite(*open_) && operation == *open_)) return true;
  if (operation.netFunction != net_function::kStorage) return false;
  if (isRecordOpen_)
    return operation.command == ipmi_command::kReserveSdrRepository ||
           (operation.command == ipmi_command::kPartialAddSdr && operation.data.size() >= kRecordHead &&
            operation.data[kRecordHead - 2] != 0);
  return isErasing_ && operation.command == ipmi_command::kClearSdrRepository;
}

std::string WriteAccount::RepositoryLine() const {
  std::string line = "SDR repository: ";
  if (isErased_) line += "erased; ";
  line += std::to_string(records_) + (records_ == 1 ? " record was added" : " records were added");
  if (isErased_) line += ", it holds no others";
  if (isRecordOpen_) line += "; one more was begun";
  if (isRecordOpen_ && !isRepositoryUnsure_) line += " and not finished";
  if (isRepositoryUnsure_) line += "; changes that were not confirmed may be done or not";
  return line;
}

std::vector<std::string> WriteAccount::Lines() {
  if (open_) MarkUnsure(*open_);
  constexpr std::size_t kMostRanges = 6;
  std::vector<std::string> lines;
  for (const auto& [name, device] : devices_) {
    if (device.ranges.empty() && !device.isUnsure) continue;
    std::uint32_t total = 0;
    std::string places;
    std::size_t shown = 0;
    for (const auto& [begin, end] : device.ranges) {
      total += end - begin;
      if (++shown <= kMostRanges)
        places += (shown == 1 ? "" : ", ") + std::to_string(begin) + " to " + std::to_string(end - 1);
    }
    if (shown > kMostRanges) places += ", and more";
    std::string line = name + ": " + std::to_string(total);
    if (device.size != 0) line += " of " + std::to_string(device.size);
    line += " bytes were written";
    if (!places.empty()) line += " (" + places + "), the others are as they were";
    if (device.isUnsure) line += "; a write that was not confirmed may be done or not";
    lines.push_back(line);
  }
  if (isErased_ || records_ != 0 || isRecordOpen_ || isRepositoryUnsure_) lines.push_back(RepositoryLine());
  return lines;
}

}  // namespace varnok::host
