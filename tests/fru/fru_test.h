// What the FRU tests start from: a machine, nothing kept from the test before, and failures with their texts.
#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <string_view>

#include "app/services/text.h"
#include "fru/fru.h"
#include "fru/fru_data.h"
#include "fru/fru_session.h"
#include "fru/fru_status.h"
#include "platform/ipmi.h"
#include "tests/fru/images.h"
#include "tests/support/test_firmware.h"

namespace varnok::testing {

using enum FruAreaId;
using namespace fru_status;

inline constexpr std::string_view kUnexpectedText = "An unexpected error occurred while accessing FRUs.";
inline constexpr std::string_view kUnsupportedText = "A request was made of a unsupported FRU feature.";
inline constexpr std::string_view kNoMemoryText = "There is not enough memory to complete FRU updates.";

/// The last error, narrowed; empty when there is none. Read past the manager, which leaves no trace lines.
inline std::string LastFruError() {
  return Narrow(TheFruSession().lastError.data());
}

/// The status, with the text that belongs to it.
inline void ExpectFailure(Status status, Status expected, std::string_view text = kUnexpectedText,
                          int line = __builtin_LINE()) {
  EXPECT_EQ(status, expected) << "line " << line;
  EXPECT_EQ(LastFruError(), text) << "line " << line;
}

/// Statuses of calls in a row, with the text that the last of them left.
inline void ExpectAll(std::initializer_list<Status> statuses, Status expected,
                      std::string_view text = kUnexpectedText, int line = __builtin_LINE()) {
  for (Status status : statuses) ExpectFailure(status, expected, text, line);
}

/// The address of a device; with no more than its kind, of the BMC's own inventory device.
inline FruDeviceAddress Device(std::uint32_t nvsType, std::uint8_t deviceId = 0, std::uint8_t bus = 0xFF,
                               std::uint8_t deviceAddress = 0x20, std::uint8_t controller = 0x20,
                               std::uint8_t lun = 0) {
  return {deviceAddress, bus, deviceId, controller, lun, nvsType, {}};
}

/// Has the front read a device address from the words of `line`.
inline Status ParseAddress(const std::string& line, int& count) {
  std::vector<std::string> words;
  std::istringstream stream(line);
  for (std::string word; std::getline(stream, word, ' ');) words.push_back(word);
  std::vector<const char*> arguments;
  arguments.reserve(words.size());
  for (const std::string& word : words) arguments.push_back(word.c_str());
  return FruData::ParseFruAddress(static_cast<int>(arguments.size()), arguments.data(), count);
}

/// A machine and a front as if the program had just started.
template <class Base>
class FruTestOn : public Base {
 protected:
  static Status Decode(CFru& fru, const Bytes& header) {
    return fru.DecodeHeader(std::span<const std::uint8_t, CFruHeader::kLength>(header.data(), header.size()));
  }
  bool Says(std::string_view text) const { return machine.console.find(text) != std::string::npos; }

  TestFirmware machine;
};
using FruTest = FruTestOn<::testing::Test>;

}  // namespace varnok::testing
