#include "driver/ipmi_service.h"

#include <algorithm>
#include <array>

#include "firmware/ipmi.h"

namespace varnok {
namespace {

constexpr std::size_t kRequestHeader = 2;   // net function and LUN, command
constexpr std::size_t kResponseHeader = 3;  // net function and LUN, command, completion code

}  // namespace

bool IpmiService::FindBmc() {
  if (!kcs_.IsPresent()) return false;
  if (Send(this, net_function::kApplication, 0, ipmi_command::kGetDeviceId, nullptr, 0) != kSuccess)
    return false;
  std::uint8_t netFunction = 0;
  std::uint8_t lun = 0;
  std::uint8_t command = 0;
  std::uint8_t completionCode = 0;
  std::array<std::uint8_t, 64> data;
  std::uint32_t length = data.size();
  // Any completion code will do: a BMC that is busy or starting is a BMC.
  return Receive(this, &netFunction, &lun, &command, &completionCode, data.data(), &length) == kSuccess &&
         netFunction == net_function::kApplication + 1 && command == ipmi_command::kGetDeviceId;
}

Status IpmiService::SendRequest(IpmiProtocol* self, std::uint8_t netFunction, std::uint8_t lun,
                                std::uint8_t command, const std::uint8_t* data, std::uint32_t dataLength) {
  if (self == nullptr || (data == nullptr && dataLength > 0)) return uefi_status::kInvalidParameter;
  std::array<std::uint8_t, Kcs::kLongestRequest> request;
  if (dataLength > request.size() - kRequestHeader) return uefi_status::kBadBufferSize;
  request[0] = static_cast<std::uint8_t>(netFunction << 2 | (lun & 3));
  request[1] = command;
  std::copy_n(data, dataLength, request.begin() + kRequestHeader);
  return static_cast<IpmiService*>(self)->kcs_.Send({request.data(), kRequestHeader + dataLength});
}

Status IpmiService::ReceiveResponse(IpmiProtocol* self, std::uint8_t* netFunction, std::uint8_t* lun,
                                    std::uint8_t* command, std::uint8_t* completionCode, std::uint8_t* data,
                                    std::uint32_t* dataLength) {
  if (self == nullptr || netFunction == nullptr || lun == nullptr || command == nullptr ||
      completionCode == nullptr || dataLength == nullptr || (data == nullptr && *dataLength > 0))
    return uefi_status::kInvalidParameter;
  std::array<std::uint8_t, Kcs::kLongestAnswer> response;
  std::size_t length = 0;
  Status status = static_cast<IpmiService*>(self)->kcs_.Receive(response, length);
  if (status != kSuccess) return status;
  // A response has an odd net function and says how the request ended.
  if (length < kResponseHeader || (response[0] >> 2 & 1) == 0) return uefi_status::kDeviceError;
  *netFunction = response[0] >> 2;
  *lun = response[0] & 3;
  *command = response[1];
  *completionCode = response[2];
  *dataLength = static_cast<std::uint32_t>(std::min<std::size_t>(*dataLength, length - kResponseHeader));
  std::copy_n(response.begin() + kResponseHeader, *dataLength, data);
  return kSuccess;
}

}  // namespace varnok
