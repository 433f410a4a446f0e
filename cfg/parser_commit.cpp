// The update list of a script and its commit.
#include <iterator>

#include "app/services/trace.h"
#include "cfg/cfg_parser.h"
#include "cfg/script_watcher.h"
#include "platform/fw_update.h"

namespace varnok {

void CCfgParser::AddUpdateCommand(CCfgCommand& command, CCfgFileInputCommand* file, bool replace) {
  TraceScope scope("CCfgParser::AddUpdateCommand");
  bool isSdrName = command.Type() == CommandType::SdrName;
  if (isSdrName && replace) RemoveFirstSdrName();
  updates_.push_back(
      {&command, file == nullptr ? updateFiles_.end() : updateFiles_.insert(updateFiles_.end(), file)});
  if (isSdrName) sdrUpdates_.push_back(std::prev(updates_.end()));
}

void CCfgParser::RemoveFirstSdrName() {
  if (sdrUpdates_.empty()) return;
  auto update = sdrUpdates_.front();
  sdrUpdates_.pop_front();
  if (update->file != updateFiles_.end()) updateFiles_.erase(update->file);
  updates_.erase(update);
}

void CCfgParser::ClearUpdateFileList() {
  TraceScope scope("CCfgParser::ClearUpdateFileList");
  for (Update& update : updates_) update.file = updateFiles_.end();
  updateFiles_.clear();
}

void CCfgParser::ForgetUpdates() {
  ClearUpdateFileList();
  sdrUpdates_.clear();
  updates_.clear();
}

Status CCfgParser::Execute() {
  TraceScope scope("CCfgParser::Execute");
  if (!isProcessed_) {
    return Fail("CCfgParser::Execute", "Commands are not processed", cfg_status::kCommitRefused);
  }
  Tell(&ScriptWatcher::Commits);
  isRefreshRequested_ = false;
  Status status = ExecuteWriteFirst();
  if (status == kSuccess) status = ExecuteOthers();
  if (isRefreshRequested_ && FwUpdate::BmcRefresh() != kSuccess) {
    return Fail("CCfgParser::Execute", "Unable to process commands since BmcRefreshfailed",
                cfg_status::kCommitRefused);
  }
  return status;
}

Status CCfgParser::ExecuteWriteFirst() {
  auto update = updates_.begin();
  // Entries moved to the end are not met again.
  for (std::size_t left = updates_.size(); left > 0; --left) {
    auto current = update++;
    if (current->command->IsWriteFirst()) {
      if (Status status = current->command->Execute(); status != kSuccess) {
        return Fail("CCfgParser::Execute", "Unable to execute command", status);
      }
    } else if (current->command->Type() == CommandType::SdrName && std::next(current) != updates_.end()) {
      updates_.splice(updates_.end(), updates_, current);
    }
  }
  return kSuccess;
}

Status CCfgParser::ExecuteOthers() {
  for (const Update& update : updates_) {
    if (update.command->IsWriteFirst()) continue;
    if (update.command->Type() == CommandType::BmcRefresh) isRefreshRequested_ = true;
    if (Status status = update.command->Execute(); status != kSuccess) {
      return Fail("CCfgParser::Execute", "Unable to execute command", status);
    }
  }
  return kSuccess;
}

}  // namespace varnok
