#include "app/varnok.h"

#include <utility>

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
  if (IpmiLoadProtocol() != ipmi_result::kSuccess) {
    return Fail("CVarnok::Initialize", "Failed to load IPMI protocol",
                FailWith(u"Failed to load IPMI protocol.", app_status::kProtocolInterfaces));
  }
  constexpr std::uint8_t kReceiveMessageQueue = 1;
  IpmiClearMessageFlags(kReceiveMessageQueue);
  if (SmbiosInitialize() != kSuccess)
    return FailStep("CVarnok::Initialize - Initialize for SMBIOS failed", app_status::kSmbios,
                    SmbiosGetLastErrorMessage);
  if (int status = InitializeBmcState(); status != app_status::kSuccess) return status;
  if (int status = InitializeManagers(); status != app_status::kSuccess) return status;
  Trace("CVarnok::Initialize [EXIT]", 3);
  return app_status::kSuccess;
}

int CVarnok::InitializeBmcState() {
  if (FwUpdate::Initialize() != kSuccess)
    return FailStep("CVarnok::Initialize - Initialize for FwUpdate failed", app_status::kProtocolInterfaces,
                    FwUpdate::GetLastErrorMessage);
  (void)FwUpdate::SetProgressCallback(Dornquist::DisplayProgress);
  // Kept: scripts had this check first; the trace lines still say so.
  bool isInTransferMode = false;
  if (FwUpdate::IsBmcInFwTransferMode(isInTransferMode) != kSuccess)
    return FailStep("CVarnok::CfgFileExecutive - IsBmcInFwTransferMode failed", app_status::kBmcCommunication,
                    FwUpdate::GetLastErrorMessage);
  if (isInTransferMode)
    return FailStep("CVarnok::CfgFileExecutive - BMC is in FW Transfer mode", app_status::kBmcCommunication,
                    FwUpdate::GetLastErrorMessage);
  return app_status::kSuccess;
}

// A manager that is initialised takes its callbacks: their setters fail on one that is not, and on nothing
// else.
int CVarnok::InitializeManagers() {
  if (CfgMain::Initialize() != kSuccess)
    return FailStep("CVarnok::Initialize - Initialize for CfgFile failed", app_status::kProtocolInterfaces,
                    CfgMain::GetLastErrorMessage);
  (void)CfgMain::SetProgressCallback(Dornquist::DisplayProgress);
  (void)CfgFile::SetDisplayCallback(DisplayText);
  (void)CfgFile::SetInputCharCallback(InputChar);
  (void)CfgFile::SetGetEnvVarCallback(GetEnvVar);
  if (FruData::Initialize() != kSuccess)
    return FailStep("CVarnok::Initialize - Initialize for Frudata failed", app_status::kProtocolInterfaces,
                    FruData::GetLastErrorMessage);
  (void)FruData::SetProgressCallback(Dornquist::DisplayProgress);
  (void)FruData::SetDisplayHexCallback(DisplayHex);
  if (SdrData::Initialize() != kSuccess)
    return FailStep("CVarnok::Initialize - Initialize for Sdrdata failed", app_status::kProtocolInterfaces,
                    SdrData::GetLastErrorMessage);
  (void)SdrData::SetProgressCallback(Dornquist::DisplayProgress);
  (void)SdrData::SetDisplayHexCallback(DisplayHex);
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
  SetTemporaryFile(false);
  CommandLine commandLine;
  bool isValid = ReadCommandLine(argc, argv, commandLine);
  mode_ = commandLine.mode;
  fileName_ = commandLine.fileName;
  if (isValid) return app_status::kSuccess;
  Trace("CVarnok::ParseCommandLine - Invalid command line arguments", 1);
  if (argc > 1) Print("\n%s\n\n", "Invalid command line arguments.\n");
  Print("%s", kShortUsage);
  return app_status::kCommandLine;
}

int CVarnok::FailStep(const char* line, int status, Status (*getMessage)(const char16_t*& text)) {
  (void)getMessage(lastErrorMessage_);  // null from one that is not initialised: the status text shows then
  Trace(line, 1);
  return status;
}

int CVarnok::FailWith(std::u16string message, int status) {
  message_ = std::move(message);
  lastErrorMessage_ = message_.c_str();
  return status;
}

}  // namespace varnok
