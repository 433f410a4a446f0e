#include "boards/snapshot/repository.h"

#include <algorithm>

#include "app/services/format.h"
#include "firmware/bytes.h"

namespace varnok::boards {
namespace {

constexpr std::uint16_t kLastId = 0xFFFF;
constexpr std::size_t kHeader = 5;
constexpr std::size_t kLargestRecordRead = 32;
constexpr std::size_t kLargestAdd = 16;
constexpr int kReservationTries = 10;
constexpr int kErasePolls = 60;
constexpr std::uint32_t kErasePoll = 500;  // milliseconds

std::uint8_t Low(std::uint16_t number) {
  return static_cast<std::uint8_t>(number);
}
std::uint8_t High(std::uint16_t number) {
  return static_cast<std::uint8_t>(number >> 8);
}

/// The repository with the reservation that its requests need, taken anew when it is lost.
class Session {
 public:
  /// A BMC without the command has no reservations; 0000h is the one to give then.
  Outcome Reserve() {
    IpmiMessage response;
    Outcome outcome = Ask(ipmi_command::kReserveSdrRepository, {}, response);
    reservation_ = 0;
    if (outcome.IsCode(completion_code::kInvalidCommand)) return {};
    if (outcome.IsDone() && DataOf(response).size() < 2) return {Outcome::Kind::Silent};
    if (outcome.IsDone()) reservation_ = WordAt(DataOf(response), 0);
    return outcome;
  }

  /// Bytes of a record, at most as many as `target` has room for; `count` is what came.
  Outcome Get(std::uint16_t id, std::size_t offset, std::span<std::uint8_t> target, std::size_t& count,
              std::uint16_t& nextId) {
    const std::uint8_t request[] = {Low(reservation_),
                                    High(reservation_),
                                    Low(id),
                                    High(id),
                                    static_cast<std::uint8_t>(offset),
                                    static_cast<std::uint8_t>(target.size())};
    // The next record's ID and at least one byte, at most those that were asked for.
    auto isGood = [&](std::span<const std::uint8_t> bytes) {
      return bytes.size() >= 3 && bytes.size() - 2 <= target.size();
    };
    IpmiMessage response;
    count = 0;
    Outcome outcome = ExchangeFor(Target{}, net_function::kStorage, ipmi_command::kGetSdr, std::span(request),
                                  response, isGood);
    if (!outcome.IsDone()) return outcome;
    const auto data = DataOf(response);
    nextId = WordAt(data, 0);
    count = data.size() - 2;
    std::copy(data.begin() + 2, data.end(), target.begin());
    return outcome;
  }

  Outcome Erase() {
    IpmiMessage response;
    bool isStarted = false;
    for (int poll = 0; poll <= kErasePolls; ++poll) {
      const std::uint8_t operation = isStarted ? 0x00 : 0xAA;
      Outcome outcome = Ask(ipmi_command::kClearSdrRepository,
                            {Low(reservation_), High(reservation_), 'C', 'L', 'R', operation}, response);
      isStarted = outcome.IsDone();
      // An erase may end its own reservation; to start it again does no harm.
      if (outcome.IsCode(completion_code::kReservationLost)) outcome = Reserve();
      if (!outcome.IsDone()) return outcome;
      if (isStarted && !DataOf(response).empty() && (DataOf(response)[0] & 15) == 1) return outcome;
      DelayMilliseconds(kErasePoll);
    }
    return {Outcome::Kind::Unfit, 0, "the erase does not end"};
  }

  /// Adds in pieces; `id` is the record's own from the first piece on.
  Outcome AddPiece(std::uint16_t& id, std::size_t offset, bool isLast, std::span<const std::uint8_t> piece) {
    Bytes data = {Low(reservation_),
                  High(reservation_),
                  Low(id),
                  High(id),
                  static_cast<std::uint8_t>(offset),
                  static_cast<std::uint8_t>(isLast ? 1 : 0)};
    data.insert(data.end(), piece.begin(), piece.end());
    IpmiMessage response;
    Outcome outcome = Ask(ipmi_command::kPartialAddSdr, data, response);
    if (outcome.IsDone() && DataOf(response).size() >= 2) id = WordAt(DataOf(response), 0);
    return outcome;
  }

  /// The number of records.
  static Outcome Count(std::size_t& count) {
    IpmiMessage response;
    Outcome outcome = ExchangeFor(Target{}, net_function::kStorage, ipmi_command::kGetSdrRepositoryInfo,
                                  std::span<const std::uint8_t>(), response,
                                  [](std::span<const std::uint8_t> bytes) { return bytes.size() >= 3; });
    if (outcome.IsDone()) count = WordAt(DataOf(response), 1);
    return outcome;
  }

  Outcome AddWhole(const Bytes& record) {
    if (record.size() > IpmiMessage::kCapacity)
      return {Outcome::Kind::Refused, completion_code::kInvalidCommand};
    IpmiMessage response;
    return Ask(ipmi_command::kAddSdr, record, response);
  }

 private:
  static Outcome Ask(std::uint8_t command, std::span<const std::uint8_t> data, IpmiMessage& response) {
    return Exchange({}, net_function::kStorage, command, data, response);
  }
  static Outcome Ask(std::uint8_t command, std::initializer_list<std::uint8_t> data, IpmiMessage& response) {
    return Ask(command, std::span(data.begin(), data.size()), response);
  }

  std::uint16_t reservation_ = 0;
};

/// Reads one record; `nextId` is good as soon as its header could be read, which `hasNext` says.
Outcome ReadRecord(Session& session, std::uint16_t id, Bytes& record, std::uint16_t& nextId, bool& hasNext) {
  std::size_t chunk = kHeader;
  int reservations = 0;
  record.assign(kHeader, 0);
  hasNext = false;
  for (std::size_t offset = 0; offset < record.size();) {
    const auto target = std::span(record).subspan(offset);
    std::size_t count = 0;
    Outcome outcome = session.Get(id, offset, target.first(std::min(chunk, target.size())), count, nextId);
    if (outcome.IsDone()) {
      offset += count;
      if (hasNext || offset < kHeader) continue;
      hasNext = true;
      record.resize(kHeader + record[4]);
      chunk = kLargestRecordRead;
    } else if (outcome.IsCode(completion_code::kReservationLost) && ++reservations < kReservationTries) {
      // The record may be another one by now: from its beginning.
      if (Outcome again = session.Reserve(); !again.IsDone()) return again;
      record.assign(kHeader, 0);
      hasNext = false;
      offset = 0;
    } else {
      chunk = outcome.kind == Outcome::Kind::Refused && hasNext ? chunk / 2 : 0;
      if (chunk == 0) return outcome;
    }
  }
  return {};
}

Outcome AddRecord(Session& session, const Bytes& record) {
  std::uint16_t id = 0;
  for (std::size_t offset = 0; offset < record.size(); offset += kLargestAdd) {
    const auto rest = std::span(record).subspan(offset);
    const bool isLast = rest.size() <= kLargestAdd;
    Outcome outcome = session.AddPiece(id, offset, isLast, rest.first(std::min(kLargestAdd, rest.size())));
    if (outcome.IsCode(completion_code::kInvalidCommand) && offset == 0) return session.AddWhole(record);
    if (!outcome.IsDone()) return outcome;
  }
  return {};
}

/// Adds the record to the `count` that are there.
Outcome AddBehind(Session& session, const Bytes& record, std::size_t count) {
  constexpr int kTries = 3;
  Outcome outcome;
  for (int tries = 0; tries < kTries; ++tries) {
    // Adding a record ends the reservation.
    outcome = session.Reserve();
    if (outcome.IsDone()) outcome = AddRecord(session, record);
    if (outcome.IsDone()) return outcome;
    // A piece whose answer got lost cannot be sent twice: the record begins anew, unless it is there.
    std::size_t now = 0;
    if (Session::Count(now).IsDone() && now == count + 1) return {};
  }
  return outcome;
}

Outcome In(const char* place, Outcome outcome) {
  outcome.reason = Format("%s: %s", place, outcome.Text());
  return outcome;
}

}  // namespace

Outcome ReadRepository(Repository& repository, Observer& observer) {
  repository = {};
  std::size_t expected = 0;
  Outcome outcome = Session::Count(expected);
  if (!outcome.IsDone()) return outcome;
  Session session;
  if (outcome = session.Reserve(); !outcome.IsDone()) return outcome;
  std::vector<bool> seen(kLastId + 1u);
  for (std::uint16_t id = 0; id != kLastId;) {
    // A next-record ID that was there before leads round in a circle.
    if (seen[id]) return {Outcome::Kind::Unfit, 0, Format("record ID %04Xh comes round again", id)};
    seen[id] = true;
    observer.Step("SDR repository", repository.records.size(), expected);
    Bytes record;
    std::uint16_t nextId = kLastId;
    bool hasNext = false;
    outcome = ReadRecord(session, id, record, nextId, hasNext);
    if (outcome.IsDone()) {
      seen[WordAt(record, 0)] = true;
      repository.records.push_back(std::move(record));
    } else if (expected == 0 && id == 0 && outcome.kind == Outcome::Kind::Refused) {
      // Empty; a count of 0 alone may be wrong.
      return {};
    } else {
      repository.unread.push_back({id, outcome});
      if (!hasNext) break;
    }
    id = nextId;
  }
  return {};
}

bool AreSameRecords(const std::vector<Bytes>& one, const std::vector<Bytes>& other) {
  constexpr std::size_t kIdSize = 2;
  return std::equal(one.begin(), one.end(), other.begin(), other.end(), [](const Bytes& a, const Bytes& b) {
    return a.size() == b.size() && a.size() >= kIdSize &&
           std::equal(a.begin() + kIdSize, a.end(), b.begin() + kIdSize);
  });
}

Outcome ReplaceRepository(const std::vector<Bytes>& records, Observer& observer) {
  Session session;
  Outcome outcome = session.Reserve();
  if (outcome.IsDone()) outcome = session.Erase();
  if (!outcome.IsDone()) return In("the repository could not be erased", outcome);
  for (std::size_t i = 0; i < records.size(); ++i) {
    observer.Step("SDR repository", i, records.size());
    outcome = AddBehind(session, records[i], i);
    if (!outcome.IsDone())
      return In(Format("record %u of %u could not be added", i + 1, records.size()).c_str(), outcome);
  }
  Repository back;
  outcome = ReadRepository(back, observer);
  if (outcome.IsDone() && !back.unread.empty()) outcome = back.unread.front().outcome;
  if (!outcome.IsDone()) return In("the records cannot be read back", outcome);
  if (!AreSameRecords(records, back.records)) return {Outcome::Kind::Differs};
  return {};
}

}  // namespace varnok::boards
