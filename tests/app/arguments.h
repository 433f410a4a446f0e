// The program's arguments as main gets them.
#pragma once

#include "firmware/entry.h"
#include "firmware/host/argument_list.h"
#include "tests/support/split.h"

namespace varnok::testing {

/// A blank separates them.
inline host::ArgumentList Arguments(const std::string& line) {
  return host::ArgumentList(Split(line.empty() ? "VARNOK" : "VARNOK " + line, " "));
}

inline int RunMain(const std::string& line) {
  host::ArgumentList arguments = Arguments(line);
  return Main(arguments.Count(), arguments.Pointers());
}

}  // namespace varnok::testing
