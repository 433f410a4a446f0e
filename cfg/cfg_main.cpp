#include "cfg/cfg_main.h"

#include "app/services/trace.h"
#include "cfg/cfg_command.h"
#include "cfg/cfg_parser.h"
#include "firmware/lasting.h"
#include "firmware/pool.h"
#include "platform/ipmi.h"

namespace varnok {
namespace {

struct EngineState {
  bool isInitialized = false;
  bool isLoaded = false;
  bool isBusy = false;
  bool isProcessed = false;
  std::uint64_t errorLevel = 0;
  PoolPtr<CCfgParser> parser;
  std::int64_t currentLine = -1;
  CfgMain::BmcIdentity bmc;
};

PoolPtr<EngineState>& Engine() {
  return Lasting<PoolPtr<EngineState>>();
}

/// `line` is what the log says of an operation that runs before Initialize.
bool IsReady(const char* line) {
  if (Engine() != nullptr && Engine()->isInitialized) return true;
  Trace("CfgMain::%s since interfaces are not initialized", 1, line);
  return false;
}

Status InitializeProtocol() {
  TraceScope scope("Cfg- Main.cpp::InitializeProtocol");
  Engine() = nullptr;
  Engine() = MakeInPool<EngineState>();
  if (Engine() != nullptr) return kSuccess;
  return Fail("Cfg- Main.cpp::InitializeProtocol", "NULL value for gp_cfgParse", cfg_status::kNotLoaded);
}

/// Takes the level off the status of an ERRORLEVEL command.
Status SplitErrorLevel(Status status) {
  bool isEngineStatus = (status.value & cfg_status::kModuleBits.value) == cfg_status::kModuleBits.value;
  if (status <= cfg_status::kErrorLevel || !isEngineStatus) return status;
  Engine()->errorLevel = status.value - cfg_status::kErrorLevel.value;
  return cfg_status::kErrorLevel;
}

}  // namespace

Status CfgMain::Initialize() {
  TraceScope scope("CfgMain::Initialize");
  if (Status status = InitializeProtocol(); status != kSuccess) return status;
  EngineMessage().Reset();
  EngineState& engine = *Engine();
  engine.parser = MakeInPool<CCfgParser>();
  if (engine.parser == nullptr) {
    return Fail("CfgMain::Initialize", "Memory allocation failed", cfg_status::kOutOfMemory);
  }
  CCfgCommand::Callbacks().progress = nullptr;
  engine.isInitialized = true;
  if (GetBmcTypeAndVersion(engine.bmc.type, engine.bmc.ipmiVersion) != ipmi_result::kSuccess) {
    return Fail("CfgMain::Initialize", "Unable to read BMC type and version resource for this module",
                cfg_status::kNoBmcVersion);
  }
  return kSuccess;
}

Status CfgMain::LoadConfigurationFromFile(const char16_t* path, const char16_t* name) {
  TraceScope scope("CfgMain::LoadConfigurationFromFile");
  if (!IsReady("LoadConfigurationFromFile - Unable to load configuration file"))
    return cfg_status::kNotInitialized;
  EngineState& engine = *Engine();
  engine.currentLine = -1;
  engine.isLoaded = false;
  engine.isBusy = true;
  Status status = engine.parser->ParseFile(path, name);
  engine.isLoaded = status == kSuccess;
  if (status != kSuccess) return Fail("CfgMain::LoadConfigurationFromFile", "ParseFile failed", status);
  return kSuccess;
}

Status CfgMain::CommitConfigurationToSystem() {
  TraceScope scope("CfgMain::CommitConfigurationToSystem");
  if (!IsReady("CommitConfigurationToSystem - Unable to commit configuration"))
    return cfg_status::kNotInitialized;
  if (Engine()->isProcessed) return Engine()->parser->Execute();
  return Fail("CfgMain::CommitConfigurationToSystem", "Commands are not processed",
              cfg_status::kCommitRefused);
}

Status CfgMain::SetProgressCallback(ProgressCallback callback) {
  TraceScope scope("CfgMain::SetProgressCallback");
  if (!IsReady("SetProgressCallback - Unable to set callback")) return cfg_status::kNotInitialized;
  CCfgCommand::Callbacks().progress = callback;
  return kSuccess;
}

Status CfgMain::GetLastErrorMessage(const char16_t*& text) {
  TraceScope scope("CfgMain::GetLastErrorMessage");
  text = nullptr;
  if (!IsReady("GetLastErrorMessage - Unable to get last error message")) return cfg_status::kNotInitialized;
  text = EngineMessage().HandOut();
  return kSuccess;
}

CfgMain::BmcIdentity CfgMain::GetBmcIdentity() {
  return Engine() != nullptr ? Engine()->bmc : BmcIdentity{};
}

CCfgParser* CfgMain::Parser() {
  return Engine() != nullptr ? Engine()->parser.get() : nullptr;
}

Status CfgFile::SetDisplayCallback(DisplayCallback callback) {
  TraceScope scope("CfgFile::SetDisplayCallback");
  if (!IsReady("SetDisplayCallback - Unable to set callback")) return cfg_status::kNotInitialized;
  CCfgCommand::Callbacks().display = callback;
  return kSuccess;
}

Status CfgFile::SetInputCharCallback(InputCharCallback callback) {
  TraceScope scope("CfgFile::SetInputCharCallback");
  if (!IsReady("SetInputCharCallback - Unable to set callback")) return cfg_status::kNotInitialized;
  CCfgCommand::Callbacks().inputChar = callback;
  return kSuccess;
}

Status CfgFile::SetGetEnvVarCallback(GetEnvVarCallback callback) {
  TraceScope scope("CfgFile::SetGetEnvVarCallback");
  if (!IsReady("SetGetEnvVarCallback - Unable to set callback")) return cfg_status::kNotInitialized;
  CCfgCommand::Callbacks().getEnvVar = callback;
  return kSuccess;
}

Status CfgFile::SetOutputFile(std::string_view name) {
  TraceScope scope("CfgFile::SetOutputFile");
  if (!IsReady("SetOutputFile - Unable to set output file")) return cfg_status::kNotInitialized;
  Engine()->parser->SetEchoFile(name);
  return kSuccess;
}

Status CfgFile::ProcessCommands() {
  TraceScope scope("CfgFile::ProcessCommands");
  if (!IsReady("ProcessCommands - Unable to process commmands")) return cfg_status::kNotInitialized;
  EngineState& engine = *Engine();
  engine.currentLine = -1;
  engine.isProcessed = false;
  engine.isBusy = true;
  if (!engine.isLoaded) {
    return Fail("CfgMain::ProcessCommands", "Unable to process commands since file is not loaded",
                cfg_status::kNotLoaded);
  }
  Status status = engine.parser->Process();
  engine.isProcessed = status == kSuccess;
  if (status != kSuccess) TraceFailure("CfgMain::ProcessCommands", "Process failed");
  return SplitErrorLevel(status);
}

Status CfgFile::GetErrorLevel(std::uint64_t& level) {
  TraceScope scope("CfgFile::GetErrorLevel");
  if (!IsReady("GetErrorLevel - Unable to get error level")) return cfg_status::kNotInitialized;
  if (!Engine()->isLoaded) {
    return Fail("CfgMain::GetErrorLevel", "Unable to Get error level since file is not loaded",
                cfg_status::kNotLoaded);
  }
  level = Engine()->errorLevel;
  return kSuccess;
}

Status CfgFile::GetNumberOfInputFiles(std::uint32_t& count) {
  TraceScope scope("CfgFile::GetNumberOfInputFiles");
  if (!IsReady("GetNumberOfInputFiles - Unable to get number of input files"))
    return cfg_status::kNotInitialized;
  count = static_cast<std::uint32_t>(Engine()->parser->UpdateFileCount());
  return kSuccess;
}

}  // namespace varnok
