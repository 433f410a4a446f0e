#include "cfg/block.h"

#include <list>
#include <optional>
#include <utility>
#include <vector>

#include "app/services/trace.h"
#include "cfg/block_reader.h"
#include "cfg/cfg_parser.h"
#include "cfg/script_watcher.h"

namespace varnok {
namespace {

/// A block whose body is being run; writes the log's lines of the way in and out.
struct RunningBlock {
  explicit RunningBlock(CCfgBlock& block)
      : className(block.ClassName()), scope(className, "Process"), chosen(block.Choose()) {
    if (chosen == nullptr) return;
    next = chosen->Body().begin();
    if (chosen == &block) return;
    chosenScope.emplace(chosen->ClassName(), "Process");
    Tell(&ScriptWatcher::Reaches, chosen->Line());
  }

  bool IsDone() const { return next == CommandList::Iterator(); }

  const char* className;
  TraceScope scope;
  CCfgBlock* chosen;
  std::optional<TraceScope> chosenScope;
  CommandList::Iterator next;
};

}  // namespace

Status CCfgBlock::ReadFromFile(CFileCfg& file) {
  return BlockReader(file, parser_).Read(*this);
}

Status CCfgBlock::Process() {
  std::list<RunningBlock> running;
  running.emplace_back(*this);
  Status status = kSuccess;
  while (!running.empty() && status == kSuccess) {
    RunningBlock& innermost = running.back();
    if (innermost.IsDone()) {
      running.pop_back();
      continue;
    }
    CCfgCommand& command = *innermost.next++;
    Tell(&ScriptWatcher::Runs, command);
    if (CCfgBlock* block = command.AsBlock())
      running.emplace_back(*block);
    else
      status = command.Process();
  }
  while (!running.empty()) {
    Trace("%s::Process - Command in the body failed", 1, running.back().className);
    running.pop_back();
  }
  return status;
}

void CCfgBlock::DebugPrint() {
  std::list<TraceScope> scopes;
  std::vector<CommandList::Iterator> printed;
  auto enter = [&](CCfgBlock& block) {
    scopes.emplace_back(block.ClassName(), "DebugPrint");
    block.PrintHead();
    printed.push_back(block.body_.begin());
  };
  enter(*this);
  while (!printed.empty()) {
    if (printed.back() == CommandList::Iterator()) {
      printed.pop_back();
      scopes.pop_back();
      continue;
    }
    CCfgCommand& command = *printed.back()++;
    if (CCfgBlock* inner = command.AsBlock())
      enter(*inner);
    else
      command.DebugPrint();
  }
}

CCfgCommand* CCfgBlock::Next() {
  TraceScope scope(ClassName(), "Next");
  auto next = body_.begin();
  if (link_ != nullptr) next = ++CommandList::Iterator(link_);
  return link_ = next == body_.end() ? nullptr : &*next;
}

CCfgCommand* CCfgBlock::Previous() {
  TraceScope scope(ClassName(), "Previous");
  CCfgCommand* before = nullptr;
  for (CCfgCommand& command : body_) {
    if (&command == link_) break;
    before = &command;
  }
  return link_ = before;
}

Status CCfgBlock::RefuseEndOfFile() const {
  CCfgParser::SetLastError("%s found without matching ENDIF.", GetDisplayName());
  Trace("%s::ReadFromFile - No matching ENDIF", 1, ClassName());
  return cfg_status::kNoEndIf;
}

Status CCfgBlock::Append(PoolPtr<CCfgCommand> command) {
  if (!command->IsValidCommandLocation()) {
    Trace("%s::ReadFromFile - Command out of order", 1, ClassName());
    return cfg_status::kOutOfPlace;
  }
  body_.push_back(std::move(command));
  return kSuccess;
}

}  // namespace varnok
