// A board in a temporary folder, and requests to it over the IPMI protocol's Send and Receive.
//
//   OpenBmc(R"("frus": [{"id": 0, "file": "a.bin", "readOnly": true}])");
//   Converse({{"0A/0 12 00 00 00 58", "80"}, {"0A/0 11 00 00 00 01", "00 01 61"}});
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sim/board.h"

namespace varnok::testing {

using Bytes = std::vector<std::uint8_t>;

/// What Send and Receive gave.
struct Reply {
  Status sendStatus = kSuccess;
  Status receiveStatus = kSuccess;
  std::uint8_t netFunction = 0;
  std::uint8_t lun = 0;
  std::uint8_t command = 0;
  std::uint8_t completionCode = 0;
  Bytes data;
};

/// Requests and their answers, as Ask takes and gives them.
using Conversation = std::vector<std::pair<std::string, std::string>>;

class BoardTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "varnok-board-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(folder); }

  void WriteFile(const std::string& name, std::string_view content) {
    std::ofstream(folder / name, std::ios::binary) << content;
  }
  Bytes ReadFile(const std::string& name) {
    std::ifstream file(folder / name, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
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
    ASSERT_TRUE(sim::Board::CreateDefault(folder, error)) << error;
    Open();
  }
  void Open() {
    std::string error;
    board = sim::Board::Open(folder, error);
    ASSERT_NE(board, nullptr) << error;
  }
  /// The error of opening the folder with this board.json.
  std::string ErrorOf(std::string_view json) {
    WriteFile("board.json", json);
    std::string error;
    EXPECT_EQ(sim::Board::Open(folder, error), nullptr) << json;
    return error;
  }

  Status Send(std::uint8_t netFunction, std::uint8_t command, const Bytes& data, std::uint8_t lun = 0) {
    IpmiProtocol* ipmi = board->InstalledIpmi();
    return ipmi->Send(ipmi, netFunction, lun, command, data.data(), static_cast<std::uint32_t>(data.size()));
  }
  Reply Receive() {
    IpmiProtocol* ipmi = board->InstalledIpmi();
    Reply reply;
    reply.data.resize(64);
    auto length = static_cast<std::uint32_t>(reply.data.size());
    reply.receiveStatus = ipmi->Receive(ipmi, &reply.netFunction, &reply.lun, &reply.command,
                                        &reply.completionCode, reply.data.data(), &length);
    reply.data.resize(reply.receiveStatus == kSuccess ? length : 0);
    return reply;
  }
  Reply Exchange(std::uint8_t netFunction, std::uint8_t command, const Bytes& data, std::uint8_t lun = 0) {
    const Status status = Send(netFunction, command, data, lun);
    if (status != kSuccess) {
      Reply refused;
      refused.sendStatus = status;
      return refused;
    }
    return Receive();
  }

  /// A request as the traffic log shows it, net function and LUN first. Gives the completion code and the
  /// data, or "refused", "lost" or "too long"; an answer to another command names it. "fetch" asks for an
  /// answer alone; "wait 500" lets so many milliseconds pass and gives nothing.
  std::string Ask(const std::string& request) {
    if (request.starts_with("wait ")) {
      board->Stall(std::stoull(request.substr(5)) * 1000, StallKind::Waiting);
      return "";
    }
    std::istringstream text(request);
    unsigned netFunction = 0, lun = 0, command = 0, byte = 0;
    char slash = 0;
    text >> std::hex >> netFunction >> slash >> lun >> command;
    auto narrow = [](unsigned number) { return static_cast<std::uint8_t>(number); };
    Bytes data;
    while (text >> byte) data.push_back(narrow(byte));
    const Reply reply = request == "fetch"
                            ? Receive()
                            : Exchange(narrow(netFunction), narrow(command), data, narrow(lun));
    if (reply.sendStatus != kSuccess) return "refused";
    if (reply.receiveStatus == uefi_status::kBufferTooSmall) return "too long";
    if (reply.receiveStatus != kSuccess) return "lost";
    std::ostringstream answer;
    answer << std::hex << std::uppercase << std::setfill('0');
    if (request != "fetch") {
      EXPECT_EQ(reply.netFunction, netFunction + 1) << request;
      EXPECT_EQ(reply.lun, lun) << request;
      if (reply.command != command) answer << std::setw(2) << int{reply.command} << ": ";
    }
    answer << std::setw(2) << int{reply.completionCode};
    for (std::uint8_t each : reply.data) answer << ' ' << std::setw(2) << int{each};
    return answer.str();
  }
  void Converse(const Conversation& conversation) {
    for (const auto& [request, answer] : conversation) EXPECT_EQ(Ask(request), answer) << request;
  }
  std::string TextOf(const std::string& name) {
    const Bytes bytes = ReadFile(name);
    return std::string(bytes.begin(), bytes.end());
  }

  std::filesystem::path folder;
  std::unique_ptr<sim::Board> board;
};

}  // namespace varnok::testing
