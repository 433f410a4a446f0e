// The probe keywords as rows: type code, keyword, class, and how a probe is made.
#pragma once

#include <cstdint>
#include <span>

#include "firmware/pool.h"

namespace varnok {

class CCfgProbe;

/// The index of a probe keyword in the table.
enum class ProbeType : std::uint32_t {
  HwId = 0,
  System = 1,
  BoardId = 2,
  Dimm = 3,
  BmcConfig = 4,
  Ping = 5,
  DeviceId = 6,
  Processor = 7,
  ImbDevice = 8,
  Ds1624s = 9,
  At24c02 = 10,
  BiosVer = 11,
  BmcVer = 12,
  HscVer = 13,
  BmcType = 14,
  K410vSys = 15,
  QrxType = 16,
  ProcessorFamilyModel = 17,
  ProcessorCores = 18,
  DiscreteSensor = 19,
  BaseboardProdId = 20,
  BaseboardRevId = 21,
  FruField = 22,
  FanSignal = 23,
  ProcessorTdc = 24,
  None = 25,
};

struct ProbeRow {
  ProbeType type;
  const char* keyword;
  const char* className;  ///< in the log
  PoolPtr<CCfgProbe> (*make)();
};

/// In the order of the type codes.
std::span<const ProbeRow> ProbeRows();

}  // namespace varnok
