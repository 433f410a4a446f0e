// The front of the script engine.
//
//   CfgMain::Initialize(); CfgMain::SetProgressCallback(...); CfgFile::SetDisplayCallback(...); ...
//   CfgMain::LoadConfigurationFromFile(u"MASTER.CFG", nullptr);   // reads and checks the script, touches
//   nothing CfgFile::ProcessCommands();                                   // decides, asks, loads files
//   CfgMain::CommitConfigurationToSystem();                       // writes SDR records and FRU images
//
// Every operation but Initialize fails with cfg_status::kNotInitialized until Initialize has run.
#pragma once

#include <cstdint>
#include <string_view>

#include "app/services/callbacks.h"
#include "cfg/cfg_status.h"

namespace varnok {

class CCfgParser;

namespace CfgMain {

/// Starts without a script. kNotLoaded or kOutOfMemory without memory, kNoBmcVersion when the BMC does not
/// answer.
Status Initialize();
/// Reads a script, after forgetting an earlier one. `name`, when not null, is the name whose extension is
/// checked. kFileNotFound, kBadExtension, or the status of the line that failed.
Status LoadConfigurationFromFile(const char16_t* path, const char16_t* name);
/// Writes what the processed script asks for. kCommitRefused when none was processed.
Status CommitConfigurationToSystem();
Status SetProgressCallback(ProgressCallback callback);
/// The message of the last failure, null when there is none. It is handed out once and stays valid until the
/// next call.
Status GetLastErrorMessage(const char16_t*& text);

/// What the BMC is, as GetBmcTypeAndVersion tells it.
struct BmcIdentity {
  std::uint32_t type = 0;
  std::uint32_t ipmiVersion = 0;
};
BmcIdentity GetBmcIdentity();
/// The parser of the loaded script; null before Initialize.
CCfgParser* Parser();

}  // namespace CfgMain

namespace CfgFile {

Status SetDisplayCallback(DisplayCallback callback);
Status SetInputCharCallback(InputCharCallback callback);
Status SetGetEnvVarCallback(GetEnvVarCallback callback);
/// Names a file to which every command line read is appended; an empty name ends that.
Status SetOutputFile(std::string_view name);
/// Runs the loaded script. kErrorLevel when an ERRORLEVEL command stopped it, else the status of the command
/// that failed.
Status ProcessCommands();
/// The level of the ERRORLEVEL command that stopped the script. kNotLoaded without a script.
Status GetErrorLevel(std::uint64_t& level);
/// How many FRU and SDR files the script has loaded.
Status GetNumberOfInputFiles(std::uint32_t& count);

}  // namespace CfgFile

}  // namespace varnok
