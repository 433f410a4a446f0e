// Scripts over the simulated default board: transcript, exit status and images.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/services/text.h"
#include "app/services/trace.h"
#include "app/varnok.h"
#include "platform/ipmi.h"
#include "tests/support/board_machine.h"
#include "tests/support/host_files.h"
#include "tests/support/rows.h"

namespace varnok::testing {

const std::string kUpdated =
    "\nThe system has been updated successfully.\n"
    "\nA system reset is required for the update to take effect.\n\n";

/// A change of the system board's own FRU.
const std::string kAssetTag = "FRUNAME SYSTEM\nFRUAREA Product\nFRUFIELD AT ";
const std::string kChange = kAssetTag + "ASSET-000500\n";

class BoardScript : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"HEARTHS2.FRU", "HEARTHS2.SDR"})
      machine.files[std::string(".\\") + name] = Sample(name);
    std::string error;
    ASSERT_TRUE(sim::Board::CreateDefault(folder_.Path(), error)) << error;
    machine.Install(sim::Board::Open(folder_.Path(), error));
    machine.board->OpenTrafficLog(folder_.Path() / "traffic.txt");
    ForgetProgramState();
    // Without one of its switches the trace log is off.
    const char* name = "varnok";
    TraceSelectLevel(1, &name);
  }
  void TearDown() override {
    machine.board = nullptr;
    ForgetProgramState();
  }

  /// Runs a script of this text; the exit status. The message, when there is one, is in `message`.
  int Run(std::string script) {
    machine.files[".\\T.CFG"] = std::move(script);
    return RunFile("T.CFG");
  }
  int RunFile(const std::string& name) {
    CVarnok program;
    EXPECT_EQ(program.Initialize(), 0);
    machine.console.clear();
    char self[] = "varnok";
    char option[] = "/cfg";
    std::string file = name;
    char* arguments[] = {self, option, file.data(), nullptr};
    EXPECT_EQ(program.ParseCommandLine(3, arguments), 0);
    int status = program.Execute();
    message = program.LastErrorMessage() != nullptr ? Narrow(program.LastErrorMessage()) : "";
    return status;
  }

  /// Every row of a file of tests/cfg/fixtures between other lines. The answer is the console's text, or the
  /// exit status and the message of a failure, which leaves the board's FRU as it was.
  void ExpectRows(const std::string& name, const std::string& before, const std::string& behind = "") {
    const std::string fru = Content("board.bin");
    for (const Row& row : Rows(VARNOK_CFG_FIXTURES "/" + name)) {
      int status = Run(before + row.text + "\n" + behind);
      if (!message.empty()) message.insert(0, " ");
      EXPECT_EQ(status == 0 ? machine.console : std::to_string(status) + message, row.answer) << row.text;
      EXPECT_EQ(Content("board.bin"), fru);
    }
  }

  static std::string Sample(const std::string& name) {
    return ContentOf(std::filesystem::path(VARNOK_SAMPLES) / name);
  }
  /// The bytes of one of the board's images.
  std::string Content(const std::string& image) {
    auto bytes = machine.board->Images().Find(image)->Content();
    return std::string(bytes.begin(), bytes.end());
  }
  /// How often a request went out: net function, LUN and command as the traffic log shows them.
  int RequestCount(const std::string& request) {
    std::string traffic = Traffic();
    int count = 0;
    for (std::size_t at = 0; (at = traffic.find("> 20 " + request, at)) != std::string::npos; ++at) ++count;
    return count;
  }

  std::string Traffic() { return ContentOf(folder_.Path() / "traffic.txt"); }

  BoardMachine machine;
  std::string message;

 private:
  TemporaryFolder folder_;
};

}  // namespace varnok::testing
