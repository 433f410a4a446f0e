#include "cfg/block_reader.h"

#include <utility>

namespace varnok {

BlockReader::~BlockReader() {
  while (!open_.empty()) open_.pop_back();
}

Status BlockReader::Read(CCfgBlock& outermost) {
  Status status = Open(open_.emplace_back(), outermost);
  while (status == kSuccess && !open_.empty()) status = ReadNext();
  return status;
}

Status BlockReader::Open(OpenCommand& entry, CCfgBlock& block) {
  entry.block = &block;
  entry.readScope.emplace(block.ClassName(), "ReadFromFile");
  return block.ReadOwnLine(file_);
}

Status BlockReader::ReadNext() {
  OpenCommand& entry = open_.emplace_back();
  entry.createScope.emplace("CCfgCommand::CreateCommand");
  Status status = CCfgCommand::MakeCommand(&file_, entry.command, parser_);
  if (status == cfg_status::kEndOfScript) {
    open_.pop_back();
    return open_.back().block->RefuseEndOfFile();
  }
  if (status != kSuccess) return status;
  if (entry.command == nullptr) {
    // At the top level the script would end here; a block that lost its ENDIF must not run.
    return Fail("CCfgCommand::CreateCommand", "Memory allocation failed", cfg_status::kOutOfMemory);
  }
  if (CCfgBlock* block = entry.command->AsBlock()) return Open(entry, *block);
  if (entry.command->Type() != CommandType::Skip) status = entry.command->ReadFromFile(file_);
  return status == kSuccess ? Close() : status;
}

/// Hands the command read last to the block around it; a block that this completes is handed on in turn.
Status BlockReader::Close() {
  for (;;) {
    PoolPtr<CCfgCommand> command = std::move(open_.back().command);
    open_.pop_back();
    if (open_.empty()) return kSuccess;
    bool isComplete = false;
    if (Status status = open_.back().block->Take(std::move(command), isComplete); status != kSuccess)
      return status;
    if (!isComplete) return kSuccess;
  }
}

}  // namespace varnok
