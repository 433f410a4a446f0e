// A board in a temporary folder, and requests to it over the IPMI protocol's Send and Receive.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
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

  std::filesystem::path folder;
  std::unique_ptr<sim::Board> board;
};

}  // namespace varnok::testing
