// Traffic logs read back (docs/board.md describes the format): each line in its parts, commands by the names
// of IPMI v2.0 (appendix G), and what a log holds in numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace varnok::boards {

struct TrafficLine {
  enum class Kind { Request, Answer, Lost, Refused, Event };

  Kind kind = Kind::Event;
  std::uint64_t microseconds = 0;  ///< since the start
  bool isBridged = false;          ///< at a controller on an IPMB
  std::string place;               ///< "20", "C0@0"
  std::uint8_t netFunction = 0;
  std::uint8_t lun = 0;
  std::uint8_t command = 0;
  std::uint8_t completionCode = 0;
  std::vector<std::uint8_t> data;
  std::string remark;  ///< behind " # "; an event's text
};

/// Nothing for a line that is none of a traffic log.
std::optional<TrafficLine> ParseTrafficLine(std::string_view text);

/// The command's name, by a request's net function or an answer's; "net function 30h, command 14h" for one
/// that the standard leaves to makers.
std::string CommandName(std::uint8_t netFunction, std::uint8_t command);
/// Microseconds as seconds: "12.000345".
std::string SecondsText(std::uint64_t microseconds);
/// What the line says in words: the name, and what a request asks for or which code an answer carries.
std::string InWords(const TrafficLine& line);

struct TrafficTotals {
  struct Command {
    std::size_t requests = 0;
    std::uint64_t microseconds = 0;  ///< from requests to their answers
    std::uint64_t longest = 0;
  };
  std::size_t requests = 0, answers = 0, lost = 0, refused = 0, events = 0;
  std::uint64_t microseconds = 0;  ///< of the last line
  std::map<std::pair<std::uint8_t, std::uint8_t>, Command>
      commands;                                ///< by request's net function and command
  std::map<std::string, std::size_t> codes;    ///< "C0h Read FRU Data", other than 0
  std::map<std::string, std::size_t> remarks;  ///< faults and events

  void Add(const TrafficLine& line);

 private:
  std::map<std::string, TrafficLine> open_;  ///< requests without an answer so far, by their place
};

}  // namespace varnok::boards
