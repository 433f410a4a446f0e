// Requests and responses as the simulated board passes them around.
#pragma once

#include <cstdint>
#include <vector>

#include "firmware/ipmi.h"

namespace varnok::sim {

/// Who is asked.
struct BusPlace {
  std::uint8_t address = kBmcAddress;
  std::uint8_t channel = 0;
  bool isBmc = true;  ///< at its own interface, not on an IPMB
};

struct Request {
  std::uint8_t netFunction = 0;
  std::uint8_t lun = 0;
  std::uint8_t command = 0;
  std::vector<std::uint8_t> data;
};

struct Response {
  std::uint8_t netFunction = 0;  ///< the request's plus 1
  std::uint8_t lun = 0;
  std::uint8_t command = 0;
  std::uint8_t completionCode = 0;
  std::vector<std::uint8_t> data;  ///< after the completion code
};

/// An answer of the request with nothing behind the completion code.
inline Response EmptyResponse(const Request& request, std::uint8_t completionCode) {
  return {
      static_cast<std::uint8_t>(request.netFunction + 1), request.lun, request.command, completionCode, {}};
}

/// What became of one request.
struct Delivery {
  enum class Fate {
    Answered,
    Lost,     ///< no answer comes
    Refused,  ///< the request did not get through: the send fails, on the IPMB it is a NAK
  };

  Fate fate = Fate::Lost;
  std::vector<Response> answers;  ///< two: the second is a duplicate left behind
  std::uint64_t due = 0;          ///< when the answers can be received, in microseconds of the board; 0: now
};

namespace code = completion_code;

}  // namespace varnok::sim
