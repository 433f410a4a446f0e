// SDRNAME and CLEARSDR: the SDR file that a script programs, and emptying the BMC's SDR repository.
#pragma once

#include "cfg/cfg_command.h"
#include "cfg/file_input_command.h"

namespace varnok {

class CCfgSdrName : public CCfgCommand, public CCfgFileInputCommand {
 public:
  CCfgSdrName() : CCfgCommand(CommandType::SdrName), CCfgFileInputCommand(InputFileKind::Sdr) {}

  Status ReadFromFile(CFileCfg& file) override;
  /// Loads the file into the SDR manager and registers the command in place of an earlier SDRNAME.
  Status Process() override;
  /// Hands the script's tags to the SDR manager, then writes (or compares) the records that they select.
  Status Execute() override;
  void DebugPrint() override;

  /// Whether the records are written before all other updates, not after them.
  bool IsWriteFirst() const { return isWriteFirst_; }

 private:
  Status ReadOptions(std::string_view cursor);
  Status SelectTags();

  bool isWriteFirst_ = true;
  bool isCompare_ = false;
};

class CCfgSdrClear : public CCfgCommand {
 public:
  CCfgSdrClear() : CCfgCommand(CommandType::ClearSdr) {}

  Status ReadFromFile(CFileCfg& file) override;
  /// Clears the repository at once, not with the commit.
  Status Process() override;
  bool IsRead() const { return isRead_; }

 private:
  bool isRead_ = false;
};

}  // namespace varnok
