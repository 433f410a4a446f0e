// FOUND: turns the answer of the PROBE before it into a tag.
#pragma once

#include <optional>
#include <string>

#include "cfg/cfg_command.h"

namespace varnok {

class CCfgFound : public CCfgCommand {
 public:
  CCfgFound() : CCfgCommand(CommandType::Found) {}

  Status ReadFromFile(CFileCfg& file) override;
  /// Sets the tag of the answer; a "no" without a second tag sets none.
  Status Process() override;
  void DebugPrint() override;
  /// False: a FOUND that no PROBE has read is out of place.
  bool IsValidCommandLocation() override;

  void SetFound(bool isFound) { isFound_ = isFound; }

 private:
  bool isFound_ = false;
  std::optional<std::string> foundTag_;
  std::optional<std::string> notFoundTag_;
};

}  // namespace varnok
