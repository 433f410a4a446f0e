#include "sdr/repository_request.h"

#include <algorithm>

#include "app/services/trace.h"

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

Status SdrFailure(const char* operation, const char* reason, Status status) {
  Trace("%s - %s", 1, operation, reason);
  return status;
}

Status SdrRequestFailure(const char* operation, IpmiResult result, const char* reason, Status status) {
  if (result == ipmi_result::kCompletionCode)
    return SdrFailure(operation, "BMC Completion Code Error", sdr_status::kCompletionCode);
  return SdrFailure(operation, reason, status);
}

Status ReserveSdrRepository(const char* operation, SdrReservation& reservation) {
  IpmiMessage response;
  IpmiResult result = SendSdrRequest(sdr_command::kReserve, {}, response);
  if (result != ipmi_result::kSuccess)
    return SdrRequestFailure(operation, result, "Error Reading Reserve ID", sdr_status::kReserveFailed);
  if (response.dataLength != reservation.size())
    return SdrFailure(operation, "Bad Reserve ID Length", sdr_status::kBadReservation);
  std::copy_n(response.data.begin(), reservation.size(), reservation.begin());
  return kSuccess;
}

}  // namespace varnok
