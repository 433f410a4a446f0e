#include "firmware/host/linux_machine.h"

#include <fcntl.h>
#include <time.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>
#include <span>
#include <stdexcept>
#include <utility>

#include "firmware/host/host_firmware.h"
#include "firmware/host/kernel_ipmi.h"
#include "firmware/host/smbios_dump.h"

namespace varnok::host {
namespace {

std::vector<std::uint8_t> ReadFile(const char* path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// This machine's tables; nothing without them.
std::optional<SmbiosDump> ReadSmbios() {
  try {
    return SmbiosDump(ReadFile("/sys/firmware/dmi/tables/smbios_entry_point"),
                      ReadFile("/sys/firmware/dmi/tables/DMI"));
  } catch (const std::runtime_error&) {
    return std::nullopt;
  }
}

std::string WhatToDo(int error) {
  switch (error) {
    case EACCES:
    case EPERM:
      return "; run the program as root (sudo)";
    case ENOENT:
    case ENXIO:
    case ENODEV:
      return "; the kernel knows of no BMC: load its drivers (modprobe -a ipmi_si ipmi_devintf) and see dmesg";
    default:
      return "";
  }
}

class LinuxMachine : public Machine {
 public:
  LinuxMachine(std::string device, int descriptor)
      : device_(std::move(device)), kernel_(descriptor), smbios_(ReadSmbios()) {
    protocol_.interface = {kIpmiProtocolRevision, Send, Receive};
    protocol_.machine = this;
  }

  IpmiProtocol* InstalledIpmi() override { return &protocol_.interface; }
  std::span<const std::uint8_t> SmbiosEntryPoint() override {
    return smbios_ ? smbios_->EntryPoint() : std::span<const std::uint8_t>();
  }
  std::span<const std::uint8_t> PhysicalMemory(std::uint64_t address, std::size_t length) override {
    return smbios_ ? smbios_->Memory(address, length) : std::span<const std::uint8_t>();
  }

  void Stall(std::uint64_t microseconds, StallKind kind) override {
    // The kernel's driver paces itself, and receiving waits for the answer.
    if (kind == StallKind::Pacing) return;
    timespec rest{static_cast<time_t>(microseconds / 1'000'000),
                  static_cast<long>(microseconds % 1'000'000 * 1000)};
    while (nanosleep(&rest, &rest) != 0 && errno == EINTR) {
    }
  }

  WallClock Now() override {
    time_t now = time(nullptr);
    tm local{};
    localtime_r(&now, &local);
    return {static_cast<std::uint16_t>(local.tm_year + 1900), static_cast<std::uint8_t>(local.tm_mon + 1),
            static_cast<std::uint8_t>(local.tm_mday),         static_cast<std::uint8_t>(local.tm_hour),
            static_cast<std::uint8_t>(local.tm_min),          static_cast<std::uint8_t>(local.tm_sec)};
  }

 private:
  /// The protocol comes first, so that its address leads to the rest.
  struct Protocol {
    IpmiProtocol interface;
    LinuxMachine* machine;
  };

  static LinuxMachine& MachineOf(IpmiProtocol* self) { return *reinterpret_cast<Protocol*>(self)->machine; }

  /// Says once that the device has been taken away.
  void TellLoss(int error) {
    if ((error != ENODEV && error != ENXIO && error != EIO) || std::exchange(isLossTold_, true)) return;
    Complain(
        device_ + " was taken away (" + std::strerror(error) +
        "); load the kernel's drivers again (modprobe -a ipmi_si ipmi_devintf), see dmesg, then run the same "
        "command again");
  }

  static Status Send(IpmiProtocol* self, std::uint8_t netFunction, std::uint8_t lun, std::uint8_t command,
                     const std::uint8_t* data, std::uint32_t dataLength) {
    LinuxMachine& machine = MachineOf(self);
    const Status status = machine.kernel_.Send(netFunction, lun, command, {data, dataLength});
    if (status != kSuccess) machine.TellLoss(errno);
    return status;
  }

  static Status Receive(IpmiProtocol* self, std::uint8_t* netFunction, std::uint8_t* lun,
                        std::uint8_t* command, std::uint8_t* completionCode, std::uint8_t* data,
                        std::uint32_t* dataLength) {
    KernelIpmi::Answer answer;
    if (Status status = MachineOf(self).kernel_.Receive(answer); status != kSuccess) return status;
    if (answer.count == 0) return uefi_status::kDeviceError;
    std::size_t count = std::min<std::size_t>(answer.count - 1, *dataLength);
    *netFunction = answer.netFunction;
    *lun = answer.lun;
    *command = answer.command;
    *completionCode = answer.room.front();
    std::memcpy(data, answer.room.data() + 1, count);
    *dataLength = static_cast<std::uint32_t>(count);
    return kSuccess;
  }

  std::string device_;
  KernelIpmi kernel_;
  bool isLossTold_ = false;
  std::optional<SmbiosDump> smbios_;
  Protocol protocol_{};
};

}  // namespace

std::unique_ptr<Machine> OpenLinuxMachine(const std::string& device, std::string& error) {
  int descriptor = open(device.c_str(), O_RDWR | O_CLOEXEC);
  if (descriptor < 0) {
    error = device + ": " + std::strerror(errno) + WhatToDo(errno);
    return nullptr;
  }
  return std::make_unique<LinuxMachine>(device, descriptor);
}

}  // namespace varnok::host
