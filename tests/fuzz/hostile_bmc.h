// A simulated BMC whose answers are changed on their way.
#pragma once

#include <algorithm>
#include <string>

#include "firmware/ipmi_protocol.h"

namespace varnok::fuzz {

/// Byte b of the script stands for the next answer. Below 80h: as it is. 80h to 9Fh: completion code
/// C0h + (b & 1Fh). A0h to BFh: cut to b & 1Fh bytes. C0h to DFh: as many bytes more. E0h to EFh: byte b &
/// 0Fh is turned over. F0h to F7h: no answer. F8h: the next byte of the script is the completion code, the
/// one behind it the number of data bytes that follow in the script. Above: another command's answer. Behind
/// the script the BMC is honest.
class HostileBmc : public IpmiProtocol {
 public:
  HostileBmc(IpmiProtocol& honest, std::string script) : honest_(honest), script_(std::move(script)) {
    revision = kIpmiProtocolRevision;
    Send = [](IpmiProtocol* self, std::uint8_t netFunction, std::uint8_t lun, std::uint8_t command,
              const std::uint8_t* data, std::uint32_t length) {
      IpmiProtocol& next = static_cast<HostileBmc*>(self)->honest_;
      return next.Send(&next, netFunction, lun, command, data, length);
    };
    Receive = [](IpmiProtocol* self, std::uint8_t* netFunction, std::uint8_t* lun, std::uint8_t* command,
                 std::uint8_t* completionCode, std::uint8_t* data, std::uint32_t* length) {
      return static_cast<HostileBmc*>(self)->Answer(netFunction, lun, command, completionCode, data, length);
    };
  }

 private:
  Status Answer(std::uint8_t* netFunction, std::uint8_t* lun, std::uint8_t* command,
                std::uint8_t* completionCode, std::uint8_t* data, std::uint32_t* length) {
    std::uint32_t room = *length;
    Status status = honest_.Receive(&honest_, netFunction, lun, command, completionCode, data, length);
    if (status != kSuccess || position_ >= script_.size()) return status;
    const std::uint8_t change = Next();
    const std::uint32_t number = change & 0x1F;
    switch (change >> 5) {
      case 4:
        *completionCode = static_cast<std::uint8_t>(0xC0 + number);
        break;
      case 5:
        *length = std::min(*length, number);
        break;
      case 6:
        std::fill(data + std::min(*length, room), data + std::min(*length + number, room), change);
        *length = std::min(*length + number, room);
        break;
      case 7:
        if (number < 16 && number < *length) data[number] = static_cast<std::uint8_t>(~data[number]);
        if (number >= 16 && number < 24) return uefi_status::kTimeout;
        if (number == 24) Replace(*completionCode, {data, room}, *length);
        if (number > 24) ++*command;
        break;
      default:
        break;
    }
    return kSuccess;
  }

  std::uint8_t Next() {
    return position_ < script_.size() ? static_cast<std::uint8_t>(script_[position_++]) : std::uint8_t{0};
  }

  void Replace(std::uint8_t& completionCode, std::span<std::uint8_t> data, std::uint32_t& length) {
    completionCode = Next();
    length = static_cast<std::uint32_t>(std::min<std::size_t>(Next(), data.size()));
    for (std::uint8_t& byte : data.first(length)) byte = Next();
  }

  IpmiProtocol& honest_;
  std::string script_;
  std::size_t position_ = 0;
};

}  // namespace varnok::fuzz
