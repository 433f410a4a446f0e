#include "cfg/block_commands.h"

#include <algorithm>
#include <list>
#include <optional>
#include <utility>

#include "app/services/console.h"
#include "app/services/trace.h"
#include "cfg/block_reader.h"
#include "cfg/cfg_parser.h"

namespace varnok {
namespace {

constexpr const char* kMisplaced = "Command %s can not be used here, it must follow an IFSET command.";

/// A block whose body is being run; writes the log's lines of the way in and out.
struct RunningBlock {
  explicit RunningBlock(CCfgBlock& block)
      : className(block.ClassName()), scope(className, "Process"), chosen(block.Choose()) {
    if (chosen != nullptr && chosen != &block) chosenScope.emplace(chosen->ClassName(), "Process");
  }

  bool IsDone() const { return chosen == nullptr || next == chosen->Body().size(); }

  const char* className;
  TraceScope scope;
  CCfgBlock* chosen;
  std::optional<TraceScope> chosenScope;
  std::size_t next = 0;
};

}  // namespace

CCfgBlock::~CCfgBlock() {
  // Inner blocks are emptied before they are destroyed, so that destruction does not nest.
  CommandList doomed = std::move(body_);
  while (!doomed.empty()) {
    PoolPtr<CCfgCommand> command = std::move(doomed.back());
    doomed.pop_back();
    if (CCfgBlock* block = command->AsBlock()) block->Release(doomed);
  }
}

void CCfgBlock::Release(CommandList& commands) {
  commands.insert(commands.end(), std::make_move_iterator(body_.begin()),
                  std::make_move_iterator(body_.end()));
  body_.clear();
}

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
    CCfgCommand& command = *innermost.chosen->Body()[innermost.next++];
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
  std::vector<std::pair<CCfgBlock*, std::size_t>> printed{{this, 0}};
  PrintHead();
  while (!printed.empty()) {
    auto& [block, next] = printed.back();
    if (next == block->body_.size()) {
      printed.pop_back();
      continue;
    }
    CCfgCommand& command = *block->body_[next++];
    if (CCfgBlock* inner = command.AsBlock()) {
      inner->PrintHead();
      printed.emplace_back(inner, 0);
    } else {
      command.DebugPrint();
    }
  }
}

CCfgCommand* CCfgBlock::Next() {
  auto current =
      std::find_if(body_.begin(), body_.end(), [this](const auto& each) { return each.get() == link_; });
  auto next = link_ == nullptr || current == body_.end() ? body_.begin() : current + 1;
  return link_ = next == body_.end() ? nullptr : next->get();
}

CCfgCommand* CCfgBlock::Previous() {
  auto current =
      std::find_if(body_.begin(), body_.end(), [this](const auto& each) { return each.get() == link_; });
  return link_ = current == body_.begin() ? nullptr : (current - 1)->get();
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

// --- IFSET ---

CCfgIfSet::~CCfgIfSet() {
  // Handed to the base, whose destructor takes nested blocks apart without nesting.
  if (else_ != nullptr) body_.push_back(std::move(else_));
}

void CCfgIfSet::Release(CommandList& commands) {
  CCfgBlock::Release(commands);
  if (else_ != nullptr) commands.push_back(std::move(else_));
}

Status CCfgIfSet::ReadOwnLine(CFileCfg& file) {
  std::string rest;
  if (!ReadLineFromFile(file, rest)) return cfg_status::kBadLine;
  std::string_view cursor = rest;
  std::string tag;
  while (!cursor.empty() && GetNextInput(cursor, tag)) tags_.push_back(tag);
  if (tags_.empty()) return MissingParameter("first", cfg_status::kBadLine);
  // What is no word must not leave the block with fewer conditions than were written.
  return RefuseExtra(cursor, cfg_status::kBadLine);
}

Status CCfgIfSet::Take(PoolPtr<CCfgCommand> command, bool& isComplete) {
  isComplete = command->Type() == CommandType::Else || command->Type() == CommandType::EndIf;
  if (command->Type() == CommandType::Else) else_ = std::move(command);
  return isComplete ? kSuccess : Append(std::move(command));
}

CCfgBlock* CCfgIfSet::Choose() {
  bool holds = std::all_of(tags_.begin(), tags_.end(), [this](const std::string& tag) {
    return parser_ != nullptr && parser_->IsTagSet(tag);
  });
  if (holds) return this;
  return else_ != nullptr ? else_->AsBlock() : nullptr;
}

void CCfgIfSet::PrintHead() const {
  Print("IFSET");
  for (const std::string& tag : tags_) Print(" %s", tag);
  Print("\n");
}

// --- ELSE, ENDIF ---

Status CCfgElse::ReadOwnLine(CFileCfg& file) {
  std::string rest;
  if (!ReadLineFromFile(file, rest)) return cfg_status::kBadLine;
  line_ = file.GetCurrentLineNumber();
  return RefuseExtra(rest, cfg_status::kBadLine);
}

Status CCfgElse::Take(PoolPtr<CCfgCommand> command, bool& isComplete) {
  isComplete = command->Type() == CommandType::EndIf;
  return isComplete ? kSuccess : Append(std::move(command));
}

bool CCfgElse::IsValidCommandLocation() {
  TraceScope scope("CCfgElse::IsValidCommandLocation");
  CCfgParser::SetLastError(kMisplaced, GetDisplayName());
  Trace("CCfgElse::IsValidCommandLocation - ELSE outside an IFSET block", 1);
  // The error is to be reported at this line, not at the ENDIF that reading has reached.
  if (parser_ != nullptr) parser_->GotoLineInFile(line_);
  return false;
}

void CCfgElse::PrintHead() const {
  Print("ELSE\n");
}

bool CCfgEndIf::IsValidCommandLocation() {
  TraceScope scope("CCfgEndIf::IsValidCommandLocation");
  CCfgParser::SetLastError(kMisplaced, GetDisplayName());
  Trace("CCfgEndIf::IsValidCommandLocation - ENDIF outside an IFSET block", 1);
  return false;
}

}  // namespace varnok
