// Scripts in memory, loaded and processed by the parser on a machine without a board.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"
#include "tests/support/rows.h"
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

  /// Every row of a file of tests/cfg/fixtures: a script, and the keys to come behind " << ", answer with its
  /// transcript, or with its tags alone where the row tells no more; "loads" for a script not processed.
  void ExpectRows(const std::string& name) {
    for (const Row& row : Rows(VARNOK_CFG_FIXTURES "/" + name)) {
      std::vector<std::string> parts = Split(row.text, " << ");
      machine.keys = parts.size() > 1 ? Widen(parts[1]) : u"";
      machine.console.clear();
      Status status = Load(parts[0]);
      bool isLoaded = status == kSuccess;
      if (isLoaded && row.answer != "loads") status = parser.Process();
      std::string shown = row.answer.starts_with('[') ? Tags() : machine.console + Tags();
      EXPECT_EQ(row.answer == "loads" && isLoaded ? "loads" : shown + Failure(status), row.answer)
          << row.text;
    }
  }
  /// The tags that are set, in their order; nothing without one.
  std::string Tags() {
    std::string tags, tag;
    for (std::size_t i = 0; i < parser.TagCount(); ++i) {
      EXPECT_EQ(parser.GetTag(static_cast<std::int64_t>(i), tag), kSuccess);
      tags += (i == 0 ? "[" : " ") + tag;
    }
    return tags + (tags.empty() ? "" : "]");
  }

  TestFirmware machine;
  CCfgParser parser;

 private:
  /// The status, by its last byte when it is one of C0000000000900xxh, and the message with its line.
  std::string Failure(Status status) const {
    if (status == kSuccess) return {};
    std::string text =
        status.value >> 8 == 0xC0000000000900 ? Format("%02X", status.value & 0xFF) : Format("%X", status);
    std::string words = Message();
    const std::string atLine = "Invalid input in file 'T.CFG' at line ";
    if (words.starts_with(atLine))
      text += " at " + words.replace(words.find(":\n"), 5, ": ").substr(atLine.size());
    else
      text += ": " + words;
    return text.ends_with(": ") ? text.substr(0, text.size() - 1) : text;
  }
};

}  // namespace varnok::testing
