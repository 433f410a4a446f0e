// A board in a temporary folder, and requests to it over the IPMI protocol's Send and Receive.
//
//   OpenBmc(R"("frus": [{"id": 0, "file": "a.bin", "readOnly": true}])");
//   Converse({{"0A/0 12 00 00 00 58", "80"}, {"0A/0 11 00 00 00 01", "00 01 61"}});
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <iomanip>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sim/board.h"
#include "tests/support/host_files.h"

namespace varnok::testing {

using Bytes = std::vector<std::uint8_t>;

/// Requests and their answers, as Ask takes and gives them.
using Conversation = std::vector<std::pair<std::string, std::string>>;

class BoardTest : public ::testing::Test {
 protected:
  void WriteFile(const std::string& name, std::string_view content) {
    std::ofstream(folder / name, std::ios::binary) << content;
  }
  Bytes ReadFile(const std::string& name) {
    const std::string text = TextOf(name);
    return Bytes(text.begin(), text.end());
  }

  /// Opens the folder with this board.json; the test fails when that does not work.
  void OpenWith(std::string_view json) {
    WriteFile("board.json", json);
    Open();
  }
  /// As OpenWith; the BMC has these keys, and the board others besides.
  void OpenBmc(const std::string& keys, const std::string& others = "") {
    OpenWith(R"({"smbios": "", "bmc": {)" + keys + "}" + others + "}");
  }
  void OpenDefault() {
    std::string error;
    board.reset();
    ASSERT_TRUE(sim::Board::CreateDefault(folder, error)) << error;
    Open();
  }
  void Open() {
    std::string error;
    board.reset();  // it holds the folder
    board = sim::Board::Open(folder, error);
    ASSERT_NE(board, nullptr) << error;
  }
  /// The error of opening the folder with this board.json.
  std::string ErrorOf(std::string_view json) {
    WriteFile("board.json", json);
    std::string error;
    board.reset();
    EXPECT_EQ(sim::Board::Open(folder, error), nullptr) << json;
    return error;
  }

  /// The answer that waits: completion code and data, or "lost" or "too long"; behind a request, an answer to
  /// another command names that.
  std::string Receive(std::optional<std::array<std::uint8_t, 3>> asked = {}) {
    IpmiProtocol* ipmi = board->InstalledIpmi();
    std::uint8_t netFunction = 0, lun = 0, command = 0, code = 0;
    Bytes data(64);
    auto length = static_cast<std::uint32_t>(data.size());
    const Status status = ipmi->Receive(ipmi, &netFunction, &lun, &command, &code, data.data(), &length);
    if (status != kSuccess) return status == uefi_status::kBufferTooSmall ? "too long" : "lost";
    data.resize(length);
    std::ostringstream answer;
    answer << std::hex << std::uppercase << std::setfill('0');
    if (asked && *asked != std::array{netFunction, lun, command})
      answer << std::setw(2) << int{command} << ": ";
    answer << std::setw(2) << int{code};
    for (std::uint8_t byte : data) answer << ' ' << std::setw(2) << int{byte};
    return answer.str();
  }
  /// As Receive, behind a request; "refused" when it is not sent, nothing when its answer is left alone.
  std::string Exchange(int netFunction, int command, const Bytes& data, int lun = 0, bool isFetched = true) {
    auto narrow = [](int number) { return static_cast<std::uint8_t>(number); };
    IpmiProtocol* ipmi = board->InstalledIpmi();
    const Status status = ipmi->Send(ipmi, narrow(netFunction), narrow(lun), narrow(command), data.data(),
                                     static_cast<std::uint32_t>(data.size()));
    if (status != kSuccess) return "refused";
    if (!isFetched) return "";
    return Receive({{narrow(netFunction + 1), narrow(lun), narrow(command)}});
  }
  /// A request as the traffic log shows it, net function and LUN first. "fetch" is Receive alone, "send " in
  /// front of a request leaves it out; "wait 500" lets so many milliseconds pass and gives nothing.
  std::string Ask(const std::string& request) {
    if (request == "fetch") return Receive();
    if (request.starts_with("wait ")) {
      board->Stall(std::stoull(request.substr(5)) * 1000, StallKind::Waiting);
      return "";
    }
    const bool isFetched = !request.starts_with("send ");
    std::istringstream text(request.substr(isFetched ? 0 : 5));
    int netFunction = 0, lun = 0, command = 0, byte = 0;
    char slash = 0;
    text >> std::hex >> netFunction >> slash >> lun >> command;
    Bytes data;
    while (text >> byte) data.push_back(static_cast<std::uint8_t>(byte));
    return Exchange(netFunction, command, data, lun, isFetched);
  }
  void Converse(const Conversation& conversation) {
    for (const auto& [request, answer] : conversation) EXPECT_EQ(Ask(request), answer) << request;
  }
  std::string TextOf(const std::string& name) { return ContentOf(folder / name); }

  TemporaryFolder temporary;
  const std::filesystem::path& folder = temporary.Path();
  std::unique_ptr<sim::Board> board;
};

}  // namespace varnok::testing
