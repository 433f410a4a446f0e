// A FRU device in memory behind the IPMI protocol: answers Get FRU Inventory Area Info, Read and Write FRU
// Data and Master Write-Read, logs every request, and breaks an answer as a test asks.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "app/services/format.h"
#include "firmware/ipmi_protocol.h"
#include "platform/ipmi.h"
#include "tests/support/test_firmware.h"

namespace varnok::testing {

using Bytes = std::vector<std::uint8_t>;

class MemoryFru : public IpmiProtocol {
 public:
  struct Answer {
    std::uint8_t completionCode = 0;
    Bytes data{};
  };

  explicit MemoryFru(TestFirmware& machine, Bytes content = {}) : image(std::move(content)) {
    revision = kIpmiProtocolRevision;
    Send = OnSend;
    Receive = OnReceive;
    machine.protocol = this;
    IpmiReset();
    IpmiLoadProtocol();
  }
  ~MemoryFru() { IpmiReset(); }

  Bytes image;
  std::vector<std::string> log;  ///< "0A/11: 00 00 00 08", one line per request
  /// Changes the answer to the request with this number, counted from 1.
  std::function<void(int request, Answer& answer)> fault;

  int CountOf(std::string_view prefix) const {
    int count = 0;
    for (const std::string& line : log) count += line.starts_with(prefix) ? 1 : 0;
    return count;
  }

 private:
  static Status OnSend(IpmiProtocol* self, std::uint8_t netFunction, std::uint8_t lun, std::uint8_t command,
                       const std::uint8_t* data, std::uint32_t length) {
    auto& fru = *static_cast<MemoryFru*>(self);
    fru.netFunction_ = netFunction;
    fru.lun_ = lun;
    fru.command_ = command;
    std::string line = Format("%02X/%02X:", netFunction, command);
    for (std::uint32_t i = 0; i < length; ++i) line += Format(" %02X", data[i]);
    fru.log.push_back(line);
    fru.answer_ = fru.Answered(Bytes(data, data + length));
    if (fru.fault) fru.fault(static_cast<int>(fru.log.size()), fru.answer_);
    return kSuccess;
  }
  static Status OnReceive(IpmiProtocol* self, std::uint8_t* netFunction, std::uint8_t* lun,
                          std::uint8_t* command, std::uint8_t* completionCode, std::uint8_t* data,
                          std::uint32_t* length) {
    auto& fru = *static_cast<MemoryFru*>(self);
    *netFunction = static_cast<std::uint8_t>(fru.netFunction_ + 1);
    *lun = fru.lun_;
    *command = fru.command_;
    *completionCode = fru.answer_.completionCode;
    *length = static_cast<std::uint32_t>(std::min<std::size_t>(fru.answer_.data.size(), *length));
    std::copy_n(fru.answer_.data.begin(), *length, data);
    return kSuccess;
  }

  Answer Answered(const Bytes& data) {
    if (netFunction_ == 0x0A && command_ == 0x10)
      return {0, {static_cast<std::uint8_t>(image.size()), static_cast<std::uint8_t>(image.size() >> 8), 0}};
    if (netFunction_ == 0x0A && command_ == 0x11) {
      Answer answer = ReadBytes(data[1] + 256u * data[2], data[3]);
      if (answer.completionCode == 0) answer.data.insert(answer.data.begin(), data[3]);
      return answer;
    }
    if (netFunction_ == 0x0A && command_ == 0x12)
      return WriteBytes(data[1] + 256u * data[2], Bytes(data.begin() + 3, data.end()));
    if (netFunction_ == 0x06 && command_ == 0x52) {
      std::size_t offset = data[4] + (data[3] == 0x17 ? 0u : 256u * data[3]);
      return data[2] != 0 ? ReadBytes(offset, data[2])
                          : WriteBytes(offset, Bytes(data.begin() + 5, data.end()));
    }
    return {0xC1, {}};
  }
  Answer ReadBytes(std::size_t offset, std::size_t count) const {
    if (offset + count > image.size()) return {0xC9, {}};
    auto begin = image.begin() + static_cast<std::ptrdiff_t>(offset);
    return {0, Bytes(begin, begin + static_cast<std::ptrdiff_t>(count))};
  }
  Answer WriteBytes(std::size_t offset, const Bytes& bytes) {
    if (offset + bytes.size() > image.size()) return {0xC9, {}};
    std::copy(bytes.begin(), bytes.end(), image.begin() + static_cast<std::ptrdiff_t>(offset));
    return {0, {static_cast<std::uint8_t>(bytes.size())}};
  }

  std::uint8_t netFunction_ = 0;
  std::uint8_t lun_ = 0;
  std::uint8_t command_ = 0;
  Answer answer_;
};

}  // namespace varnok::testing
