// The BMC's SDR repository, read and replaced record by record (IPMI v2.0, chapter 33).
#pragma once

#include <string>
#include <vector>

#include "boards/board_data.h"
#include "boards/snapshot/exchange.h"

namespace varnok::boards {

/// A record that could not be read.
struct UnreadRecord {
  std::uint16_t id = 0;
  Outcome outcome;
};

struct Repository {
  std::vector<Bytes> records;
  std::vector<UnreadRecord> unread;
};

/// Reads every record. What fails to be read whole is listed, and the walk goes on behind it. A failure is
/// one of the repository itself: it is not there (C1h), or where its next record is cannot be learned.
Outcome ReadRepository(Repository& repository, Observer& observer);

/// True when both hold the same records in the same order; record IDs are the BMC's own and do not count.
bool AreSameRecords(const std::vector<Bytes>& one, const std::vector<Bytes>& other);

/// Erases the repository, adds the records, reads them back and compares.
Outcome ReplaceRepository(const std::vector<Bytes>& records, Observer& observer);

}  // namespace varnok::boards
