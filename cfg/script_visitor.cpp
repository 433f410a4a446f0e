#include "cfg/script_visitor.h"

#include <vector>

#include "cfg/block.h"
#include "cfg/cfg_command.h"

namespace varnok {
namespace {

/// A body being walked, and the ELSE that follows it.
struct Branch {
  CommandList::Iterator next;
  const CCfgBlock* otherwise;
};

void Enter(const CCfgBlock& block, std::vector<Branch>& open, ScriptVisitor& visitor) {
  visitor.EnterBranch();
  open.push_back({block.Body().begin(), block.Else()});
}

}  // namespace

void WalkScript(const CommandList& commands, ScriptVisitor& visitor) {
  std::vector<Branch> open{{commands.begin(), nullptr}};
  while (!open.empty()) {
    if (open.back().next == CommandList::Iterator()) {
      const CCfgBlock* otherwise = open.back().otherwise;
      open.pop_back();
      if (!open.empty()) visitor.LeaveBranch();
      if (otherwise == nullptr) continue;
      visitor.Command(*otherwise);
      Enter(*otherwise, open, visitor);
      continue;
    }
    CCfgCommand& command = *open.back().next++;
    if (command.Type() == CommandType::Skip) continue;
    visitor.Command(command);
    command.Describe(visitor);
    if (const CCfgBlock* block = command.AsBlock()) Enter(*block, open, visitor);
  }
}

}  // namespace varnok
