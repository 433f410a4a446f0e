// Scripts in memory, loaded and processed by the parser on a machine without a board.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"
#include "tests/support/test_firmware.h"

namespace varnok::testing {

class ScriptTest : public ::testing::Test {
 protected:
  ScriptTest() {
    CCfgCommand::Callbacks() = {Dornquist::DisplayProgress, DisplayText, InputChar, GetEnvVar};
    EngineMessage().Reset();
    const char* arguments[] = {"varnok", "-debug1"};
    TraceSelectLevel(2, arguments);
  }
  ~ScriptTest() override { CCfgCommand::Callbacks() = {}; }

  Status Load(std::string script) {
    machine.files[".\\T.CFG"] = std::move(script);
    EngineMessage().Reset();
    return parser.ParseFile(u"T.CFG", nullptr);
  }
  /// Loads and processes; the status of the first that fails.
  Status Run(std::string script) {
    if (Status status = Load(std::move(script)); status != kSuccess) return status;
    return parser.Process();
  }
  std::string Message() const { return Narrow(CCfgParser::GetLastError()); }

  /// Expects a script to be refused while it is read, with this message for this line (from 1).
  void ExpectRefused(std::string script, int line, Status status, const std::string& message) {
    SCOPED_TRACE(script);
    EXPECT_EQ(Load(std::move(script)), status);
    EXPECT_EQ(Message(),
              "Invalid input in file 'T.CFG' at line " + std::to_string(line) + ":\n   " + message);
  }
  /// Expects a script to load, and to stop with this status and message when it is processed.
  void ExpectStopped(std::string script, Status status, const std::string& message) {
    SCOPED_TRACE(script);
    EXPECT_EQ(Load(script), kSuccess) << Message();
    EXPECT_EQ(parser.Process(), status);
    EXPECT_EQ(Message(), message);
  }

  TestFirmware machine;
  CCfgParser parser;
};

}  // namespace varnok::testing
