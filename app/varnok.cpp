#include "app/varnok.h"

#include "app/app_status.h"
#include "app/command_line.h"
#include "app/services/console.h"
#include "app/services/trace.h"
#include "app/usage.h"
#include "cfg/cfg_main.h"
#include "fru/fru_data.h"
#include "platform/fw_update.h"
#include "platform/ipmi.h"
#include "platform/smbios.h"
#include "sdr/sdr_data.h"

namespace varnok {

int CVarnok::Initialize() {
  Trace("CVarnok::Initialize [ENTRY]", 3);
  SetCtrl_C_Enable();
  IsAlreadyRunning();
  if (IpmiLoadProtocol() != ipmi_result::kSuccess)
    return FailWith(u"Failed to load IPMI protocol.", app_status::kProtocolInterfaces);
  constexpr std::uint8_t kReceiveMessageQueue = 1;
  IpmiClearMessageFlags(kReceiveMessageQueue);
  if (SmbiosInitialize() != kSuccess) {
    lastErrorMessage_ = SmbiosGetLastErrorMessage();
    Trace("CVarnok::Initialize - Initialize for SMBIOS failed", 1);
    return app_status::kSmbios;
  }
  if (int status = InitializeBmcState(); status != app_status::kSuccess) return status;
  if (int status = InitializeManagers(); status != app_status::kSuccess) return status;
  Trace("CVarnok::Initialize [EXIT]", 3);
  return app_status::kSuccess;
}

int CVarnok::InitializeBmcState() {
  if (FwUpdate::Initialize() != kSuccess) {
    FwUpdate::GetLastErrorMessage(lastErrorMessage_);
    Trace("CVarnok::Initialize - Initialize for FwUpdate failed", 1);
    return app_status::kProtocolInterfaces;
  }
  FwUpdate::SetProgressCallback(Dornquist::DisplayProgress);
  // Scripts had this check first; the trace lines still say so.
  bool isInTransferMode = false;
  if (FwUpdate::IsBmcInFwTransferMode(isInTransferMode) != kSuccess) {
    FwUpdate::GetLastErrorMessage(lastErrorMessage_);
    Trace("CVarnok::CfgFileExecutive - IsBmcInFwTransferMode failed", 1);
    return app_status::kBmcCommunication;
  }
  if (isInTransferMode) {
    FwUpdate::GetLastErrorMessage(lastErrorMessage_);
    Trace("CVarnok::CfgFileExecutive - BMC is in FW Transfer mode", 1);
    return app_status::kBmcCommunication;
  }
  return app_status::kSuccess;
}

int CVarnok::InitializeManagers() {
  if (CfgMain::Initialize() != kSuccess) {
    CfgMain::GetLastErrorMessage(lastErrorMessage_);
    Trace("CVarnok::Initialize - Initialize for CfgFile failed", 1);
    return app_status::kProtocolInterfaces;
  }
  CfgMain::SetProgressCallback(Dornquist::DisplayProgress);
  CfgFile::SetDisplayCallback(DisplayText);
  CfgFile::SetInputCharCallback(InputChar);
  CfgFile::SetGetEnvVarCallback(GetEnvVar);
  if (FruData::Initialize() != kSuccess) {
    FruData::GetLastErrorMessage(lastErrorMessage_);
    Trace("CVarnok::Initialize - Initialize for Frudata failed", 1);
    return app_status::kProtocolInterfaces;
  }
  FruData::SetProgressCallback(Dornquist::DisplayProgress);
  FruData::SetDisplayHexCallback(DisplayHex);
  if (SdrData::Initialize() != kSuccess) {
    SdrData::GetLastErrorMessage(lastErrorMessage_);
    Trace("CVarnok::Initialize - Initialize for Sdrdata failed", 1);
    return app_status::kProtocolInterfaces;
  }
  SdrData::SetProgressCallback(Dornquist::DisplayProgress);
  SdrData::SetDisplayHexCallback(DisplayHex);
  return app_status::kSuccess;
}

void CVarnok::DeInitialize() {
  SetCtrl_C_Enable();
  Trace("CVarnok::DeInitialize [EXIT]", 3);
}

// The check itself is not made; only its entry shows in the log.
void CVarnok::IsAlreadyRunning() {
  Trace("CVarnok::IsAlreadyRunning [ENTRY]", 3);
}

void CVarnok::SetCtrl_C_Enable() {
  TraceScope scope("CVarnok::SetCtrl_C_Enable");
}

int CVarnok::ParseCommandLine(int argc, char* argv[]) {
  TraceScope scope("CVarnok::ParseCommandLine");
  SetPaging(false);
  usesTemporaryFile_ = false;
  CommandLine commandLine;
  bool isValid = ReadCommandLine(argc, argv, commandLine);
  mode_ = commandLine.mode;
  fileName_ = commandLine.fileName;
  if (isValid) return app_status::kSuccess;
  if (argc > 1) Print("\n%s\n\n", "Invalid command line arguments.\n");
  Print("%s", kShortUsage);
  return app_status::kCommandLine;
}

int CVarnok::FailWith(std::u16string message, int status) {
  message_ = std::move(message);
  lastErrorMessage_ = message_.c_str();
  return status;
}

}  // namespace varnok
