#include "firmware/host/machine_filter.h"

#include "firmware/host/reserve.h"

namespace varnok::host {

MachineFilter::MachineFilter(std::unique_ptr<Machine> below)
    : below_(std::move(below)), protocol_{{kIpmiProtocolRevision, Send, Receive}, this} {}

Status MachineFilter::Send(IpmiProtocol* self, std::uint8_t netFunction, std::uint8_t lun,
                           std::uint8_t command, const std::uint8_t* data, std::uint32_t dataLength) {
  const MachineAtWork atWork;
  MachineFilter& filter = *reinterpret_cast<Protocol*>(self)->filter;
  const std::size_t count = data == nullptr ? 0 : dataLength;
  filter.Asking({netFunction, lun, command, {data, count}});
  IpmiProtocol* below = filter.below_->InstalledIpmi();
  const Status status = below->Send(below, netFunction, lun, command, data, dataLength);
  if (status != kSuccess) filter.Refused(status);
  return status;
}

Status MachineFilter::Receive(IpmiProtocol* self, std::uint8_t* netFunction, std::uint8_t* lun,
                              std::uint8_t* command, std::uint8_t* completionCode, std::uint8_t* data,
                              std::uint32_t* dataLength) {
  const MachineAtWork atWork;
  MachineFilter& filter = *reinterpret_cast<Protocol*>(self)->filter;
  IpmiProtocol* below = filter.below_->InstalledIpmi();
  const Status status = below->Receive(below, netFunction, lun, command, completionCode, data, dataLength);
  if (status == kSuccess)
    filter.Answered({*netFunction, *lun, *command, *completionCode, {data, *dataLength}});
  else
    filter.NotAnswered(status);
  return status;
}

}  // namespace varnok::host
