// The menu's machine under UEFI: images started with load options, the shell, the reset.
#pragma once

#include <optional>

#include "firmware/uefi/shell.h"
#include "programs/start/menu.h"

namespace varnok::start {

class EfiStation : public Station {
 public:
  EfiStation() { shell_.Connect(); }

  bool HasKey() override;
  std::size_t Rows() override;
  std::vector<std::string> Files() override { return List(false); }
  std::vector<std::string> Snapshots() override;
  Ending Run(const std::string& command) override;
  bool IsInShell() override { return shell_.IsThere(); }
  bool HasShell() override;
  Ending RunShell() override;
  void Restart() override;

 private:
  std::vector<std::string> List(bool folders);

  uefi::Shell shell_;
};

}  // namespace varnok::start
