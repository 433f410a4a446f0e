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

/// One operation of the front: its trace lines, then `operation` on the module, which must be initialised.
template <class Operation>
Status Guarded(const char* name, Operation operation) {
  TraceScope scope(name);
  Module& module = TheModule();
  return module.isInitialized ? operation(module)
                              : Fail(name, "FwUpdate not initialized", fw_status::kNotInitialized);
}

Status RefreshByTransferMode(CfwUpdate& update) {
  if (update.EnterFwTransferMode(kBmcAddress, kTransferModeKey) != kSuccess) {
    return Fail("FwUpdate::BmcRefresh", "EnterFwTransferMode failed", fw_status::kExchangeFailed);
  }
  if (update.ExitFwTransferMode(kBmcAddress) != kSuccess) {
    return Fail("FwUpdate::BmcRefresh", "ExitFwTransferMode failed", fw_status::kExchangeFailed);
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
    return Fail("FwUpdate::Initialize", "Memory allocation failed", fw_status::kOutOfMemory);
  }
  module.isInitialized = true;
  if (GetBmcTypeAndVersion(module.bmcType, module.ipmiVersion) == ipmi_result::kSuccess &&
      module.bmcType != 0)
    return kSuccess;
  module.lastError = Widen("Unable to read FW version from the BMC.");
  return fw_status::kNoBmcIdentity;
}

Status DeInitialize() {
  return Guarded("FwUpdate::DeInitialize", [](Module& module) {
    module = {};
    return kSuccess;
  });
}

Status SetProgressCallback(ProgressCallback callback) {
  return Guarded("FwUpdate::SetProgressCallback", [callback](Module& module) {
    module.progress = callback;
    return kSuccess;
  });
}

Status GetLastErrorMessage(const char16_t*& text) {
  text = nullptr;
  return Guarded("FwUpdate::GetLastErrorMessage", [&text](Module& module) {
    text = module.lastError.c_str();
    return kSuccess;
  });
}

Status SelectDeviceAddress(std::uint8_t address) {
  return Guarded("FwUpdate::SelectDeviceAddress", [address](Module& module) {
    module.update->SelectDeviceAddress(address);
    module.isDeviceAddressSelected = true;
    return kSuccess;
  });
}

Status SelectDeviceArea(std::uint32_t area) {
  return Guarded("FwUpdate::SelectDeviceArea", [area](Module& module) {
    module.update->SelectArea(area);
    module.isDeviceAreaSelected = true;
    return kSuccess;
  });
}

Status LoadConfigurationFromSystem() {
  constexpr const char* kName = "FwUpdate::LoadConfigurationFromSystem";
  return Guarded(kName, [](Module& module) {
    if (!module.isDeviceAddressSelected)
      return Fail(kName, "No device selected", fw_status::kNothingSelected);
    Status status = module.update->ReadVersionFromSystem();
    if (status == kSuccess) module.isConfigurationLoaded = true;
    return status;
  });
}

Status GetVersionFromSystem(const char16_t*& text) {
  constexpr const char* kName = "FwUpdate::GetVersionFromSystem";
  text = nullptr;
  return Guarded(kName, [&text](Module& module) {
    if (!module.isConfigurationLoaded) return Fail(kName, "COnfiguration not loaded", fw_status::kNotLoaded);
    if (!module.isDeviceAreaSelected)
      return Fail(kName, "Device area not selected", fw_status::kNothingSelected);
    text = module.update->GetVersion();
    return kSuccess;
  });
}

Status IsVersionSupported(const char16_t* version, std::span<const std::u16string> patterns,
                          bool& isSupported) {
  isSupported = false;
  return Guarded("FwUpdate::IsVersionSupported", [=, &isSupported](Module& module) {
    return module.update->IsVersionSupported(version == nullptr ? u"" : version, patterns, isSupported);
  });
}

Status IsBmcInFwTransferMode(bool& isInTransferMode) {
  isInTransferMode = false;
  return Guarded("FwUpdate::IsBmcInFwTransferMode", [&isInTransferMode](Module& module) {
    return module.update->IsBmcInFwTransferMode(isInTransferMode);
  });
}

Status BmcRefresh() {
  return Guarded("FwUpdate::BmcRefresh", [](Module& module) {
    CfwUpdate& update = *module.update;
    Print("Refreshing BMC...\n");
    // Read for the product ID alone; a BMC that does not answer is reset all the same.
    Discard(update.ReadVersionFromSystem());
    TheFirmware().FlushConsole();
    return update.ProductId() == kTransferModeProduct ? RefreshByTransferMode(update)
                                                      : update.ResetBmc(kBmcAddress);
  });
}

}  // namespace varnok::FwUpdate
