// Probes for FRU devices and their fields: IMBDEVICE, DS1624S and AT24C02; FRUFIELD.
#pragma once

#include "cfg/fru_tables.h"
#include "cfg/probe.h"

namespace varnok {

class CCfgFruName;

/// Whether a device holds an IPMI FRU; the keyword is its kind of storage.
class CCfgProbeNvsType : public CCfgProbe {
 public:
  Status ValidateParams() override;

 protected:
  Status Ask(bool& isFound) override;

 private:
  std::uint8_t deviceId_ = 0;
  std::uint8_t lun_ = 0;
  std::uint8_t bus_ = 0xFF;
  std::uint8_t slave_ = kBmcAddress;
};

/// Whether a field of the FRUAREA that the script has selected begins with a text.
class CCfgProbeFru : public CCfgProbe {
 public:
  Status ValidateParams() override;

 protected:
  Status Ask(bool& isFound) override;

 private:
  bool IsInArea() const;
  Status SelectField() const;

  std::uint32_t field_ = fru_field::kNone;
  const CCfgFruName* fruName_ = nullptr;  ///< the block that the probe was read in, never looked into
  bool hasArea_ = false;                  ///< a FRUAREA of it stands before the probe
};

}  // namespace varnok
