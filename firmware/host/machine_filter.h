// A machine in front of another: hands everything on, and sees what the program and the BMC say to each
// other.
#pragma once

#include <memory>
#include <span>
#include <utility>

#include "firmware/host/machine.h"

namespace varnok::host {

/// What the program hands to the IPMI protocol.
struct SentRequest {
  std::uint8_t netFunction = 0;
  std::uint8_t lun = 0;
  std::uint8_t command = 0;
  std::span<const std::uint8_t> data;
};

/// What it gets from there.
struct ReceivedAnswer {
  std::uint8_t netFunction = 0;  ///< the request's plus 1
  std::uint8_t lun = 0;
  std::uint8_t command = 0;
  std::uint8_t completionCode = 0;
  std::span<const std::uint8_t> data;
};

class MachineFilter : public Machine {
 public:
  explicit MachineFilter(std::unique_ptr<Machine> below);

  IpmiProtocol* InstalledIpmi() override {
    return below_->InstalledIpmi() != nullptr ? &protocol_.interface : nullptr;
  }
  std::span<const std::uint8_t> SmbiosEntryPoint() override { return below_->SmbiosEntryPoint(); }
  std::span<const std::uint8_t> PhysicalMemory(std::uint64_t address, std::size_t length) override {
    return below_->PhysicalMemory(address, length);
  }
  void Stall(std::uint64_t microseconds, StallKind kind) override { below_->Stall(microseconds, kind); }
  WallClock Now() override { return below_->Now(); }

 protected:
  /// In front of the request.
  virtual void Asking(const SentRequest&) {}
  /// Behind it, when it did not get through.
  virtual void Refused(Status) {}
  virtual void Answered(const ReceivedAnswer&) {}
  virtual void NotAnswered(Status) {}

 private:
  /// The protocol comes first, so that its address leads to the rest.
  struct Protocol {
    IpmiProtocol interface;
    MachineFilter* filter;
  };

  static Status Send(IpmiProtocol* self, std::uint8_t netFunction, std::uint8_t lun, std::uint8_t command,
                     const std::uint8_t* data, std::uint32_t dataLength);
  static Status Receive(IpmiProtocol* self, std::uint8_t* netFunction, std::uint8_t* lun,
                        std::uint8_t* command, std::uint8_t* completionCode, std::uint8_t* data,
                        std::uint32_t* dataLength);

  std::unique_ptr<Machine> below_;
  Protocol protocol_;
};

}  // namespace varnok::host
