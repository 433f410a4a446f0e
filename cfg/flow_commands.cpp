// Commands that change tags, end the script, or inform: SET, CLEAR, ERRORLEVEL, CONFIGURATION, BOOT,
// BMC_REFRESH.
#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_parser.h"

namespace varnok {
namespace {

class CCfgSet : public CCfgCommand {
 public:
  Status ReadFromFile(CFileCfg& file) override;
  Status Process() override;
  void Describe(ScriptVisitor& visitor) const override;
};

class CCfgClear : public CCfgCommand {
 public:
  Status ReadFromFile(CFileCfg& file) override;
  Status Process() override;
  void DebugPrint() override { TraceScope scope("CCfgClear::DebugPrint"); }
  void Describe(ScriptVisitor& visitor) const override;

 private:
  bool wasSet_ = false;  ///< before it was cleared last
};

class CCfgErrorLevel : public CCfgCommand {
 public:
  Status ReadFromFile(CFileCfg& file) override;
  Status Process() override;
  void DebugPrint() override;

 private:
  std::uint32_t level_ = 0;
};

class CCfgConfiguration : public CCfgCommand {
 public:
  Status ReadFromFile(CFileCfg& file) override;
  Status Process() override;
  void DebugPrint() override { TraceScope scope("CCfgConfiguration::DebugPrint"); }
};

class CCfgBoot : public CCfgCommand {
 public:
  Status ReadFromFile(CFileCfg& file) override;
  Status Execute() override;
  void DebugPrint() override;
};

/// Asks for one BMC refresh at the end of the commit, however often it stands in a script.
class CCfgBmcRefresh : public CCfgCommand {
 public:
  Status ReadFromFile(CFileCfg& file) override;
  Status Process() override;
  Status Execute() override;
};

// --- SET, CLEAR ---

Status CCfgSet::ReadFromFile(CFileCfg& file) {
  constexpr const char* kName = "CCfgSet::ReadFromFile";
  TraceScope scope(kName);
  return ReadOneParameter(kName, file, cfg_status::kTooManyParameters);
}

Status CCfgSet::Process() {
  TraceScope scope("CCfgSet::Process");
  if (parser_ != nullptr) parser_->SetTag(FirstParameter());
  return kSuccess;
}

void CCfgSet::Describe(ScriptVisitor& visitor) const {
  visitor.Fact(ScriptFact::SetsTag, FirstParameter(), Line());
}

Status CCfgClear::ReadFromFile(CFileCfg& file) {
  constexpr const char* kName = "CCfgClear::ReadFromFile";
  TraceScope scope(kName);
  return ReadOneParameter(kName, file, cfg_status::kTooManyParameters);
}

Status CCfgClear::Process() {
  TraceScope scope("CCfgClear::Process");
  if (parser_ == nullptr) return kSuccess;
  wasSet_ = parser_->IsTagSet(FirstParameter());
  parser_->ClearTag(FirstParameter());
  return kSuccess;
}

void CCfgClear::Describe(ScriptVisitor& visitor) const {
  visitor.Fact(ScriptFact::ClearsTag, FirstParameter(), Line());
}

// --- ERRORLEVEL ---

Status CCfgErrorLevel::ReadFromFile(CFileCfg& file) {
  constexpr const char* kName = "CCfgErrorLevel::ReadFromFile";
  TraceScope scope(kName);
  std::string_view cursor, token;
  if (Status status = ReadLine(kName, file, cursor); status != kSuccess) return status;
  // Kept: without a level the command stands for ERRORLEVEL 0; scripts end with it.
  if (IsBufferEmpty(cursor)) return kSuccess;
  if (!GetNextInput(cursor, token) || !StringToInt(token, level_)) {
    CCfgParser::SetLastError("%s is not a valid error level, it must be a valid hexidecimal number.", token);
    return Fail(kName, "Invalid error level", cfg_status::kBadLine);
  }
  return RefuseExtra(kName, cursor, cfg_status::kTooManyParameters);
}

Status CCfgErrorLevel::Process() {
  TraceScope scope("CCfgErrorLevel::Process");
  CCfgParser::SetLastError("Configuration file exiting due to ERRORLEVEL %02X.", level_);
  return cfg_status::kErrorLevel +
         static_cast<std::uint64_t>(std::int64_t{static_cast<std::int32_t>(level_)});
}

void CCfgErrorLevel::DebugPrint() {
  TraceScope scope("CCfgErrorLevel::DebugPrint");
  Print("ERRORLEVEL %02X\n", level_);
}

// --- CONFIGURATION ---

/// Configuration name, target platform, and a third parameter without a meaning.
constexpr std::size_t kMostParameters = 3;

Status CCfgConfiguration::ReadFromFile(CFileCfg& file) {
  constexpr const char* kName = "CCfgConfiguration::ReadFromFile";
  TraceScope scope(kName);
  std::string_view cursor, parameter;
  if (Status status = ReadLine(kName, file, cursor); status != kSuccess) return status;
  std::size_t count = 0;
  for (; count < kMostParameters && !cursor.empty() && GetNextInput(cursor, parameter); ++count)
    if (count == 1) parser_->SetTargetPlatformInfo(parameter);
  if (count == 0) return MissingParameter(kName, "first", cfg_status::kBadLine);
  return RefuseExtra(kName, cursor, cfg_status::kTooManyParameters);
}

Status CCfgConfiguration::Process() {
  TraceScope scope("CCfgConfiguration::Process");
  std::u16string shown;
  std::string_view cursor = Parameters(), parameter;
  for (bool isFirst = true; TakeArgument(cursor, parameter); isFirst = false)
    shown += (isFirst ? u"" : u" ") + Widen(parameter);
  Print("Update File Configuration: %s\n", shown);
  return kSuccess;
}

// --- BOOT ---

Status CCfgBoot::ReadFromFile(CFileCfg& file) {
  constexpr const char* kName = "CCfgBoot::ReadFromFile";
  TraceScope scope(kName);
  std::string_view rest;
  Status status = ReadLine(kName, file, rest);
  return status == kSuccess ? RefuseExtra(kName, rest, cfg_status::kTooManyParameters) : status;
}

Status CCfgBoot::Execute() {
  TraceScope scope("CCfgBoot::Execute");
  return kSuccess;
}

void CCfgBoot::DebugPrint() {
  TraceScope scope("CCfgBoot::DebugPrint");
  Print("Boot\n");
}

// --- BMC_REFRESH ---

Status CCfgBmcRefresh::ReadFromFile(CFileCfg&) {
  TraceScope scope("CCfgBmcRefresh::ReadFromFile");
  return kSuccess;
}

Status CCfgBmcRefresh::Process() {
  TraceScope scope("CCfgBmcRefresh::Process");
  if (parser_ != nullptr) parser_->AddUpdateCommand(*this, nullptr, true);
  return kSuccess;
}

Status CCfgBmcRefresh::Execute() {
  TraceScope scope("CCfgBmcRefresh::Execute");
  return kSuccess;
}

}  // namespace

CommandFamily FlowCommands() {
  static constexpr CommandRow kRows[] = {
      {CommandType{23}, "SET", "SET", Create<CCfgSet>},
      {CommandType{2}, "CLEAR", "CLEAR", Create<CCfgClear>},
      {CommandType{8}, "ERRORLEVEL", "ERRORLEVEL", Create<CCfgErrorLevel>},
      {CommandType{0}, "BOOT", "BOOT", Create<CCfgBoot>},
      {CommandType{4}, "CONFIGURATION", "CONFIGURATION", Create<CCfgConfiguration>},
      // Kept: without a name of its own; messages show this one, as it is spelled.
      {CommandType::BmcRefresh, "BMC_REFRESH", "INVLALID_COMMAND_TYPE", Create<CCfgBmcRefresh>},
  };
  return kRows;
}

}  // namespace varnok
