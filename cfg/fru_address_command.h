// FRUADDRESS: the device that its FRUNAME programs, in place of the one that the FRU file names.
#pragma once

#include <string>
#include <vector>

#include "cfg/cfg_command.h"
#include "fru/fru_device_address.h"

namespace varnok {

class CCfgFruAddress : public CCfgCommand {
 public:
  CCfgFruAddress() : CCfgCommand(CommandType::FruAddress) {}

  Status ReadFromFile(CFileCfg& file) override;
  Status Process() override;
  void DebugPrint() override;
  bool IsValidCommandLocation() override;

  FruDeviceAddress GetAddress() const { return address_; }

 private:
  Status ReadAddress(const std::vector<std::string>& tokens);
  Status ReadNvsType(const std::string& token);
  Status ReadNumber(const std::string& token, std::uint8_t& number);
  Status Attach();

  FruDeviceAddress address_;
};

}  // namespace varnok
