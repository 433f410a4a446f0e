#include "platform/fw_update.h"

#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/trace.h"
#include "firmware/lasting.h"
#include "firmware/pool.h"
#include "platform/cfw_update.h"
#include "platform/ipmi.h"

namespace varnok::FwUpdate {
namespace {

// The product whose firmware restarts by a pass through transfer mode; the others take a cold reset.
constexpr std::uint16_t kTransferModeProduct = 0x0107;
constexpr std::string_view kTransferModeKey = "OKAPI";
constexpr std::uint32_t kSecondsAfterRefresh = 50;

struct Module {
  bool isInitialized = false;
  bool isConfigurationLoaded = false;
  bool isDeviceAddressSelected = false;
  bool isDeviceAreaSelected = false;
  ProgressCallback progress = nullptr;
  std::uint32_t bmcType = 0;
  std::uint32_t ipmiVersion = 0;
  std::u16string lastError;
  PoolPtr<CfwUpdate> update;
};

Module& TheModule() {
  return Lasting<Module>();
}

bool IsInitialized(const char* operation) {
  if (TheModule().isInitialized) return true;
  Trace("%s - FwUpdate not initialized", 1, operation);
  return false;
}

Status RefreshByTransferMode(CfwUpdate& update) {
  if (update.EnterFwTransferMode(kBmcAddress, kTransferModeKey) != kSuccess) {
    Trace("FwUpdate::BmcRefresh - EnterFwTransferMode failed", 1);
    return fw_status::kExchangeFailed;
  }
  if (update.ExitFwTransferMode(kBmcAddress) != kSuccess) {
    Trace("FwUpdate::BmcRefresh - ExitFwTransferMode failed", 1);
    return fw_status::kExchangeFailed;
  }
  update.Wait(kSecondsAfterRefresh);
  return kSuccess;
}

}  // namespace

Status Initialize() {
  TraceScope scope("FwUpdate::Initialize");
  Module& module = TheModule();
  if (module.isInitialized) Discard(DeInitialize());
  module.update = MakeInPool<CfwUpdate>(module.lastError);
  if (module.update == nullptr) {
    module = {};
    Trace("FwUpdate::Initialize - Memory allocation failed", 1);
    return fw_status::kOutOfMemory;
  }
  module.isInitialized = true;
  if (GetBmcTypeAndVersion(module.bmcType, module.ipmiVersion) == ipmi_result::kSuccess &&
      module.bmcType != 0)
    return kSuccess;
  module.lastError = Widen("Unable to read FW version from the BMC.");
  return fw_status::kNoBmcIdentity;
}

Status DeInitialize() {
  TraceScope scope("FwUpdate::DeInitialize");
  if (!IsInitialized("FwUpdate::DeInitialize")) return fw_status::kNotInitialized;
  TheModule() = {};
  return kSuccess;
}

Status SetProgressCallback(ProgressCallback callback) {
  TraceScope scope("FwUpdate::SetProgressCallback");
  if (!IsInitialized("FwUpdate::SetProgressCallback")) return fw_status::kNotInitialized;
  TheModule().progress = callback;
  return kSuccess;
}

Status GetLastErrorMessage(const char16_t*& text) {
  TraceScope scope("FwUpdate::GetLastErrorMessage");
  text = nullptr;
  if (!IsInitialized("FwUpdate::GetLastErrorMessage")) return fw_status::kNotInitialized;
  text = TheModule().lastError.c_str();
  return kSuccess;
}

Status SelectDeviceAddress(std::uint8_t address) {
  TraceScope scope("FwUpdate::SelectDeviceAddress");
  if (!IsInitialized("FwUpdate::SelectDeviceAddress")) return fw_status::kNotInitialized;
  TheModule().update->SelectDeviceAddress(address);
  TheModule().isDeviceAddressSelected = true;
  return kSuccess;
}

Status SelectDeviceArea(std::uint32_t area) {
  TraceScope scope("FwUpdate::SelectDeviceArea");
  if (!IsInitialized("FwUpdate::SelectDeviceArea")) return fw_status::kNotInitialized;
  TheModule().update->SelectArea(area);
  TheModule().isDeviceAreaSelected = true;
  return kSuccess;
}

Status LoadConfigurationFromSystem() {
  TraceScope scope("FwUpdate::LoadConfigurationFromSystem");
  if (!IsInitialized("FwUpdate::LoadConfigurationFromSystem")) return fw_status::kNotInitialized;
  Module& module = TheModule();
  if (!module.isDeviceAddressSelected) {
    Trace("FwUpdate::LoadConfigurationFromSystem - No device selected", 1);
    return fw_status::kNothingSelected;
  }
  Status status = module.update->ReadVersionFromSystem();
  if (status == kSuccess) module.isConfigurationLoaded = true;
  return status;
}

Status GetVersionFromSystem(const char16_t*& text) {
  TraceScope scope("FwUpdate::GetVersionFromSystem");
  text = nullptr;
  if (!IsInitialized("FwUpdate::GetVersionFromSystem")) return fw_status::kNotInitialized;
  const Module& module = TheModule();
  if (!module.isConfigurationLoaded) {
    Trace("FwUpdate::GetVersionFromSystem - COnfiguration not loaded", 1);
    return fw_status::kNotLoaded;
  }
  if (!module.isDeviceAreaSelected) {
    Trace("FwUpdate::GetVersionFromSystem - Device area not selected", 1);
    return fw_status::kNothingSelected;
  }
  text = module.update->GetVersion();
  return kSuccess;
}

Status IsVersionSupported(const char16_t* version, std::span<const std::u16string> patterns,
                          bool& isSupported) {
  TraceScope scope("FwUpdate::IsVersionSupported");
  isSupported = false;
  if (!IsInitialized("FwUpdate::IsVersionSupported")) return fw_status::kNotInitialized;
  return TheModule().update->IsVersionSupported(version == nullptr ? u"" : version, patterns, isSupported);
}

Status IsBmcInFwTransferMode(bool& isInTransferMode) {
  TraceScope scope("FwUpdate::IsBmcInFwTransferMode");
  isInTransferMode = false;
  if (!IsInitialized("FwUpdate::IsBmcInFwTransferMode")) return fw_status::kNotInitialized;
  return TheModule().update->IsBmcInFwTransferMode(isInTransferMode);
}

Status BmcRefresh() {
  TraceScope scope("FwUpdate::BmcRefresh");
  if (!IsInitialized("FwUpdate::BmcRefresh")) return fw_status::kNotInitialized;
  CfwUpdate& update = *TheModule().update;
  Print("Refreshing BMC...\n");
  // Read for the product ID alone; a BMC that does not answer is reset all the same.
  Discard(update.ReadVersionFromSystem());
  TheFirmware().FlushConsole();
  return update.ProductId() == kTransferModeProduct ? RefreshByTransferMode(update)
                                                    : update.ResetBmc(kBmcAddress);
}

}  // namespace varnok::FwUpdate
