// One request to a controller, with the patience that reading and writing a whole board needs: what gets lost
// is asked again a few times, what is busy for a while is waited for, and any other completion code is an
// answer.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>

#include "boards/board_data.h"
#include "firmware/ipmi.h"
#include "platform/ipmi.h"

namespace varnok::boards {

/// How a request, or a piece of work that needs several, ended.
struct Outcome {
  enum class Kind : std::uint8_t {
    Done,
    Refused,  ///< the completion code says why
    Silent,   ///< no answer came, or none that makes sense
    Differs,  ///< what was written reads back as something else
    Unfit,    ///< it cannot be done there; `reason` says why
  };

  Kind kind = Kind::Done;
  std::uint8_t completionCode = 0;
  std::string reason{};  ///< words of its own; empty: those of the kind

  bool IsDone() const { return kind == Kind::Done; }
  bool IsCode(std::uint8_t code) const { return kind == Kind::Refused && completionCode == code; }
  /// "completion code CBh", "no answer".
  std::string Text() const;
};

/// Where a request goes.
struct Target {
  std::uint8_t controller = kBmc;
  std::uint8_t channel = 0;
};

/// The bytes behind the completion code.
inline std::span<const std::uint8_t> DataOf(const IpmiMessage& response) {
  return std::span(response.data).first(response.dataLength);
}

/// Sends a request of LUN 0 and waits for its answer.
Outcome Exchange(const Target& target, std::uint8_t netFunction, std::uint8_t command,
                 std::span<const std::uint8_t> data, IpmiMessage& response);
inline Outcome Exchange(const Target& target, std::uint8_t netFunction, std::uint8_t command,
                        std::initializer_list<std::uint8_t> data, IpmiMessage& response) {
  return Exchange(target, netFunction, command, std::span(data.begin(), data.size()), response);
}

/// As Exchange; an answer for which `isGood(data)` is false counts as one that got lost.
template <class Data, class IsGood>
Outcome ExchangeFor(const Target& target, std::uint8_t netFunction, std::uint8_t command, const Data& data,
                    IpmiMessage& response, IsGood isGood) {
  constexpr int kTries = 3;
  for (int tries = 0; tries < kTries; ++tries) {
    Outcome outcome = Exchange(target, netFunction, command, data, response);
    if (!outcome.IsDone() || isGood(DataOf(response))) return outcome;
  }
  return {Outcome::Kind::Silent, 0, "answers that make no sense"};
}

/// Told what is under way, for those who wait.
class Observer {
 public:
  virtual ~Observer() = default;
  /// `total` 0: not known yet.
  virtual void Step(std::string_view what, std::size_t done, std::size_t total) = 0;
};

}  // namespace varnok::boards
