// FRUADDRESS: the device that its FRUNAME programs, in place of the one that the FRU file names.
#pragma once

#include <span>
#include <string_view>

#include "cfg/cfg_command.h"
#include "fru/fru_device_address.h"

namespace varnok {

class CCfgFruAddress : public CCfgCommand {
 public:
  Status ReadFromFile(CFileCfg& file) override;
  Status Process() override;
  void DebugPrint() override;
  bool IsValidCommandLocation() override;

  FruDeviceAddress GetAddress() const;

 private:
  Status ReadAddress(std::span<const std::string_view> tokens);
  Status ReadNvsType(std::string_view token);
  Status ReadNumber(std::string_view token, std::uint8_t& number);
  Status RefuseCount() const;
  Status Attach();

  FruDeviceAddress address_;
};

}  // namespace varnok
