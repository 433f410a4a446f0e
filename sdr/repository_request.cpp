#include "sdr/repository_request.h"

#include <algorithm>

#include "app/services/trace.h"
#include "firmware/bytes.h"
#include "firmware/ipmi.h"

namespace varnok {

IpmiResult SendSdrRequest(std::uint8_t command, std::span<const std::uint8_t> data, IpmiMessage& response) {
  constexpr std::uint32_t kTimeout = 0;
  IpmiMessage request;
  request.targetAddress = kBmcAddress;
  request.netFunction = net_function::kStorage;
  request.command = command;
  std::copy(data.begin(), data.end(), request.data.begin());
  request.dataLength = static_cast<std::uint32_t>(data.size());
  response = {};
  return IpmiSendToController(request, response, kTimeout);
}

Status SdrRequestFailure(const char* operation, IpmiResult result, const char* reason, Status status) {
  if (result == ipmi_result::kCompletionCode)
    return Fail(operation, "BMC Completion Code Error", sdr_status::kCompletionCode);
  return Fail(operation, reason, status);
}

Status ReserveSdrRepository(const char* operation, std::uint16_t& reservation) {
  IpmiMessage response;
  IpmiResult result = SendSdrRequest(ipmi_command::kReserveSdrRepository, {}, response);
  if (result != ipmi_result::kSuccess)
    return SdrRequestFailure(operation, result, "Error Reading Reserve ID", sdr_status::kReserveFailed);
  if (response.dataLength != sizeof(reservation))
    return Fail(operation, "Bad Reserve ID Length", sdr_status::kBadReservation);
  reservation = WordAt(response.data, 0);
  return kSuccess;
}

}  // namespace varnok
