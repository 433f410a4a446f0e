// Scripts in memory, loaded and processed by the parser on a machine without a board.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"
#include "tests/support/split.h"
#include "tests/support/test_firmware.h"

namespace varnok::testing {

class ScriptTest : public ::testing::Test {
 protected:
  static constexpr Status kTooMany = 0xC00000000009000B;
  static constexpr Status kBadValue = 0xC00000000009000C;
  static constexpr Status kBadLine = 0xC00000000009000D;
  static constexpr Status kOutOfPlace = 0xC000000000090015;
  static constexpr Status kUnknown = 0xC000000000090016;
  static constexpr Status kOutOfBlock = 0xC000000000090017;

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

  // What several commands say of their parameters.
  static std::string Missing(const std::string& command, const std::string& which = "first") {
    return "The " + command + " command is missing its " + which + " parameter.";
  }
  static std::string Extra(const std::string& command, const std::string& rest) {
    return "Too many parameters for the " + command + " command.\n   The parameters '" + rest +
           "' were not accepted.";
  }
  static std::string Invalid(const std::string& text, const std::string& command) {
    return text + " is not a valid input for the " + command + " command.";
  }
  static std::string NotHex(const std::string& text, const std::string& command) {
    return Invalid(text, command) + "  The value must be a valid hexidecimal number.";
  }

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
