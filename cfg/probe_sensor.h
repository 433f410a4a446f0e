// Probes for what the BMC measures: DISCRETE_SENSOR, FAN_SIGNAL.
#pragma once

#include "cfg/probe.h"

namespace varnok {

class CCfgProbeDiscreteSensor : public CCfgProbe {
 public:
  Status ValidateParams() override { return ReadExactly(5); }

 protected:
  Status Ask(bool& isFound) override;
};

class CCfgProbeFan : public CCfgProbe {
 public:
  Status ValidateParams() override { return ReadExactly(2); }

 protected:
  Status Ask(bool& isFound) override;
};

}  // namespace varnok
