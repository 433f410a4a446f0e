// The program's arguments as main gets them.
#pragma once

#include "firmware/entry.h"
#include "tests/support/split.h"

namespace varnok::testing {

/// A blank separates them.
class Arguments {
 public:
  explicit Arguments(const std::string& line)
      : texts_(Split(line.empty() ? "VARNOK" : "VARNOK " + line, " ")) {
    for (std::string& text : texts_) pointers_.push_back(text.data());
    pointers_.push_back(nullptr);
  }
  int Count() const { return static_cast<int>(texts_.size()); }
  char** Pointers() { return pointers_.data(); }

 private:
  std::vector<std::string> texts_;
  std::vector<char*> pointers_;
};

inline int RunMain(const std::string& line) {
  Arguments arguments(line);
  return Main(arguments.Count(), arguments.Pointers());
}

}  // namespace varnok::testing
