// The BMC's firmware: its versions, its firmware-transfer mode and its reset. FwUpdate (platform/fw_update.h)
// is the front that the rest of the program uses.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "firmware/status.h"
#include "platform/ipmi_message.h"

namespace varnok {

class CfwUpdate {
 public:
  /// Messages for the user go to `lastError`.
  explicit CfwUpdate(std::u16string& lastError) : lastError_(lastError) {}

  void SelectDeviceAddress(std::uint8_t address) { deviceAddress_ = address; }
  void SelectArea(std::uint32_t area) { area_ = area; }

  /// Reads the three versions and the product ID of the selected device (IPMI v2.0, section 20.1).
  /// kExchangeFailed.
  Status ReadVersionFromSystem();
  /// The text of the selected area; null for an area other than 1, 2 and 3.
  const char16_t* GetVersion() const;
  std::uint16_t ProductId() const { return productId_; }

  /// `isInTransferMode` is false when the BMC does not answer (kExchangeFailed).
  Status IsBmcInFwTransferMode(bool& isInTransferMode);

  /// Both act on the BMC alone; for any other target nothing is sent. kExchangeFailed.
  Status EnterFwTransferMode(std::uint8_t target, std::string_view key);
  Status ExitFwTransferMode(std::uint8_t target);

  /// Whether `version` ("MM.mm") is met by one of `patterns`: "MM.mm", "MM.mm+" or "MM.mm-MM.mm".
  /// kInvalidVersion at the first that has another form; what matched before it stays in `isSupported`.
  Status IsVersionSupported(std::u16string_view version, std::span<const std::u16string> patterns,
                            bool& isSupported);

  /// Cold reset, then polls until the BMC is back. kExchangeFailed when the last poll has no answer.
  Status ResetBmc(std::uint8_t target);

  void Wait(std::uint32_t seconds);

 private:
  /// Puts a request without data into `request_`.
  void Prepare(std::uint8_t target, std::uint8_t netFunction, std::uint8_t command);
  /// Exchanges `request_` for `response_`.
  bool Exchange();
  /// Gets a device ID that holds the firmware revision at least.
  bool ExchangeDeviceId(std::uint8_t target);
  bool ResponseShowsTransferMode() const;
  Status InvalidVersion(std::u16string_view text);

  std::u16string& lastError_;
  std::array<std::u16string, 3> versions_;  ///< by area, from 1
  IpmiMessage request_;
  IpmiMessage response_;
  std::uint32_t area_ = 0;
  std::uint8_t deviceAddress_ = kBmcAddress;
  std::uint16_t productId_ = 0;
};

}  // namespace varnok
