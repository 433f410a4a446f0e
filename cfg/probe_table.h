// The probe types as rows. A family of probe types is one file that keeps its classes to itself and hands out
// its rows; to add a family, write its file and name it in kProbeFamilies.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "firmware/pool.h"

namespace varnok {

class CCfgProbe;

/// The type code of a probe; its row says which. Named here are the kinds of storage, which share a class.
enum class ProbeType : std::uint32_t { ImbDevice = 8, Ds1624s = 9, At24c02 = 10, None = 25 };

struct ProbeRow {
  ProbeType type;
  const char* keyword;    ///< of the line, in any case
  const char* className;  ///< in the log
  PoolPtr<CCfgProbe> (*make)();
};

template <class Probe>
PoolPtr<CCfgProbe> MakeProbe() {
  return MakeInPool<Probe>();
}

using ProbeFamily = std::span<const ProbeRow>;
ProbeFamily BoardProbes();
ProbeFamily BmcProbes();
ProbeFamily FruProbes();
ProbeFamily ProcessorProbes();
ProbeFamily SensorProbes();

inline constexpr std::array kProbeFamilies{BoardProbes, BmcProbes, FruProbes, ProcessorProbes, SensorProbes};

/// The row of a keyword; null for one that is no probe type.
const ProbeRow* FindProbe(std::string_view keyword);

}  // namespace varnok
