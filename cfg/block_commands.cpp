// IFSET, ELSE and ENDIF: blocks of commands that run when tags are set.
#include "app/services/console.h"
#include "app/services/trace.h"
#include "cfg/block.h"
#include "cfg/cfg_parser.h"

namespace varnok {
namespace {

constexpr const char* kNoIfSet = "Command %s can not be used here, it must follow an IFSET command.";

class CCfgIfSet : public CCfgBlock {
 public:
  ~CCfgIfSet() override;
  const char* ClassName() const override { return "CCfgIfSet"; }
  const CCfgBlock* Else() const override { return else_ != nullptr ? else_->AsBlock() : nullptr; }
  Status ReadOwnLine(CFileCfg& file) override;
  Status Take(PoolPtr<CCfgCommand> command, bool& isComplete) override;
  CCfgBlock* Choose() override;
  void Release(CommandList& commands) override;
  void Describe(ScriptVisitor& visitor) const override;

 protected:
  void PrintHead() const override;

 private:
  PoolPtr<CCfgCommand> else_;
};

class CCfgElse : public CCfgBlock {
 public:
  const char* ClassName() const override { return "CCfgElse"; }
  Status ReadOwnLine(CFileCfg& file) override;
  Status Take(PoolPtr<CCfgCommand> command, bool& isComplete) override;
  bool IsValidCommandLocation() override;

 protected:
  void PrintHead() const override;
};

class CCfgEndIf : public CCfgCommand {
 public:
  bool IsValidCommandLocation() override;
};

// --- IFSET ---

CCfgIfSet::~CCfgIfSet() {
  // A list takes nested blocks apart without nesting.
  CommandList doomed;
  CCfgIfSet::Release(doomed);
}

void CCfgIfSet::Release(CommandList& commands) {
  CCfgBlock::Release(commands);
  if (else_ != nullptr) commands.push_back(std::move(else_));
}

Status CCfgIfSet::ReadOwnLine(CFileCfg& file) {
  constexpr const char* kName = "CCfgIfSet::ReadFromFile";
  std::string_view cursor, tag;
  if (Status status = ReadLine(kName, file, cursor); status != kSuccess) return status;
  bool hasTag = false;
  while (!cursor.empty() && GetNextInput(cursor, tag)) hasTag = true;
  if (!hasTag) return MissingParameter(kName, "first", cfg_status::kBadLine);
  // What is no word must not leave the block with fewer conditions than were written.
  return RefuseExtra(kName, cursor, cfg_status::kBadLine);
}

Status CCfgIfSet::Take(PoolPtr<CCfgCommand> command, bool& isComplete) {
  isComplete = command->Type() == CommandType::Else || command->Type() == CommandType::EndIf;
  if (command->Type() == CommandType::Else) else_ = std::move(command);
  return isComplete ? kSuccess : Append(std::move(command));
}

CCfgBlock* CCfgIfSet::Choose() {
  std::string_view cursor = Parameters(), tag;
  while (TakeArgument(cursor, tag))
    if (!parser_->IsTagSet(tag)) return else_ != nullptr ? else_->AsBlock() : nullptr;
  return this;
}

void CCfgIfSet::Describe(ScriptVisitor& visitor) const {
  std::string_view cursor = Parameters(), tag;
  while (TakeArgument(cursor, tag)) visitor.Fact(ScriptFact::TestsTag, tag, Line());
}

void CCfgIfSet::PrintHead() const {
  Print("IFSET");
  std::string_view cursor = Parameters(), tag;
  while (TakeArgument(cursor, tag)) Print(" %s", tag);
  Print("\n");
}

// --- ELSE, ENDIF ---

Status CCfgElse::ReadOwnLine(CFileCfg& file) {
  constexpr const char* kName = "CCfgElse::ReadFromFile";
  std::string_view rest;
  Status status = ReadLine(kName, file, rest);
  return status == kSuccess ? RefuseExtra(kName, rest, cfg_status::kBadLine) : status;
}

Status CCfgElse::Take(PoolPtr<CCfgCommand> command, bool& isComplete) {
  isComplete = command->Type() == CommandType::EndIf;
  return isComplete ? kSuccess : Append(std::move(command));
}

bool CCfgElse::IsValidCommandLocation() {
  TraceScope scope("CCfgElse::IsValidCommandLocation");
  CCfgParser::SetLastError(kNoIfSet, GetDisplayName());
  TraceFailure("CCfgElse::IsValidCommandLocation", "ELSE outside an IFSET block");
  // The error is to be reported at this line, not at the ENDIF that reading has reached.
  if (parser_ != nullptr) parser_->GotoLineInFile(Line());
  return false;
}

void CCfgElse::PrintHead() const {
  Print("ELSE\n");
}

bool CCfgEndIf::IsValidCommandLocation() {
  TraceScope scope("CCfgEndIf::IsValidCommandLocation");
  CCfgParser::SetLastError(kNoIfSet, GetDisplayName());
  TraceFailure("CCfgEndIf::IsValidCommandLocation", "ENDIF outside an IFSET block");
  return false;
}

}  // namespace

CommandFamily BlockCommands() {
  static constexpr CommandRow kRows[] = {
      {CommandType{14}, "IFSET", "IFSET", Create<CCfgIfSet>},
      {CommandType::Else, "ELSE", "ELSE", Create<CCfgElse>},
      {CommandType::EndIf, "ENDIF", "ENDIF", Create<CCfgEndIf>},
  };
  return kRows;
}

}  // namespace varnok
