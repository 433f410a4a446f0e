// Probes for what the board is: HWID, SYSTEM, BOARD_ID, DIMM, BIOSVER, BASEBOARD_PRODID, BASEBOARD_REVID.
#pragma once

#include "cfg/probe.h"

namespace varnok {

/// Never found; kept for scripts of boards that had hardware IDs.
class CCfgProbeHwId : public CCfgProbe {
 public:
  Status ValidateParams() override;

 protected:
  Status Ask(bool& isFound) override;
};

/// The first word of the SMBIOS board product.
class CCfgProbeSystem : public CCfgProbe {
 public:
  Status ValidateParams() override { return RequireCount(1, 1); }

 protected:
  Status Ask(bool& isFound) override;
};

/// The last character of the SMBIOS board product.
class CCfgProbeBoardId : public CCfgProbe {
 public:
  Status ValidateParams() override;

 protected:
  Status Ask(bool& isFound) override;
};

/// The size of the largest memory module.
class CCfgProbeDimm : public CCfgProbe {
 public:
  Status ValidateParams() override;

 protected:
  Status Ask(bool& isFound) override;

 private:
  std::int32_t size_ = 0;
};

/// The sixth part of the SMBIOS BIOS version, against numbers and ranges.
class CCfgProbeBiosVer : public CCfgProbe {
 public:
  Status ValidateParams() override;

 protected:
  Status Ask(bool& isFound) override;
};

/// The base board's product ID, which the BMC knows.
class CCfgProbeProdId : public CCfgProbe {
 public:
  Status ValidateParams() override { return ReadExactly(1); }

 protected:
  Status Ask(bool& isFound) override;
};

/// The base board's revision ID, which the BMC knows.
class CCfgProbeRevId : public CCfgProbe {
 public:
  Status ValidateParams() override { return ReadExactly(1); }

 protected:
  Status Ask(bool& isFound) override;
};

}  // namespace varnok
