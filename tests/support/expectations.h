// Texts that tests compare with, or take their cases from, in files beside them.
#pragma once

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "app/services/format.h"
#include "tests/support/host_files.h"

namespace varnok::testing {

/// The parts of a text that stand between lines that begin with '=': those lines and what follows each. What
/// stands in front of the first is a comment.
inline std::vector<std::pair<std::string, std::string>> Expectations(const std::string& path) {
  std::vector<std::pair<std::string, std::string>> parts;
  std::istringstream text(ContentOf(VARNOK_SOURCE_DIR "/tests/" + path));
  for (std::string line; std::getline(text, line);) {
    if (line.starts_with('='))
      parts.emplace_back(line.substr(1), "");
    else if (!parts.empty())
      parts.back().second += line + "\n";
  }
  return parts;
}

/// A step of such a part: "? OPERATION", what goes over the wire for it, "! OUTCOME" to the next blank line
/// or step.
struct WireStep {
  std::string operation, wire = {}, outcome = {};
};
inline std::vector<WireStep> WireSteps(const std::string& part) {
  std::vector<WireStep> steps;
  std::istringstream text(part);
  std::string* kind = nullptr;
  for (std::string line; std::getline(text, line);) {
    if (line.starts_with("? ")) {
      steps.push_back({line.substr(2)});
      kind = &steps.back().wire;
    } else if (line.starts_with("! ")) {
      kind = &(steps.back().outcome = line.substr(2) + "\n");
    } else if (!line.empty() && !line.starts_with("//") && kind != nullptr) {
      *kind += line + "\n";
    }
  }
  return steps;
}

/// Text with its bytes beyond printable ASCII as "\\xB0".
inline std::string Escaped(const std::string& text) {
  std::string escaped;
  for (char each : text)
    escaped += each == '\n' || (each >= ' ' && each <= '~') ? std::string(1, each) : Format("\\x%02X", each);
  return escaped;
}

}  // namespace varnok::testing
