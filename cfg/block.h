// A command with a body, which ends at its ENDIF: the base of IFSET and ELSE. Blocks nest as deep as a script
// likes: they are read, run, printed and destroyed by loops, so that the small stack of a firmware
// application is safe from any script.
#pragma once

#include "cfg/cfg_command.h"

namespace varnok {

class CCfgBlock : public CCfgCommand {
 public:
  /// Reads the block's own line and its body up to and including the ENDIF.
  Status ReadFromFile(CFileCfg& file) override;
  Status Process() override;
  void DebugPrint() override;
  CCfgCommand* Next() override;
  CCfgCommand* Previous() override;
  void ResetLink() override { link_ = nullptr; }
  CCfgBlock* AsBlock() override { return this; }

  const CommandList& Body() const { return body_; }
  /// The block that runs in this one's place when its tags are not all set; null for none.
  virtual const CCfgBlock* Else() const { return nullptr; }

  /// The class's name in the log.
  virtual const char* ClassName() const = 0;
  /// Reads only the block's own line.
  virtual Status ReadOwnLine(CFileCfg& file) = 0;
  /// Takes over a command read for the body, or the one that ends it (`isComplete`).
  virtual Status Take(PoolPtr<CCfgCommand> command, bool& isComplete) = 0;
  /// The block whose body runs now: this one, its ELSE, or none.
  virtual CCfgBlock* Choose() { return this; }
  /// Moves everything that the block owns behind `commands`.
  virtual void Release(CommandList& commands) { commands.Append(body_); }
  /// Reports that the script ended within the block.
  Status RefuseEndOfFile() const;

 protected:
  Status Append(PoolPtr<CCfgCommand> command);
  virtual void PrintHead() const = 0;

 private:
  CommandList body_;
  CCfgCommand* link_ = nullptr;
};

}  // namespace varnok
