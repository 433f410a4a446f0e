// Probes for the BMC and what stands behind it: BMCCONFIG, PING, DEVICE_ID, BMCVER and HSCVER, BMC_TYPE,
// K410V_SYS, QRX_TYPE.
#pragma once

#include "cfg/probe.h"

namespace varnok {

class CCfgProbeBmcConfig : public CCfgProbe {
 public:
  Status ValidateParams() override { return RequireCount(2, 2); }

 protected:
  Status Ask(bool& isFound) override;
};

/// Whether a device on a private bus answers.
class CCfgProbePing : public CCfgProbe {
 public:
  Status ValidateParams() override;

 protected:
  Status Ask(bool& isFound) override;
};

/// Whether a controller answers, and is this product.
class CCfgProbeDeviceId : public CCfgProbe {
 public:
  Status ValidateParams() override;

 protected:
  Status Ask(bool& isFound) override;

 private:
  std::uint32_t product_ = 0;
};

/// The BMC's firmware version, or that of its boot area, against versions and ranges.
class CCfgProbeBmcVer : public CCfgProbe {
 public:
  Status ValidateParams() override;

 protected:
  Status Ask(bool& isFound) override;

 private:
  // HSCVER asks the BMC as well.
  std::uint8_t target_ = kBmcAddress;
  bool isBootArea_ = false;
};

class CCfgProbeBmcType : public CCfgProbe {
 public:
  Status ValidateParams() override { return RequireCount(0, 0); }

 protected:
  Status Ask(bool& isFound) override;
};

class CCfgProbeK410V : public CCfgProbe {
 public:
  Status ValidateParams() override { return RequireCount(0, 0); }

 protected:
  Status Ask(bool& isFound) override { return ProbeIsK410V(0, isFound); }
};

class CCfgProbeQRX : public CCfgProbe {
 public:
  Status ValidateParams() override { return RequireCount(0, 0); }

 protected:
  Status Ask(bool& isFound) override { return ProbeAdvanced(0, isFound); }
};

}  // namespace varnok
