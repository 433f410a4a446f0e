// The front of the BMC firmware state: versions and their comparison, firmware-transfer mode (no inventory
// update may run in it), and the refresh of the BMC.
//
//   FwUpdate::SelectDeviceAddress(kBmcAddress);
//   FwUpdate::LoadConfigurationFromSystem();
//   FwUpdate::SelectDeviceArea(1);
//   FwUpdate::GetVersionFromSystem(text);
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "app/services/callbacks.h"
#include "firmware/status.h"
#include "platform/fw_status.h"

/// Every operation but Initialize fails with fw_status::kNotInitialized until Initialize has run.
namespace varnok::FwUpdate {

/// Learns what the BMC is. kOutOfMemory leaves the module uninitialised; after kNoBmcIdentity it can be used.
Status Initialize();
Status DeInitialize();

Status SetProgressCallback(ProgressCallback callback);

/// `text` points into the module, empty when nothing has failed yet; null when the module is not initialised.
Status GetLastErrorMessage(const char16_t*& text);

Status SelectDeviceAddress(std::uint8_t address);
/// 1: firmware revision, 2 and 3: the auxiliary revision's second and first half (Get Device ID, IPMI
/// v2.0, 20.1).
Status SelectDeviceArea(std::uint32_t area);

/// Reads the selected device's versions. kNothingSelected, kExchangeFailed.
Status LoadConfigurationFromSystem();
/// The selected area's version, which stays valid until the next load; null for an area that does not exist.
/// kNotLoaded, kNothingSelected.
Status GetVersionFromSystem(const char16_t*& text);

/// See CfwUpdate::IsVersionSupported. A null `version` has no valid form. kInvalidVersion.
Status IsVersionSupported(const char16_t* version, std::span<const std::u16string> patterns,
                          bool& isSupported);

/// kExchangeFailed when the BMC does not answer.
Status IsBmcInFwTransferMode(bool& isInTransferMode);

/// Restarts the BMC, through firmware-transfer mode or by a cold reset, and waits for it. Takes up to 80
/// seconds. kExchangeFailed.
Status BmcRefresh();

}  // namespace varnok::FwUpdate
