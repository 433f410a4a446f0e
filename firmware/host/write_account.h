// What a run has written to a board so far, read off its requests and their answers (IPMI v2.0, chapters 22,
// 33 and 34): whether a write is under way, and in words what is written.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "firmware/host/machine_filter.h"

namespace varnok::host {

class WriteAccount {
 public:
  void Asking(const SentRequest& request);
  void Refused();
  void Answered(const ReceivedAnswer& answer);

  /// Whether a write, a record, an erase or a firmware transfer has begun and not ended.
  bool IsUnderWay() const;
  /// Whether `next` goes on with that: it is one of its pieces, a repetition, or asks for its answer.
  bool IsContinuedBy(const SentRequest& next) const;

  /// One line for each device and for the repository; none when nothing was written. A request under way
  /// counts as one without an answer.
  std::vector<std::string> Lines();

 private:
  /// A request without its frame: bridged or not.
  struct Operation {
    std::uint8_t controller = 0;
    std::uint8_t channel = 0;
    std::uint8_t netFunction = 0;
    std::uint8_t command = 0;
    std::vector<std::uint8_t> data;
    bool isBridged = false;
    bool operator==(const Operation&) const = default;
  };
  /// One device. Bytes are counted in the unit of its offsets.
  struct Device {
    std::uint32_t size = 0;                         ///< 0: not asked for
    std::map<std::uint32_t, std::uint32_t> ranges;  ///< written, first and behind the last; apart
    bool isUnsure = false;                          ///< the answer to a write did not come
  };

  static Operation OperationOf(const SentRequest& request);
  static std::string DeviceOf(const Operation& operation);
  /// What the operation writes: the offset and how much; nothing for one that does not.
  static std::optional<std::pair<std::uint32_t, std::uint32_t>> WrittenBy(const Operation& operation);
  static void Add(Device& device, std::uint32_t begin, std::uint32_t end);
  bool IsWrite(const Operation& operation) const;
  /// Whether it begins an erase or ends a record: what shows in the repository.
  static bool ChangesRepository(const Operation& operation);
  /// Notes that it may be done or not; nothing for one that writes nothing.
  void MarkUnsure(const Operation& operation);
  void Finish(const Operation& operation, std::uint8_t completionCode, std::span<const std::uint8_t> data);
  void FinishStorage(const Operation& operation, std::uint8_t completionCode,
                     std::span<const std::uint8_t> data);
  void FinishWrite(const Operation& operation, std::uint8_t completionCode);
  std::string RepositoryLine() const;

  std::optional<Operation> open_;  ///< sent, and not answered
  bool isRepeated_ = false;        ///< … for the second time, or more
  std::map<std::string, Device> devices_;
  bool isErasing_ = false;
  bool isErased_ = false;
  bool isRecordOpen_ = false;
  bool isRepositoryUnsure_ = false;  ///< the answer to an erase or to a record's end did not come
  std::size_t records_ = 0;
  bool isTransferring_ = false;  ///< the BMC is in firmware-transfer mode, where this run put it
};

}  // namespace varnok::host
