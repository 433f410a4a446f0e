// The record types in one array: a type is its code and its rows, which say what makes a record of it, too.
// Lists, counts and order everywhere follow from the array.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "firmware/pool.h"
#include "sdr/record.h"

namespace varnok {

/// The class of one record type.
template <const SdrTypeRows& kRows>
class CSdrOf final : public CSdrByRows {
 public:
  CSdrOf() : CSdrByRows(kRows) {}
};

/// The maker of a class, for its rows.
template <class Record>
PoolPtr<CSdr> MakeSdr() {
  return MakeInPool<Record>();
}

extern const SdrTypeRows kSdrType01, kSdrType02, kSdrType03;  // record_rows_sensor.cpp
extern const SdrTypeRows kSdrType08, kSdrType09;              // record_rows_association.cpp
extern const SdrTypeRows kSdrType10, kSdrType11, kSdrType12;  // record_rows_locator.cpp
extern const SdrTypeRows kSdrType13, kSdrType14, kSdrTypeC0;  // record_rows_controller.cpp

using CSdrType01 = CSdrOf<kSdrType01>;
using CSdrType02 = CSdrOf<kSdrType02>;
using CSdrType03 = CSdrOf<kSdrType03>;
using CSdrType08 = CSdrOf<kSdrType08>;
using CSdrType09 = CSdrOf<kSdrType09>;
using CSdrType10 = CSdrOf<kSdrType10>;
using CSdrType11 = CSdrOf<kSdrType11>;
using CSdrType12 = CSdrOf<kSdrType12>;
using CSdrType13 = CSdrOf<kSdrType13>;
using CSdrType14 = CSdrOf<kSdrType14>;
using CSdrTypeC0 = CSdrOf<kSdrTypeC0>;

struct SdrType {
  std::uint8_t type;
  const SdrTypeRows& rows;
};

/// In the order in which records are kept, written and compared.
inline constexpr SdrType kSdrTypes[] = {
    {0x01, kSdrType01}, {0x02, kSdrType02}, {0x03, kSdrType03}, {0x08, kSdrType08},
    {0x09, kSdrType09}, {0x10, kSdrType10}, {0x11, kSdrType11}, {0x12, kSdrType12},
    {0x13, kSdrType13}, {0x14, kSdrType14}, {0xC0, kSdrTypeC0},
};

inline constexpr std::size_t kSdrTypeCount = std::size(kSdrTypes);

/// The codes alone.
using SdrTypeOrder = std::array<std::uint8_t, kSdrTypeCount>;
inline constexpr SdrTypeOrder kSdrTypeOrder = [] {
  SdrTypeOrder order{};
  for (std::size_t position = 0; position < kSdrTypeCount; ++position)
    order[position] = kSdrTypes[position].type;
  return order;
}();

}  // namespace varnok
