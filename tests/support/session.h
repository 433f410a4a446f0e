// Sessions at a shell, in text:
//
//   = NAME         a session, in a folder of its own
//   $ COMMAND      a command, for sh
//   ? STATUS       its exit status, where it is not 0
//   > TEXT         what is somewhere on its standard output, with the escapes of rows.h; DIR is the folder
//   ! TEXT         the same of its standard error
//
// A command without such a text leaves that output empty.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>

#include "tests/support/expectations.h"
#include "tests/support/rows.h"

namespace varnok::testing {

/// Types the sessions of a file; `variables` is run by the shell in front of each command.
inline void PlaySessions(const std::string& path, const std::string& variables) {
  for (const auto& [name, text] : Expectations(path)) {
    const TemporaryFolder folder;
    const std::string& directory = folder.Path();
    std::vector<std::string> steps = Split("\n" + text, "\n$ ");
    steps.erase(steps.begin());
    for (const std::string& step : steps) {
      SCOPED_TRACE(name + ": " + step);
      const std::vector<std::string> lines = Split(step, "\n");
      const int ended = std::system(
          ("cd " + directory + " && " + variables + " && { " + lines[0] + "; } </dev/null >.output 2>.error")
              .c_str());
      const std::size_t status = step.find("\n? ");
      EXPECT_EQ(WEXITSTATUS(ended), status == std::string::npos ? 0 : std::stoi(step.substr(status + 3)));
      for (const auto& [mark, file] : {std::pair("> ", ".output"), {"! ", ".error"}}) {
        const std::string content = ContentOf(folder.Path() / file);
        bool isSilent = true;
        for (const std::string& line : lines) {
          if (!line.starts_with(mark)) continue;
          isSilent = false;
          std::string wanted = Unescape(line.substr(2));
          if (std::size_t at = wanted.find("DIR/"); at != std::string::npos) wanted.replace(at, 3, directory);
          EXPECT_NE(content.find(wanted), std::string::npos) << content;
        }
        EXPECT_TRUE(!isSilent || content.empty()) << content;
      }
    }
  }
}

}  // namespace varnok::testing
