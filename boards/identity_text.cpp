#include "boards/identity_text.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <vector>

namespace varnok::boards {
namespace {

/// Names of the bits of "additional device support", from bit 0 on.
constexpr std::string_view kSupport[] = {
    "Sensor Device",       "SDR Repository Device", "SEL Device", "FRU Inventory Device",
    "IPMB Event Receiver", "IPMB Event Generator",  "Bridge",     "Chassis Device"};

std::string_view Trim(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// The number at the beginning of `text`, decimal or with "0x" in front.
bool ReadNumber(std::string_view text, std::uint32_t last, std::uint32_t& number) {
  const int base = text.starts_with("0x") ? 16 : 10;
  if (base == 16) text.remove_prefix(2);
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  return error == std::errc{} && number <= last;
}

/// "2.61" as 2 and 61h.
bool ReadVersion(std::string_view text, std::uint32_t& major, std::uint32_t& minor) {
  const std::size_t point = text.find('.');
  if (point == std::string_view::npos || !ReadNumber(text, 0x7F, major)) return false;
  const std::string_view digits = text.substr(point + 1);
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), minor, 16);
  return error == std::errc{} && minor <= 0xFF;
}

class Reader {
 public:
  explicit Reader(Identity& identity) : identity_(identity) {}

  /// False when the line's value is none.
  bool Take(std::string_view line) {
    const std::size_t colon = line.find(':');
    const std::string_view label = Trim(line.substr(0, colon));
    if (colon == std::string_view::npos) return TakeItem(label);
    return TakeValue(label, Trim(line.substr(colon + 1)));
  }

  bool IsComplete() const { return hasDevice_ && hasManufacturer_ && hasProduct_; }

 private:
  bool TakeValue(std::string_view label, std::string_view value) {
    std::uint32_t number = 0;
    std::uint32_t minor = 0;
    list_ = {};
    if (label == "Device ID") {
      hasDevice_ = ReadNumber(value, 0xFF, number);
      identity_.deviceId = static_cast<std::uint8_t>(number);
      return hasDevice_;
    }
    if (label == "Device Revision") {
      const bool isGood = ReadNumber(value, 15, number);
      identity_.deviceRevision = static_cast<std::uint8_t>(number);
      return isGood;
    }
    if (label == "Firmware Revision") {
      const bool isGood = ReadVersion(value, number, minor);
      identity_.firmwareMajor = static_cast<std::uint8_t>(number);
      identity_.firmwareMinor = static_cast<std::uint8_t>(minor);
      return isGood;
    }
    if (label == "IPMI Version") {
      const bool isGood = ReadVersion(value, number, minor) && number <= 9 && minor <= 9;
      identity_.ipmiVersion = static_cast<std::uint8_t>(minor << 4 | number);
      return isGood;
    }
    if (label == "Manufacturer ID") {
      hasManufacturer_ = ReadNumber(value, 0xFFFFFF, identity_.manufacturerId);
      return hasManufacturer_;
    }
    if (label == "Product ID") {
      hasProduct_ = ReadNumber(value, 0xFFFF, number);
      identity_.productId = static_cast<std::uint16_t>(number);
      return hasProduct_;
    }
    if (label == "Device Available") identity_.isInTransferMode = value == "no";
    if (label == "Provides Device SDRs") identity_.providesSdrs = value == "yes";
    list_ = label;
    return true;
  }

  /// A line of the list that the label before it began.
  bool TakeItem(std::string_view item) {
    if (list_ == "Additional Device Support") {
      const auto* found = std::find(std::begin(kSupport), std::end(kSupport), item);
      if (found != std::end(kSupport))
        identity_.additionalSupport |= static_cast<std::uint8_t>(1u << (found - std::begin(kSupport)));
    }
    if (list_ != "Aux Firmware Rev Info" || item.empty()) return true;
    std::uint32_t number = 0;
    if (auxiliaryCount_ == identity_.auxiliary.size() || !ReadNumber(item, 0xFF, number)) return false;
    identity_.auxiliary[auxiliaryCount_++] = static_cast<std::uint8_t>(number);
    identity_.hasAuxiliary = auxiliaryCount_ == identity_.auxiliary.size();
    return true;
  }

  Identity& identity_;
  std::string_view list_;
  std::size_t auxiliaryCount_ = 0;
  bool hasDevice_ = false;
  bool hasManufacturer_ = false;
  bool hasProduct_ = false;
};

}  // namespace

bool ReadIdentityText(std::string_view text, Identity& identity, std::string& error) {
  identity = {};
  Reader reader(identity);
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (reader.Take(line)) continue;
    error = "line " + std::to_string(number) + ": \"" + std::string(Trim(line)) +
            "\" is not what \"ipmitool mc info\" shows there";
    return false;
  }
  if (!reader.IsComplete()) error = "lacks the device ID, the manufacturer ID or the product ID";
  return reader.IsComplete();
}

}  // namespace varnok::boards
