#include "boards/board_data.h"

#include <algorithm>
#include <charconv>

namespace varnok::boards {
namespace {

struct KindName {
  DeviceKind kind;
  std::string_view name;
};
constexpr KindName kEepromKinds[] = {{DeviceKind::At24c02, "AT24C02"}, {DeviceKind::Ds1624s, "DS1624S"}};
constexpr std::string_view kFruPrefix = "fru-";
constexpr std::string_view kSuffix = ".bin";
constexpr std::size_t kRecordHeader = 5;
constexpr std::size_t kShortIdentity = 11;
constexpr unsigned kLastChannel = 15;

void AppendHex(std::string& text, std::uint8_t byte) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  text += kDigits[byte >> 4];
  text += kDigits[byte & 15];
}

void AppendDecimal(std::string& text, unsigned number) {
  char digits[10];
  text.append(digits, std::to_chars(digits, digits + sizeof(digits), number).ptr);
}

char Lower(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A')) : character;
}

/// Takes `prefix` off the front of `text`, without regard to case.
bool Take(std::string_view& text, std::string_view prefix) {
  if (text.size() < prefix.size()) return false;
  for (std::size_t i = 0; i < prefix.size(); ++i)
    if (Lower(text[i]) != Lower(prefix[i])) return false;
  text.remove_prefix(prefix.size());
  return true;
}

/// Takes a number of at most `digits` digits, up to `last`.
bool TakeNumber(std::string_view& text, int base, std::size_t digits, unsigned last, std::uint8_t& value) {
  unsigned number = 0;
  const std::string_view head = text.substr(0, digits);
  const auto [end, error] = std::from_chars(head.data(), head.data() + head.size(), number, base);
  if (error != std::errc{} || number > last) return false;
  value = static_cast<std::uint8_t>(number);
  text.remove_prefix(static_cast<std::size_t>(end - head.data()));
  return true;
}

bool TakeByte(std::string_view& text, std::uint8_t& value) {
  return TakeNumber(text, 16, 2, 0xFF, value);
}

/// The controller behind the "@", if there is one.
bool TakeController(std::string_view& text, DeviceAddress& address) {
  if (!Take(text, "@")) return true;
  if (!TakeByte(text, address.controller) || (address.controller & 1) != 0) return false;
  address.channel = UsualChannel(address.controller);
  return !Take(text, ".") || TakeNumber(text, 10, 2, kLastChannel, address.channel);
}

bool TakeEeprom(std::string_view& text, std::string_view separator, DeviceAddress& address) {
  for (const KindName& row : kEepromKinds) {
    if (!Take(text, row.name)) continue;
    address.kind = row.kind;
    return Take(text, separator) && TakeByte(text, address.bus) && Take(text, separator) &&
           TakeByte(text, address.slave) && (address.slave & 1) == 0;
  }
  return false;
}

std::optional<DeviceAddress> Parse(std::string_view text, std::string_view fruPrefix,
                                   std::string_view separator) {
  DeviceAddress address;
  std::string_view rest = text;
  bool isGood = Take(rest, fruPrefix) && TakeNumber(rest, 10, 3, kLastFruId, address.id);
  if (!isGood) {
    rest = text;
    isGood = TakeEeprom(rest, separator, address);
  }
  if (!isGood || !TakeController(rest, address) || !rest.empty()) return std::nullopt;
  return address;
}

std::string Text(const DeviceAddress& address, std::string_view fruPrefix, char separator) {
  std::string text;
  if (address.kind == DeviceKind::Fru) {
    text = fruPrefix;
    AppendDecimal(text, address.id);
  }
  for (const KindName& row : kEepromKinds) {
    if (row.kind != address.kind) continue;
    text = row.name;
    text += separator;
    AppendHex(text, address.bus);
    text += separator;
    AppendHex(text, address.slave);
  }
  if (address.controller == kBmc) return text;
  text += '@';
  AppendHex(text, address.controller);
  if (address.channel == UsualChannel(address.controller)) return text;
  text += '.';
  AppendDecimal(text, address.channel);
  return text;
}

}  // namespace

std::uint8_t UsualChannel(std::uint8_t controller) {
  constexpr std::uint8_t kSecondaryIpmbAddress = 0x2C;
  constexpr std::uint8_t kSecondaryIpmb = 6;
  return controller == kSecondaryIpmbAddress ? kSecondaryIpmb : 0;
}

std::string NameOf(const DeviceAddress& address) {
  return Text(address, "", ':');
}
std::optional<DeviceAddress> ParseDeviceName(std::string_view name) {
  return Parse(name, "", ":");
}

std::string FileNameOf(const DeviceAddress& address) {
  return Text(address, kFruPrefix, '-').append(kSuffix);
}

std::optional<DeviceAddress> ParseFileName(std::string_view name) {
  if (name.size() < kSuffix.size()) return std::nullopt;
  std::string_view suffix = name.substr(name.size() - kSuffix.size());
  if (!Take(suffix, kSuffix)) return std::nullopt;
  return Parse(name.substr(0, name.size() - kSuffix.size()), kFruPrefix, "-");
}

std::optional<Identity> DecodeIdentity(std::span<const std::uint8_t> answer) {
  if (answer.size() < kShortIdentity) return std::nullopt;
  Identity identity;
  identity.deviceId = answer[0];
  identity.deviceRevision = answer[1] & 0x0F;
  identity.providesSdrs = (answer[1] & 0x80) != 0;
  identity.firmwareMajor = answer[2] & 0x7F;
  identity.isInTransferMode = (answer[2] & 0x80) != 0;
  identity.firmwareMinor = answer[3];
  identity.ipmiVersion = answer[4];
  identity.additionalSupport = answer[5];
  identity.manufacturerId = static_cast<std::uint32_t>(answer[6] | answer[7] << 8 | answer[8] << 16);
  identity.productId = static_cast<std::uint16_t>(answer[9] | answer[10] << 8);
  identity.hasAuxiliary = answer.size() >= kShortIdentity + identity.auxiliary.size();
  if (identity.hasAuxiliary)
    std::copy_n(answer.begin() + kShortIdentity, identity.auxiliary.size(), identity.auxiliary.begin());
  return identity;
}

const Device* Board::Find(const DeviceAddress& address) const {
  for (const Device& device : devices)
    if (device.address == address) return &device;
  return nullptr;
}

Controller* Board::FindController(std::uint8_t address, std::uint8_t channel) {
  if (address == kBmc) return &bmc;
  for (Controller& controller : controllers)
    if (controller.address == address && controller.channel == channel) return &controller;
  return nullptr;
}

std::span<const std::uint8_t> SplitRecords(std::span<const std::uint8_t> dump, std::vector<Bytes>& records) {
  while (dump.size() >= kRecordHeader && dump.size() >= kRecordHeader + dump[4]) {
    const auto record = dump.first(kRecordHeader + dump[4]);
    records.emplace_back(record.begin(), record.end());
    dump = dump.subspan(record.size());
  }
  return dump;
}

Bytes JoinRecords(std::span<const Bytes> records) {
  Bytes dump;
  for (const Bytes& record : records) dump.insert(dump.end(), record.begin(), record.end());
  return dump;
}

}  // namespace varnok::boards
