// IFSET, ELSE and ENDIF: blocks of commands that run when tags are set. Blocks nest as deep as a script
// likes: they are read, run, printed and destroyed by loops, so that the small stack of a firmware
// application is safe from any script.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "cfg/cfg_command.h"

namespace varnok {

/// A command with a body, which ends at its ENDIF.
class CCfgBlock : public CCfgCommand {
 public:
  using CCfgCommand::CCfgCommand;
  ~CCfgBlock() override;

  /// Reads the block's own line and its body up to and including the ENDIF.
  Status ReadFromFile(CFileCfg& file) override;
  Status Process() override;
  void DebugPrint() override;
  CCfgCommand* Next() override;
  CCfgCommand* Previous() override;
  CCfgBlock* AsBlock() override { return this; }

  const CommandList& Body() const { return body_; }

  /// The class's name in the log.
  virtual const char* ClassName() const = 0;
  /// Reads only the block's own line.
  virtual Status ReadOwnLine(CFileCfg& file) = 0;
  /// Takes over a command read for the body, or the one that ends it (`isComplete`).
  virtual Status Take(PoolPtr<CCfgCommand> command, bool& isComplete) = 0;
  /// The block whose body runs now: this one, its ELSE, or none.
  virtual CCfgBlock* Choose() { return this; }
  /// Moves everything that the block owns behind `commands`.
  virtual void Release(CommandList& commands);
  /// Reports that the script ended within the block.
  Status RefuseEndOfFile() const;

 protected:
  Status Append(PoolPtr<CCfgCommand> command);
  virtual void PrintHead() const = 0;

  CommandList body_;
};

class CCfgElse : public CCfgBlock {
 public:
  CCfgElse() : CCfgBlock(CommandType::Else) {}

  const char* ClassName() const override { return "CCfgElse"; }
  Status ReadOwnLine(CFileCfg& file) override;
  Status Take(PoolPtr<CCfgCommand> command, bool& isComplete) override;
  bool IsValidCommandLocation() override;

 protected:
  void PrintHead() const override;

 private:
  std::uint32_t line_ = 0;
};

class CCfgIfSet : public CCfgBlock {
 public:
  CCfgIfSet() : CCfgBlock(CommandType::IfSet) {}
  ~CCfgIfSet() override;

  const char* ClassName() const override { return "CCfgIfSet"; }
  Status ReadOwnLine(CFileCfg& file) override;
  Status Take(PoolPtr<CCfgCommand> command, bool& isComplete) override;
  CCfgBlock* Choose() override;
  void Release(CommandList& commands) override;

 protected:
  void PrintHead() const override;

 private:
  std::vector<std::string> tags_;
  PoolPtr<CCfgCommand> else_;
};

class CCfgEndIf : public CCfgCommand {
 public:
  CCfgEndIf() : CCfgCommand(CommandType::EndIf) {}
  bool IsValidCommandLocation() override;
};

}  // namespace varnok
