// The run mode of configuration scripts.
#include <algorithm>
#include <array>

#include "app/app_status.h"
#include "app/messages.h"
#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "app/varnok.h"
#include "cfg/cfg_main.h"

namespace varnok {
namespace {

struct StatusRow {
  Status engine;
  int program;
};

/// What the engine's failures of processing are to the program; any other is kScriptProcessing.
constexpr std::array<StatusRow, 5> kProcessingStatuses{{
    {cfg_status::kFileNotFound, app_status::kFileIo},
    {cfg_status::kSdrLoadFailed, app_status::kLoad},
    {cfg_status::kFruLoadFailed, app_status::kLoad},
    {cfg_status::kSdrCommitFailed, app_status::kUpdate},
    {cfg_status::kFruCommitFailed, app_status::kUpdate},
}};

int ProcessingStatus(Status status) {
  if (status == cfg_status::kErrorLevel) {
    std::uint64_t level = 0;
    (void)CfgFile::GetErrorLevel(level);
    return static_cast<int>(level);
  }
  auto row = std::find_if(kProcessingStatuses.begin(), kProcessingStatuses.end(),
                          [status](const StatusRow& each) { return each.engine == status; });
  return row == kProcessingStatuses.end() ? app_status::kScriptProcessing : row->program;
}

}  // namespace

int CVarnok::CfgFileExecutive() {
  Trace("CVarnok::CfgFileExecutive [ENTRY]", 3);
  std::u16string outputFile;
  if (int status = UseTemporaryFile(u"CFG.TMP", outputFile); status != app_status::kSuccess) return status;
  if (!outputFile.empty()) (void)CfgFile::SetOutputFile(Narrow(outputFile));
  if (Status status = CfgMain::LoadConfigurationFromFile(fileName_.c_str(), nullptr); status != kSuccess)
    return FailStep("CVarnok::CfgFileExecutive - LoadConfigurationFromFile failed",
                    status == cfg_status::kFileNotFound ? app_status::kFileIo : app_status::kScriptParsing,
                    CfgMain::GetLastErrorMessage);
  if (Status status = CfgFile::ProcessCommands(); status != kSuccess)
    return FailStep("CVarnok::CfgFileExecutive - ProcessCommands failed", ProcessingStatus(status),
                    CfgMain::GetLastErrorMessage);
  if (CfgMain::CommitConfigurationToSystem() != kSuccess)
    return FailStep("CVarnok::CfgFileExecutive - CommitConfigurationToSystem failed", app_status::kUpdate,
                    CfgMain::GetLastErrorMessage);
  std::uint32_t inputFiles = 0;
  (void)CfgFile::GetNumberOfInputFiles(inputFiles);
  if (inputFiles > 0) {
    PrintText("\nThe system has been updated successfully.\n");
    PrintText(kResetRequired);
  }
  Trace("CVarnok::CfgFileExecutive [EXIT]", 3);
  return app_status::kSuccess;
}

}  // namespace varnok
