// A board's data written back to a machine: what differs, first as a plan to show, then device by device,
// read back and compared byte by byte.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "boards/board_data.h"
#include "boards/snapshot/exchange.h"

namespace varnok::boards {

struct ByteRange {
  std::size_t offset;
  std::size_t length;
};

struct DeviceWork {
  const Device* wanted = nullptr;
  Device actual{};                  ///< as the machine has it
  std::vector<ByteRange> ranges{};  ///< where they differ
  Outcome outcome{};                ///< why it cannot be written

  bool IsNeeded() const { return outcome.IsDone() && !ranges.empty(); }
  /// One line: "0: 24 bytes differ".
  std::string Text() const;
};

struct RepositoryWork {
  const std::vector<Bytes>* wanted = nullptr;  ///< null: left alone
  std::size_t actualCount = 0;
  bool isSame = false;
  Outcome outcome{};

  bool IsNeeded() const { return wanted != nullptr && outcome.IsDone() && !isSame; }
  std::string Text() const;
};

struct RestoreWork {
  std::vector<DeviceWork> devices;
  RepositoryWork repository;

  bool IsNeeded() const;
  /// Something that should be restored cannot be.
  bool HasObstacle() const;
};

/// Reads what the machine has of `devices` and, unless `records` is null, its SDR repository, and compares.
/// Both must outlive the plan.
RestoreWork PlanRestore(std::span<const Device* const> devices, const std::vector<Bytes>* records,
                        Observer& observer);

/// Writes one device where it differs and reads all of it back.
Outcome RestoreDevice(DeviceWork& work, Observer& observer);
/// Erases the repository and writes the records.
Outcome RestoreRecords(const RepositoryWork& work, Observer& observer);

}  // namespace varnok::boards
