// KCS registers of the real board: I/O ports or memory.
#pragma once

#include "driver/kcs_location.h"
#include "driver/register_port.h"
#include "firmware/uefi/platform.h"

namespace varnok {

class HardwarePort final : public RegisterPort {
 public:
  void Connect(const KcsLocation& location, EFI_BOOT_SERVICES& services) {
    location_ = location;
    services_ = &services;
  }

  std::uint8_t ReadStatus() override { return Read(location_.base + location_.spacing); }
  std::uint8_t ReadData() override { return Read(location_.base); }
  void WriteCommand(std::uint8_t value) override { Write(location_.base + location_.spacing, value); }
  void WriteData(std::uint8_t value) override { Write(location_.base, value); }
  void Stall(std::uint32_t microseconds) override { services_->Stall(microseconds); }

 private:
  std::uint8_t Read(std::uint64_t address) const {
    if (!location_.isIo) return *reinterpret_cast<const volatile std::uint8_t*>(address);
    std::uint8_t value;
    asm volatile("inb %w1, %b0" : "=a"(value) : "Nd"(static_cast<std::uint16_t>(address)));
    return value;
  }
  void Write(std::uint64_t address, std::uint8_t value) const {
    if (location_.isIo)
      asm volatile("outb %b0, %w1" : : "a"(value), "Nd"(static_cast<std::uint16_t>(address)));
    else
      *reinterpret_cast<volatile std::uint8_t*>(address) = value;
  }

  KcsLocation location_ = kUsualKcs;
  EFI_BOOT_SERVICES* services_ = nullptr;
};

}  // namespace varnok
