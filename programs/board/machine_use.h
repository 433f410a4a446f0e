// What the commands that read or write a machine share.
#pragma once

#include <string>

#include "boards/snapshot/exchange.h"
#include "programs/board/command.h"
#include "programs/board/output.h"

namespace varnok::companion {

/// Shows the steps as progress.
class ProgressObserver : public boards::Observer {
 public:
  void Step(std::string_view what, std::size_t done, std::size_t total) override {
    progress_.Show(what, done, total);
  }
  void Clear() { progress_.Clear(); }

 private:
  Progress progress_;
};

/// The machine that `option` names; else the one that VARNOK_BOARD names; else this computer's own.
std::string MachineName(const Arguments& arguments, std::string_view option);

inline constexpr std::string_view kMachineHelp =
    "/dev/ipmi0 or a board folder; else VARNOK_BOARD, else /dev/ipmi0";

}  // namespace varnok::companion
