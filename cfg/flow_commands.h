// Commands that change tags, end the script, or inform: SET, CLEAR, ERRORLEVEL, CONFIGURATION, BOOT,
// BMC_REFRESH.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cfg/cfg_command.h"

namespace varnok {

class CCfgSet : public CCfgCommand {
 public:
  CCfgSet() : CCfgCommand(CommandType::Set) {}
  Status ReadFromFile(CFileCfg& file) override;
  Status Process() override;

 private:
  std::string tag_;
};

class CCfgClear : public CCfgCommand {
 public:
  CCfgClear() : CCfgCommand(CommandType::Clear) {}
  Status ReadFromFile(CFileCfg& file) override;
  Status Process() override;
  /// Whether the tag was set when it was cleared last.
  bool WasSet() const { return wasSet_; }

 private:
  std::string tag_;
  bool wasSet_ = false;
};

class CCfgErrorLevel : public CCfgCommand {
 public:
  CCfgErrorLevel() : CCfgCommand(CommandType::ErrorLevel) {}
  Status ReadFromFile(CFileCfg& file) override;
  Status Process() override;
  void DebugPrint() override;

 private:
  std::uint32_t level_ = 0;
};

class CCfgConfiguration : public CCfgCommand {
 public:
  CCfgConfiguration() : CCfgCommand(CommandType::Configuration) {}
  Status ReadFromFile(CFileCfg& file) override;
  Status Process() override;

 private:
  std::vector<std::string> parameters_;  ///< configuration name, target platform, a third without a meaning
};

class CCfgBoot : public CCfgCommand {
 public:
  CCfgBoot() : CCfgCommand(CommandType::Boot) {}
  Status ReadFromFile(CFileCfg& file) override;
  Status Execute() override { return kSuccess; }
  void DebugPrint() override;
};

/// Asks for one BMC refresh at the end of the commit, however often it stands in a script.
class CCfgBmcRefresh : public CCfgCommand {
 public:
  CCfgBmcRefresh() : CCfgCommand(CommandType::BmcRefresh) {}
  Status ReadFromFile(CFileCfg&) override { return kSuccess; }
  Status Process() override;
  Status Execute() override { return kSuccess; }
};

}  // namespace varnok
