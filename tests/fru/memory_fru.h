// A FRU device in memory behind the IPMI protocol: answers Get FRU Inventory Area Info, Read and Write FRU
// Data and Master Write-Read, logs every request, and breaks an answer as a test asks.
#pragma once

#include <algorithm>
#include <functional>

#include "app/services/format.h"
#include "firmware/ipmi_protocol.h"
#include "tests/fru/fru_test.h"
#include "tests/support/heap_count.h"

namespace varnok::testing {

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
    EXPECT_EQ(IpmiLoadProtocol(), ipmi_result::kSuccess);
  }

  Bytes image;
  std::vector<std::string> log;  ///< "0A/11: 00 00 00 08", one line per request
  /// Changes the answer to the request with this number, counted from 1.
  std::function<void(int request, Answer& answer)> fault;

 private:
  static Status OnSend(IpmiProtocol* self, std::uint8_t netFunction, std::uint8_t lun, std::uint8_t command,
                       const std::uint8_t* data, std::uint32_t length) {
    auto& fru = *static_cast<MemoryFru*>(self);
    Uncounted own;
    fru.header_ = {netFunction, lun, command};
    std::string line = Format("%02X/%02X:", netFunction, command);
    for (std::uint32_t i = 0; i < length; ++i) line += Format(" %02X", data[i]);
    fru.log.push_back(line);
    fru.answer_ = fru.Answered(netFunction << 8 | command, Bytes(data, data + length));
    if (fru.fault) fru.fault(static_cast<int>(fru.log.size()), fru.answer_);
    return kSuccess;
  }
  static Status OnReceive(IpmiProtocol* self, std::uint8_t* netFunction, std::uint8_t* lun,
                          std::uint8_t* command, std::uint8_t* completionCode, std::uint8_t* data,
                          std::uint32_t* length) {
    const auto& fru = *static_cast<MemoryFru*>(self);
    *netFunction = static_cast<std::uint8_t>(fru.header_[0] + 1);
    *lun = fru.header_[1];
    *command = fru.header_[2];
    *completionCode = fru.answer_.completionCode;
    *length = static_cast<std::uint32_t>(std::min<std::size_t>(fru.answer_.data.size(), *length));
    std::copy_n(fru.answer_.data.begin(), *length, data);
    return kSuccess;
  }

  Answer Answered(int request, const Bytes& data) {
    switch (request) {
      case 0x0A10:
        return {0,
                {static_cast<std::uint8_t>(image.size()), static_cast<std::uint8_t>(image.size() >> 8), 0}};
      case 0x0A11:
        return Access(data[1] + 256u * data[2], {data[3]}, data[3], {});
      case 0x0A12:
        return Access(data[1] + 256u * data[2], {static_cast<std::uint8_t>(data.size() - 3)}, 0,
                      Bytes(data.begin() + 3, data.end()));
      case 0x0652:
        return Access(data[4] + (data[3] == 0x17 ? 0u : 256u * data[3]), {}, data[2],
                      Bytes(data.begin() + 5, data.end()));
      default:
        return {0xC1, {}};
    }
  }
  /// Writes `bytes` and answers `head` with the `count` bytes read.
  Answer Access(std::size_t offset, const Bytes& head, std::size_t count, const Bytes& bytes) {
    if (offset + std::max(count, bytes.size()) > image.size()) return {0xC9, {}};
    auto begin = image.begin() + static_cast<std::ptrdiff_t>(offset);
    std::copy(bytes.begin(), bytes.end(), begin);
    return {0, Join({head, Bytes(begin, begin + static_cast<std::ptrdiff_t>(count))})};
  }

  Bytes header_;  ///< net function, LUN and command of the last request
  Answer answer_;
};

/// An image read from a device in memory.
class FruDeviceTest : public FruTest {
 protected:
  Status Load(const Bytes& image) {
    device.image = image;
    device.log.clear();
    SetFruError(u"");
    fru = std::make_unique<CFru>();
    return fru->LoadFromSystem({});
  }

  MemoryFru device{machine};
  std::unique_ptr<CFru> fru;
};

}  // namespace varnok::testing
