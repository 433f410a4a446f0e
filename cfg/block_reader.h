// Reads a block and the blocks within it by one loop over a list of open blocks.
#pragma once

#include <list>
#include <optional>

#include "app/services/trace.h"
#include "cfg/block.h"

namespace varnok {

class BlockReader {
 public:
  BlockReader(CFileCfg& file, CCfgParser* parser) : file_(file), parser_(parser) {}
  ~BlockReader();
  BlockReader(const BlockReader&) = delete;
  BlockReader& operator=(const BlockReader&) = delete;

  /// Reads `outermost`'s own line and everything up to its end. The status of the first line that fails.
  Status Read(CCfgBlock& outermost);

 private:
  /// A command being read; writes the log's lines of the way in and out as nested calls would.
  struct OpenCommand {
    std::optional<TraceScope> createScope;
    std::optional<TraceScope> readScope;
    PoolPtr<CCfgCommand> command;  ///< null for the outermost block, which its caller owns
    CCfgBlock* block = nullptr;    ///< null until the command turns out to be a block
  };

  Status Open(OpenCommand& entry, CCfgBlock& block);
  Status ReadNext();
  Status Close();

  CFileCfg& file_;
  CCfgParser* parser_;
  std::list<OpenCommand> open_;
};

}  // namespace varnok
