// The two registers of a KCS interface (IPMI v2.0, section 9.4) and the pause between looks at them.
#pragma once

#include <cstdint>

namespace varnok {

class RegisterPort {
 public:
  virtual std::uint8_t ReadStatus() = 0;
  virtual std::uint8_t ReadData() = 0;
  virtual void WriteCommand(std::uint8_t value) = 0;
  virtual void WriteData(std::uint8_t value) = 0;
  virtual void Stall(std::uint32_t microseconds) = 0;

 protected:
  constexpr RegisterPort() = default;
  ~RegisterPort() = default;
};

}  // namespace varnok
